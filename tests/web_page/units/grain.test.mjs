import assert from 'node:assert/strict';
import test from 'node:test';
import {grainAt, grainOfType, grainShare} from '../../../web/page/grain.js';

test('every land type has a light grain of its own, which leaves its colour as it is on the whole', () => {
    const seen = new Set();
    for (let type = 0; type <= 32; ++type) {
        const pattern = grainOfType(type), mean = pattern.reduce((sum, value) => sum + value, 0) / pattern.length;
        assert.ok(Math.abs(mean) < 0.01, `type ${type}: ${mean}`);
        assert.ok(pattern.every(value => Math.abs(value) <= 0.2 + 1e-6) && pattern.some(value => Math.abs(value) > 0.02), `type ${type}`);
        seen.add(pattern.slice(0, 64).join());
    }
    assert.equal(seen.size, 33);
    assert.equal(grainAt(40, 5, 5, 1), 1);
    // It repeats after four points.
    assert.equal(grainAt(3, 100.3, 50.7, 1), grainAt(3, 104.3, 46.7, 1));
});

test('grain is seen from near alone', () => {
    assert.deepEqual([0.5, 4, 10, 40, 128].map(grainShare), [0, 0, 0, 1, 1]);
    assert.ok(Math.abs(grainShare(20) - 0.5) < 1e-9);
    assert.equal(grainAt(3, 1, 1, 0), 1);
});
