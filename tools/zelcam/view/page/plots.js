// Curves: a value over the last minute, and the samples along a line.
import { brief } from "./format.js";
import { byId, color, surface } from "./dom.js";

const kSpan = 60000;
const kColors = ["--red", "--green", "--blue"];

export class TimePlot {
    #points = [];
    #canvas;
    #says;
    #asked = false;

    constructor(canvas, says) {
        this.#canvas = byId(canvas);
        this.#says = byId(says);
        new ResizeObserver(() => this.draw()).observe(this.#canvas);
    }

    add(value, at = performance.now()) {
        if (!Number.isFinite(value)) return;
        this.#points.push([at, value]);
        while (this.#points[0][0] < at - kSpan) this.#points.shift();
        if (this.#asked) return;
        this.#asked = true;
        requestAnimationFrame(() => {
            this.#asked = false;
            this.draw();
        });
    }

    clear() {
        this.#points = [];
        this.draw();
    }

    draw() {
        const area = surface(this.#canvas);
        if (!area) return;
        const latest = this.#points.at(-1);
        this.#says.textContent = latest ? brief(latest[1]) : "";
        if (!latest) return;
        const values = this.#points.map(([, value]) => value);
        const x = ([at]) => area.width * (1 - (latest[0] - at) / kSpan);
        plotCurve(area, [this.#points.map((point) => [x(point), point[1]])], range(values), ["--accent"]);
    }
}

// `values`: one number or three a pixel.
export function drawProfile(canvas, values) {
    const area = surface(canvas);
    if (!area || values.length < 2) return;
    const channels = Array.isArray(values[0]) ? values[0].length : 1;
    const curves = Array.from({ length: channels }, (_, channel) => values.map((value, index) =>
        [(index / (values.length - 1)) * area.width, channels > 1 ? value[channel] : value]));
    plotCurve(area, curves, range(values.flat()), channels > 1 ? kColors : ["--accent"]);
}

// Some room at both ends, so that noise doesn't look like an earthquake.
function range(values) {
    let [low, high] = [Infinity, -Infinity];
    for (const value of values) {
        low = Math.min(low, value);
        high = Math.max(high, value);
    }
    const room = Math.max((high - low) * 0.1, Math.abs(high) * 0.01, 1e-9);
    return [low >= 0 ? Math.max(0, low - room) : low - room, high + room];
}

function plotCurve({ context, width, height }, curves, [low, high], colors) {
    const y = (value) => height - 1 - ((value - low) / (high - low)) * (height - 2);
    context.strokeStyle = color("--rule");
    context.lineWidth = 1;
    for (const share of [0.25, 0.5, 0.75]) {
        context.beginPath();
        context.moveTo(0, Math.round(height * share) + 0.5);
        context.lineTo(width, Math.round(height * share) + 0.5);
        context.stroke();
    }
    curves.forEach((points, index) => {
        context.strokeStyle = color(colors[index]);
        context.lineWidth = 1.5;
        context.lineJoin = "round";
        context.beginPath();
        points.forEach(([x, value]) => context.lineTo(x, y(value)));
        context.stroke();
    });
    context.fillStyle = color("--muted");
    context.font = "11px system-ui, sans-serif";
    context.textBaseline = "top";
    context.fillText(brief(high), 4, 3);
    context.textBaseline = "bottom";
    context.fillText(brief(low), 4, height - 2);
}
