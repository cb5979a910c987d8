// How samples become light on the screen: window, gamma, color map, marks. Nothing of it goes to the server.
import { kMaps, mapColors } from "./colormaps.js";
import { byId, make, say } from "./dom.js";

export class Contrast {
    black = 0;
    white = 65535;
    gamma = 1;
    map = "grey";
    marks = true;
    follow = false;
    top = 65535;
    #messages;
    #statistics = null;
    #listeners = [];
    #untouched = true;

    constructor(messages) {
        this.#messages = messages;
        for (const name of ["black", "white"]) {
            byId(name).addEventListener("input", (event) => {
                this.#untouched = false;
                this.setWindow({ [name]: Number(event.target.value) });
            });
        }
        byId("gamma").addEventListener("input", (event) => this.setGamma(5 ** Number(event.target.value)));
        byId("gamma").addEventListener("dblclick", () => this.setGamma(1));
        byId("auto-contrast").addEventListener("click", () => this.auto());
        byId("full-range").addEventListener("click", () => this.fullRange());
        byId("marks").addEventListener("change", (event) => {
            this.marks = event.target.checked;
            this.#tell();
        });
        byId("follow").addEventListener("change", (event) => {
            this.follow = event.target.checked;
            if (this.follow) this.#apply();
        });
        this.#makeMaps();
        this.#tell();
    }

    onChange(listener) {
        this.#listeners.push(listener);
    }

    // Of another depth the same shares of the range are black and white.
    setBits(bits) {
        const top = 2 ** bits - 1;
        if (top === this.top) return;
        const factor = top / this.top;
        this.top = top;
        this.setWindow({ black: Math.round(this.black * factor), white: Math.round(this.white * factor) });
    }

    setWindow({ black = this.black, white = this.white }) {
        // The one that moves pushes the other, so that white stays above black.
        if (black !== this.black) white = Math.max(white, black + 1);
        this.white = Math.min(this.top, Math.max(1, white));
        this.black = Math.max(0, Math.min(black, this.white - 1));
        this.#tell();
    }

    setGamma(gamma) {
        this.gamma = Math.abs(gamma - 1) < 0.02 ? 1 : gamma;
        this.#tell();
    }

    setMap(name) {
        this.map = name;
        this.#tell();
    }

    nextMap() {
        const index = kMaps.findIndex((map) => map.name === this.map);
        this.setMap(kMaps[(index + 1) % kMaps.length].name);
        this.#messages.say(`Color map: ${kMaps[(index + 1) % kMaps.length].label}`, "info", "map");
    }

    fullRange() {
        this.#untouched = false;
        this.follow = byId("follow").checked = false;
        this.setWindow({ black: 0, white: this.top });
        this.#messages.say(`Contrast: the full range, 0 to ${this.top}`, "info", "contrast");
    }

    // A camera was opened: its first frame sets the window.
    renew() {
        this.#statistics = null;
        this.#untouched = true;
    }

    use(statistics) {
        this.#statistics = statistics;
        this.setBits(statistics.bits);
        if (this.#untouched) this.auto();
        else if (this.follow) this.#apply();
    }

    auto() {
        this.#untouched = false;
        if (!this.#statistics) {
            this.#messages.say("Auto-contrast needs a frame; start the camera first", "warning", "contrast");
            return;
        }
        this.#apply();
        this.#messages.say(`Auto-contrast: black ${this.black}, white ${this.white}; 0.1 % of the samples lie below, 0.1 % above`,
                           "info", "contrast");
    }

    #apply() {
        const { p0_1: low, p99_9: high } = this.#statistics?.percentiles ?? {};
        if (!Number.isFinite(low) || !Number.isFinite(high)) return;
        this.setWindow({ black: Math.floor(low), white: Math.max(Math.floor(low) + 1, Math.ceil(high)) });
    }

    #tell() {
        for (const name of ["black", "white"]) {
            const slider = byId(name);
            slider.max = this.top;
            slider.value = this[name];
            say(byId(`${name}-value`), String(this[name]));
        }
        byId("gamma").value = Math.log(this.gamma) / Math.log(5);
        say(byId("gamma-value"), this.gamma.toFixed(2));
        byId("gamma").setAttribute("aria-valuetext", this.gamma.toFixed(2));
        byId("marks").checked = this.marks;
        const chosen = byId("maps").querySelector(`input[value="${this.map}"]`);
        if (chosen) chosen.checked = true;
        this.#listeners.forEach((listener) => listener());
    }

    #makeMaps() {
        for (const map of kMaps) {
            const strip = make("canvas", { width: 256, height: 1, "aria-hidden": "true" });
            strip.getContext("2d").putImageData(new ImageData(new Uint8ClampedArray(mapColors(map.name)), 256, 1), 0, 0);
            const radio = make("input", { type: "radio", name: "map", value: map.name });
            radio.addEventListener("change", () => this.setMap(map.name));
            byId("maps").append(make("label", {}, radio, strip, make("span", { text: map.label })));
        }
    }
}
