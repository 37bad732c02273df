import assert from 'node:assert/strict';
import test from 'node:test';
import {Gathering, groupsInView, isOneSpot} from '../../../web/page/gathering.js';
import {othersAt} from '../../../web/page/herelist.js';
import {lookOfType, wordOfPlace} from '../../../web/page/placelooks.js';
import {laidOut, placesInRelief} from '../../../web/page/places.js';
import {layOut, linesOfSpot} from '../../../web/page/spotlayout.js';
import {rowsInView} from '../../../web/page/windowedlist.js';
import {worldOf} from './world.mjs';

const ALL = {west: 0, south: 0, east: 2040, north: 2040};
const sizes = groups => groups.map(({members}) => members.length).sort((a, b) => b - a);
const places = (...spots) => spots.map(([x, y], index) => ({x, y, name: `P${index}`}));
let state = 7;
const random = below => (state = Math.imul(state, 1664525) + 1013904223 >>> 0) / 2 ** 32 * below;

test('what would lie on each other is gathered, at the mean of its members, and parted by the zoom', () => {
    const gathering = new Gathering(places([101, 100], [103, 102], [103, 102], [300, 100], [101, 400]), 60);
    const at = zoom => groupsInView(gathering.groupsAt(zoom, 800, 600), ALL, zoom);
    const [group] = at(0);
    assert.deepEqual([sizes(at(0)), group.x, Math.round(group.y * 3)], [[3, 1, 1], (101 + 103 + 103) / 3, 304]);
    assert.deepEqual(sizes(at(6)), [2, 1, 1, 1]);
    // On either side of a cell's edge as well, and not from afar.
    const edge = new Gathering(places([22.9, 50], [23.1, 50], [50, 50]), 60);
    assert.deepEqual(groupsInView(edge.groupsAt(0, 800, 600), ALL, 0).map(({x, members}) => [x, members.length]), [[23, 2], [50, 1]]);
    assert.equal(edge.groupsAt(0, 800, 600).every(({members}) => members.length === 1), true);
    const part = {west: 200, south: 90, east: 301, north: 110};
    assert.deepEqual(groupsInView(gathering.groupsAt(0, 800, 600), part, 0).map(({x}) => x), [300]);
    assert.deepEqual([[100, 100.2], [100, 100.3]].map(([a, b]) => isOneSpot(places([a, 5], [b, 5]), 6)), [true, false]);
});

test('a window holds no more groups than it may, wherever the places are, and none of them is lost', () => {
    for (const spread of [2040, 100]) {
        const many = places(...Array.from({length: 20000}, () => [random(spread), random(spread)]));
        const gathering = new Gathering(many, 24);
        for (const zoom of [-1.25, 0, 2, 5]) {
            const groups = gathering.groupsAt(zoom, 1000, 800), [width, height] = [1000 / 2 ** zoom, 800 / 2 ** zoom];
            assert.equal(sizes(groups).reduce((sum, size) => sum + size, 0), 20000);
            const inside = ({x, y}) => x >= width && x < 2 * width && y >= height && y < 2 * height;
            for (const count of [groups.filter(({x, y}) => x < width && y < height).length, groups.filter(inside).length])
                assert.ok(count <= 24, `${count} at ${zoom}`);
            assert.equal(gathering.groupsAt(zoom, 1000, 800), groups);
        }
    }
    const alike = new Gathering(places(...Array.from({length: 20000}, () => [7, 7])), 60), start = performance.now();
    assert.deepEqual(sizes(groupsInView(alike.groupsAt(6, 1000, 800), ALL, 6)), [20000]);
    assert.ok(performance.now() - start < 500);
});

