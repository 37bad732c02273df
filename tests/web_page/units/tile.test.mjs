import assert from 'node:assert/strict';
import test from 'node:test';
import {byteColors, typeColors} from '../../../web/page/colors.js';
import {CHANGE_KINDS} from '../../../web/page/changekinds.js';
import {LAND_FLAG} from '../../../web/page/land.js';
import {lightAtPoint} from '../../../web/page/light.js';
import {DEFAULTS, Settings} from '../../../web/page/settings.js';
import {seaColor} from '../../../web/page/points.js';
import {drawArea} from '../../../web/page/tile.js';
import {COLORS, landOf} from './world.mjs';

const VIEW = {...new Settings().forPainting(0)};
/** Light from right above, under which level land has its own colours. */
const NOON = {...VIEW, altitude: 90};
const ROCK = [0, 100, 200];

const draw = (newer, area, view = NOON, older = null) => drawArea({newer, older}, COLORS, view, area);

/** The colours of pixels `[column, row]` of the world at a scale. */
function pixels(land, scale, spots, view, older) {
    return spots.map(([x, y]) => [...draw(land, {scale, x, y, width: 1, height: 1}, view, older)].slice(0, 3));
}

test('colours follow the snow, the water and the roads, and pale beside what is picked', () => {
    const snow = typeColors(COLORS, {snow: true});
    assert.deepEqual([0, 1, 9, 2, 15, 3].map(type => snow[type][0]), [15, 15, 2, 2, 15, 3]);
    const bright = typeColors(COLORS, {water: true});
    assert.deepEqual(bright.flatMap((color, type) => color[0] === 0 && color[2] === 130 ? [type] : []), [16, 17, 18, 19, 20, 22]);
    assert.deepEqual(typeColors(COLORS, {roads: true}).filter((color, type) => color !== COLORS[type]).length, 1);
    const table = byteColors(COLORS, {types: [3]}), at = low => [...table.slice(low * 3, low * 3 + 3)];
    const [red, green, blue] = at(30 << 2);
    assert.deepEqual(at(3 << 2), COLORS[3]);
    assert.ok(Math.max(red, green, blue) < 80 && blue - red < 8, `${red} ${green} ${blue}`);
    assert.deepEqual([...byteColors(COLORS, {types: []}).slice(40 * 12, 40 * 12 + 3)], [255, 0, 0]);
    assert.deepEqual([...byteColors(COLORS, {types: []}).slice(7 * 3, 7 * 3 + 3)], COLORS[32]);
});

test('level land has its colour by the height of the light, a slope by where it faces', () => {
    // Rising by two cells a cell to the east, from column 100 to 102.
    const land = landOf({height: 10}, (planes, at) => [[100, 10], [101, 12], [102, 14], [103, 14]].forEach(
        ([x, height]) => [49, 50, 51].forEach(y => planes.heights[at(x, y)] = height)));
    const spots = [[101, 2040 - 50]], shareOf = view => pixels(land, 1, spots, view)[0][2] / 200;
    const close = (value, wanted) => assert.ok(Math.abs(value - wanted) < 0.006, `${value}, not ${wanted}`);
    close(pixels(land, 1, [[10, 10]], VIEW)[0][2] / 200, 0.8536);
    close(shareOf(NOON), (1 + 1 / Math.sqrt(5)) / 2);
    close(shareOf({...VIEW, azimuth: 270, altitude: 0}), (1 + 2 / Math.sqrt(5)) / 2);
    close(shareOf({...VIEW, azimuth: 90, altitude: 0}), (1 - 2 / Math.sqrt(5)) / 2);
    close(shareOf({...VIEW, azimuth: 0, altitude: 0}), 0.5);
});

test('at the edge of the land its slope is that of the neighbours that are there', () => {
    // One block that rises by one cell a cell to the north, and two to the east.
    const land = landOf({flags: 0}, (planes, at) => {
        planes.blocks[0x0101] = LAND_FLAG.data;
        for (let y = 8; y <= 16; ++y)
            for (let x = 8; x <= 16; ++x)
                planes.heights[at(x, y)] = y + 2 * x;
    });
    for (const [x, y] of [[8, 8], [16, 16], [8, 12], [12, 16], [16, 8], [12, 12]]) {
        const slope = {};
        lightAtPoint(land, x, y, [0, 0, 1], slope);
        assert.deepEqual(slope, {dx: 2, dy: 1}, `${x}, ${y}`);
    }
});

