// What is measured where: the point, the line and the region of this page, and the region that is being drawn for the
// camera. All in pixels of the frame.

const kKinds = { line: "line", region: "region", crop: "crop" };
const clamp = (value, low, high) => Math.min(high, Math.max(low, value));

export class Tools {
    tool = "move";
    point = null;   // pinned
    hover = null;   // below the mouse
    line = null;    // x0, y0, x1, y1
    region = null;  // x, y, width, height
    draft = null;   // being drawn: from, to
    cursor = null;  // moved by keys
    #frame = { width: 0, height: 0 };
    #changed;
    #drawn;

    // `changed`: something else is to be measured or drawn; `drawn`: a region for the camera is complete.
    constructor(changed, drawn) {
        this.#changed = changed;
        this.#drawn = drawn;
    }

    choose(tool) {
        this.tool = tool;
        this.draft = null;
        this.cursor = null;
        this.#changed();
    }

    // Of a frame of another size nothing is left.
    setFrame(width, height) {
        this.#frame = { width, height };
        this.clear();
    }

    clear() {
        this.point = this.hover = this.line = this.region = this.draft = this.cursor = null;
        this.#changed();
    }

    hoverAt(place) {
        const pixel = place && this.#pixel(place);
        this.hover = pixel && place.x >= 0 && place.y >= 0 && place.x < this.#frame.width && place.y < this.#frame.height ? pixel : null;
        if (this.draft && pixel) this.draft.to = pixel;
        this.#changed();
    }

    begin(place) {
        const pixel = this.#pixel(place);
        if (this.tool === "point") this.point = this.cursor = pixel;
        else if (kKinds[this.tool]) this.draft = { from: pixel, to: pixel };
        this.#changed();
    }

    end(place) {
        if (!this.draft) return;
        this.draft.to = this.#pixel(place);
        const { from, to } = this.draft;
        this.draft = null;
        const moved = from.x !== to.x || from.y !== to.y;
        if (this.tool === "line") this.line = moved ? { x0: from.x, y0: from.y, x1: to.x, y1: to.y } : null;
        if (this.tool === "region") this.region = moved ? rectangle(from, to) : null;
        if (this.tool === "crop" && moved) this.#drawn(rectangle(from, to));
        this.#changed();
    }

    // By keys: the cursor goes (dx, dy), or to the middle at first.
    moveCursor(dx, dy) {
        const start = this.cursor ?? { x: Math.floor(this.#frame.width / 2), y: Math.floor(this.#frame.height / 2) };
        this.cursor = this.#pixel(this.cursor ? { x: start.x + dx, y: start.y + dy } : start);
        if (this.tool === "point") this.point = this.cursor;
        if (this.draft) this.draft.to = this.cursor;
        this.#changed();
    }

    // Enter: the first corner, then the second.
    mark() {
        if (!this.cursor) this.moveCursor(0, 0);
        if (this.draft) this.end(this.cursor);
        else this.begin(this.cursor);
    }

    // True when there was something to give up.
    cancel() {
        const had = this.draft || this.cursor || this.point;
        this.draft = this.cursor = this.point = null;
        this.#changed();
        return Boolean(had);
    }

    get pointer() {
        return this.draft ? this.draft.to : (this.point ?? this.cursor ?? this.hover);
    }

    // What is drawn as if it were complete.
    get shape() {
        if (!this.draft) return null;
        const { from, to } = this.draft;
        return this.tool === "line" ? { line: { x0: from.x, y0: from.y, x1: to.x, y1: to.y } }
                                    : { [this.tool]: rectangle(from, to) };
    }

    get probe() {
        return { pointer: this.pointer, line: this.shape?.line ?? this.line, region: this.shape?.region ?? this.region };
    }

    #pixel(place) {
        return {
            x: clamp(Math.floor(place.x), 0, Math.max(0, this.#frame.width - 1)),
            y: clamp(Math.floor(place.y), 0, Math.max(0, this.#frame.height - 1)),
        };
    }
}

// Both corners belong to it.
function rectangle(a, b) {
    return {
        x: Math.min(a.x, b.x),
        y: Math.min(a.y, b.y),
        width: Math.abs(a.x - b.x) + 1,
        height: Math.abs(a.y - b.y) + 1,
    };
}
