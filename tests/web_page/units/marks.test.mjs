import assert from 'node:assert/strict';
import test from 'node:test';
import {Marks} from '../../../web/page/marks.js';
import {marksOfPlotFile, plotFileOfMarks} from '../../../web/page/plotfile.js';

test('marks become a plot file and come back', () => {
    const marks = [{x: 1589, y: 777, name: 'Camp; with; two\r\nlines'}, {x: 1019, y: 1019.123, name: 'é'}];
    const text = plotFileOfMarks(marks);
    assert.equal(text, 'mark;24.200S 57.000E;Camp, with, two,lines\nmark;0.012N 0.000E;é\n');
    assert.deepEqual(marksOfPlotFile(text).marks.map(({name}) => name), ['Camp, with, two,lines', 'é']);
    const {marks: read, skipped} = marksOfPlotFile('a;10.0N 20.0E;One;more\r\nnonsense\nb;10.5S, 20.5W;\n;x;y\n\n;1N 1E;Last\n;1N 103E;Off\n;1e308N 1E;Far');
    assert.deepEqual(read.map(({x, y, name}) => [Math.round(x), Math.round(y), name]),
        [[1219, 1119, 'One'], [814, 914, '10.5S 20.5W'], [1029, 1029, 'Last']]);
    assert.deepEqual(skipped, [2, 4, 7, 8]);
});

/** What a browser keeps, up to so many letters. */
function storage(room = Infinity) {
    const kept = new Map();
    return {
        getItem: key => kept.get(key) ?? null, removeItem: key => kept.delete(key), key: index => [...kept.keys()][index],
        setItem: (key, text) => {
            if (text.length > room)
                throw new Error('full');
            kept.set(key, text);
        },
        get length() {
            return kept.size;
        }};
}

const said = [], WORLD = {title: 'World', landDigest: 'd1'}, marksOf = world => new Marks({...WORLD, ...world}, text => said.push(text));
const names = ({items}) => items.map(({name}) => name);
const mark = (name, x = 1, y = 2) => ({x, y, name});

test('marks are kept by the browser for their world, and every change is heard', () => {
    global.localStorage = storage();
    const marks = marksOf();
    let heard = 0;
    marks.listen(() => ++heard);
    marks.add([{...mark('One', 1.23449), more: 3}, mark('Two', 3, 4), mark('One')]);
    const [one, two] = marks.items;
    marks.update(one, {name: 'First'});
    assert.equal(marks.items[0], one);
    marks.update(one, {x: -5}); // Not off the world.
    marks.onStorage({key: 'plotterra layers'});
    marks.remove(two);
    assert.deepEqual(marks.items, [mark('First', 1.234), mark('One')]);
    assert.deepEqual(marksOf({title: 'Renamed'}).items, marks.items);
    marks.undo();
    assert.deepEqual(names(marks), ['First', 'Two', 'One']);
    assert.equal(heard, 5);
    const other = marksOf({landDigest: 'd2'});
    assert.deepEqual([other.items, marksOf({title: 'Else', landDigest: 'd3'}).others()], [[], []]);
    const [{key, count}] = other.others();
    other.takeOver(key);
    assert.deepEqual([count, names(other)], [3, ['First', 'Two', 'One']]);
});

test('two pages at once lose nothing', () => {
    global.localStorage = storage();
    const pages = [marksOf(), marksOf()], [one, two] = pages, tell = to => to.onStorage({key: one.key});
    one.add([mark('A'), mark('B')]);
    two.add([mark('C')]); // Not told yet.
    assert.deepEqual(names(two), ['A', 'B', 'C']);
    const [a] = one.items;
    tell(one);
    assert.equal(one.items[0], a);
    one.remove(one.items[1]);
    two.update(two.items[1], {name: 'B changed'});
    tell(one);
    assert.deepEqual([names(one), names(two)], [['A', 'C', 'B changed'], ['A', 'C', 'B changed']]);
    one.undo();
    assert.deepEqual(names(one), ['A', 'B', 'C', 'B changed']);
    localStorage.removeItem(one.key);
    one.onStorage({key: one.key});
    assert.equal(one.items.length, 4);
});

test('of what is no mark only that is left out, and it is said', () => {
    global.localStorage = storage();
    localStorage.setItem('plotterra marks of World', JSON.stringify([null, 5, 'x', {...mark('Old'), more: 1}, {x: 1, y: null, name: ''}, {x: 1, y: 2}, mark('Off', -9), []]));
    said.length = 0;
    assert.deepEqual(marksOf().items, [mark('Old')]);
    assert.deepEqual(said, ['7 kept marks could not be read and are left out']);
    // What was kept by the title is the world's from now on.
    assert.equal(localStorage.getItem('plotterra marks of World'), null);
    assert.deepEqual([names(marksOf()), names(marksOf({landDigest: 'd2'}))], [['Old'], []]);
    for (const text of ['{', 'null', '5', '{"marks":3}']) {
        localStorage.setItem('plotterra marks d1', text);
        assert.deepEqual([marksOf().items, said.pop()], [[], 'The kept marks cannot be read'], text);
    }
    const marks = marksOf();
    marks.load('a;1N 1E;One\nx\n\nb;1N 999E;Off\n');
    assert.equal(said.pop(), '1 mark added; 2 lines left out that name no place on the map, first line 2');
    marks.load('[null, 1]');
    assert.equal(said.pop(), 'No place was found in that file; 1 line left out that names no place on the map, first line 1');
    assert.equal(marks.done.length, 1);
});

test('as many marks as there may be are kept or said not to be', () => {
    const many = Array.from({length: 100000}, (_, index) => `m;1N 1E;M${index}\n`).join('');
    for (const [room, isKept] of [[5e6, true], [1e6, false]]) {
        global.localStorage = storage(room);
        said.length = 0;
        const marks = marksOf();
        marks.add([mark('Own')]);
        marks.load(many);
        assert.deepEqual([marks.items.length, marks.isKept, said.length], [100001, isKept, 1]);
        assert.match(said[0], isKept ? /^100000 marks added$/ : /no room/);
        marks.add([mark('Late')]);
        assert.equal(marksOf().items.length, isKept ? 100002 : 1);
        // What another page keeps meanwhile is added.
        localStorage.setItem(marks.key, JSON.stringify([mark('Own'), mark('Other')]));
        marks.onStorage({key: marks.key});
        assert.equal(marks.items.length, isKept ? 2 : 100003);
        marks.undo();
        assert.deepEqual(names(marks), isKept ? ['Own', 'Other'] : ['Own', 'Late', 'Other']);
    }
    // The browser may refuse to be asked.
    global.localStorage = undefined;
    const marks = marksOf();
    marks.add([mark('A')]);
    assert.deepEqual([names(marks), marks.isKept, marks.others()], [['A'], false, []]);
});
