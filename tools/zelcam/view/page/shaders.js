// What makes colors of samples: window, gamma, color map and marks, for each device pixel of the part that is there.

export const kVertexShader = `#version 300 es
void main() {
    vec2 corner = vec2(float((gl_VertexID << 1) & 2), float(gl_VertexID & 2));
    gl_Position = vec4(corner * 2.0 - 1.0, 0.0, 1.0);
}`;

// One program for grey frames and one for color: a shader without a graphics card pays for both ways of an `if`.
export const fragmentShader = (channels) => `#version 300 es
#define CHANNELS ${channels}
precision highp float;
precision highp int;
precision highp usampler2D;

uniform usampler2D u_samples;
uniform sampler2D u_map;
uniform vec2 u_step;        // samples for each device pixel
uniform vec2 u_first;       // and where the first one lies
uniform ivec2 u_last;       // sample in the corner
uniform float u_black;      // the sample that becomes black
uniform float u_slope;      // light for each count above it
uniform float u_exponent;
uniform float u_saturated;  // largest sample there is
uniform bool u_marks;
out vec4 o_color;

const vec4 kSaturated = vec4(1.0, 0.16, 0.20, 1.0);
const vec4 kBlack = vec4(0.16, 0.38, 1.0, 1.0);

void main() {
    ivec2 place = clamp(ivec2(gl_FragCoord.xy * u_step + u_first), ivec2(0), u_last);
#if CHANNELS == 1
    float value = float(texelFetch(u_samples, place, 0).r);
    float light = pow(clamp((value - u_black) * u_slope, 0.0, 1.0), u_exponent);
    o_color = texelFetch(u_map, ivec2(int(light * 255.0 + 0.5), 0), 0);
    if (u_marks && value >= u_saturated) o_color = kSaturated;
    if (u_marks && value == 0.0) o_color = kBlack;
#else
    vec3 values = vec3(texelFetch(u_samples, place, 0).rgb);
    vec3 light = pow(clamp((values - u_black) * u_slope, 0.0, 1.0), vec3(u_exponent));
    o_color = vec4(light, 1.0);
    if (u_marks && any(greaterThanEqual(values, vec3(u_saturated)))) o_color = kSaturated;
    if (u_marks && all(equal(values, vec3(0.0)))) o_color = kBlack;
#endif
}`;
