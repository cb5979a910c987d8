// The controls of the camera: light, trigger, region, binning, averaging, correction, color.
import { byId, make } from "./dom.js";
import { duration, share } from "./format.js";
import { Quantity } from "./quantity.js";

// The first one that the camera has.
const kExposure = ["EXPOSURE_TIME_US", "EXPOSURE_TIME"];
const kGain = ["GAIN", "VGA_GAIN"];

export class Controls {
    #connection;
    #messages;
    #camera = null;

    constructor(connection, messages, settings) {
        this.#connection = connection;
        this.#messages = messages;
        const set = (name, value) => settings.set(name, value);
        this.exposure = new Quantity("exposure", set);
        this.gain = new Quantity("gain", set);
        settings.onOutcome((name, outcome) => {
            if (name === this.gain.name) byId("gain-says").textContent = outcome.refused ? "not taken" : "";
        });
        this.#listen();
    }

    // The camera's description came, or null: none is open.
    use(camera) {
        this.#camera = camera;
        const known = (name) => camera?.parameters?.find((one) => one.name === name);
        const find = (names) => names.map(known).find(Boolean) ?? null;
        this.exposure.use(find(kExposure));
        this.gain.use(find(kGain));
        if (!camera) return;
        const mode = document.querySelector(`input[name="trigger-mode"][value="${camera.trigger_mode}"]`);
        if (mode) mode.checked = true;
        const form = byId("region");
        for (const [name, value] of Object.entries(camera.region ?? {})) {
            const field = form.elements.namedItem(name);
            if (!field) continue;
            field.value = value;
            field.max = name === "x" || name === "width" ? camera.sensor?.width : camera.sensor?.height;
        }
        const { x = 1, y = 1 } = camera.binning ?? {};
        choose(byId("binning"), x === y ? String(x) : `${x},${y}`, `${x} × ${y}`);
        const frames = camera.averaging?.frames ?? camera.averaging ?? 0;
        choose(byId("averaging"), String(frames), `${frames} frames`);
        byId("calibration-field").hidden = !camera.calibration?.available;
        byId("calibration").checked = Boolean(camera.calibration?.on);
        byId("color-section").hidden = camera.monochrome !== false;
        byId("color").checked = Boolean(camera.color?.on);
        byId("color-space").replaceChildren(...(camera.color?.spaces ?? []).map((text) => make("option", { text, value: text })));
        if (camera.color?.space) choose(byId("color-space"), camera.color.space, camera.color.space);
        byId("color-space").disabled = !camera.color?.on;
    }

    useParameter(parameter) {
        for (const quantity of [this.exposure, this.gain]) {
            if (parameter.name === quantity.name) quantity.use(parameter);
        }
    }

    useState(state) {
        byId("exposure-says").textContent = state.exposure_us === null ? "" :
            `${duration(state.exposure_us)} · ${share(state.exposure_us, state.frame_time_us)} of the frame`;
    }

    // A region drawn on the picture becomes one of the sensor, on top of the one that is in force.
    crop(drawn) {
        const { region, binning } = this.#camera ?? {};
        if (!region) return;
        const [bx, by] = [binning?.x ?? 1, binning?.y ?? 1];
        this.ask("region", {
            x: region.x + drawn.x * bx, y: region.y + drawn.y * by, width: drawn.width * bx, height: drawn.height * by,
        });
    }

    // Asks, says how it ended, and shows again what is in force when it was refused.
    async ask(type, members = {}) {
        try {
            const answer = await this.#connection.request(type, members);
            if (answer.message) this.#messages.say(answer.message, "info", type);
            return answer.result ?? {};
        } catch (error) {
            this.#messages.fail(error, type);
            this.use(this.#camera);
            return null;
        }
    }

    #listen() {
        document.querySelectorAll('input[name="trigger-mode"]').forEach((radio) =>
            radio.addEventListener("change", () => this.ask("trigger_mode", { mode: radio.value })));
        byId("region").addEventListener("submit", (event) => {
            event.preventDefault();
            const fields = new FormData(event.target);
            this.ask("region", Object.fromEntries(["x", "y", "width", "height"].map((name) => [name, Number(fields.get(name))])));
        });
        byId("region-full").addEventListener("click", () => this.ask("region", { full: true }));
        byId("binning").addEventListener("change", (event) => {
            const [x, y = x] = event.target.value.split(",").map(Number);
            this.ask("binning", { x, y });
        });
        byId("averaging").addEventListener("change", (event) => this.ask("averaging", { frames: Number(event.target.value) }));
        byId("calibration").addEventListener("change", (event) => this.ask("calibration", { on: event.target.checked }));
        const color = () => this.ask("color", { on: byId("color").checked, space: byId("color-space").value });
        byId("color").addEventListener("change", color);
        byId("color-space").addEventListener("change", color);
    }
}

// Chooses a value; one that isn't in the list is added.
function choose(select, value, label) {
    if (![...select.options].some((option) => option.value === value)) select.append(make("option", { value, text: label }));
    if (document.activeElement !== select || select.value !== value) select.value = value;
}
