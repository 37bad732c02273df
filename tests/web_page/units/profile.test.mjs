import assert from 'node:assert/strict';
import test from 'node:test';
import {climbs, distancesOfCorners, profileOfWay, rangeOfHeights, ticksOfAxis} from '../../../web/page/profile.js';
import {landOf} from './world.mjs';

test('a profile goes from end to end at even steps, with what the land has there', () => {
    const land = landOf({}, (planes, at) => {
        for (let x = 0; x < 200; ++x)
            for (const y of [99, 100, 101])
                planes.heights[at(x, y)] = x;
    });
    const {distance, samples} = profileOfWay(land, [{x: 10, y: 100}, {x: 20, y: 100}, {x: 20, y: 100}, {x: 50, y: 100}], 8);
    assert.ok(Math.abs(distance - 4) < 1e-9);
    assert.deepEqual(samples.map(({place}) => place.x), [10, 15, 20, 25, 30, 35, 40, 45, 50]);
    assert.deepEqual(samples.map(({height}) => height), [120, 180, 240, 300, 360, 420, 480, 540, 600]);
    assert.deepEqual(samples.map(each => Math.round(each.distance * 10)), [0, 5, 10, 15, 20, 25, 30, 35, 40]);
    assert.deepEqual(distancesOfCorners([{x: 10, y: 100}, {x: 20, y: 100}, {x: 23, y: 104}]).map(each => Math.round(each * 1e6) / 1e6), [0, 1, 1.5]);
    assert.deepEqual([[], [{x: 1, y: 1}], [{x: 1, y: 1}, {x: 1, y: 1}]].map(way => profileOfWay(land, way).samples), [[], [], []]);
    assert.deepEqual(climbs([0, 10, 4, 4, 7]), {up: 13, down: 6});
});

test('axes name round values, from the first to the last that there is', () => {
    for (const [low, high, most, ticks, digits] of [
        [0, 71.65, 6, ['0', '20', '40', '60'], 0], [0, 20, 6, ['0', '5', '10', '15', '20'], 0], [0, 0.31, 6, ['0.0', '0.1', '0.2', '0.3'], 1],
        [0, 0.06, 6, ['0.00', '0.01', '0.02', '0.03', '0.04', '0.05', '0.06'], 2], [10, 30, 4, ['10', '15', '20', '25', '30'], 0], [-3, 1999, 5, ['0', '500', '1000', '1500'], 0]]) {
        const axis = ticksOfAxis(low, high, most);
        assert.deepEqual([axis.ticks.map(tick => tick.toFixed(axis.digits)), axis.digits], [ticks, digits], `${low} to ${high}`);
    }
    assert.deepEqual([[12, 27], [10, 220.4], [5, 5], [0, 2041], [-30, -12]].map(rangeOfHeights),
        [{low: 10, high: 30}, {low: 0, high: 250}, {low: 5, high: 6}, {low: 0, high: 2500}, {low: -30, high: -10}]);
});
