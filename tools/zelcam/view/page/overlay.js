// Lines over the picture: seams of the taps, what is measured, what is being drawn; and the small map of the sensor.
import { makeSvg } from "./dom.js";

export class Overlay {
    shown = true;
    #svg;
    #map;
    #parts = {};
    #mapParts = {};

    constructor(svg, map) {
        this.#svg = svg;
        this.#map = map;
        for (const name of ["edge", "taps", "crop", "region", "line", "point"]) {
            // A dark line below the bright one, so that it shows on every picture.
            const below = makeSvg("path", { class: `below ${name}` });
            const above = makeSvg("path", { class: name });
            svg.append(below, above);
            this.#parts[name] = [below, above];
        }
        for (const name of ["whole", "region", "seen"]) this.#mapParts[name] = map.appendChild(makeSvg("rect", { class: name }));
    }

    draw(view, tools, camera) {
        change(this.#svg, "viewBox", `0 0 ${view.width} ${view.height}`);
        const { probe, shape } = tools;
        const paths = { edge: "", taps: "", crop: "", region: "", line: "", point: "" };
        if (view.frame.width) {
            if (this.shown) {
                paths.edge = box(view, { x: 0, y: 0, ...view.frame });
                paths.taps = seams(view, camera);
                if (probe.region) paths.region = box(view, probe.region);
                if (probe.line) paths.line = segment(view, probe.line);
            }
            if (shape?.crop) paths.crop = box(view, { x: 0, y: 0, ...view.frame }) + box(view, shape.crop);
            const marked = tools.point ?? tools.cursor;
            if (marked) paths.point = cross(view, marked);
        }
        for (const [name, d] of Object.entries(paths)) this.#parts[name].forEach((path) => change(path, "d", d));
        this.#drawMap(view, camera);
    }

    // Only where the whole sensor isn't seen anyway.
    #drawMap(view, camera) {
        const { sensor, region, binning } = camera ?? {};
        const seen = view.visible();
        const whole = seen && seen.width === view.frame.width && seen.height === view.frame.height;
        const cropped = sensor && region && (region.width < sensor.width || region.height < sensor.height);
        const needed = this.shown && sensor && region && seen && (!whole || cropped);
        this.#map.classList.toggle("gone", !needed);
        if (!needed) return;
        change(this.#map, "viewBox", `0 0 ${sensor.width} ${sensor.height}`);
        const [bx, by] = [binning?.x ?? 1, binning?.y ?? 1];
        place(this.#mapParts.whole, { x: 0, y: 0, ...sensor });
        place(this.#mapParts.region, region);
        place(this.#mapParts.seen, {
            x: region.x + seen.x * bx, y: region.y + seen.y * by, width: seen.width * bx, height: seen.height * by,
        });
    }
}

// What stays is not touched: the browser would paint it again with every picture.
function change(element, name, value) {
    if (element.getAttribute(name) !== String(value)) element.setAttribute(name, value);
}

function place(element, { x, y, width, height }) {
    for (const [name, value] of Object.entries({ x, y, width, height })) change(element, name, value);
}

function box(view, { x, y, width, height }) {
    const [a, b] = [view.toScreen(x, y), view.toScreen(x + width, y + height)];
    return `M${a.x} ${a.y}H${b.x}V${b.y}H${a.x}Z`;
}

// From the middle of a pixel to the middle of another.
function segment(view, { x0, y0, x1, y1 }) {
    const [a, b] = [view.toScreen(x0 + 0.5, y0 + 0.5), view.toScreen(x1 + 0.5, y1 + 0.5)];
    return `M${a.x} ${a.y}L${b.x} ${b.y}`;
}

function cross(view, { x, y }) {
    const { x: cx, y: cy } = view.toScreen(x + 0.5, y + 0.5);
    const gap = Math.max(4, view.scale / 2);
    const end = gap + 14;
    return `M${cx - end} ${cy}H${cx - gap}M${cx + gap} ${cy}H${cx + end}M${cx} ${cy - end}V${cy - gap}M${cx} ${cy + gap}V${cy + end}`;
}

// Two taps meet in the middle of a row, four in the middle of the sensor.
function seams(view, camera) {
    const { sensor, region, binning, taps } = camera ?? {};
    if (!sensor || !region || !(taps > 1)) return "";
    const x = (sensor.width / 2 - region.x) / (binning?.x ?? 1);
    const y = (sensor.height / 2 - region.y) / (binning?.y ?? 1);
    const [first, last] = [view.toScreen(0, 0), view.toScreen(view.frame.width, view.frame.height)];
    const middle = view.toScreen(x, y);
    let path = "";
    if (x > 0 && x < view.frame.width) path += `M${middle.x} ${first.y}V${last.y}`;
    if (taps > 2 && y > 0 && y < view.frame.height) path += `M${first.x} ${middle.y}H${last.x}`;
    return path;
}