test('names stand where there is room, the first in rank first; counters step aside', () => {
    const spot = (name, x, y, more = {}) => ({name, pixel: {x, y}, rank: 2, ...more});
    const sides = (...spots) => layOut(spots).map(({side}) => side);
    assert.deepEqual(sides(spot('One', 100, 100)), ['right']);
    // The dot of the next is in the way, then its name on either side.
    assert.deepEqual(sides(spot('One', 100, 100), spot('Two', 120, 100)), ['left', 'right']);
    assert.deepEqual(sides(spot('One', 100, 100), spot('Two', 100, 110), spot('Town', 100, 105, {rank: 0})), ['left', undefined, 'right']);
    const [, counter] = layOut([spot('One', 100, 100), {pixel: {x: 100, y: 100}, rank: 1, isCounter: true, members: []}]);
    assert.deepEqual(counter, {pixel: {x: 100, y: 122}});
    // On a map whose pixels grow to the south.
    const flat = {map: {latLngToLayerPoint: ([y, x]) => ({x, y: -y}), layerPointToLatLng: ([x, y]) => ({lat: -y, lng: x})}};
    const [one, two] = laidOut(flat, [{name: 'One', x: 100, y: 100}, {x: 100, y: 100, isCounter: true, members: []}], ({isCounter}) => isCounter ? 0 : 1);
    assert.deepEqual([one.at, one.lines, two.at], [one.spot, ['One'], {x: 100, y: 78}]);
    const shared = count => ({members: Array.from({length: count}, (_, index) => ({name: `N${index}`}))});
    assert.deepEqual(linesOfSpot(shared(4)), [['N0', 'N1', 'N2', 'N3'], ['N0 +3']]);
    assert.deepEqual(linesOfSpot(shared(20000)), [['N0', 'N1', 'N2', 'and 19997 more'], ['N0 +19999']]);
    const [first] = layOut([spot('', 100, 100, shared(4)), spot('', 130, 130, {isCounter: false}), spot('', 70, 130)]);
    assert.deepEqual(first, {pixel: {x: 100, y: 100}, side: 'right', lines: ['N0 +3']});
});

test('what stands at one spot is told with whatever is pinned there', () => {
    const all = [{name: 'A', x: 5, y: 5}, {name: 'A', x: 5.5, y: 5}, {name: 'B', x: 5, y: 5.7}, {name: 'C', x: 5.8, y: 5}, {name: 'D', x: 5, y: 5.8}];
    assert.deepEqual(othersAt(all, {x: 5, y: 5}, 'A'), [all[1], all[2]]);
    assert.deepEqual(othersAt(all, {x: 5, y: 5}).length, 3);
});

test('places have a look by their type, and those off the world are not there', () => {
    assert.deepEqual([' Town', 'HARBOUR', 'cave', 'x', undefined, '__proto__'].map(lookOfType), ['town', 'port', 'entrance', 'place', 'place', 'place']);
    const world = worldOf({places: [[0, 0, 'In', 'port'], [null, 1, 'Infinite'], [1, null, 'Infinite'], [102.2, 0, 'East'], [0, -102, 'South'], [102.1, -101.9, 'Corner']],
        dungeons: [[5, 'Deep', [[1, 1], [0, 300], [2, 2]]]]});
    assert.deepEqual(world.places.map(place => [place.name, wordOfPlace(place)]), [['In', 'port'], ['Corner', 'place']]);
    assert.deepEqual(world.entrances.map(place => [place.block, wordOfPlace(place), Math.round(place.x)]), [[5, 'dungeon', 1029], [5, 'dungeon', 1039]]);
    assert.equal(wordOfPlace({name: 'Own'}), 'mark');
    const shown = name => placesInRelief(world, {get: each => each === name}, {items: [{name: 'Own'}]}).map(place => place.name);
    assert.deepEqual(['places', 'dungeons', 'marks', 'grid'].map(shown), [['In', 'Corner'], ['Deep', 'Deep'], ['Own'], []]);
});

test('of a long list the rows in view are there, and some more', () => {
    const rows = (top, count = 10000) => Object.values(rowsInView({top, height: 300, rowHeight: 30, count}));
    assert.deepEqual([rows(0), rows(3000), rows(3015), rows(299900), rows(0, 3), rows(500, 3)],
        [[0, 16], [94, 116], [94, 117], [9990, 10000], [0, 3], [0, 3]]);
});
