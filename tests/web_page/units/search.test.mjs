import assert from 'node:assert/strict';
import test from 'node:test';
import {changesOfBlock} from '../../../web/page/blockchanges.js';
import {changedBlocks} from '../../../web/page/changes.js';
import {LAND_FLAG} from '../../../web/page/land.js';
import {factsOfPlace, heightText, lineOfFacts} from '../../../web/page/readout.js';
import {findPlaces, NameIndex} from '../../../web/page/search.js';
import {planesOf, worldOf} from './world.mjs';

const WORLD = worldOf({
    places: [[57, -24.2, 'Port Élan'], [1, 2, 'The Port'], [3, 4, 'Airport'], [5, 6, 'Élan', 'Town'], [7, 8, 'Élevée', 'harbour'], [0, 300, 'Off']],
    dungeons: [[0x01FE, 'Portal Caves', [[10, 10], [11, 11]]], [0x0205, 'Hidden Port', []]]});
const INDEX = new NameIndex(WORLD, [{name: 'My port', x: 5, y: 6}]);
const find = text => findPlaces(text, WORLD, INDEX), names = text => find(text).map(({name}) => name);

test('names are found at their beginning first, then at a word, then within', () => {
    assert.deepEqual(names('port'), ['Port Élan', 'Portal Caves', 'Portal Caves', 'Hidden Port', 'My port', 'The Port', 'Airport']);
    assert.deepEqual(names('  ELAN '), ['Élan', 'Port Élan']);
    assert.deepEqual(names('elevee'), ['Élevée']);
    assert.deepEqual([names(''), names('nowhere'), names('off')], [[], [], []]);
});

test('a letter wrong, missing, too many or changed with the next is forgiven where nothing else is found', () => {
    for (const text of ['hodden p', 'hiden port', 'hiddden', 'hiddne', 'xidden', 'hidden pprt', 'hiddenport', 'hiddenx'])
        assert.deepEqual(names(text), ['Hidden Port'], text);
    for (const text of ['hxddxn', 'hdidne', 'xdd', 'idden port there', 'hiddenxx'])
        assert.deepEqual(names(text), [], text);
    // Within a name only words begin anew.
    assert.deepEqual(names('cavse'), ['Portal Caves', 'Portal Caves']);
    assert.deepEqual(names('prort'), ['Port Élan', 'Portal Caves', 'Portal Caves', 'Hidden Port', 'My port', 'The Port'].sort());
});

test('what is found says what and where it is, each entrance by itself', () => {
    const rows = text => find(text).map(({kind, detail, place: {x, y}}) => [kind, detail, Math.round(x), Math.round(y)]);
    assert.deepEqual(rows('portal'), [['dungeon', '10.0N 10.0E, 1 of 2', 1119, 1119], ['dungeon', '11.0N 11.0E, 2 of 2', 1129, 1129]]);
    assert.deepEqual(rows('hidden'), [['dungeon', 'block 0205', 20, 44]]);
    assert.deepEqual(['port elan', 'elan', 'elevee', 'my'].map(text => find(text)[0].kind), ['place', 'town', 'port', 'mark']);
    assert.deepEqual(rows('port elan')[0].slice(2), [1589, 777]);
});

test('blocks and coordinates are found, unless they are off the world', () => {
    assert.deepEqual(names('01fe'), ['Block 01FE']);
    assert.deepEqual(names('0xFEFE'), ['Block FEFE']);
    assert.deepEqual([names('FFFF'), names('FEFF'), names('01F'), names('300N 2E'), names('2N 102.3E')], [[], [], [], [], []]);
    assert.deepEqual(find('01FE')[0].detail, 'Portal Caves');
    assert.deepEqual(names('57E 24,2s'), ['24.2S 57.0E']);
});

test('what is under the cursor is told to the letter', () => {
    const world = worldOf({landTypes: ['BarrenRock'], colorNames: []}, planesOf({flags: LAND_FLAG.data, height: 2}));
    const facts = factsOfPlace(world, {x: 1589.4, y: 777});
    assert.equal(lineOfFacts(facts), '24.2S 57.0E  block C661  Barren rock  height 24');
    assert.deepEqual(facts.notes, ['not passable']);
    assert.equal(factsOfPlace(world, {x: -1, y: 5}), null);
    assert.equal(factsOfPlace(world, {x: 2040.4, y: 2040.4}).block, 'FEFE');
    assert.equal(factsOfPlace(worldOf({}, planesOf({flags: 0})), {x: 5, y: 5}).type, 'no land');
    assert.deepEqual([0.1, 24.200000762939453, 1 / 3, 1200, 0].map(height => heightText(Math.fround(height))),
        ['0.1', '24.2', '0.33333334', '1200', '0']);
});

test('changes are counted by block, also beyond the edge of the map', () => {
    const {data, added, removed, changed} = LAND_FLAG;
    const newer = planesOf({flags: 0}, ({blocks}) => {
        blocks[0x0101] = data | changed;
        blocks[0x0102] = data | added;
        blocks[0x0103] = removed;
        blocks[0x0104] = data;
        blocks[0x0105] = data | changed;
        blocks[0xFFFF] = changed;
    });
    const older = planesOf({flags: 0}, ({blocks}) => [0x0101, 0x0103, 0x0104].forEach(number => blocks[number] = data));
    assert.deepEqual(changedBlocks(worldOf({}, newer, older)).map(({number, kinds}) => [number, ...kinds]), [
        [0x0101, 'changed'], [0x0102, 'added', 'new'], [0x0103, 'removed', 'gone'], [0x0105, 'changed', 'new'], [0xFFFF, 'changed']]);
});

test('what changed in a block is told in numbers', () => {
    const {data, changed, objects, passable} = LAND_FLAG;
    const planes = (height, low, flags) => planesOf({flags: 0, height: 10}, (all, at) => {
        all.blocks[0x0203] = flags;
        all.blocks[0x0204] = flags;
        [[16, 24], [24, 32]].forEach(([x, y], index) => all.heights[at(x, y)] = height[index]);
        [[17, 25], [18, 25], [19, 25]].forEach(([x, y], index) => all.low[at(x, y)] = low[index]);
    });
    const world = worldOf({colorNames: ['rockColor', 'grassColor']}, planes([8, 13], [4, 4, 1], data | changed | objects), planes([10, 10], [0, 0, 0], data | passable));
    assert.deepEqual(changesOfBlock(world, 0x0203), {kinds: ['changed'], lines: [
        'Height of 2 points: −24 to +36', 'Rock → Grass: 2 points', 'Rock → type 32: 1 point', 'Has objects', 'No longer has a way through']});
    assert.deepEqual(changesOfBlock(world, 0x0204).lines[0], 'Height of 1 point: +36');
    assert.equal(changesOfBlock(world, 0x0206), null);
    assert.equal(changesOfBlock(worldOf({}), 0x0203), null);
    // The most frequent types, and the rest in one line.
    const many = planesOf({flags: data | changed}, (all, at) => [1, 1, 1, 2, 2, 2, 3, 3, 4, 4, 5, 6].forEach((type, x) => all.low[at(x % 9, Math.floor(x / 9))] = type << 2));
    assert.deepEqual(changesOfBlock(worldOf({}, many, planesOf({flags: data})), 0).lines.map(line => line.split(/[→:] /).slice(-2).join()),
        ['type 1,3 points', 'type 2,3 points', 'type 3,2 points', 'type 4,2 points', 'Other land types,2 points']);
    const same = planesOf({flags: data | changed});
    assert.deepEqual(changesOfBlock(worldOf({}, same, planesOf({flags: data})), 5).lines, ['Its land is as it was']);
});
