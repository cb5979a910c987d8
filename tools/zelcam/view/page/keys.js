// Single keys, and the list of them.
import { byId, make } from "./dom.js";

// `rows`: keys, what they do, and an action for each key. Those without an action are the picture's own.
export function setUpKeys(rows) {
    const byKey = new Map();
    for (const [keys, what, ...actions] of rows) {
        actions.forEach((action, index) => byKey.set(keys[index], action));
        byId("key-list").append(make("div", {}, make("dt", {}, ...keys.map((key) => make("kbd", { text: key === " " ? "Space" : key }))),
                                     make("dd", { text: what })));
    }
    for (const element of document.querySelectorAll("[data-key]")) {
        const key = element.dataset.key;
        element.setAttribute("aria-keyshortcuts", key);
        const name = element.getAttribute("aria-label") ?? element.textContent.trim();
        if (element.tagName === "BUTTON") element.title = `${name} (${key})`;
    }
    document.addEventListener("keydown", (event) => {
        if (event.ctrlKey || event.altKey || event.metaKey || event.defaultPrevented || byId("keys").open) return;
        const action = byKey.get(event.key.length === 1 ? event.key.toLowerCase() : event.key);
        if (!action || !byId("keys-on").checked || belongsTo(event.target, event.key)) return;
        event.preventDefault();
        action();
    });
    byId("help").addEventListener("click", () => byId("keys").showModal());
}

// What a field or a button does with the key itself comes first.
function belongsTo(element, key) {
    if (element.matches("textarea, input:not([type=checkbox]):not([type=radio]):not([type=range])")) return key !== "Escape";
    if (element.matches("select")) return true;
    return key === " " && element.matches("button, input, summary");
}
