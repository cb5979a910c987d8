// Files: snapshots and recordings.
import { byId, say } from "./dom.js";
import { bytes, count, fixed } from "./format.js";

export class Recording {
    #controls;
    #on = false;

    constructor(controls) {
        this.#controls = controls;
        byId("snapshot").addEventListener("click", () => this.snapshot());
        byId("record").addEventListener("click", () => this.toggle());
    }

    snapshot() {
        return this.#controls.ask("snapshot", { format: byId("snapshot-format").value });
    }

    toggle() {
        const number = (id) => Math.max(0, Number(byId(id).value) || 0);
        return this.#controls.ask("record", this.#on ? { on: false } : {
            on: true,
            frames: Math.round(number("record-frames")),
            seconds: number("record-seconds"),
            compress: byId("record-compress").value,
        });
    }

    useState(recording) {
        this.#on = Boolean(recording);
        byId("record").setAttribute("aria-pressed", String(this.#on));
        say(byId("record").querySelector("span"), this.#on ? `${fixed(recording.seconds, 0)} s` : "Record");
        byId("record").setAttribute("aria-label", this.#on ? "Stop recording" : "Record");
        byId("recording").hidden = !this.#on;
        if (!this.#on) return;
        say(byId("recording"), `${recording.file}: ${count(recording.frames)} frames, ${bytes(recording.bytes)}, ` +
            `${fixed(recording.seconds, 1)} s, ${count(recording.lost)} lost`);
        byId("recording").classList.toggle("bad", recording.lost > 0);
    }
}
