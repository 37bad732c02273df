// The sea as it lies. The land has its bed, whose hills the eye would take for waves of stone: in the
// relief the sea stands level, as high as at its shores.
import {LAND_SIZE, landTypeOfByte, UNITS_PER_CELL} from '../land.js';
import {WATER_TYPES} from '../colors.js';

const SEA_TYPES = [18, 19, 20, 23];
const SEA_SLIME = 23;
/** So much of the shore lies at the sea's level or below it. */
const SHORE_SHARE = 0.9;
/** Sea this much higher, in units of the game, keeps its hills: someone meant them. */
const MOST_LEVELLED = 4 * UNITS_PER_CELL;

/** A byte for each low byte of a terrain word: whether its land type is one of these. */
function typeMask(types) {
    return Uint8Array.from({length: 256}, (_, low) => types.includes(landTypeOfByte(low)) ? 1 : 0);
}

const IS_SEA = typeMask(SEA_TYPES);
const IS_WATER = typeMask([...WATER_TYPES, SEA_SLIME]);

/** Shores are looked for in one row of so many, and there from west to east. */
const ROWS = 4;

/** The height index that the sea stands at; undefined where there is no shore. */
export function seaIndex({low, present, heights, table}) {
    const counts = new Uint32Array(256);
    let count = 0;
    for (let y = 0; y < LAND_SIZE; y += ROWS)
        for (let at = y * LAND_SIZE + 1, end = at + LAND_SIZE - 1; at < end; ++at) {
            const isSea = IS_SEA[low[at]];
            if (isSea !== IS_SEA[low[at - 1]] && present[at] > 0 && present[at - 1] > 0) {
                ++counts[heights[isSea === 1 ? at : at - 1]];
                ++count;
            }
        }
    const byHeight = Array.from(counts.keys()).sort((a, b) => table[a] - table[b]);
    let below = 0;
    return count > 0 ? byHeight.find(index => (below += counts[index]) >= count * SHORE_SHARE) : undefined;
}

/**
 * `{land, level}`: the land with a level sea, of which points without land are part, and the sea's real
 * height; the land as it is, and that of points without land, where there is no shore.
 */
export function landWithLevelSea(land) {
    const index = seaIndex(land), {low, present, table} = land;
    if (index === undefined)
        return {land, level: table[0]};
    const heights = land.heights.slice(), level = table[index];
    const isLow = Uint8Array.from(table, height => height <= level + MOST_LEVELLED ? 1 : 0);
    for (let at = 0; at < heights.length; ++at)
        if (present[at] === 0 || (IS_SEA[low[at]] & isLow[heights[at]]) === 1)
            heights[at] = index;
    return {land: land.withHeights(heights), level};
}

/** A byte for each point: whether it looks wet, as water of whatever kind and what has no land. */
export function wetPoints({low, present}) {
    return low.map((byte, at) => present[at] === 0 ? 1 : IS_WATER[byte]);
}
