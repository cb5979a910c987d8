// Color maps, computed: paths through CIE LCh, whose lightness grows evenly, so that equal steps of light look equal.

const kWhite = [0.9505, 1, 1.089];

function fromLch(lightness, chroma, hue) {
    const angle = (hue * Math.PI) / 180;
    const fy = (lightness + 16) / 116;
    const f = [fy + (chroma * Math.cos(angle)) / 500, fy, fy - (chroma * Math.sin(angle)) / 200];
    const [x, y, z] = f.map((t, index) => kWhite[index] * (t > 6 / 29 ? t ** 3 : 3 * (6 / 29) ** 2 * (t - 4 / 29)));
    return [
        3.2406 * x - 1.5372 * y - 0.4986 * z,
        -0.9689 * x + 1.8758 * y + 0.0415 * z,
        0.0557 * x - 0.204 * y + 1.057 * z,
    ].map((linear) => {
        const light = Math.min(1, Math.max(0, linear));
        return light <= 0.0031308 ? 12.92 * light : 1.055 * light ** (1 / 2.4) - 0.055;
    });
}

const between = (from, to, t) => from + (to - from) * t;

export const kMaps = [
    { name: "grey", label: "Grey", at: (t) => [t, t, t] },
    { name: "inverted", label: "Inverted", at: (t) => [1 - t, 1 - t, 1 - t] },
    { name: "viridis", label: "Violet to yellow", at: (t) => fromLch(between(14, 91, t), between(48, 78, t * t), between(312, 105, t)) },
    { name: "fire", label: "Fire", at: (t) => fromLch(100 * t, 92 * Math.sin(Math.PI * t ** 0.9), between(-50, 100, t)) },
    { name: "ice", label: "Ice", at: (t) => fromLch(100 * t, 55 * Math.sin(Math.PI * t), between(290, 200, t)) },
    { name: "green", label: "Green", at: (t) => [0, t, 0] },
    { name: "magenta", label: "Magenta", at: (t) => [t, 0, t] },
    { name: "red", label: "Red", at: (t) => [t, 0, 0] },
];

// 256 colors, four bytes each.
export function mapColors(name) {
    const map = kMaps.find((candidate) => candidate.name === name) ?? kMaps[0];
    const colors = new Uint8Array(1024);
    for (let index = 0; index < 256; ++index) {
        colors.set([...map.at(index / 255).map((value) => Math.round(value * 255)), 255], index * 4);
    }
    return colors;
}
