// The few things that every module does with the document. Texts go in as text, never as markup.

export const byId = (id) => document.getElementById(id);

export function make(tag, attributes = {}, ...children) {
    const element = document.createElement(tag);
    for (const [name, value] of Object.entries(attributes)) {
        if (name === "text") element.textContent = value;
        else if (value === true) element.setAttribute(name, "");
        else if (value !== null && value !== undefined && value !== false) element.setAttribute(name, value);
    }
    element.append(...children);
    return element;
}

export function makeSvg(tag, attributes = {}) {
    const element = document.createElementNS("http://www.w3.org/2000/svg", tag);
    for (const [name, value] of Object.entries(attributes)) element.setAttribute(name, value);
    return element;
}

// Writes a text only where it differs, so that nothing is laid out anew and no screen reader speaks twice.
export function say(element, text) {
    if (element.textContent !== text) element.textContent = text;
}

// A list of facts, [name, text] each; rows stay the same elements.
export function sayFacts(list, facts) {
    while (list.childElementCount > facts.length) list.lastElementChild.remove();
    facts.forEach(([name, text], index) => {
        const row = list.children[index] ?? list.appendChild(make("div", {}, make("dt"), make("dd")));
        say(row.firstElementChild, name);
        say(row.lastElementChild, text);
    });
}

// A 2D canvas in device pixels, cleared, measured in CSS pixels; null while it isn't on the screen.
export function surface(canvas) {
    const box = canvas.getBoundingClientRect();
    if (box.width < 2 || box.height < 2) return null;
    const ratio = window.devicePixelRatio || 1;
    const [columns, rows] = [Math.round(box.width * ratio), Math.round(box.height * ratio)];
    if (canvas.width !== columns || canvas.height !== rows) {
        canvas.width = columns;
        canvas.height = rows;
    }
    const context = canvas.getContext("2d");
    context.setTransform(ratio, 0, 0, ratio, 0, 0);
    context.clearRect(0, 0, box.width, box.height);
    return { context, width: box.width, height: box.height };
}

// A color of the style sheet, for what is drawn on a canvas.
export const color = (name) => getComputedStyle(document.documentElement).getPropertyValue(name).trim();
