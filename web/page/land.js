// The land: a value for each land point, row by row from the south, each row from the west, and
// flags for each land block by its number 0xXXYY (column from the west, row from the south).

export const LAND_SIZE = 2041;
export const BLOCKS = 255;
export const CELLS = 8;
export const ROAD = 32;
export const DEEP_SEA = 20;
export const LAND_FLAG = {data: 1, objects: 2, passable: 4, added: 8, removed: 16, changed: 32};

/** Real height in units of the game that rises a cell: cells are 12 such units wide. */
export const UNITS_PER_CELL = 12;

/** Road where a road bit is set, else bits 2 to 7 of the terrain word, of which this is the low byte. */
export function landTypeOfByte(low) {
    return low & 3 ? ROAD : low >> 2;
}

/** Of a land that is not there yet. */
const NOTHING = {heights: new Uint8Array(0), low: new Uint8Array(0), high: new Uint8Array(0), blocks: new Uint8Array(0x10000), present: new Uint8Array(0)};

const PLANES = ['heights', 'low', 'high', 'blocks', 'present'];

export class Land {
    /** `table`: the 256 real heights, empty where the land is flat; `planes`: see `fill`. */
    constructor(table, planes = NOTHING) {
        this.table = Float32Array.from({length: 256}, (_, index) => table[index] || 0);
        // The picture takes heights as whole numbers of 16 bits.
        this.elevations = this.table.map(height => (Math.trunc(height) & 0xFFFF) / UNITS_PER_CELL);
        this.fill(planes);
    }

    /**
     * `planes`: Uint8Arrays `heights` (height indexes), `low`, `high` (bytes of the terrain words)
     * and `blocks`, and `present` where it was reckoned before.
     */
    fill({heights, low, high, blocks, present = presentPoints(blocks)}) {
        Object.assign(this, {heights, low, high, blocks, present});
    }

    /** The planes once more, for another to keep. */
    copyPlanes() {
        return Object.fromEntries(PLANES.map(name => [name, this[name].slice()]));
    }

    /** The same land with other height indexes at its points. */
    withHeights(heights) {
        return Object.assign(Object.create(Land.prototype), this, {heights});
    }

    has(x, y) {
        return x >= 0 && y >= 0 && x < LAND_SIZE && y < LAND_SIZE && this.present[y * LAND_SIZE + x] > 0;
    }

    typeAt(x, y) {
        return landTypeOfByte(this.low[y * LAND_SIZE + x]);
    }

    heightAt(x, y) {
        return this.table[this.heights[y * LAND_SIZE + x]];
    }

    /** Real height between the points, as the land's triangles have it nearly. */
    heightBetween(x, y) {
        const limit = LAND_SIZE - 1.001;
        const cx = Math.min(Math.max(x, 0), limit), cy = Math.min(Math.max(y, 0), limit);
        const i = Math.floor(cx), j = Math.floor(cy), fx = cx - i, fy = cy - j;
        const south = this.heightAt(i, j) * (1 - fx) + this.heightAt(i + 1, j) * fx;
        const north = this.heightAt(i, j + 1) * (1 - fx) + this.heightAt(i + 1, j + 1) * fx;
        return south * (1 - fy) + north * fy;
    }
}

/** How many points have each land type: `[type, count]`, the most frequent first. */
export function countTypes({low, present}) {
    const byByte = new Uint32Array(256), counts = new Map();
    for (let index = 0; index < low.length; ++index)
        byByte[low[index]] += present[index] > 0 ? 1 : 0;
    byByte.forEach((count, byte) => {
        if (count > 0)
            counts.set(landTypeOfByte(byte), (counts.get(landTypeOfByte(byte)) || 0) + count);
    });
    return [...counts].sort((a, b) => b[1] - a[1]);
}

/** A byte for each point: 1 where any of the blocks that it belongs to has land, 2 where its four neighbours have it, too. */
function presentPoints(blocks) {
    const present = new Uint8Array(LAND_SIZE * LAND_SIZE), hasLand = (column, row) => (blocks[column << 8 | row] & LAND_FLAG.data) !== 0;
    for (let row = 0; row < BLOCKS; ++row)
        for (let column = 0; column < BLOCKS;) {
            let end = column;
            while (end < BLOCKS && hasLand(end, row))
                ++end;
            for (let y = row * CELLS; end > column && y <= (row + 1) * CELLS; ++y)
                present.fill(1, y * LAND_SIZE + column * CELLS, y * LAND_SIZE + end * CELLS + 1);
            column = end + 1;
        }
    for (let y = 1; y < LAND_SIZE - 1; ++y)
        for (let at = y * LAND_SIZE + 1, end = at + LAND_SIZE - 2; at < end; ++at)
            if (present[at] && present[at - 1] && present[at + 1] && present[at - LAND_SIZE] && present[at + LAND_SIZE])
                present[at] = 2;
    return present;
}

/** Numbers may also name blocks that lie beyond the world's edge. */
export const isBlockOfMap = number => number >> 8 < BLOCKS && (number & 0xFF) < BLOCKS;

/** The number of the block under a place given in points; undefined outside the world. */
export function blockNumberAt(x, y) {
    const column = Math.floor(x / CELLS), row = Math.floor(y / CELLS);
    if (!(x >= 0 && y >= 0 && x <= LAND_SIZE - 1 && y <= LAND_SIZE - 1))
        return undefined;
    return Math.min(column, BLOCKS - 1) << 8 | Math.min(row, BLOCKS - 1);
}
