// Samples on the screen, by WebGL2: a texture of 16-bit whole numbers, so that nothing is rounded before the window is applied.
import { mapColors } from "./colormaps.js";
import { fragmentShader, kVertexShader } from "./shaders.js";

const kUniforms = ["samples", "map", "step", "first", "last", "black", "slope", "exponent", "saturated", "marks"];

export class Picture {
    #canvas;
    #gl;
    #programs = {};
    #samples = null;
    #map = null;
    #mapName = "";
    #size = "";
    #last = null;
    #behind = [0, 0, 0];

    // `restored` is called when the graphics came back and the picture must be drawn again.
    constructor(canvas, restored) {
        this.#canvas = canvas;
        this.#gl = canvas.getContext("webgl2", { antialias: false, depth: false, alpha: false });
        if (!this.#gl) throw new Error("this browser has no WebGL2, which the picture is drawn with");
        canvas.addEventListener("webglcontextlost", (event) => event.preventDefault());
        canvas.addEventListener("webglcontextrestored", () => {
            this.#prepare();
            if (this.#last) this.upload(this.#last);
            restored();
        });
        this.#prepare();
    }

    get last() {
        return this.#last;
    }

    forget() {
        this.#last = null;
    }

    // The color beside the frame, "#rrggbb". The canvas is opaque: nothing behind it is drawn for nothing.
    setBehind(color) {
        this.#behind = [1, 3, 5].map((at) => parseInt(color.slice(at, at + 2), 16) / 255);
    }

    upload(picture) {
        const gl = this.#gl;
        this.#last = picture;
        gl.activeTexture(gl.TEXTURE0);
        gl.bindTexture(gl.TEXTURE_2D, this.#samples);
        const grey = picture.channels === 1;
        const size = `${picture.columns} ${picture.rows} ${picture.channels}`;
        const format = grey ? gl.RED_INTEGER : gl.RGB_INTEGER;
        if (size === this.#size) {
            gl.texSubImage2D(gl.TEXTURE_2D, 0, 0, 0, picture.columns, picture.rows, format, gl.UNSIGNED_SHORT, picture.samples);
        } else {
            gl.texImage2D(gl.TEXTURE_2D, 0, grey ? gl.R16UI : gl.RGB16UI, picture.columns, picture.rows, 0, format,
                          gl.UNSIGNED_SHORT, picture.samples);
            this.#size = size;
        }
    }

    // `contrast`: black, white, gamma, map, marks.
    draw(view, contrast) {
        const gl = this.#gl;
        if (this.#canvas.width !== view.width || this.#canvas.height !== view.height) {
            this.#canvas.width = view.width;
            this.#canvas.height = view.height;
        }
        gl.viewport(0, 0, view.width, view.height);
        gl.disable(gl.SCISSOR_TEST);
        gl.clearColor(...this.#behind, 1);
        gl.clear(gl.COLOR_BUFFER_BIT);
        if (!this.#last) return;
        const { program, uniforms: u } = this.#programs[this.#last.channels];
        gl.useProgram(program);
        this.#place(view, u);
        this.#useMap(contrast.map);
        gl.uniform1f(u.black, contrast.black);
        gl.uniform1f(u.slope, 1 / Math.max(1, contrast.white - contrast.black));
        gl.uniform1f(u.exponent, 1 / contrast.gamma);
        gl.uniform1f(u.saturated, 2 ** this.#last.bits - 1);
        gl.uniform1i(u.marks, contrast.marks ? 1 : 0);
        gl.drawArrays(gl.TRIANGLES, 0, 3);
    }

    // Where the part lies on the canvas, whose rows WebGL counts from below: nothing is drawn outside, and each device
    // pixel takes the sample in which its middle lies.
    #place(view, u) {
        const gl = this.#gl;
        const { part, columns, rows } = this.#last;
        const from = view.toScreen(part.x, part.y);
        const to = view.toScreen(part.x + part.width, part.y + part.height);
        const [left, top, right, bottom] = [from.x, from.y, to.x, to.y].map((edge) => Math.ceil(edge - 0.5));
        gl.enable(gl.SCISSOR_TEST);
        gl.scissor(left, view.height - bottom, Math.max(0, right - left), Math.max(0, bottom - top));
        const [across, down] = [columns / (to.x - from.x), rows / (to.y - from.y)];
        gl.uniform2f(u.step, across, -down);
        gl.uniform2f(u.first, -from.x * across, (view.height - from.y) * down);
        gl.uniform2i(u.last, columns - 1, rows - 1);
    }

    // What is drawn, as bytes of red, green, blue and opacity, top row first. Right after draw() alone: the browser
    // takes the canvas away when it has shown it.
    read() {
        const { width, height } = this.#canvas;
        const bottomUp = new Uint8Array(width * height * 4);
        this.#gl.readPixels(0, 0, width, height, this.#gl.RGBA, this.#gl.UNSIGNED_BYTE, bottomUp);
        const pixels = new Uint8ClampedArray(bottomUp.length);
        for (let row = 0; row < height; ++row) {
            pixels.set(bottomUp.subarray((height - 1 - row) * width * 4, (height - row) * width * 4), row * width * 4);
        }
        return new ImageData(pixels, width, height);
    }

    #prepare() {
        const gl = this.#gl;
        this.#programs = { 1: this.#program(1), 3: this.#program(3) };
        gl.pixelStorei(gl.UNPACK_ALIGNMENT, 2);
        this.#samples = this.#texture();
        this.#map = this.#texture();
        this.#mapName = "";
        this.#size = "";
    }

    #program(channels) {
        const gl = this.#gl;
        const program = gl.createProgram();
        for (const [kind, source] of [[gl.VERTEX_SHADER, kVertexShader], [gl.FRAGMENT_SHADER, fragmentShader(channels)]]) {
            const shader = gl.createShader(kind);
            gl.shaderSource(shader, source);
            gl.compileShader(shader);
            gl.attachShader(program, shader);
        }
        gl.linkProgram(program);
        if (!gl.getProgramParameter(program, gl.LINK_STATUS) && !gl.isContextLost()) {
            throw new Error(`the shader does not compile: ${gl.getProgramInfoLog(program)}`);
        }
        const uniforms = Object.fromEntries(kUniforms.map((name) => [name, gl.getUniformLocation(program, `u_${name}`)]));
        gl.useProgram(program);
        gl.uniform1i(uniforms.samples, 0);
        gl.uniform1i(uniforms.map, 1);
        return { program, uniforms };
    }

    #texture() {
        const gl = this.#gl;
        const texture = gl.createTexture();
        gl.bindTexture(gl.TEXTURE_2D, texture);
        for (const filter of [gl.TEXTURE_MIN_FILTER, gl.TEXTURE_MAG_FILTER]) gl.texParameteri(gl.TEXTURE_2D, filter, gl.NEAREST);
        for (const wrap of [gl.TEXTURE_WRAP_S, gl.TEXTURE_WRAP_T]) gl.texParameteri(gl.TEXTURE_2D, wrap, gl.CLAMP_TO_EDGE);
        return texture;
    }

    #useMap(name) {
        if (name === this.#mapName) return;
        const gl = this.#gl;
        gl.activeTexture(gl.TEXTURE1);
        gl.bindTexture(gl.TEXTURE_2D, this.#map);
        gl.texImage2D(gl.TEXTURE_2D, 0, gl.RGBA8, 256, 1, 0, gl.RGBA, gl.UNSIGNED_BYTE, mapColors(name));
        this.#mapName = name;
    }
}
