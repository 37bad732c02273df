// Where mountains keep the light from the land.
import {LAND_SIZE} from '../land.js';

const LOWEST_LIGHT = 3; // degrees; from lower still, all would lie in the shade
/** So far below the edge of a shadow, in cells, it is as dark as it gets. */
const SOFTNESS = 0.5;
const OPEN_SKY = -1e9;

/**
 * Gives how much each land point lies in the shadow of others, from 0 to 255. `elevations`: by height
 * index, in cells; `rise`: how much they are exaggerated; `sea`: elevation that water stands at.
 *
 * The land is walked row by row away from the light, or column by column where the light comes rather
 * from the side. What reaches a row is the ceiling of the shade: the greater of land and ceiling one
 * row nearer to the light, less what the light falls on the way.
 */
export function castShadows(heights, elevations, {azimuth, altitude, rise, sea = -Infinity}) {
    const east = Math.sin(azimuth * Math.PI / 180), north = Math.cos(azimuth * Math.PI / 180);
    const byRows = Math.abs(north) >= Math.abs(east), towards = byRows ? north : east, aside = byRows ? east : north;
    const [along, across] = byRows ? [LAND_SIZE, 1] : [1, LAND_SIZE];
    const shift = aside / Math.abs(towards), whole = Math.floor(shift), share = shift - whole;
    const fall = Math.tan(Math.max(LOWEST_LIGHT, Math.min(89.9, altitude)) * Math.PI / 180) / rise / Math.abs(towards);
    const levels = Float32Array.from(elevations, elevation => Math.max(elevation, sea));
    const shades = new Uint8Array(LAND_SIZE * LAND_SIZE), scale = 255 / SOFTNESS * rise;
    let ceiling = new Float32Array(LAND_SIZE + 3).fill(OPEN_SKY), next = ceiling.slice(); // begins one place early
    for (let line = 0; line < LAND_SIZE; ++line) {
        const start = (towards > 0 ? LAND_SIZE - 1 - line : line) * along;
        for (let place = 0, at = start; place < LAND_SIZE; ++place, at += across) {
            const from = place + whole + 1;
            const shade = ceiling[from] + (ceiling[from + 1] - ceiling[from]) * share - fall, level = levels[heights[at]];
            if (shade > level) {
                const depth = (shade - level) * scale;
                shades[at] = depth > 255 ? 255 : depth;
                next[place + 1] = shade;
            } else {
                next[place + 1] = level;
            }
        }
        [ceiling, next] = [next, ceiling];
    }
    return shades;
}
