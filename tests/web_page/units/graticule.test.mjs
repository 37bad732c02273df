import assert from 'node:assert/strict';
import test from 'node:test';
import {Graticule, gridLabel, gridStep, gridUnits} from '../../../web/page/graticule.js';
import {pointOfUnit} from '../../../web/page/coordinates.js';

test('the grid has lines at round units, not too close together, each with a label of its own', () => {
    assert.deepEqual([-3, -1, 0, 1, 3, 6].map(gridStep), [50, 20, 10, 5, 2, 0.5]);
    const units = (from, to, step) => gridUnits(pointOfUnit(from), pointOfUnit(to), step);
    assert.deepEqual(units(-101.9, 102.1, 50), [-100, -50, 0, 50, 100]);
    assert.deepEqual(units(-0.6, 1, 0.5), [-0.5, 0, 0.5, 1]);
    for (const [step, from, to] of [[50, -101, 102], [10, -101, 102], [0.5, -3, 3]])
        for (const letters of [['W', 'E'], ['S', 'N']]) {
            const labels = units(from, to, step).map(unit => gridLabel(unit, step, ...letters));
            assert.equal(new Set(labels).size, labels.length, `${labels}`);
        }
    assert.deepEqual([gridLabel(-10, 5, 'W', 'E'), gridLabel(10, 5, 'W', 'E'), gridLabel(0, 5, 'W', 'E'), gridLabel(0.5, 0.5, 'S', 'N')],
        ['10W', '10E', '0', '0.5N']);
});

test('lines stand at their units and at the edges of blocks, and labels at the ends of lines', () => {
    // At zoom 2, four pixels a point, with point 995 to 1043 from the window's left and 1043 to 995 from its top.
    const pixel = ([y, x]) => ({x: (x - 995) * 4, y: (1043 - y) * 4}), area = {west: 995, south: 995, east: 1043, north: 1043};
    const lines = [], texts = [];
    const context = {beginPath() {}, stroke() {}, strokeText() {}, moveTo: (...from) => lines.push(from), lineTo: (...to) => lines.push([...lines.pop(), ...to]),
        fillText: (text, x, y) => texts.push(`${text} ${x} ${y}`)};
    const grid = Object.assign(Object.create(Graticule.prototype), {covered: [], settings: {get: name => name === 'types' ? [] : 'land'},
        flat: {area: () => area}, map: {getZoom: () => 2, getSize: () => ({x: 192, y: 192}), latLngToContainerPoint: pixel}});
    grid.paintBlocks(context);
    const edges = [20, 52, 84, 116, 148, 180].map(at => at + 0.5), others = [12, 44, 76, 108, 140, 172].map(at => at + 0.5);
    assert.deepEqual(lines.map(([x]) => x).filter(x => x !== 0.5), edges);
    assert.deepEqual(lines.slice(6).map(([, y]) => y).sort((a, b) => a - b), others);
    lines.length = 0;
    area.west = area.south = 968;
    grid.paintGrid(context, 192, 192);
    // Every 5 map units there is one: 5 to the west of the middle, and the middle.
    assert.deepEqual(lines.map(([x, y, x2]) => x === x2 ? x : y), [-103.5, 96.5, 296.5, 96.5]);
    assert.deepEqual(texts, ['0 96.5 10', '0 96.5 182', '5S 6 296.5', '5S 186 296.5', '0 6 96.5', '0 186 96.5']);
});