test('a point is where its pixel is, at every scale', () => {
    const x = 1000, y = 1040; // multiples of eight, counted from the north-west as well
    const land = landOf({}, (planes, at) => planes.low[at(x, y)] = 4 << 2);
    for (const size of [1, 2 ** 0.5, 2, 3, 2 ** 2.25, 8, 64, 96]) {
        const west = Math.ceil(x * size - 0.5), north = Math.ceil((2040 - y) * size - 0.5);
        const last = Math.ceil((x + 1) * size - 0.5) - 1 - west, inside = [[west, north], [west + last, north + last]];
        const outside = [[west - 1, north], [west, north - 1], [west + last + 1, north], [west, north + last + 1]];
        const view = {...NOON, squares: true};
        assert.deepEqual(pixels(land, size, inside, view), [COLORS[4], COLORS[4]], `scale ${size}`);
        assert.deepEqual(pixels(land, size, outside, view), [ROCK, ROCK, ROCK, ROCK], `scale ${size}`);
    }
});

test('between points the land is smooth, and at a point it is as the picture has it', () => {
    // A single hill, on a plain whose types meet at a straight line.
    const land = landOf({height: 10}, (planes, at) => {
        planes.heights[at(100, 100)] = 11;
        for (let y = 0; y < 200; ++y)
            planes.low.fill(4 << 2, at(100, y), at(200, y));
    });
    for (const scale of [3, 5, 2 ** 0.75, 2 ** 2.25]) {
        const at = (x, y) => pixels(land, scale, [[Math.floor((x + 0.5) * scale), Math.floor((2040.5 - y) * scale)]], VIEW)[0];
        for (const [x, y] of [[50, 50], [99, 100], [101, 100], [100, 101], [150, 20]])
            for (const [index, component] of at(x, y).entries())
                if (Number.isInteger(scale))
                    assert.ok(Math.abs(component - pixels(land, 1, [[x, 2040 - y]], VIEW)[0][index]) <= 1, `${x}, ${y} at ${scale}`);
        assert.deepEqual([at(90, 50)[0], at(110, 50)[0]], [0, 3], `scale ${scale}`);
    }
});

test('from afar a pixel is the mean of its points', () => {
    // Red in the first and the last of 8 x 8 points.
    const land = landOf({}, (planes, at) => [at(1000, 1040), at(1007, 1033)].forEach(index => planes.low[index] = 63 << 2));
    for (const [points, ends] of [[2, [255 / 4, 255 / 4]], [4, [255 / 16, 255 / 16]], [8, [255 / 32, 255 / 32]]]) {
        const [west, north, east, south] = [1000 / points, 1000 / points, Math.floor(1007 / points), Math.floor(1007 / points)];
        const around = [[west - 1, north], [west, north - 1], [east + 1, south], [east, south + 1]];
        assert.deepEqual(pixels(land, 1 / points, [[west, north], [east, south], ...around]).map(([red]) => red),
            [...ends.map(Math.floor), 0, 0, 0, 0], `${points} points`);
    }
    // A plain stays one, wherever its points are cut.
    for (const scale of [0.75, 2 ** -1.25, 2 ** -2.5])
        assert.deepEqual(new Set(pixels(landOf(), scale, [[100, 100], [101, 100], [102, 103], [0, 0]]).map(String)), new Set([String(ROCK)]), `${scale}`);
    // Where points are cut, each pixel has its share of them: nothing is lost and nothing added.
    for (const scale of [0.75, 2 ** -1.25, 2 ** -2.5]) {
        const area = {scale, x: Math.floor(995 * scale), y: Math.floor(995 * scale), width: 20, height: 20};
        const bytes = draw(landOf({}, (planes, at) => {
            for (let row = 0; row < 8; ++row)
                planes.low.fill(63 << 2, at(1000, 1033 + row), at(1008, 1033 + row));
        }), area);
        const sum = bytes.reduce((whole, byte, at) => at % 4 === 0 ? whole + byte : whole, 0) / 255 / scale ** 2;
        assert.ok(Math.abs(sum - 64) < 64 * 0.02 + 0.5 / scale ** 2, `${sum} points at ${scale}`);
    }
});

test('nothing is painted off the world, and deep sea where no land is', () => {
    const land = landOf({flags: 0}, planes => planes.blocks[0] = LAND_FLAG.data);
    const bytes = draw(land, {scale: 1, x: -1, y: 2040, width: 11, height: 2});
    const column = x => [...bytes.slice((x + 1) * 4, (x + 1) * 4 + 4)];
    assert.deepEqual([column(-1), column(0), column(8), column(9)], [[0, 0, 0, 0], [...ROCK, 255], [...ROCK, 255], [...COLORS[20], 255]]);
    assert.ok(bytes.slice(11 * 4).every(byte => byte === 0));
});

