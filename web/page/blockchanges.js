// What changed in a land block since the older land.
import {kindsOfChange} from './changekinds.js';
import {CELLS, LAND_FLAG, LAND_SIZE} from './land.js';

const MOST_TYPES = 4;

/**
 * `{kinds, lines}` of a block by its number: what became of it, and in words what of it. Null where
 * nothing did.
 */
export function changesOfBlock(world, number) {
    const {newer, older} = world, kinds = older ? kindsOfChange(newer.blocks[number], older.blocks[number]) : [];
    if (kinds.length === 0)
        return null;
    const lines = [], has = (land, flag) => (land.blocks[number] & flag) !== 0;
    if (has(newer, LAND_FLAG.data) && has(older, LAND_FLAG.data))
        lines.push(...heightLines(newer, older, number), ...typeLines(world, number));
    for (const [flag, label] of [[LAND_FLAG.objects, 'objects'], [LAND_FLAG.passable, 'a way through']])
        if (has(newer, flag) !== has(older, flag))
            lines.push(`${has(newer, flag) ? 'Has' : 'No longer has'} ${label}`);
    if (lines.length === 0 && !kinds.includes('gone') && !kinds.includes('new'))
        lines.push('Its land is as it was');
    return {kinds, lines};
}

function* pointsOfBlock(number) {
    const west = (number >> 8) * CELLS, south = (number & 0xFF) * CELLS;
    for (let y = south; y <= south + CELLS; ++y)
        for (let x = west; x <= west + CELLS; ++x)
            yield y * LAND_SIZE + x;
}

const signed = value => (value > 0 ? '+' : value < 0 ? '−' : '') + Math.abs(Math.round(value * 10) / 10);
const pointCount = count => count === 1 ? '1 point' : `${count} points`;

function heightLines(newer, older, number) {
    let count = 0, least = Infinity, most = -Infinity;
    for (const index of pointsOfBlock(number)) {
        const difference = newer.table[newer.heights[index]] - older.table[older.heights[index]];
        if (difference === 0)
            continue;
        ++count;
        least = Math.min(least, difference);
        most = Math.max(most, difference);
    }
    if (count === 0)
        return [];
    return [`Height of ${pointCount(count)}: ${least === most ? signed(most) : `${signed(least)} to ${signed(most)}`}`];
}

function typeLines(world, number) {
    const counts = new Map();
    for (const index of pointsOfBlock(number)) {
        const [was, is] = [world.older, world.newer].map(land => land.typeAt(index % LAND_SIZE, Math.floor(index / LAND_SIZE)));
        if (was !== is) {
            const text = `${world.typeName(was)} → ${world.typeName(is)}`;
            counts.set(text, (counts.get(text) || 0) + 1);
        }
    }
    const sorted = [...counts].sort(([one, a], [other, b]) => b - a || one.localeCompare(other));
    const lines = sorted.slice(0, MOST_TYPES).map(([text, count]) => `${text}: ${pointCount(count)}`);
    const rest = sorted.slice(MOST_TYPES).reduce((sum, [, count]) => sum + count, 0);
    return rest > 0 ? [...lines, `Other land types: ${pointCount(rest)}`] : lines;
}
