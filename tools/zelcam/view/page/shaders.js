// What makes colors of samples: window, gamma, color map and marks, for each device pixel.

export const kVertexShader = `#version 300 es
void main() {
    vec2 corner = vec2(float((gl_VertexID << 1) & 2), float(gl_VertexID & 2));
    gl_Position = vec4(corner * 2.0 - 1.0, 0.0, 1.0);
}`;

export const kFragmentShader = `#version 300 es
precision highp float;
precision highp int;
precision highp usampler2D;

uniform usampler2D u_samples;
uniform sampler2D u_map;
uniform float u_height;     // of the canvas
uniform vec2 u_origin;      // of the frame on the canvas
uniform float u_scale;
uniform vec4 u_part;        // of the frame: x, y, width, height
uniform ivec2 u_size;       // samples of the part
uniform vec2 u_window;      // the samples that become black and white
uniform float u_exponent;
uniform float u_saturated;  // largest sample there is
uniform bool u_color;
uniform bool u_marks;
uniform vec4 u_behind;       // beside the frame
out vec4 o_color;

void main() {
    vec2 device = vec2(gl_FragCoord.x, u_height - gl_FragCoord.y);
    vec2 place = ((device - u_origin) / u_scale - u_part.xy) / u_part.zw;
    if (place.x < 0.0 || place.y < 0.0 || place.x >= 1.0 || place.y >= 1.0) {
        o_color = u_behind;
        return;
    }
    ivec2 texel = min(ivec2(floor(place * vec2(u_size))), u_size - 1);
    vec3 samples = vec3(texelFetch(u_samples, texel, 0).rgb);
    if (!u_color) samples = samples.rrr;
    vec3 light = clamp((samples - u_window.x) / max(u_window.y - u_window.x, 1.0), 0.0, 1.0);
    if (u_exponent != 1.0) light = pow(light, vec3(u_exponent));
    vec3 shown = light;
    if (!u_color) shown = texelFetch(u_map, ivec2(int(light.r * 255.0 + 0.5), 0), 0).rgb;
    if (u_marks) {
        if (any(greaterThanEqual(samples, vec3(u_saturated)))) shown = vec3(1.0, 0.16, 0.20);
        else if (all(equal(samples, vec3(0.0)))) shown = vec3(0.16, 0.38, 1.0);
    }
    o_color = vec4(shown, 1.0);
}`;
