// What the graphics processor does. Places are in points (x east, y north), heights in points as
// well, so that the land rises in its true proportion.

const HEIGHT_OF_ELEVATION = `
uniform float rise, sea;
float heightOf(float elevation) {
    return max(elevation, sea) * rise;
}`;

/** A point of a square of the land; see tree.js. Water is level with the sea. */
export const LAND_VERTEX = `
uniform sampler2D heights;
uniform vec2 range;       // the least elevation, and how far the greatest is from it
uniform vec3 square;      // south-west corner, width of a cell
uniform vec2 morph;       // distances between which points move to those of the coarser square
varying vec2 place;
varying float elevation;
varying vec3 seen; // from the eye
${HEIGHT_OF_ELEVATION}
const float LAST = 2040.0;

float elevationAt(vec2 point) {
    vec4 bytes = texture2D(heights, (point + 0.5) / (LAST + 1.0));
    return range.x + range.y * (bytes.r * 256.0 + bytes.a) / 257.0;
}

void main() {
    vec2 fine = min(square.xy + position.xy * square.z, LAST);
    vec2 coarse = min(square.xy + (position.xy - mod(position.xy, 2.0)) * square.z, LAST);
    float own = elevationAt(fine);
    float share = clamp((distance(vec3(fine, heightOf(own)), cameraPosition) - morph.x) / (morph.y - morph.x), 0.0, 1.0);
    place = mix(fine, coarse, share);
    elevation = mix(own, elevationAt(coarse), share);
    seen = (viewMatrix * vec4(place, heightOf(elevation), 1.0)).xyz;
    gl_Position = projectionMatrix * vec4(seen, 1.0);
}`;

const IN_HAZE = `
uniform vec3 haze;
uniform float hazeDensity;
vec3 inHaze(vec3 color, float distance) {
    float depth = distance * hazeDensity;
    return mix(haze, color, exp(-depth * depth));
}`;

const UNDER_WATER = `
uniform vec3 water;
vec3 underWater(vec3 color, float depth) {
    return depth <= 0.0 ? color : mix(color, water, 0.5 + 0.45 * (1.0 - exp(-depth * 0.25)));
}`;

/** The skin is a picture of the whole land; where there is a closer one, that. */
export const LAND_FRAGMENT = `
uniform sampler2D skin, detail;
uniform vec3 detailWindow; // south-west corner and width in points; no width: none
uniform float sea;
varying vec2 place;
varying float elevation;
varying vec3 seen; // from the eye
${IN_HAZE}
${UNDER_WATER}
void main() {
    vec3 color = texture2D(skin, vec2(place.x + 0.5, place.y + 7.5) / 2048.0).rgb;
    if (detailWindow.z > 0.0) {
        vec2 inside = (place - detailWindow.xy) / detailWindow.z;
        vec2 margin = min(inside, 1.0 - inside);
        float share = smoothstep(0.0, 0.06, min(margin.x, margin.y));
        if (share > 0.0)
            color = mix(color, texture2D(detail, inside).rgb, share);
    }
    gl_FragColor = vec4(inHaze(underWater(color, sea - elevation), length(seen)), 1.0);
}`;

/** The sea around the world. */
export const OUTER_SEA_VERTEX = `
uniform float floorElevation;
varying vec3 seen;
${HEIGHT_OF_ELEVATION}
void main() {
    seen = (viewMatrix * vec4(position.xy, heightOf(floorElevation) + position.z, 1.0)).xyz;
    gl_Position = projectionMatrix * vec4(seen, 1.0);
}`;

export const OUTER_SEA_FRAGMENT = `
uniform float floorElevation, sea;
uniform vec3 floorColor;
varying vec3 seen;
${IN_HAZE}
${UNDER_WATER}
void main() {
    gl_FragColor = vec4(inHaze(underWater(floorColor, sea - floorElevation), length(seen)), 1.0);
}`;

/** Behind everything: haze at the horizon, the open sky above. */
export const SKY_VERTEX = `
uniform vec3 ahead, toRight, toTop;
varying vec3 direction;
void main() {
    direction = ahead + position.x * toRight + position.y * toTop;
    gl_Position = vec4(position.xy, 1.0, 1.0);
}`;

export const SKY_FRAGMENT = `
uniform vec3 haze, zenith;
varying vec3 direction;
void main() {
    gl_FragColor = vec4(mix(haze, zenith, smoothstep(0.0, 0.5, normalize(direction).z)), 1.0);
}`;
