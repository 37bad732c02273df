// Which squares of the land the relief is made of: a quadtree whose squares all have as many cells,
// so that the land near the eye is told in points and the land far off in every 64th.
import {LAND_SIZE, UNITS_PER_CELL} from '../land.js';

export const NODE_CELLS = 32;
const LEVELS = 7; // the last is one square of 2048 points
/** A square is split when the eye is nearer than so many of its widths. */
const SPLIT_DISTANCE = 3;
/** From this share of the distance at which a coarser square takes over, points move to its own. */
const MORPH_START = 0.75;

export class ReliefTree {
    constructor(land) {
        this.levels = [leafRanges(land)];
        for (let level = 1; level < LEVELS; ++level)
            this.levels.push(joinedRanges(this.levels[level - 1]));
        [this.lowest, this.highest] = this.levels[LEVELS - 1].ranges;
    }

    /**
     * The squares to draw for an eye at `{x, y, z}`, the nearest first: `{x, y, cell, morph, distance}`,
     * the south-west corner and the width of a cell in points, and the distances between which points
     * move to the coarser square. `toHeight` gives the height of an elevation; `isVisible` is told the corners of a box.
     */
    choose(eye, toHeight, isVisible) {
        const chosen = [];
        const visit = (level, column, row) => {
            const size = NODE_CELLS << level, x = column * size, y = row * size;
            if (x >= LAND_SIZE - 1 || y >= LAND_SIZE - 1)
                return;
            const {side, ranges} = this.levels[level], at = (row * side + column) * 2;
            const low = toHeight(ranges[at]), high = toHeight(ranges[at + 1]);
            if (!isVisible(x, y, low, x + size, y + size, high))
                return;
            const distance = Math.hypot(outside(eye.x, x, x + size), outside(eye.y, y, y + size), outside(eye.z, low, high));
            if (level > 0 && distance < SPLIT_DISTANCE * size) {
                for (let child = 0; child < 4; ++child)
                    visit(level - 1, column * 2 + (child & 1), row * 2 + (child >> 1));
                return;
            }
            const end = level === LEVELS - 1 ? Infinity : SPLIT_DISTANCE * size * 2;
            chosen.push({x, y, cell: 1 << level, morph: [end * MORPH_START, end], distance});
        };
        visit(LEVELS - 1, 0, 0);
        // What is near hides what is behind it before that is painted.
        return chosen.sort((a, b) => a.distance - b.distance);
    }
}

const outside = (value, low, high) => Math.max(low - value, 0, value - high);

/** Least and greatest elevation of the squares of the first level, in pairs. */
function leafRanges({heights, table}) {
    const side = Math.ceil((LAND_SIZE - 1) / NODE_CELLS), ranges = new Float32Array(side * side * 2);
    for (let row = 0; row < side; ++row)
        for (let column = 0; column < side; ++column) {
            let low = Infinity, high = -Infinity;
            const west = column * NODE_CELLS, east = Math.min(LAND_SIZE - 1, west + NODE_CELLS);
            const north = Math.min(LAND_SIZE - 1, (row + 1) * NODE_CELLS);
            for (let y = row * NODE_CELLS; y <= north; ++y)
                for (let at = y * LAND_SIZE + west, end = y * LAND_SIZE + east; at <= end; ++at) {
                    const height = table[heights[at]];
                    low = height < low ? height : low;
                    high = height > high ? height : high;
                }
            ranges.set([low / UNITS_PER_CELL, high / UNITS_PER_CELL], (row * side + column) * 2);
        }
    return {side, ranges};
}

function joinedRanges(finer) {
    const side = Math.ceil(finer.side / 2), ranges = new Float32Array(side * side * 2);
    for (let row = 0; row < side; ++row)
        for (let column = 0; column < side; ++column) {
            let low = Infinity, high = -Infinity;
            for (let child = 0; child < 4; ++child) {
                const x = column * 2 + (child & 1), y = row * 2 + (child >> 1), at = (y * finer.side + x) * 2;
                if (x < finer.side && y < finer.side) {
                    low = Math.min(low, finer.ranges[at]);
                    high = Math.max(high, finer.ranges[at + 1]);
                }
            }
            ranges.set([low, high], (row * side + column) * 2);
        }
    return {side, ranges};
}
