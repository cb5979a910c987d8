// Every parameter of the camera, in groups, searchable; each with its range, unit and step.
import { byId, make, say } from "./dom.js";

const kGroups = [
    ["Trigger", /TRIG/],
    ["Exposure and time", /EXPOS|FRAME_(TIME|RATE|COUNT)|CURRENT_FRAME|READOUT|DROPPED|BUFFERS/],
    ["Gain, level and taps", /GAIN|BLACK|OFFSET|TAP/],
    ["Region and binning", /ORIGIN|XPIXELS|YPIXELS|BIN|SIZE|ROI/],
    ["Color", /COLOR|CCM|WHITE/],
    ["Cooling", /COOL|TEMPERATURE/],
    ["Other", /./],
];

export class Parameters {
    #settings;
    #rows = new Map();

    constructor(settings) {
        this.#settings = settings;
        byId("search").addEventListener("input", () => this.#filter());
        byId("read-only").addEventListener("change", () => this.#filter());
        settings.onOutcome((name, outcome) => {
            const row = this.#rows.get(name);
            if (!row) return;
            say(row.says, outcome.message);
            row.says.classList.toggle("refused", outcome.refused);
            this.#show(row, row.parameter);
        });
    }

    use(parameters) {
        // The same ones again keep their rows, and with them the focus and what was said.
        const same = parameters?.length === this.#rows.size &&
            parameters.every(({ name, writable }) => this.#rows.get(name)?.parameter.writable === writable);
        if (same) {
            parameters.forEach((parameter) => this.useOne(parameter));
            return;
        }
        this.#rows.clear();
        const list = byId("parameters");
        list.replaceChildren();
        const groups = new Map(kGroups.map(([name]) => [name, []]));
        for (const parameter of parameters ?? []) {
            groups.get(kGroups.find(([, pattern]) => pattern.test(parameter.name))[0]).push(this.#makeRow(parameter));
        }
        for (const [name, rows] of groups) {
            if (rows.length) list.append(make("section", {}, make("h2", { text: name }), ...rows.map((row) => row.element)));
        }
        this.#filter();
    }

    useOne(parameter) {
        const row = this.#rows.get(parameter.name);
        if (!row) return;
        row.parameter = parameter;
        this.#show(row, parameter);
        say(row.range, rangeOf(parameter));
    }

    #makeRow(parameter) {
        const id = `parameter-${parameter.name}`;
        const control = makeControl(parameter, id);
        const row = {
            parameter,
            control,
            range: make("span", { class: "range", text: rangeOf(parameter) }),
            says: make("p", { class: "says" }),
        };
        row.element = make("div", { class: "parameter" }, make("label", { for: id }, ...breakable(parameter.name)), control,
                           make("span", { class: "unit", text: parameter.unit ?? "" }),
                           make("p", { class: "hint", id: `${id}-hint` }, parameter.help ?? "", row.range), row.says);
        if (parameter.writable) {
            control.addEventListener("change", () => {
                const value = control.type === "checkbox" ? Number(control.checked) : control.value;
                if (value !== "") this.#settings.set(parameter.name, value);
            });
        }
        this.#rows.set(parameter.name, row);
        this.#show(row, parameter);
        return row;
    }

    #show({ control }, parameter) {
        if (control === document.activeElement && control.type !== "checkbox" && control.tagName === "INPUT") return;
        const text = String(parameter.value ?? parameter.text ?? "");
        if (control.tagName === "OUTPUT") say(control, parameter.text ?? text);
        else if (control.type === "checkbox") control.checked = Number(parameter.value) !== 0;
        else control.value = text;
    }

    #filter() {
        const words = byId("search").value.toLowerCase().split(/\s+/).filter(Boolean);
        const readOnly = byId("read-only").checked;
        let found = 0;
        for (const { element, parameter } of this.#rows.values()) {
            const text = `${parameter.name} ${parameter.help ?? ""}`.toLowerCase();
            const fits = (parameter.writable || readOnly) && words.every((word) => text.includes(word));
            element.hidden = !fits;
            found += fits ? 1 : 0;
        }
        for (const section of byId("parameters").children) section.hidden = !section.querySelector(".parameter:not([hidden])");
        say(byId("found"), this.#rows.size ? `${found} of ${this.#rows.size} parameters` : "No camera is open");
    }
}

function makeControl(parameter, id) {
    if (!parameter.writable) return make("output", { id });
    const described = { id, "aria-describedby": `${id}-hint` };
    if (parameter.kind === "switch") return make("input", { type: "checkbox", ...described });
    if (parameter.kind === "choice" && parameter.choices?.length) {
        return make("select", described, ...parameter.choices.map(({ value, text }) => make("option", { value, text })));
    }
    if (parameter.kind === "number") {
        return make("input", { type: "number", min: parameter.minimum, max: parameter.maximum, step: parameter.step ?? "any", ...described });
    }
    return make("input", { type: "text", ...described });
}

// A name may go on in the next line behind an underscore.
function breakable(name) {
    return name.split(/(?<=_)/).flatMap((piece, index) => (index ? [make("wbr"), piece] : [piece]));
}

function rangeOf({ minimum, maximum, step, default: usual }) {
    const parts = [];
    if (minimum !== null && minimum !== undefined && maximum !== null && maximum !== undefined) parts.push(`${minimum} to ${maximum}`);
    if (step && step !== 1) parts.push(`in steps of ${step}`);
    if (usual !== null && usual !== undefined && usual !== "") parts.push(`default ${usual}`);
    return parts.length ? ` · ${parts.join(", ")}` : "";
}
