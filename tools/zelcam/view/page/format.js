// Numbers as the user reads them. What is not known is a dash.

export const kUnknown = "–";
const known = (value) => value !== null && value !== undefined && Number.isFinite(value);

export function fixed(value, digits = 1, unit = "") {
    return known(value) ? value.toFixed(digits) + unit : kUnknown;
}

export function count(value) {
    return known(value) ? Math.round(value).toLocaleString("en-US").replaceAll(",", "\u202f") : kUnknown;  // narrow spaces
}

// Three digits that count.
export function brief(value) {
    if (!known(value)) return kUnknown;
    if (value === 0) return "0";
    const size = Math.abs(value);
    if (size >= 1000) return count(value);
    if (size < 0.001) return value.toExponential(2);
    return String(Number(value.toPrecision(3)));
}

export function duration(microseconds) {
    if (!known(microseconds)) return kUnknown;
    if (microseconds < 1000) return `${brief(microseconds)} µs`;
    if (microseconds < 1e6) return `${brief(microseconds / 1e3)} ms`;
    return `${brief(microseconds / 1e6)} s`;
}

export function bytes(value) {
    if (!known(value)) return kUnknown;
    const units = ["B", "kB", "MB", "GB", "TB"];
    const step = value < 1 ? 0 : Math.min(units.length - 1, Math.floor(Math.log10(value) / 3));
    return `${brief(value / 1000 ** step)} ${units[step]}`;
}

export function share(part, whole) {
    if (!known(part) || !known(whole) || whole <= 0) return kUnknown;
    const percent = (part / whole) * 100;
    return `${percent === 0 || percent >= 0.1 ? percent.toFixed(1) : "< 0.1"} %`;
}

// One sample, or red, green and blue.
export function sample(value) {
    if (Array.isArray(value)) return value.map(sample).join(" ");
    return known(value) ? String(Math.round(value)) : kUnknown;
}
