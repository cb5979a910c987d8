// The histogram of all pixels, with the window over it; its edges can be dragged.
import { byId, color, surface } from "./dom.js";

export class Histogram {
    #canvas = byId("histogram");
    #contrast;
    #statistics = null;
    #edge = null;

    constructor(contrast) {
        this.#contrast = contrast;
        contrast.onChange(() => this.draw());
        byId("histogram-log").addEventListener("change", () => this.draw());
        new ResizeObserver(() => this.draw()).observe(this.#canvas);
        this.#canvas.addEventListener("pointerdown", (event) => {
            this.#canvas.setPointerCapture(event.pointerId);
            const value = this.#value(event);
            this.#edge = Math.abs(value - contrast.black) <= Math.abs(value - contrast.white) ? "black" : "white";
            contrast.setWindow({ [this.#edge]: value });
        });
        this.#canvas.addEventListener("pointermove", (event) => {
            if (this.#edge) contrast.setWindow({ [this.#edge]: this.#value(event) });
        });
        for (const end of ["pointerup", "pointercancel"]) {
            this.#canvas.addEventListener(end, () => {
                this.#edge = null;
            });
        }
    }

    use(statistics) {
        this.#statistics = statistics;
        this.draw();
    }

    draw() {
        const area = surface(this.#canvas);
        if (!area) return;
        const { context, width, height } = area;
        const { black, white, top } = this.#contrast;
        const x = (value) => (value / (top + 1)) * width;
        context.fillStyle = color("--window");
        context.fillRect(x(black), 0, x(white) - x(black), height);
        const bins = this.#statistics?.histogram;
        if (bins?.length) {
            const scaled = byId("histogram-log").checked ? (n) => Math.log1p(n) : (n) => n;
            const highest = Math.max(1e-9, ...bins.map(scaled));
            const step = width / bins.length;
            context.fillStyle = color("--bars");
            bins.forEach((n, index) => {
                const tall = (scaled(n) / highest) * (height - 4);
                if (n > 0) context.fillRect(index * step, height - Math.max(1, tall), Math.max(1, step), height);
            });
        }
        this.#drawCurve(context, x, height);
    }

    // What becomes of a sample: the window's edges and the curve of gamma between them.
    #drawCurve(context, x, height) {
        const { black, white, gamma } = this.#contrast;
        context.strokeStyle = color("--accent");
        context.lineWidth = 1.5;
        context.beginPath();
        for (let step = 0; step <= 32; ++step) {
            const share = step / 32;
            context.lineTo(x(black) + share * (x(white) - x(black)), height - 1 - share ** (1 / gamma) * (height - 2));
        }
        context.stroke();
        context.fillStyle = color("--accent");
        for (const value of [black, white]) context.fillRect(Math.round(x(value)) - 1, 0, 2, height);
    }

    #value(event) {
        const box = this.#canvas.getBoundingClientRect();
        const share = Math.min(1, Math.max(0, (event.clientX - box.left) / box.width));
        return Math.round(share * this.#contrast.top);
    }
}