test('squares are whole, and the sea around the world is as that in it', () => {
    const land = landOf({}, (planes, at) => planes.low.fill(5 << 2, at(1000, 1040), at(1000, 1041)));
    const bytes = draw(land, {scale: 8, x: 7992, y: 7992, width: 24, height: 24}, {...NOON, squares: true});
    const row = index => Buffer.from(bytes.slice(index * 96, index * 96 + 96)).toString('hex');
    assert.equal(new Set(Array.from({length: 8}, (_, index) => row(8 + index))).size, 1);
    const nothing = landOf({flags: 0});
    for (const base of ['land', 'height', 'slope', 'difference'])
        for (const altitude of [10, 60]) {
            const view = {...VIEW, base, altitude}, around = seaColor(byteColors(COLORS, view), view).map(Math.floor);
            assert.deepEqual(pixels(nothing, 1, [[5, 5]], view, nothing)[0], around, `${base} ${altitude}`);
        }
    const dim = base => seaColor(byteColors(COLORS, VIEW), {...VIEW, base, altitude: 0});
    assert.deepEqual([dim('land')[2], dim('slope')[0]], [COLORS[20][2] / 2, 247]);
});

test('other bases say height, steepness and difference', () => {
    const land = landOf({height: 77}, (planes, at) => planes.heights[at(50, 50)] = 78);
    const older = landOf({height: 77}, (planes, at) => planes.heights[at(60, 60)] = 99);
    const at = (x, y, base) => pixels(land, 1, [[x, 2040 - y]], {...NOON, base}, older)[0];
    assert.deepEqual(at(50, 50, 'height'), [78, 78, 78]);
    assert.deepEqual(at(10, 10, 'slope'), [247, 244, 230]);
    assert.ok(at(51, 50, 'slope')[2] < at(10, 10, 'slope')[2]);
    const [same, risen, sunk] = [[10, 10], [50, 50], [60, 60]].map(([x, y]) => at(x, y, 'difference'));
    assert.ok(risen[0] > risen[2] && sunk[2] > sunk[0] && Math.abs(same[0] - same[2]) < 8, `${same} ${risen} ${sunk}`);
});

test('blocks are filled by what is in them and by what became of them', () => {
    const {data, passable, changed, added, removed, objects} = LAND_FLAG, flags = [changed, added, removed, objects, changed];
    const land = landOf({}, planes => flags.forEach((flag, row) => planes.blocks[0x0500 + row] = data | passable | flag));
    const older = landOf({}, planes => planes.blocks[0x0504] = 0);
    const rows = view => [0, 1, 2, 3, 4, 5].map(row => pixels(land, 1, [[44, 2040 - row * 8 - 4]], {...NOON, ...view}, older)[0]);
    const tinted = view => rows(view).map(color => String(color) !== String(ROCK)).map(Number).join('');
    assert.equal(tinted({changes: true}), '111010');
    assert.equal(tinted({objects: true}), '000100');
    assert.equal(tinted({changes: true, kinds: ['added', 'new']}), '010010');
    const colors = rows({changes: true, kinds: CHANGE_KINDS.slice().reverse()});
    assert.equal(new Set(colors.map(String)).size, 5);
    assert.deepEqual(pixels(land, 1, [[44, 2036]], {...NOON, changes: true}), pixels(land, 1, [[44, 2036]], NOON), 'without an older land');
    const closed = landOf({flags: data});
    assert.notDeepEqual(pixels(closed, 1, [[9, 9]], {...NOON, impassable: true})[0], ROCK);
});

