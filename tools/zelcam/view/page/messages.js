// What happened, in sentences: for a moment over the picture (a polite live region), and in a list.
import { byId, make } from "./dom.js";

const kStay = { info: 6000, warning: 10000, error: 14000 };
const kMost = 3;
const kListed = 200;

export class Messages {
    #region = byId("messages");
    #log = byId("log");
    #latest = new Map();

    // A message with the key of one that is still seen takes its place.
    say(text, level = "info", key = null, at = Date.now()) {
        this.#list(text, level, at);
        const before = key && this.#latest.get(key);
        if (before?.element.isConnected) {
            before.element.textContent = text;
            before.element.className = `message ${level}`;
            this.#expire(before, level);
            return;
        }
        const shown = { element: make("p", { class: `message ${level}`, text }), timer: 0 };
        this.#region.append(shown.element);
        while (this.#region.childElementCount > kMost) this.#region.firstElementChild.remove();
        if (key) this.#latest.set(key, shown);
        this.#expire(shown, level);
        shown.element.addEventListener("click", () => shown.element.remove());
    }

    // For the end of a request.
    fail(error, key = null) {
        this.say(error.message, "error", key);
    }

    #expire(shown, level) {
        clearTimeout(shown.timer);
        shown.timer = setTimeout(() => shown.element.remove(), kStay[level] ?? kStay.info);
    }

    #list(text, level, at) {
        const time = new Date(at).toLocaleTimeString("en-GB");
        this.#log.prepend(make("li", { class: level }, make("time", { text: time }), make("span", { text })));
        while (this.#log.childElementCount > kListed) this.#log.lastElementChild.remove();
    }
}
