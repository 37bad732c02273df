import assert from 'node:assert/strict';
import test from 'node:test';
import {Duplex} from 'node:stream';
import {createInflateRaw, deflateRawSync} from 'node:zlib';
import {countTypes, Land, LAND_FLAG, LAND_SIZE} from '../../../web/page/land.js';
import {adler32, unpackLand} from '../../../web/page/unpack.js';
import {HEIGHTS, landOf, planesOf} from './world.mjs';

// The browser's own, which older versions of this interpreter have only in part.
global.DecompressionStream = class {
    constructor() {
        return Duplex.toWeb(createInflateRaw());
    }
};

/** What the program writes: planes with heights less the median of their neighbours. */
function packed(newer, older) {
    const {heights} = newer, residuals = new Uint8Array(heights.length);
    for (let y = 0, index = 0; y < LAND_SIZE; ++y)
        for (let x = 0; x < LAND_SIZE; ++x, ++index) {
            const w = x > 0 ? heights[index - 1] : 0, s = y > 0 ? heights[index - LAND_SIZE] : 0;
            const d = x > 0 && y > 0 ? heights[index - LAND_SIZE - 1] : 0;
            residuals[index] = heights[index] - Math.max(Math.min(w, s), Math.min(Math.max(w, s), w + s - d));
        }
    const parts = [residuals, newer.low, newer.high, newer.blocks];
    if (older)
        parts.push(older.heights.map((height, index) => height - newer.heights[index]), older.low.map((byte, index) => byte ^ newer.low[index]),
            older.high.map((byte, index) => byte ^ newer.high[index]), older.blocks);
    return Buffer.concat(parts);
}

function unpack(bytes, hasOlderLand, report = () => {}) {
    const deflated = deflateRawSync(bytes, {level: 1});
    return unpackLand(deflated.toString('base64'), {hasOlderLand, landChecksum: adler32(deflated)}, report);
}

test('lands come out of the page as they went in', async () => {
    let state = 1;
    const noise = () => (state = Math.imul(state, 1664525) + 1013904223 >>> 0) >>> 24;
    const newer = planesOf({}, planes => {
        for (const plane of [planes.heights, planes.low, planes.high])
            for (const start of [0, 1000 * LAND_SIZE - 20000, plane.length - 20000])
                for (let at = start; at < start + 20000; at += 1 + noise() % 8)
                    plane[at] = noise();
        planes.blocks[0xFEFE] = 0x2A;
    });
    const older = planesOf({word: 0x1234, height: 9}, planes => planes.blocks[7] = 0);
    const shares = [];
    const both = await unpack(packed(newer, older), true, share => shares.push(share));
    for (const [name, wanted] of Object.entries({newer, older}))
        for (const plane of ['heights', 'low', 'high', 'blocks'])
            assert.ok(Buffer.compare(both[name][plane], wanted[plane]) === 0, `${name} ${plane}`);
    assert.deepEqual(shares, shares.slice().sort((a, b) => a - b));
    const alone = await unpack(packed(newer), false);
    assert.equal(alone.older, null);
    assert.ok(Buffer.compare(alone.newer.heights, newer.heights) === 0);
});

test('a land that is not what was written is refused', async () => {
    const bytes = new TextEncoder().encode('Plotterra'), long = new Uint8Array(300000).fill(255);
    assert.equal(adler32(bytes), 0x126D03BE);
    assert.equal(adler32(long), 0x00A29082);
    const text = deflateRawSync(Buffer.from('A land')).toString('base64'), {length} = text;
    const refusal = (other, known) => unpackLand(other, {hasOlderLand: false, landChecksum: known}, () => {}).then(() => 'taken', error => error.message);
    const sound = adler32(Buffer.from(text, 'base64'));
    for (const other of [text.slice(0, length - 4), text.slice(0, length - 3), `${text.slice(0, 3)}!${text.slice(4)}`, '', `A${text.slice(1)}`])
        assert.equal(await refusal(other, sound), 'the file was cut short or altered', other);
    assert.match(await refusal(text, sound), /has 6 bytes instead of/);
});

test('a point has land where any of its blocks has, and says what it is', () => {
    const land = landOf({flags: 0}, (planes, at) => {
        planes.blocks[0x0203] = LAND_FLAG.data;
        planes.low.set([16 << 2 | 0, 16 << 2 | 1, 31 << 2 | 2], at(16, 24));
        planes.heights[at(17, 25)] = 255;
    });
    for (const [x, y, has] of [[16, 24, true], [24, 32, true], [15, 24, false], [16, 23, false], [25, 32, false], [24, 33, false],
        [-1, 0, false], [0, -1, false], [2041, 0, false]])
        assert.equal(land.has(x, y), has, `${x}, ${y}`);
    assert.deepEqual([16, 17, 18].map(x => land.typeAt(x, 24)), [16, 32, 32]);
    assert.equal(land.heightAt(17, 25), 255 * 12);
    // Of the 81 points of a block.
    assert.deepEqual(countTypes(land), [[0, 78], [32, 2], [16, 1]]);
    assert.deepEqual([new Land(HEIGHTS).has(5, 5), countTypes(new Land(HEIGHTS))], [false, []]);
});

test('heights between points are theirs by their share, and level beyond the edge', () => {
    const land = landOf({height: 1}, (planes, at) => {
        planes.heights[at(10, 10)] = 5;
        planes.heights[at(2040, 2040)] = 9;
    });
    for (const [x, y, height] of [[10, 10, 60], [10.5, 10, 36], [10, 9.5, 36], [10.5, 10.5, 24], [11, 10, 12], [-50, 10, 12]])
        assert.equal(land.heightBetween(x, y), height, `${x}, ${y}`);
    assert.ok(Math.abs(land.heightBetween(5000, 5000) - 108) < 1);
    // A table may be short: then the land is flat.
    assert.equal(new Land(HEIGHTS.slice(0, 2), planesOf({height: 3})).heightAt(5, 5), 0);
});
