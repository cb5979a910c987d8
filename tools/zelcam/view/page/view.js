// Which part of the frame lies where on the canvas. All of the canvas is in device pixels.

const kLargest = 64;
const kLadder = [1 / 32, 1 / 16, 1 / 8, 1 / 4, 1 / 3, 1 / 2, 2 / 3, 1, 1.5, 2, 3, 4, 6, 8, 12, 16, 24, 32, 48, 64];

export class View {
    width = 1;
    height = 1;
    frame = { width: 0, height: 0 };
    scale = 1;
    fitted = true;
    #center = { x: 0, y: 0 };

    resize(width, height) {
        this.width = Math.max(1, width);
        this.height = Math.max(1, height);
        if (this.fitted) this.fit();
        else this.#keepInside();
    }

    // A frame of another size is looked at as a whole.
    setFrame(width, height) {
        if (width === this.frame.width && height === this.frame.height) return false;
        this.frame = { width, height };
        this.fit();
        return true;
    }

    // Small frames are enlarged by whole numbers, so that every pixel is as large as the others.
    fit() {
        this.fitted = true;
        if (!this.frame.width) return;
        const scale = Math.min(this.width / this.frame.width, this.height / this.frame.height, kLargest);
        this.scale = scale > 1 ? Math.floor(scale) : scale;
        this.#center = { x: this.frame.width / 2, y: this.frame.height / 2 };
    }

    // The frame's corner on the canvas; whole device pixels, so that samples and screen pixels fall together.
    get origin() {
        return {
            x: Math.round(this.width / 2 - this.#center.x * this.scale),
            y: Math.round(this.height / 2 - this.#center.y * this.scale),
        };
    }

    toFrame(x, y) {
        const origin = this.origin;
        return { x: (x - origin.x) / this.scale, y: (y - origin.y) / this.scale };
    }

    toScreen(x, y) {
        const origin = this.origin;
        return { x: origin.x + x * this.scale, y: origin.y + y * this.scale };
    }

    // The point of the frame below (x, y) stays there.
    zoomTo(scale, x = this.width / 2, y = this.height / 2) {
        if (!this.frame.width) return;
        const whole = Math.min(this.width / this.frame.width, this.height / this.frame.height);
        const before = this.toFrame(x, y);
        this.scale = Math.min(kLargest, Math.max(Math.min(whole, 1) / 2, scale));
        this.fitted = false;
        this.#center.x = before.x - (x - this.width / 2) / this.scale;
        this.#center.y = before.y - (y - this.height / 2) / this.scale;
        this.#keepInside();
    }

    zoomBy(factor, x, y) {
        const scale = this.scale * factor;
        const passes = (this.scale - 1) * (scale - 1) < 0;  // 1:1 is a halt on the way
        this.zoomTo(passes || Math.abs(scale - 1) < 0.03 ? 1 : scale, x, y);
    }

    zoomStep(direction) {
        const step = direction > 0 ? kLadder.find((scale) => scale > this.scale * 1.01)
                                   : kLadder.findLast((scale) => scale < this.scale / 1.01);
        if (step) this.zoomTo(step);
    }

    panBy(dx, dy) {
        this.fitted = false;
        this.#center.x -= dx / this.scale;
        this.#center.y -= dy / this.scale;
        this.#keepInside();
    }

    // What is seen of the frame, in whole pixels, and the device pixels that it covers; null: nothing.
    visible() {
        const [first, last] = [this.toFrame(0, 0), this.toFrame(this.width, this.height)];
        const x = Math.max(0, Math.floor(first.x));
        const y = Math.max(0, Math.floor(first.y));
        const width = Math.min(this.frame.width, Math.ceil(last.x)) - x;
        const height = Math.min(this.frame.height, Math.ceil(last.y)) - y;
        if (width <= 0 || height <= 0) return null;
        const device = (length) => Math.max(1, Math.round(length * this.scale));
        return { x, y, width, height, columns: device(width), rows: device(height) };
    }

    #keepInside() {
        this.#center.x = Math.min(this.frame.width, Math.max(0, this.#center.x));
        this.#center.y = Math.min(this.frame.height, Math.max(0, this.#center.y));
    }
}