test('where tints would hide what they mark, changed blocks are outlined together', () => {
    const land = landOf({}, planes => [0x0505, 0x0506, 0x0606].forEach(number => planes.blocks[number] |= LAND_FLAG.changed));
    const older = landOf(), isTinted = (x, y, view) => String(pixels(land, 4, [[x, y]], {...NOON, changes: true, ...view}, older)) !==
        String(pixels(land, 4, [[x, y]], {...NOON, ...view}, older));
    // At four pixels a point: a block is 32 pixels wide, from half a point before its first.
    const left = 5 * 32 + 2, bottom = 2041 * 4 - (5 * 32 + 2) - 1, spots = [
        [left + 16, bottom - 16, true, false], [left, bottom - 16, true, true], [left + 31, bottom - 16, true, true],
        [left + 16, bottom, true, true], [left + 16, bottom - 31, true, false], [left + 31, bottom - 48, true, false],
        [left - 1, bottom - 16, false, false], [left + 63, bottom - 48, true, true]];
    for (const [x, y, isFilled, isOutline] of spots) {
        assert.equal(isTinted(x, y), isFilled, `${x}, ${y}`);
        for (const view of [{swipe: true}, {base: 'difference'}])
            assert.equal(isTinted(x, y, view), isOutline, `${x}, ${y}: ${JSON.stringify(view)}`);
    }
    const corner = landOf({}, planes => planes.blocks[0xFEFE] |= LAND_FLAG.changed);
    for (const [x, y] of [[8163, 0], [8163, 30], [8140, 0]])
        assert.notDeepEqual(pixels(corner, 4, [[x, y]], {...NOON, changes: true}, older), pixels(corner, 4, [[x, y]], NOON, older), `${x}, ${y}`);
    // Half of the world changed.
    const busy = landOf({}, planes => planes.blocks.fill(LAND_FLAG.data | LAND_FLAG.changed, 0, 0x8000));
    assert.deepEqual(pixels(busy, 1, [[44, 1000]], {...NOON, changes: true}, older)[0], ROCK);
});

test('roads brought out are lines from point to point', () => {
    const land = landOf({}, (planes, at) => [[100, 100], [101, 101], [102, 101], [110, 100]].forEach(([x, y]) => planes.low[at(x, y)] = 1));
    const isRed = (x, y, scale) => {
        const [red, green, blue] = pixels(land, scale, [[Math.floor((x + 0.5) * scale), Math.floor((2040.5 - y) * scale)]], {...NOON, roads: true, squares: true})[0];
        return red > 150 && green < 60 && blue < 60;
    };
    for (const scale of [8, 16])
        for (const [x, y, isRoad] of [[100, 100, true], [100.5, 100.5, true], [101.5, 101, true], [110, 100, true], [100.5, 101, false],
            [105, 100.5, false], [101, 100.2, false]])
            assert.equal(isRed(x, y, scale), isRoad, `${x}, ${y} at ${scale}`);
    assert.ok(isRed(110, 100, 1 / 4));
});

test('contour lines stand where the land passes a level, farther apart from afar', () => {
    // A slope to the east: each column is 12 higher than the one before it.
    const land = landOf({}, (planes, at) => {
        for (let y = 0; y < 40; ++y)
            for (let x = 0; x < 100; ++x)
                planes.heights[at(x, y)] = x;
    });
    const lines = (contours, density = 1, scale = 1) => {
        const area = {scale, x: 10 * scale, y: 2020 * scale, width: 60 * scale, height: 1}, blues = view => draw(land, area, view).filter((_, at) => at % 4 === 2);
        const plain = blues({...NOON, density}), drawn = blues({...NOON, contours, density});
        // By place, and how dark in all.
        return [...plain].flatMap((blue, column) => plain[column] - drawn[column] > 20 ? [[(column + area.x + 0.5) / scale - 0.5, blue - drawn[column]]] : []);
    };
    // Where they are darkest; every fifth is a main one.
    const places = interval => lines(interval).filter(([x, dark], _, all) => !all.some(([other, darker]) => Math.abs(other - x) === 1 && darker > dark));
    const [tenth, , , , fiftieth] = places(120);
    assert.ok(fiftieth[1] > 1.4 * tenth[1], 'main lines');
    assert.deepEqual(places(120).map(([x]) => x), [10, 20, 30, 40, 50, 60]);
    assert.deepEqual(places(240).map(([x]) => x), [20, 40, 60]);
    const grey = view => pixels(land, 1, [[50, 2020]], {...NOON, base: 'height', ...view})[0][0];
    assert.ok(grey({contours: 120}) > grey({}) + 50, 'light on dark land');
    const darkness = (...view) => lines(...view).reduce((sum, [, dark]) => sum + dark, 0);
    assert.ok(darkness(120, 3, 3) > 2.5 * darkness(120, 1, 3), 'as wide on a dense screen');
    const settings = new Settings();
    assert.equal(settings.forPainting(0).contours, 0);
    settings.set({contours: true});
    const intervals = [-3, -2, -1.5, -1, 0, 1, 1.5, 2, 3, 3.5, 4, 6].map(zoom => settings.forPainting(zoom).contours);
    assert.deepEqual(intervals, [200, 200, 100, 100, 50, 50, 20, 20, 20, 10, 10, 10]);
    assert.equal(DEFAULTS.contours, false);
});
