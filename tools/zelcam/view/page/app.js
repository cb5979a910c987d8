// Puts the page together: what the server says goes to those whom it concerns.
import { Connection } from "./connection.js";
import { Contrast } from "./contrast.js";
import { Controls } from "./controls.js";
import { byId, color, make, say } from "./dom.js";
import { Histogram } from "./histogram.js";
import { Instruments } from "./instruments.js";
import { setUpKeys } from "./keys.js";
import { openTab, setUpLayout } from "./layout.js";
import { Messages } from "./messages.js";
import { Parameters } from "./parameters.js";
import { Recording } from "./recording.js";
import { Settings } from "./settings.js";
import { Stage } from "./stage.js";

const messages = new Messages();
const connection = new Connection();
const settings = new Settings(connection, messages);
const contrast = new Contrast(messages);
const histogram = new Histogram(contrast);
const instruments = new Instruments();
const controls = new Controls(connection, messages, settings);
const parameters = new Parameters(settings);
const recording = new Recording(controls);
export const stage = new Stage(connection, contrast, {
    crop: (region) => controls.crop(region),
    drawn: (picture) => instruments.useDrawn(stage, picture),
});

let camera = null;
let cameras = [];
let state = null;

function showCameras() {
    const choice = byId("camera");
    choice.replaceChildren(...cameras.map((one) => make("option", {
        value: one.serial,
        text: one.present ? `${one.name} (${one.serial})` : `${one.name} (unplugged)`,
    })));
    if (!camera) choice.prepend(make("option", { value: "", text: cameras.length ? "choose a camera" : "no camera" }));
    choice.value = camera?.serial ?? "";
}

// What is the matter when there is no live picture.
function showState() {
    const connected = connection.open;
    const text = !connected ? "no connection"
        : !camera ? "no camera"
        : state?.link === "lost" ? "unplugged"
        : !state ? "connecting"
        : !state.running ? "stopped"
        : camera.trigger_mode !== "free" ? "waiting for triggers"
        : "live";
    say(byId("run-state"), text);
    byId("run-state").dataset.state = text;
    byId("stage").classList.toggle("stale", !connected || state?.link === "lost");
    const running = Boolean(state?.running);
    say(byId("run").querySelector("span"), running ? "Stop" : "Start");
    byId("run-icon").setAttribute("d", running ? "M3.5 3.5h9v9h-9z" : "M4 2.5v11l9-5.5z");
    for (const id of ["run", "snapshot", "record"]) byId(id).disabled = !connected || !camera;
    byId("trigger").disabled = !connected || !camera || camera.trigger_mode !== "software";
    const empty = stage.picture.last || !connected ? ""
        : !camera ? "No camera is open. Choose one above; one that is plugged in appears there."
        : running ? "No frame yet" : "Stopped. Start with the space bar.";
    byId("empty").hidden = empty === "";
    say(byId("empty"), empty);
}

function run() {
    return controls.ask(state?.running ? "stop" : "start");
}

function useCamera(message) {
    const other = message.serial !== (camera?.serial ?? null);
    camera = message.serial === null ? null : message;
    stage.camera = camera;
    if (camera?.region) {
        const { x = 1, y = 1 } = camera.binning ?? {};
        stage.expect(Math.floor(camera.region.width / x), Math.floor(camera.region.height / y));
    }
    document.title = camera ? `${camera.name} – zelcam view` : "zelcam view";
    if (other) {
        stage.forget();
        contrast.renew();
        instruments.renew();
        document.documentElement.removeAttribute("data-frame");
    }
    controls.use(camera);
    parameters.use(camera?.parameters);
    showCameras();
    showState();
    stage.redraw();
}

connection.on("opened", () => {
    document.documentElement.dataset.connection = "open";
    byId("lost").hidden = true;
    stage.renew();
});
connection.on("closed", (seconds) => {
    document.documentElement.dataset.connection = "lost";
    state = null;
    byId("lost").hidden = false;
    say(byId("lost"), `The connection to zelcam is lost. Trying again every ${Math.ceil(seconds)} s. If it was started anew, ` +
        "open the address that it printed.");
    showState();
});
connection.on("hello", (message) => {
    say(byId("folder"), message.folder ? `Files go to ${message.folder}` : "");
    document.documentElement.dataset.client = message.client;
});
connection.on("cameras", (message) => {
    cameras = message.cameras;
    showCameras();
});
connection.on("camera", useCamera);
connection.on("parameter", (parameter) => {
    const index = camera?.parameters?.findIndex((one) => one.name === parameter.name) ?? -1;
    if (index >= 0) camera.parameters[index] = parameter;
    controls.useParameter(parameter);
    parameters.useOne(parameter);
});
connection.on("state", (message) => {
    state = message;
    controls.useState(state);
    recording.useState(state.recording);
    instruments.useState(state);
    instruments.describe(stage, state);
    showState();
});
connection.on("statistics", (statistics) => {
    contrast.use(statistics);
    histogram.use(statistics);
    instruments.useStatistics(statistics);
});
connection.on("picture", (picture) => {
    contrast.setBits(picture.bits);
    byId("maps-hint").hidden = picture.channels !== 3;
    byId("empty").hidden = true;
    stage.show(picture);
});
connection.on("event", (message) => messages.say(message.message, message.level, null, message.at));

