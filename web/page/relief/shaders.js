// What the graphics processor does. Places are in points (x east, y north), heights in points as
// well, so that the land rises in its true proportion.

const HEIGHT_OF_ELEVATION = `
uniform float rise, sea, floorElevation;
float heightOf(float elevation) {
    return max(elevation, sea) * rise;
}`;

/**
 * A point of a square of the land; see tree.js. Water is level with the sea. Where the world ends, the
 * square's rim (z = 1) goes down to the floor of the sea around it.
 */
export const LAND_VERTEX = `
uniform sampler2D heights;
uniform vec2 range;       // the least elevation, and how far the greatest is from it
uniform vec3 square;      // south-west corner, width of a cell
uniform vec2 morph;       // distances between which points move to those of the coarser square
varying vec3 spot;        // in the world
varying float elevation, wall;
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
    vec2 place = mix(fine, coarse, share);
    elevation = mix(own, elevationAt(coarse), share);
    bool isEdge = min(fine.x, fine.y) <= 0.0 || max(fine.x, fine.y) >= LAST;
    wall = isEdge ? position.z : 0.0;
    if (wall > 0.5)
        elevation = min(elevation, floorElevation);
    spot = vec3(place, heightOf(elevation));
    gl_Position = projectionMatrix * viewMatrix * vec4(spot, 1.0);
}`;

const SKY = `
uniform vec3 haze, zenith, light; // light: towards it
vec3 skyTo(vec3 direction) {
    return mix(haze, zenith, smoothstep(0.0, 0.5, direction.z));
}`;

const IN_HAZE = `
uniform float hazeDensity;
vec3 inHaze(vec3 color, float far) {
    float depth = far * hazeDensity;
    return mix(haze, color, exp(-depth * depth));
}`;

/** The sea's surface: the more level one looks over it, the more of the sky it mirrors. */
const WATER = `
uniform vec3 water;
uniform sampler2D waves;
const float CALM = 800.0; // from so far off waves are not told apart
vec3 underWater(vec3 color, float depth) {
    return depth <= 0.0 ? color : mix(color, water, 0.5 + 0.45 * (1.0 - exp(-depth * 0.25)));
}
vec3 wet(vec3 color, vec3 spot, vec3 gaze, float far, float lit) {
    vec3 normal = vec3(0.0, 0.0, 1.0);
    if (far < CALM)
        normal.xy = (texture2D(waves, spot.xy / 120.0).rg - 0.5) * 0.2 * (1.0 - far / CALM) * (1.0 - far / CALM);
    float facing = max(0.0, 1.0 + dot(gaze, normal)), squared = facing * facing;
    vec3 mirrored = gaze + (2.0 - 2.0 * facing) * normal;
    float glint = max(dot(mirrored, light), 0.0);
    glint *= glint;
    glint *= glint;
    glint *= glint;
    glint *= glint;
    glint *= glint;
    return mix(color, skyTo(mirrored), 0.02 + 0.6 * squared * squared * facing) + vec3(0.3, 0.29, 0.27) * (glint * glint * lit);
}`;

/** The skin is a picture of the whole land; where there is a closer one, that. */
export const LAND_FRAGMENT = `
uniform sampler2D skin, detail, ground;
uniform vec3 detailWindow; // south-west corner and width in points; no width: none
uniform float sea, wetness, shadow;
varying vec3 spot;
varying float elevation, wall;
${SKY}
${IN_HAZE}
${WATER}
void main() {
    vec3 color;
    vec2 place = spot.xy, inside = (place - detailWindow.xy) / max(detailWindow.z, 1.0);
    vec2 margin = min(inside, 1.0 - inside);
    float share = detailWindow.z > 0.0 ? smoothstep(0.0, 0.06, min(margin.x, margin.y)) : 0.0;
    if (share < 1.0)
        color = texture2D(skin, vec2(place.x + 0.5, place.y + 7.5) / 2048.0).rgb;
    if (share > 0.0)
        color = mix(color, texture2D(detail, inside).rgb, share);
    vec4 here = texture2D(ground, (place + 0.5) / 2048.0);
    float lit = 1.0 - here.r * shadow, depth = sea - elevation;
    color *= mix(vec3(0.56, 0.61, 0.7), vec3(1.0), lit) * (1.0 - 0.35 * min(1.0, wall * 8.0));
    vec3 way = spot - cameraPosition;
    float far = length(way), damp = max(here.a, smoothstep(0.0, 0.05, depth)) * wetness;
    color = underWater(color, depth);
    if (damp > 0.0)
        color = mix(color, wet(color, spot, way / far, far, lit), damp);
    gl_FragColor = vec4(inHaze(color, far), 1.0);
}`;

/** The sea around the world. */
export const OUTER_SEA_VERTEX = `
varying vec3 spot;
${HEIGHT_OF_ELEVATION}
void main() {
    spot = vec3(position.xy, heightOf(floorElevation) + position.z);
    gl_Position = projectionMatrix * viewMatrix * vec4(spot, 1.0);
}`;

export const OUTER_SEA_FRAGMENT = `
uniform float floorElevation, sea, wetness;
uniform vec3 floorColor;
varying vec3 spot;
${SKY}
${IN_HAZE}
${WATER}
void main() {
    vec3 way = spot - cameraPosition;
    float far = length(way);
    vec3 color = underWater(floorColor, sea - floorElevation);
    if (wetness > 0.0)
        color = mix(color, wet(color, spot, way / far, far, 1.0), wetness);
    gl_FragColor = vec4(inHaze(color, far), 1.0);
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
varying vec3 direction;
${SKY}
void main() {
    gl_FragColor = vec4(skyTo(normalize(direction)), 1.0);
}`;
