// A parameter with a logarithmic slider and a field: exposure and gain.
import { byId, say } from "./dom.js";
import { duration } from "./format.js";

const kSteps = 1000;
const kLongest = 60e6;  // microseconds; the field takes longer ones, too

export class Quantity {
    #slider;
    #field;
    #parameter = null;
    #low = 0;
    #high = 1;
    #set;

    constructor(id, set) {
        this.id = id;
        this.#slider = byId(`${id}-slider`);
        this.#field = byId(id);
        this.#set = set;
        this.#slider.addEventListener("input", () => {
            const value = this.#round(this.#fromSlider(Number(this.#slider.value)));
            this.#field.value = value;
            this.#speak(value);
            this.#change(value);
        });
        this.#field.addEventListener("change", () => {
            if (this.#field.value !== "") this.#change(Number(this.#field.value));
        });
    }

    get name() {
        return this.#parameter?.name ?? "";
    }

    // Null: this camera has none.
    use(parameter) {
        this.#parameter = parameter;
        byId(`${this.id}-field`).hidden = !parameter;
        if (!parameter) return;
        this.#low = parameter.minimum ?? 0;
        this.#high = Math.max(this.#low + 1, parameter.maximum ?? 1);
        if (parameter.unit === "us") this.#high = Math.min(this.#high, kLongest);
        this.#field.min = parameter.minimum ?? "";
        this.#field.max = parameter.maximum ?? "";
        this.#field.step = parameter.step ?? "any";
        for (const control of [this.#field, this.#slider]) control.disabled = !parameter.writable;
        say(byId(`${this.id}-unit`), parameter.unit === "us" ? "µs" : (parameter.unit ?? ""));
        this.#show(parameter.value);
    }

    // A third of a stop for times; a fiftieth of the range for what is logarithmic already.
    nudge(direction) {
        if (!this.#parameter) return;
        const value = Number(this.#field.value);
        const wanted = this.#parameter.unit === "us" ? value * 2 ** (direction / 3)
                                                     : value + direction * ((this.#high - this.#low) / 50);
        const rounded = this.#round(Math.min(this.#parameter.maximum ?? wanted, Math.max(this.#low, wanted)));
        this.#show(rounded);
        this.#change(rounded);
    }

    #change(value) {
        if (this.#parameter) this.#set(this.#parameter.name, value);
    }

    #show(value) {
        if (document.activeElement !== this.#field) this.#field.value = value ?? "";
        if (document.activeElement !== this.#slider) this.#slider.value = this.#toSlider(value ?? this.#low);
        this.#speak(value);
    }

    #speak(value) {
        const time = this.#parameter?.unit === "us";
        this.#slider.setAttribute("aria-valuetext", time ? duration(value) : `${value} ${this.#parameter?.unit ?? ""}`);
    }

    // A range that begins at 0 is moved by one, which has a logarithm.
    get #shift() {
        return this.#low > 0 ? 0 : 1 - this.#low;
    }

    #fromSlider(position) {
        const [low, high] = [this.#low + this.#shift, this.#high + this.#shift];
        return low * (high / low) ** (position / kSteps) - this.#shift;
    }

    #toSlider(value) {
        const [low, high] = [this.#low + this.#shift, this.#high + this.#shift];
        const inside = Math.min(high, Math.max(low, value + this.#shift));
        return (kSteps * Math.log(inside / low)) / Math.log(high / low);
    }

    // Two digits that count are enough for a hand on a slider.
    #round(value) {
        const step = this.#parameter?.step || 1;
        const rough = value >= 100 ? Number(value.toPrecision(2)) : value;
        return Math.max(this.#low, Math.round(rough / step) * step);
    }
}