byId("camera").addEventListener("change", (event) => {
    if (event.target.value) controls.ask("open", { camera: event.target.value });
});
byId("run").addEventListener("click", run);
byId("trigger").addEventListener("click", () => controls.ask("trigger"));
byId("auto-exposure").addEventListener("click", () => controls.ask("auto_exposure", { region: stage.tools.region }));

function chooseTool(tool) {
    stage.tools.choose(tool);
    byId("picture").dataset.tool = tool;
    document.querySelectorAll("[data-tool][aria-pressed]").forEach((button) =>
        button.setAttribute("aria-pressed", String(button.dataset.tool === tool)));
    if (tool === "line" || tool === "region") openTab("measure");
}
document.querySelectorAll("button[data-tool]").forEach((button) =>
    button.addEventListener("click", () => chooseTool(button.dataset.tool)));
byId("clear-tools").addEventListener("click", () => stage.tools.clear());
byId("quit").addEventListener("click", () => {
    byId("keys").close();
    controls.ask("quit");
});
byId("zoom").addEventListener("click", () => stage.toggleActual());
byId("zoom-in").addEventListener("click", () => stage.zoomStep(1));
byId("zoom-out").addEventListener("click", () => stage.zoomStep(-1));
byId("fit").addEventListener("click", () => stage.fit());
byId("overlays").addEventListener("click", (event) => {
    stage.overlay.shown = !stage.overlay.shown;
    event.currentTarget.setAttribute("aria-pressed", String(stage.overlay.shown));
    stage.redraw();
});
byId("save-view").addEventListener("click", () => {
    if (!stage.picture.last) return;
    const pixels = stage.read();
    const canvas = make("canvas", { width: pixels.width, height: pixels.height });
    canvas.getContext("2d").putImageData(pixels, 0, 0);
    canvas.toBlob((blob) => {
        const link = make("a", { href: URL.createObjectURL(blob), download: `${camera?.serial ?? "view"}_frame${stage.picture.last.frame}.png` });
        link.click();
        setTimeout(() => URL.revokeObjectURL(link.href), 10000);  // once the browser has read it
        messages.say(`${link.download} is saved, ${pixels.width} × ${pixels.height}`);
    });
});

const press = (id) => () => byId(id).click();
setUpKeys([
    [[" "], "start or stop", () => byId("run").disabled || run()],
    [["t"], "trigger", press("trigger")],
    [["s"], "snapshot", press("snapshot")],
    [["r"], "begin or end a recording", press("record")],
    [["e"], "auto-exposure", press("auto-exposure")],
    [["[", "]"], "shorter or longer exposure, by a third of a stop", () => controls.exposure.nudge(-1), () => controls.exposure.nudge(1)],
    [["{", "}"], "lower or higher gain", () => controls.gain.nudge(-1), () => controls.gain.nudge(1)],
    [["a"], "auto-contrast", press("auto-contrast")],
    [["0"], "full range", press("full-range")],
    [["m"], "next color map", () => contrast.nextMap()],
    [["x"], "marks of saturated and black pixels", press("marks")],
    [["h"], "histogram linear or logarithmic", press("histogram-log")],
    [["f"], "fit the whole frame", press("fit")],
    [["1"], "one pixel for one pixel, and back", press("zoom")],
    [["+", "-"], "larger, smaller", () => stage.zoomStep(1), () => stage.zoomStep(-1)],
    [["o"], "taps and regions over the picture", press("overlays")],
    [["v"], "tool: move the picture", () => focusTool("move")],
    [["p"], "tool: pin a point", () => focusTool("point")],
    [["l"], "tool: line profile", () => focusTool("line")],
    [["g"], "tool: measure a region", () => focusTool("region")],
    [["c"], "tool: draw the camera's region", () => focusTool("crop")],
    [["w"], "whole sensor", press("region-full")],
    [["Arrows"], "on the picture: move it, or the tool's cursor; faster with Shift"],
    [["Enter"], "on the picture: set the tool's first and second corner"],
    [["Escape"], "on the picture: give up"],
    [["/"], "search the parameters", () => { openTab("parameters"); byId("search").focus(); }],
    [["b"], "panel", press("panel-switch")],
    [["d"], "light or dark", press("theme")],
    [["?"], "this list", press("help")],
]);
function focusTool(tool) {
    chooseTool(tool);
    byId("picture").focus();
}

setUpLayout(() => {
    histogram.draw();
    stage.picture.setBehind(color("--behind"));
    stage.redraw();
});
showState();
connection.connect();
