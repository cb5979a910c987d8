// Samples on the screen, by WebGL2: a texture of 16-bit whole numbers, so that nothing is rounded before the window is applied.
import { mapColors } from "./colormaps.js";
import { kFragmentShader, kVertexShader } from "./shaders.js";

const kUniforms = ["samples", "map", "height", "origin", "scale", "part", "size", "window", "exponent", "saturated", "color", "marks",
                   "behind"];

export class Picture {
    #canvas;
    #gl;
    #uniforms = {};
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
        gl.clearColor(...this.#behind, 1);
        gl.clear(gl.COLOR_BUFFER_BIT);
        if (!this.#last) return;
        const { part, columns, rows, channels, bits } = this.#last;
        this.#useMap(contrast.map);
        const u = this.#uniforms;
        const origin = view.origin;
        gl.uniform1f(u.height, view.height);
        gl.uniform2f(u.origin, origin.x, origin.y);
        gl.uniform1f(u.scale, view.scale);
        gl.uniform4f(u.part, part.x, part.y, part.width, part.height);
        gl.uniform2i(u.size, columns, rows);
        gl.uniform2f(u.window, contrast.black, contrast.white);
        gl.uniform1f(u.exponent, 1 / contrast.gamma);
        gl.uniform1f(u.saturated, 2 ** bits - 1);
        gl.uniform1i(u.color, channels === 3 ? 1 : 0);
        gl.uniform1i(u.marks, contrast.marks ? 1 : 0);
        gl.uniform4f(u.behind, ...this.#behind, 1);
        gl.drawArrays(gl.TRIANGLES, 0, 3);
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
        const program = gl.createProgram();
        for (const [kind, source] of [[gl.VERTEX_SHADER, kVertexShader], [gl.FRAGMENT_SHADER, kFragmentShader]]) {
            const shader = gl.createShader(kind);
            gl.shaderSource(shader, source);
            gl.compileShader(shader);
            gl.attachShader(program, shader);
        }
        gl.linkProgram(program);
        if (!gl.getProgramParameter(program, gl.LINK_STATUS) && !gl.isContextLost()) {
            throw new Error(`the shader does not compile: ${gl.getProgramInfoLog(program)}`);
        }
        gl.useProgram(program);
        for (const name of kUniforms) this.#uniforms[name] = gl.getUniformLocation(program, `u_${name}`);
        gl.pixelStorei(gl.UNPACK_ALIGNMENT, 2);
        this.#samples = this.#texture();
        this.#map = this.#texture();
        this.#mapName = "";
        this.#size = "";
        gl.uniform1i(this.#uniforms.samples, 0);
        gl.uniform1i(this.#uniforms.map, 1);
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
