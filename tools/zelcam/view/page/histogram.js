// The histogram of all pixels, with the window over it; its edges can be dragged.
import { byId, color, surface } from "./dom.js";

const kChannels = ["--red", "--green", "--blue"];

export class Histogram {
    #canvas = byId("histogram");
    #contrast;
    #statistics = null;
    #edge = null;
    #asked = false;

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
        if (this.#asked) return;
        this.#asked = true;
        requestAnimationFrame(() => {
            this.#asked = false;
            this.draw();
        });
    }

    draw() {
        const area = surface(this.#canvas);
        if (!area) return;
        const { context, width, height } = area;
        const { black, white, top } = this.#contrast;
        const x = (value) => (value / (top + 1)) * width;
        context.fillStyle = color("--window");
        context.fillRect(x(black), 0, x(white) - x(black), height);
        // The largest sample lies at the right edge, whatever the depth.
        const { histogram, channels, bins } = this.#statistics ?? {};
        if (histogram) {
            const scaled = byId("histogram-log").checked ? (n) => Math.log1p(n) : (n) => n;
            const highest = Math.max(1e-9, ...histogram.map(scaled));
            const tall = (n) => (n > 0 ? Math.max(1, (scaled(n) / highest) * (height - 4)) : 0);
            const step = (width * bins) / (top + 1);
            context.fillStyle = color("--bars");
            histogram.forEach((n, index) => context.fillRect(index * step, height - tall(n), Math.max(1, step), height));
            channels?.forEach((counts, channel) => {
                context.strokeStyle = color(kChannels[channel]);
                context.beginPath();
                counts.forEach((n, index) => context.lineTo((index + 0.5) * step, height - tall(n)));
                context.stroke();
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
