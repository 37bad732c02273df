// Lands made by hand, for tests.
import {Land, LAND_FLAG, LAND_SIZE} from '../../../web/page/land.js';
import {World} from '../../../web/page/world.js';

/** Colours that are told apart by each component: of type n red is n, green 100 + n, blue 200 + n. */
export const COLORS = Array.from({length: 33}, (_, type) => [type, 100 + type, 200 + type]);

/** Real heights in steps of 12, the width of a cell. */
export const HEIGHTS = Array.from({length: 256}, (_, index) => index * 12);

/**
 * Planes of a land that is one plain: everywhere the terrain word `word` and height index `height`,
 * unless `change(planes, at)` says otherwise, where `at(x, y)` is the index of a point.
 */
export function planesOf({word = 0, height = 0, flags = LAND_FLAG.data | LAND_FLAG.passable} = {}, change = () => {}) {
    const points = LAND_SIZE * LAND_SIZE;
    const planes = {
        heights: new Uint8Array(points).fill(height), low: new Uint8Array(points).fill(word & 0xFF),
        high: new Uint8Array(points).fill(word >> 8), blocks: new Uint8Array(0x10000).fill(flags)};
    change(planes, (x, y) => y * LAND_SIZE + x);
    return planes;
}

export const landOf = (plain, change) => new Land(HEIGHTS, planesOf(plain, change));

export function worldOf(description, planes = planesOf(), older = null) {
    const world = new World({title: 'Test', hasOlderLand: older !== null, heights: HEIGHTS, colors: COLORS, landTypes: [], colorNames: [], places: [], dungeons: [],
        ...description});
    world.fill({planes: {newer: planes, older}, typeCounts: []});
    return world;
}
