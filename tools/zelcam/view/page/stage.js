// The picture on the page: draws when the browser asks for it, tells the server what is looked at, and takes mouse, wheel,
// fingers and arrow keys.
import { byId } from "./dom.js";
import { Overlay } from "./overlay.js";
import { Picture } from "./picture.js";
import { Tools } from "./tools.js";
import { View } from "./view.js";

const kArrows = { ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, -1], ArrowDown: [0, 1] };

export class Stage {
    view = new View();
    camera = null;
    #canvas = byId("picture");
    #connection;
    #contrast;
    #drawn;
    #next = null;
    #asked = false;
    #views = 0;
    #sentView = "";
    #sentProbe = "";
    #pointers = new Map();
    #panning = false;

    // `crop` gets the region drawn for the camera; `drawn` is called after each drawing, with the picture if it is new.
    constructor(connection, contrast, { crop, drawn }) {
        this.#connection = connection;
        this.#contrast = contrast;
        this.#drawn = drawn;
        this.picture = new Picture(this.#canvas, () => this.redraw());
        this.tools = new Tools(() => this.redraw(), crop);
        this.overlay = new Overlay(byId("overlay"), byId("sensor"));
        contrast.onChange(() => this.redraw());
        this.#watchSize();
        this.#listen();
    }

    // A picture came. One that wasn't drawn yet gives way to it.
    show(picture) {
        this.#next = picture;
        this.redraw();
    }

    forget() {
        this.#next = null;
        this.picture.forget();
        this.redraw();
    }

    // Frames of this size are to come: what is seen of them can be asked for.
    expect(width, height) {
        if (this.view.setFrame(width, height)) this.tools.setFrame(width, height);
        this.redraw();
    }

    // The server knows nothing of this page yet.
    renew() {
        this.#sentView = this.#sentProbe = "";
        this.redraw();
    }

    redraw() {
        if (this.#asked) return;
        this.#asked = true;
        requestAnimationFrame(() => this.#draw());
    }

    fit() {
        this.view.fit();
        this.redraw();
    }

    // 1:1 about a point of the canvas; back to the whole frame where it was 1:1 already.
    toggleActual(x, y) {
        if (this.view.scale === 1 && !this.view.fitted) this.view.fit();
        else this.view.zoomTo(1, x, y);
        this.redraw();
    }

    zoomStep(direction) {
        this.view.zoomStep(direction);
        this.redraw();
    }

    // As it is seen, without the lines.
    read() {
        this.picture.draw(this.view, this.#contrast);
        return this.picture.read();
    }

    #draw() {
        const fresh = this.#next;
        this.#next = null;
        if (fresh) {
            this.expect(fresh.width, fresh.height);
            this.picture.upload(fresh);
        }
        this.picture.draw(this.view, this.#contrast);
        this.overlay.draw(this.view, this.tools, this.camera);
        if (fresh) this.#connection.send("shown", { frame: fresh.frame, at: Date.now() });
        this.#tellServer();
        this.#asked = false;
        this.#drawn(fresh);
    }

    #tellServer() {
        if (!this.#connection.open) return;
        const seen = this.view.visible();
        const text = JSON.stringify(seen);
        if (seen && text !== this.#sentView) {
            this.#sentView = text;
            this.#connection.send("view", { view: ++this.#views, ...seen });
        }
        const { pointer, line, region } = this.tools.probe;
        const probe = { pointer: pointer ?? null, line: line ?? null, region: region ?? null };
        const probeText = JSON.stringify(probe);
        if (probeText !== this.#sentProbe) {
            this.#sentProbe = probeText;
            this.#connection.send("probe", probe);
        }
    }

    // In device pixels where the browser tells them, since only they make 1:1 exact.
    #watchSize() {
        const observer = new ResizeObserver(([entry]) => {
            const exact = entry.devicePixelContentBoxSize?.[0];
            const ratio = window.devicePixelRatio || 1;
            this.view.resize(exact?.inlineSize ?? Math.round(entry.contentRect.width * ratio),
                             exact?.blockSize ?? Math.round(entry.contentRect.height * ratio));
            this.redraw();
        });
        try {
            observer.observe(this.#canvas, { box: "device-pixel-content-box" });
        } catch {
            observer.observe(this.#canvas);
        }
    }

    #listen() {
        const canvas = this.#canvas;
        canvas.addEventListener("wheel", (event) => {
            event.preventDefault();
            const lines = event.deltaMode === WheelEvent.DOM_DELTA_LINE ? 16 : 1;
            const at = this.#device(event);
            this.view.zoomBy(Math.exp(-event.deltaY * lines * 0.0018), at.x, at.y);
            this.redraw();
        }, { passive: false });
        canvas.addEventListener("dblclick", (event) => {
            const at = this.#device(event);
            if (this.tools.tool === "move") this.toggleActual(at.x, at.y);
        });
        canvas.addEventListener("pointerdown", (event) => this.#down(event));
        canvas.addEventListener("pointermove", (event) => this.#move(event));
        for (const end of ["pointerup", "pointercancel"]) canvas.addEventListener(end, (event) => this.#up(event));
        canvas.addEventListener("pointerleave", () => this.tools.hoverAt(null));
        canvas.addEventListener("keydown", (event) => this.#key(event));
    }

    #device(event) {
        const box = this.#canvas.getBoundingClientRect();
        return {
            x: ((event.clientX - box.left) * this.view.width) / box.width,
            y: ((event.clientY - box.top) * this.view.height) / box.height,
        };
    }

    #place(event) {
        const at = this.#device(event);
        return this.view.toFrame(at.x, at.y);
    }

    #down(event) {
        this.#canvas.setPointerCapture(event.pointerId);
        this.#pointers.set(event.pointerId, this.#device(event));
        if (this.#pointers.size > 1) this.tools.cancel();
        this.#panning = this.tools.tool === "move" || event.button === 1 || this.#pointers.size > 1;
        this.#canvas.classList.toggle("moving", this.#panning);
        if (event.button === 1) event.preventDefault();
        if (!this.#panning && event.button === 0) this.tools.begin(this.#place(event));
    }

    #move(event) {
        const before = this.#pointers.get(event.pointerId);
        const at = this.#device(event);
        if (before && this.#panning) this.#drag(event.pointerId, before, at);
        if (before) this.#pointers.set(event.pointerId, at);
        this.tools.hoverAt(this.view.toFrame(at.x, at.y));
    }

    // One pointer moves the picture; two move and enlarge it.
    #drag(id, before, at) {
        const other = [...this.#pointers].find(([key]) => key !== id)?.[1];
        const share = other ? 0.5 : 1;
        this.view.panBy((at.x - before.x) * share, (at.y - before.y) * share);
        if (other) {
            const distance = (a) => Math.max(1, Math.hypot(a.x - other.x, a.y - other.y));
            this.view.zoomTo((this.view.scale * distance(at)) / distance(before), (at.x + other.x) / 2, (at.y + other.y) / 2);
        }
        this.redraw();
    }

    #up(event) {
        this.#pointers.delete(event.pointerId);
        if (!this.#panning) this.tools.end(this.#place(event));
        if (this.#pointers.size === 0) {
            this.#panning = false;
            this.#canvas.classList.remove("moving");
        }
    }

    #key(event) {
        if (event.ctrlKey || event.altKey || event.metaKey) return;
        const arrow = kArrows[event.key];
        if (arrow && this.tools.tool === "move") {
            const step = event.shiftKey ? 0.5 : 0.1;
            this.view.panBy(-arrow[0] * this.view.width * step, -arrow[1] * this.view.height * step);
            this.redraw();
        } else if (arrow) {
            const step = event.shiftKey ? 10 : 1;
            this.tools.moveCursor(arrow[0] * step, arrow[1] * step);
        } else if (event.key === "Enter" && this.tools.tool !== "move") {
            this.tools.mark();
        } else if (!(event.key === "Escape" && this.tools.cancel())) {
            return;
        }
        event.preventDefault();
    }
}
