// Colours of the land, by the low byte of the terrain word: three components from 0 to 255 each.
import {landTypeOfByte, ROAD} from './land.js';

const SNOW = 15, ICE = 2, BARREN_ROCK = 0, GRASSLAND = 1, PATCHY_GRASSLAND = 9;
export const WATER_TYPES = [16, 17, 18, 19, 20, 22];
const BRIGHT_WATER = [0, 0, 130];
const NO_SUCH_TYPE = [255, 0, 0];
const ROAD_BROUGHT_OUT = [196, 40, 28];

/** The colours of the 33 land types under the view's settings. */
export function typeColors(colors, view) {
    const changed = colors.slice();
    if (view.snow) {
        changed[BARREN_ROCK] = changed[GRASSLAND] = colors[SNOW];
        changed[PATCHY_GRASSLAND] = colors[ICE];
    }
    if (view.water)
        for (const type of WATER_TYPES)
            changed[type] = BRIGHT_WATER;
    if (view.roads)
        changed[ROAD] = ROAD_BROUGHT_OUT;
    return changed;
}

/** 256 x 3 components, by the terrain word's low byte; types that are not picked are grey and dim. */
export function byteColors(colors, view) {
    const table = new Float32Array(256 * 3), types = typeColors(colors, {...view, roads: false});
    const picked = new Set(view.types);
    for (let low = 0; low < 256; ++low) {
        const type = landTypeOfByte(low);
        let color = types[type] || NO_SUCH_TYPE;
        if (picked.size > 0 && !picked.has(type))
            color = dimmed(color);
        table.set(color, low * 3);
    }
    return table;
}

const dimmed = ([red, green, blue]) => [1, 1, 1.06].map(part => (0.3 * red + 0.59 * green + 0.11 * blue) * 0.42 * part + 8);

/** Colours for a share from 0 to 1, 256 of them, between stops `[share, [red, green, blue]]`. */
export function ramp(stops) {
    const table = new Float32Array(256 * 3);
    for (let entry = 0; entry < 256; ++entry) {
        const share = entry / 255;
        const next = Math.max(1, stops.findIndex(stop => stop[0] >= share));
        const [from, low] = stops[next - 1], [to, high] = stops[next];
        for (let index = 0; index < 3; ++index)
            table[entry * 3 + index] = low[index] + (high[index] - low[index]) * (share - from) / (to - from);
    }
    return table;
}

/** Slopes of 0 to 60 degrees; even in lightness, readable without telling red from green. */
export const SLOPE_COLORS = ramp([
    [0, [247, 244, 230]], [0.25, [253, 204, 120]], [0.5, [239, 122, 80]], [0.75, [170, 45, 95]], [1, [60, 12, 80]]]);
/** Sunk to risen, with 0.5 for no difference. */
export const DIFFERENCE_COLORS = ramp([
    [0, [8, 48, 120]], [0.4, [110, 170, 220]], [0.5, [236, 236, 232]], [0.6, [240, 160, 110]], [1, [140, 20, 20]]]);
