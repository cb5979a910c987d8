// Readings below the picture and in the panel: place and value, rates, losses by cause, latency, temperature, statistics.
import { byId, say, sayFacts } from "./dom.js";
import { brief, count, duration, fixed, kUnknown, sample, share } from "./format.js";
import { sampleAt } from "./message.js";
import { drawProfile, TimePlot } from "./plots.js";

export class Instruments {
    #mean = new TimePlot("mean-plot", "mean-says");
    #focus = new TimePlot("focus-plot", "focus-says");
    #statistics = null;
    #latency = null;

    renew() {
        this.#statistics = null;
        this.#mean.clear();
        this.#focus.clear();
        for (const id of ["frame-facts", "region-facts", "range-facts", "count-facts"]) sayFacts(byId(id), []);
        this.useState(null);
    }

    // What is on the screen now.
    useDrawn(stage, picture) {
        if (picture) this.#latency = Date.now() - picture.handedOver;
        const { view, tools } = stage;
        const last = stage.picture.last;
        const zoom = view.scale >= 0.0995 ? `${Math.round(view.scale * 100)} %` : `${(view.scale * 100).toFixed(1)} %`;
        say(byId("zoom"), zoom);
        byId("zoom").setAttribute("aria-label", `One pixel for one pixel; now ${zoom}`);
        say(byId("read-size"), last ? `${last.width} × ${last.height}, ${last.bits} bits` : "");
        say(byId("read-position"), this.#position(tools, last));
        if (picture) document.documentElement.dataset.frame = picture.frame;
    }

    useStatistics(statistics) {
        this.#statistics = statistics;
        this.#mean.add(statistics.mean);
        this.#focus.add(statistics.focus);
        const { percentiles = {}, region, line } = statistics;
        const pixels = statistics.histogram?.reduce((sum, n) => sum + n, 0);
        sayFacts(byId("frame-facts"), [
            ["Mean", fixed(statistics.mean, 1)],
            ["σ", fixed(statistics.sigma, 1)],
            ["Smallest, largest", `${sample(statistics.minimum)}, ${sample(statistics.maximum)}`],
            ["Median", sample(percentiles.p50)],
            ["Focus", brief(statistics.focus)],
        ]);
        sayFacts(byId("range-facts"), [
            ["Saturated", `${count(statistics.saturated)} (${share(statistics.saturated, pixels)})`],
            ["Black", `${count(statistics.black)} (${share(statistics.black, pixels)})`],
            ["0.1 % and 99.9 %", `${sample(percentiles.p0_1)}, ${sample(percentiles.p99_9)}`],
        ]);
        byId("region-hint").hidden = Boolean(region);
        sayFacts(byId("region-facts"), region ? [
            ["Place", `${region.x}, ${region.y}, ${region.width} × ${region.height}`],
            ["Mean", fixed(region.mean, 1)],
            ["σ", fixed(region.sigma, 1)],
            ["SNR", brief(region.snr)],
            ["Smallest, largest", `${sample(region.minimum)}, ${sample(region.maximum)}`],
            ["Focus", brief(region.focus)],
        ] : []);
        byId("line-hint").hidden = Boolean(line);
        byId("profile").hidden = !line;
        if (line) drawProfile(byId("profile"), line.values);
    }

    useState(state) {
        const { frames = {}, rate = {}, latency_ms: latency = {} } = state ?? {};
        const lost = (frames.lost_link ?? 0) + (frames.lost_buffer ?? 0);
        say(byId("read-rate"), state ? `${fixed(rate.camera)} frames/s, ${fixed(rate.shown)} shown` : "");
        say(byId("read-lost"), state ? `${count(lost)} lost` : "");
        byId("read-lost").classList.toggle("bad", lost > 0);
        say(byId("read-latency"), state && this.#latency !== null ? `${fixed(this.#latency, 0)} ms latency` : "");
        say(byId("read-exposure"), state ? `${duration(state.exposure_us)} exposure` : "");
        say(byId("read-temperature"), state && state.temperature_c !== null ? fixed(state.temperature_c, 1, " °C") : "");
        if (!state) return;
        sayFacts(byId("count-facts"), [
            ["Delivered", count(frames.delivered)],
            ["Shown here", count(frames.shown)],
            ["Lost on the link", count(frames.lost_link)],
            ["Lost, no free buffer", count(frames.lost_buffer)],
            ["Passed over for newer ones", count(frames.passed_over)],
            ["Skipped, page busy", count(frames.skipped)],
            ["Camera", fixed(rate.camera, 1, " frames/s")],
            ["Shown", fixed(rate.shown, 1, " frames/s")],
            ["Latency to hand-over", latency.hand_over == null ? kUnknown : fixed(latency.hand_over, 1, " ms")],
            ["Latency to this screen", latency.shown == null ? kUnknown : fixed(latency.shown, 1, " ms")],
            ["Frame time", duration(state.frame_time_us)],
            ["Pages that look", count(state.clients)],
        ]);
        const part = state.exposure_us / state.frame_time_us;
        byId("share").value = Number.isFinite(part) ? Math.min(1, part) : 0;
        say(byId("share-says"), `Exposure, ${share(state.exposure_us, state.frame_time_us)} of the frame time`);
    }

    // For a screen reader that comes to the picture.
    describe(stage, state) {
        const last = stage.picture.last;
        say(byId("picture-description"), last ?
            `${last.width} by ${last.height} pixels of ${last.bits} bits, ${state?.running ? "live" : "stopped"}, mean ` +
            `${fixed(this.#statistics?.mean, 0)}. Arrow keys move the picture or the cursor, question mark lists the keys.` :
            "There is no picture yet.");
    }

    // The pixels themselves where they are here, at once; else what the server measured.
    #position(tools, last) {
        const at = tools.pointer;
        if (!at || !last) return "";
        const { draft } = tools;
        if (draft) return `${draft.from.x}, ${draft.from.y} → ${at.x}, ${at.y}: ${Math.abs(at.x - draft.from.x) + 1} × ${Math.abs(at.y - draft.from.y) + 1}`;
        const measured = this.#statistics?.pointer;
        const value = sampleAt(last, at.x, at.y) ?? (measured?.x === at.x && measured?.y === at.y ? measured.value : null);
        return `x ${at.x}  y ${at.y}  ${value === null ? "" : sample(value)}`;
    }
}
