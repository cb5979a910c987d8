// A picture as it comes from the server: 72 bytes of header, then 16-bit samples. docs/viewer-protocol.md draws it.

const kMagic = 0x564c455a;

export function readPicture(buffer) {
    const header = new DataView(buffer);
    if (buffer.byteLength < 72 || header.getUint32(0, true) !== kMagic) throw new Error("this is no picture");
    const at = header.getUint16(4, true);
    const word = (offset) => header.getUint32(offset, true);
    const picture = {
        channels: header.getUint16(6, true),
        frame: word(8),
        bits: word(12),
        width: word(16),
        height: word(20),
        part: { x: word(24), y: word(28), width: word(32), height: word(36) },
        columns: word(40),
        rows: word(44),
        handedOver: header.getFloat64(48, true),
        view: word(56),
        exposure: word(60),
        made: header.getFloat64(64, true),
    };
    const samples = picture.columns * picture.rows * picture.channels;
    if (at % 2 || samples === 0 || buffer.byteLength < at + 2 * samples) throw new Error("a picture is incomplete");
    picture.samples = new Uint16Array(buffer, at, samples);
    return picture;
}

// The sample of a frame's pixel, where the picture holds the pixels themselves; else null.
export function sampleAt(picture, x, y) {
    const { part } = picture;
    if (picture.columns !== part.width || picture.rows !== part.height) return null;
    const [column, row] = [x - part.x, y - part.y];
    if (column < 0 || row < 0 || column >= part.width || row >= part.height) return null;
    const first = (row * picture.columns + column) * picture.channels;
    if (picture.channels === 1) return picture.samples[first];
    return Array.from(picture.samples.subarray(first, first + 3));
}
