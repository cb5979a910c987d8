// Tabs, the panel that becomes a drawer on a narrow page, light and dark.
import { byId } from "./dom.js";

const kNarrow = window.matchMedia("(max-width: 760px)");

export function setUpLayout(themeChanged) {
    setUpTabs();
    const panel = (open) => {
        document.body.classList.toggle("panel-closed", !open);
        byId("panel-switch").setAttribute("aria-expanded", String(open));
    };
    panel(!kNarrow.matches);
    kNarrow.addEventListener("change", () => panel(!kNarrow.matches));
    byId("panel-switch").addEventListener("click", () => panel(document.body.classList.contains("panel-closed")));

    const light = window.matchMedia("(prefers-color-scheme: light)");
    const theme = (name) => {
        document.documentElement.dataset.theme = name;
        byId("theme").setAttribute("aria-label", name === "light" ? "Change to dark" : "Change to light");
        themeChanged();
    };
    theme(light.matches ? "light" : "dark");
    light.addEventListener("change", () => theme(light.matches ? "light" : "dark"));
    byId("theme").addEventListener("click", () => theme(document.documentElement.dataset.theme === "light" ? "dark" : "light"));
}

// One tab is in the order of the Tab key; arrows go from one to the next.
function setUpTabs() {
    const tabs = [...document.querySelectorAll("[role=tab]")];
    const select = (chosen) => {
        for (const tab of tabs) {
            tab.setAttribute("aria-selected", String(tab === chosen));
            tab.tabIndex = tab === chosen ? 0 : -1;
            byId(tab.getAttribute("aria-controls")).hidden = tab !== chosen;
        }
    };
    tabs.forEach((tab, index) => {
        tab.addEventListener("click", () => select(tab));
        tab.addEventListener("keydown", (event) => {
            const to = { ArrowRight: index + 1, ArrowLeft: index - 1, Home: 0, End: tabs.length - 1 }[event.key];
            if (to === undefined) return;
            event.preventDefault();
            const next = tabs[(to + tabs.length) % tabs.length];
            select(next);
            next.focus();
        });
    });
}

// Shows the panel with one of its tabs.
export function openTab(name) {
    if (document.body.classList.contains("panel-closed")) byId("panel-switch").click();
    byId(`tab-${name}`).click();
}
