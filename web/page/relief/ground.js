// What the light does to the land beside its colours: a picture of what lies in the shadow of mountains
// (red) and of what is wet (alpha), made by a worker.
import {LAND_SIZE} from '../land.js';
import {castShadows} from './shadows.js';
import {wetPoints} from './sea.js';

export const GROUND_SIZE = 2048; // a power of two, so that the far land can be averaged

/** Pairs of bytes, row by row from the south. `land` has a level sea; `light`: see castShadows. */
export function groundBytes(land, light) {
    const bytes = new Uint8Array(GROUND_SIZE * GROUND_SIZE * 2);
    const shades = castShadows(land.heights, land.elevations, light), wet = wetPoints(land);
    for (let y = 0; y < GROUND_SIZE; ++y)
        for (let x = 0, to = y * GROUND_SIZE * 2; x < GROUND_SIZE; ++x, to += 2) {
            // Beyond the edge it goes on as it is there: averaged from afar, that runs into the land.
            const at = Math.min(y, LAND_SIZE - 1) * LAND_SIZE + Math.min(x, LAND_SIZE - 1);
            bytes[to] = shades[at];
            bytes[to + 1] = wet[at] * 255;
        }
    return bytes;
}
