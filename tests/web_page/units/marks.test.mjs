import assert from 'node:assert/strict';
import test from 'node:test';
import {Marks} from '../../../web/page/marks.js';
import {climbs, profileOfWay} from '../../../web/page/measure.js';
import {marksOfPlotFile, plotFileOfMarks} from '../../../web/page/plotfile.js';
import {landOf} from './world.mjs';

test('marks become a plot file and come back', () => {
    const marks = [{x: 1589, y: 777, name: 'Camp; with; two\r\nlines'}, {x: 1019, y: 1019.123, name: 'é'}];
    const text = plotFileOfMarks(marks);
    assert.equal(text, 'mark;24.200S 57.000E;Camp, with, two,lines\nmark;0.012N 0.000E;é\n');
    assert.deepEqual(marksOfPlotFile(text).map(({name}) => name), ['Camp, with, two,lines', 'é']);
    const read = marksOfPlotFile('a;10.0N 20.0E;One;more\r\nnonsense\nb;10.5S, 20.5W;\n;x;y\n;1N 1E;Last');
    assert.deepEqual(read.map(({x, y, name}) => [Math.round(x), Math.round(y), name]),
        [[1219, 1119, 'One'], [814, 914, '10.5S 20.5W'], [1029, 1029, 'Last']]);
});

test('marks are kept by the browser, and every change is heard', () => {
    const kept = new Map();
    global.localStorage = {getItem: key => kept.get(key) ?? null, setItem: (key, text) => kept.set(key, text)};
    const marks = new Marks('World');
    let heard = 0;
    marks.listen(() => ++heard);
    marks.add({x: 1, y: 2, name: 'One', more: 3}, {x: 3, y: 4, name: 'Two'});
    marks.update(marks.items[0], {name: 'First'});
    marks.remove(marks.items[1]);
    assert.equal(heard, 3);
    assert.deepEqual(new Marks('World').items, [{x: 1, y: 2, name: 'First'}]);
    assert.deepEqual(new Marks('Another').items, []);
});

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
    assert.deepEqual([[], [{x: 1, y: 1}], [{x: 1, y: 1}, {x: 1, y: 1}]].map(way => profileOfWay(land, way).samples), [[], [], []]);
    assert.deepEqual(climbs([0, 10, 4, 4, 7]), {up: 13, down: 6});
});
