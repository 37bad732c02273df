import assert from 'node:assert/strict';
import test from 'node:test';
import {blockText, isInWorld, placeOfBlock, placeOfText, pointOfUnit, textOfPlace, unitOfPoint} from '../../../web/page/coordinates.js';
import {blockNumberAt, isBlockOfMap} from '../../../web/page/land.js';

const near = (value, wanted, message) => assert.ok(Math.abs(value - wanted) < 1e-6, `${message}: ${value}, not ${wanted}`);

test('a point is a tenth of a map unit, and the first stands at 101.9 west and south', () => {
    for (const [point, unit] of [[0, -101.9], [1019, 0], [2039, 102], [2040, 102.1]]) {
        near(unitOfPoint(point), unit, 'unit');
        near(pointOfUnit(unit), point, 'point');
    }
});

test('places are written as the game writes them, and read as people write them', () => {
    for (const [place, digits, text] of [
        [{x: 1589, y: 777}, 1, '24.2S 57.0E'], [{x: 1019, y: 1019}, 1, '0.0N 0.0E'], [{x: 0, y: 2040}, 1, '102.1N 101.9W'],
        [{x: 1018.4, y: 1019.26}, 2, '0.03N 0.06W']])
        assert.equal(textOfPlace(place, digits), text);
    for (const text of ['24.2S 57.0E', '24.2s, 57.0e', ' 24.2 S , 57 E', '24.2S57E', '24.2S 57.0E and more', '-24.2N 57E',
        '57E 24.2S', '57.0e,24.2s', '-57W  -24.2N', '24,2S 57,0E', '24,2S,57E', '57,0E, 24,2S', '2.42e1S 57E']) {
        const place = placeOfText(text);
        near(place.x, 1589, text);
        near(place.y, 777, text);
    }
    for (const text of ['', '24.2', '24.2S', '24.2 57.0', '24.2X 57.0E', '1.2.3N 4E', 'N E', '.N .E', '57E24.2S', '57E 24.2E', '1e999N 1E', '1e30N'])
        assert.equal(placeOfText(text), undefined, text);
    // However long: no text is gone through again from each of its places.
    const start = performance.now(), long = 60000;
    for (const text of [`1N${' '.repeat(long)}`, `1N ,${' '.repeat(long)}`, `1E${' '.repeat(long)}`, '1'.repeat(long), `${'1'.repeat(long)}.N`, ' '.repeat(long)])
        assert.equal(placeOfText(text), undefined);
    assert.ok(performance.now() - start < 500);
});

test('the world ends half a point beyond its last points', () => {
    for (const [x, y, isInside] of [[0, 0, true], [2040, 2040, true], [-0.5, 2040.5, true], [-0.6, 5, false], [5, -0.6, false],
        [2040.6, 5, false], [5, 2040.6, false], [NaN, 5, false]])
        assert.equal(isInWorld({x, y}), isInside, `${x}, ${y}`);
});

test('blocks are eight points wide, numbered by column and row', () => {
    for (const [x, y, number] of [[0, 0, 0], [7.9, 8, 0x0001], [8, 7.9, 0x0100], [2040, 2040, 0xFEFE], [2032, 0, 0xFE00]])
        assert.equal(blockNumberAt(x, y), number, `${x}, ${y}`);
    for (const [x, y] of [[-0.1, 0], [0, -0.1], [2040.1, 0], [0, 2040.1], [NaN, 0]])
        assert.equal(blockNumberAt(x, y), undefined, `${x}, ${y}`);
    assert.deepEqual(placeOfBlock(0x12FE), {x: 0x12 * 8 + 4, y: 0xFE * 8 + 4});
    assert.deepEqual([0xFEFE, 0xFEFF, 0xFFFE, 0].map(isBlockOfMap), [true, false, false, true]);
    assert.equal(blockText(0x0A), '000A');
});
