// What stands too near together to be told apart at a zoom is gathered into one group.
import {LAND_SIZE} from './land.js';

/** Pixels a cell: what falls into the same one is gathered. Twice as many where the map would be too full. */
const FINEST_CELL = 24;
const TOO_NEAR = 15; // pixels from middle to middle
const CELLS_WIDE = 0x10000; // more than the world has at any zoom

export class Gathering {
    /** `items`: places with `x` and `y`; `most`: groups that a window, cut from a grid of windows, may hold. */
    constructor(items, most) {
        Object.assign(this, {items, most});
    }

    /**
     * All groups at a zoom, for windows of a width and height in pixels: `{x, y, members}`, at the mean of
     * its members. They are the same wherever the window is.
     */
    groupsAt(zoom, width, height) {
        const asked = `${zoom} ${width} ${height}`;
        if (this.asked !== asked)
            Object.assign(this, {asked, groups: this.gather(2 ** zoom, width, height)});
        return this.groups;
    }

    gather(scale, width, height) {
        let size = FINEST_CELL / scale, cells = this.cellsOf(size);
        while (size < LAND_SIZE && this.fullest(cells, width / scale, height / scale) > this.most) {
            size *= 2;
            cells = coarser(cells);
        }
        return [...cells.values()].map(({sumX, sumY, members}) => ({x: sumX / members.length, y: sumY / members.length, members}));
    }

    cellsOf(size) {
        const cells = new Map();
        for (const item of this.items) {
            const column = Math.floor((item.x + 1) / size), row = Math.floor((item.y + 1) / size), key = column * CELLS_WIDE + row, cell = cells.get(key);
            if (!cell) {
                cells.set(key, {column, row, sumX: item.x, sumY: item.y, members: [item]});
            } else {
                cell.members.push(item);
                cell.sumX += item.x;
                cell.sumY += item.y;
            }
        }
        return cells;
    }

    fullest(cells, width, height) {
        const counts = new Map();
        let most = 0;
        for (const {sumX, sumY, members} of cells.values()) {
            const key = Math.floor(sumX / members.length / width) * CELLS_WIDE + Math.floor(sumY / members.length / height);
            counts.set(key, (counts.get(key) || 0) + 1);
            most = Math.max(most, counts.get(key));
        }
        return most;
    }
}

/** Four cells in one. */
function coarser(cells) {
    const joined = new Map();
    for (const cell of cells.values()) {
        const column = cell.column >> 1, row = cell.row >> 1, key = column * CELLS_WIDE + row, other = joined.get(key);
        if (other)
            take(other, cell);
        else
            joined.set(key, {...cell, column, row});
    }
    return joined;
}

function take(cell, {sumX, sumY, members}) {
    for (const member of members)
        cell.members.push(member);
    cell.sumX += sumX;
    cell.sumY += sumY;
}

/** Those of some groups that lie in a part of the map, each two that would lie on each other at a zoom joined. */
export function groupsInView(groups, {west, south, east, north}, zoom) {
    const near = TOO_NEAR / 2 ** zoom, found = [];
    for (const group of groups) {
        if (group.x < west || group.x > east || group.y < south || group.y > north)
            continue;
        const other = found.find(({x, y}) => Math.hypot(x - group.x, y - group.y) < near);
        if (other)
            join(other, group);
        else
            found.push({...group});
    }
    return found;
}

function join(group, {x, y, members}) {
    const share = members.length / (group.members.length + members.length);
    Object.assign(group, {x: group.x + (x - group.x) * share, y: group.y + (y - group.y) * share, members: group.members.concat(members)});
}

/** Whether no zoom up to this one parts them. */
export function isOneSpot(members, zoom) {
    const near = TOO_NEAR / 2 ** zoom;
    return members.every(({x, y}) => Math.hypot(x - members[0].x, y - members[0].y) < near);
}
