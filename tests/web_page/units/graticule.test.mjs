import assert from 'node:assert/strict';
import test from 'node:test';
import {gridLabel, gridStep, gridUnits} from '../../../web/page/graticule.js';
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
