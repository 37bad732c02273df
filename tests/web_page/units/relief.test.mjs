import assert from 'node:assert/strict';
import test from 'node:test';
import {LAND_FLAG, LAND_SIZE} from '../../../web/page/land.js';
import {FIELD_OF_VIEW, ReliefFlight, ReliefView} from '../../../web/page/relief/camera.js';
import {roseOf, windOf} from '../../../web/page/relief/compass.js';
import {groundBytes, GROUND_SIZE} from '../../../web/page/relief/ground.js';
import {bestOfCells, rankOf, ReliefLabels} from '../../../web/page/relief/labels.js';
import {ReliefOverlay, samplesOfWay} from '../../../web/page/relief/overlay.js';
import {ReliefShape} from '../../../web/page/relief/pick.js';
import {landWithLevelSea, seaIndex} from '../../../web/page/relief/sea.js';
import {castShadows} from '../../../web/page/relief/shadows.js';
import {ReliefSight} from '../../../web/page/relief/sight.js';
import {nextOf} from '../../../web/page/relief/stops.js';
import {ReliefTree} from '../../../web/page/relief/tree.js';
import {waveBytes, WAVES_SIZE} from '../../../web/page/relief/waves.js';
import {COLORS, HEIGHTS, landOf, planesOf} from './world.mjs';

const GRASS = 1 << 2, SHALLOW = 18 << 2, DEEP = 20 << 2;
const near = (actual, expected, within = 1e-6) => assert.ok(Math.abs(actual - expected) <= within, `${actual} instead of ${expected}`);
const nearAll = (actual, expected, within) => expected.forEach((value, index) => near(actual[index], value, within));

/** What the library's camera does for a view, reckoned here. */
class Camera {
    constructor(aspect) {
        this.aspect = aspect;
        const vector = () => ({set(x, y, z) { Object.assign(this, {x, y, z}); }});
        Object.assign(this, {position: vector(), up: vector()});
    }

    lookAt(x, y, z) {
        const cross = (a, b) => [a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]];
        const unit = a => a.map(value => value / Math.hypot(...a)), dot = (a, b) => a.reduce((sum, value, index) => sum + value * b[index], 0);
        const eye = [this.position.x, this.position.y, this.position.z], back = unit([eye[0] - x, eye[1] - y, eye[2] - z]);
        const right = unit(cross([this.up.x, this.up.y, this.up.z], back)), top = cross(back, right);
        this.axes = {right, top, back, eye, dot};
    }

    updateProjectionMatrix() {
        const p = new Array(16).fill(0);
        p[5] = 1 / Math.tan(FIELD_OF_VIEW * Math.PI / 360);
        p[0] = p[5] / this.aspect;
        this.projectionMatrix = {elements: p};
    }

    updateMatrixWorld() {
        const {right, top, back, eye, dot} = this.axes, rows = [right, top, back];
        this.matrixWorldInverse = {elements: [0, 1, 2].flatMap(column => [...rows.map(row => row[column]), 0])
            .concat(rows.map(row => -dot(row, eye)), 1)};
    }
}

/** A window of 800 by 600 pixels on a land, with a view. */
function windowOn(land, values, {rise = 1, level = 0} = {}) {
    const shape = new ReliefShape(land, level), view = new ReliefView(shape), camera = new Camera(800 / 600), sight = new ReliefSight(camera, shape);
    shape.rise = rise;
    view.set(values);
    view.aim(camera);
    sight.resize(800, 600);
    return {shape, view, camera, sight};
}

/** A plain of height 12, a cell, with a ridge of 120 from x = 1020 to 1022. */
const RIDGED = landOf({word: GRASS, height: 1}, ({heights}, at) => {
    for (let y = 0; y < LAND_SIZE; ++y)
        heights.fill(10, at(1020, y), at(1022, y) + 1);
});
const PLAIN = landOf({word: GRASS, height: 1});

test('the middle of the window is the view\'s place, and places and pixels lead back to each other', () => {
    for (const heading of [0, 37, 90, 200, 359])
        for (const tilt of [0, 30, 60, 80]) {
            const {sight, camera, shape} = windowOn(PLAIN, {x: 700, y: 900, distance: 300, heading, tilt});
            const middle = sight.pixelOf({x: 700, y: 900, z: 1});
            nearAll([middle.x, middle.y, middle.eyeDistance], [400, 300, 300], 1e-3);
            for (const [column, row] of [[400, 300], [10, 590], [790, 310], [123, 456]]) {
                const place = shape.meet(camera.position, sight.directionTo(column, row), 6000, 1);
                const pixel = sight.pixelOf({...place, z: 1});
                nearAll([pixel.x, pixel.y], [column, row], 0.5);
            }
        }
});

test('a view has north above, and as looked at from above a flat map\'s zoom', () => {
    const {sight, view} = windowOn(PLAIN, {x: 700, y: 900, distance: ReliefView.distanceOfZoom(1, 600), heading: 0, tilt: 0});
    near(view.zoomIn(600), 1);
    const seen = (x, y) => sight.pixelOf({x, y, z: 1});
    nearAll([seen(710, 900).x, seen(710, 900).y], [420, 300], 0.01);
    nearAll([seen(700, 910).x, seen(700, 910).y], [400, 280], 0.01);
    assert.equal(sight.pixelOf({x: 1500, y: 900, z: 1}), null);
    const east = windowOn(PLAIN, {x: 700, y: 900, distance: 300, heading: 90, tilt: 50}).sight;
    assert.ok(east.pixelOf({x: 750, y: 900, z: 1}).y < 300, 'what lies in the east is ahead');
    assert.ok(east.pixelOf({x: 700, y: 850, z: 1}).x > 400, 'and the south on the right');
    assert.equal(east.pixelOf({x: 100, y: 900, z: 1}), null, 'behind the eye');
});

test('a view keeps within bounds, moves as it looks and stays above the land', () => {
    const {view} = windowOn(PLAIN, {x: -5, y: 9999, distance: 1, heading: -30, tilt: 120});
    assert.deepEqual(view.values(), {x: 0, y: LAND_SIZE - 1, distance: 14, heading: 330, tilt: 82});
    view.set({x: 1000, y: 1000, distance: 1e9, heading: 90, tilt: 0});
    view.moveBy(10, 20);
    nearAll([view.x, view.y, view.distance], [1020, 990, 5000]);
    // Low over the plain behind the ridge the eye would be within it.
    const {camera, shape} = windowOn(RIDGED, {x: 1041, y: 500, distance: 20.2, heading: 90, tilt: 82}, {rise: 4});
    near(camera.position.x, 1021, 0.1);
    assert.ok(camera.position.z >= shape.heightAt(camera.position.x, 500) + 1);
});

test('a flight turns the short way, rises when it goes far, and is there at once where nothing may move', () => {
    const {view} = windowOn(PLAIN, {x: 100, y: 100, distance: 200, heading: 350, tilt: 50});
    const flight = new ReliefFlight(view, {x: 1900, y: 100, heading: 20, distance: 50}, 1000);
    assert.equal(flight.step(flight.start + 500), true);
    nearAll([view.x, view.heading], [1000, 5], 1e-6);
    assert.ok(view.distance > 600, `${view.distance}`);
    assert.equal(flight.step(flight.start + 1001), false);
    nearAll([view.x, view.heading, view.distance, view.tilt], [1900, 20, 50, 50]);
    const calm = new ReliefFlight(view, {heading: 0}, 0);
    assert.equal(calm.step(calm.start), false);
    assert.equal(view.heading, 0);
});

test('a ray meets the land at its height, not what is behind it', () => {
    const {shape} = windowOn(RIDGED, {}, {rise: 2});
    assert.deepEqual([shape.heightAt(500, 500), shape.heightAt(1021, 500), shape.heightAt(1019.5, 500)], [2, 20, 11]);
    const meet = (from, to) => {
        const length = Math.hypot(to.x - from.x, to.y - from.y, to.z - from.z);
        return shape.meet(from, {x: (to.x - from.x) / length, y: (to.y - from.y) / length, z: (to.z - from.z) / length}, 3000, 10);
    };
    const eye = {x: 900, y: 500, z: 60};
    near(meet(eye, {x: 980, y: 500, z: 2}).x, 980, 0.1);
    near(meet(eye, {x: 1060, y: 500, z: 2}).x, 1020, 1.2);
    assert.ok(meet({...eye, z: 200}, {x: 1060, y: 500, z: 2}).x > 1059, 'from higher it sees over the ridge');
    assert.equal(meet(eye, {x: 1000, y: 500, z: 61}), null);
    assert.ok(shape.hides(eye, {x: 1060, y: 500, z: 3}));
    assert.ok(!shape.hides(eye, {x: 980, y: 500, z: 3}));
    shape.raiseSea(15 * 12);
    assert.ok(!shape.hides(eye, {x: 1060, y: 500, z: 31}), 'the sea is over the ridge');
    near(meet(eye, {x: 1000, y: 500, z: 30}).x, 1000, 0.1);
});

test('towns are named first, then the nearest; not what is hidden, drowned or has no room', () => {
    assert.deepEqual([{kind: 'place', look: 'town'}, {kind: 'place', look: 'port'}, {}, {kind: 'place', look: 'place'}, {kind: 'dungeon'}].map(rankOf), [0, 0, 1, 2, 3]);
    const spot = (name, x, eyeDistance, rank) => ({name, foot: {x, y: 100}, eyeDistance, rank});
    assert.deepEqual(bestOfCells([spot('far town', 30, 900, 0), spot('near cave', 31, 10, 3), spot('near town', 32, 300, 0), spot('other', 90, 50, 0)])
        .map(({name}) => name), ['other', 'near town']);

    // Seen from the west over the ridge.
    const {sight, shape} = windowOn(RIDGED, {x: 1000, y: 500, distance: 120, heading: 90, tilt: 70}, {rise: 2});
    const labels = new ReliefLabels(sight, shape), painted = [];
    const context = new Proxy({measureText: text => ({width: text.length * 7}), strokeText: text => painted.push(text)}, {
        get: (target, name) => target[name] || (() => {}), set: () => true});
    const cave = {kind: 'dungeon', name: 'Cave', x: 960, y: 500}, town = {kind: 'place', look: 'town', name: 'Town', x: 961, y: 501};
    const places = [cave, {kind: 'dungeon', name: 'Lone', x: 980, y: 520}, town, {kind: 'place', look: 'port', name: 'Behind', x: 1024, y: 500},
        {kind: 'place', look: 'town', name: 'Ridge', x: 1021, y: 500}, {name: 'Mark', x: 985, y: 480}];
    labels.draw(context, places);
    assert.deepEqual(painted, ['Town', 'Ridge', 'Mark', 'Lone']);
    const [{foot, box}] = labels.shown;
    assert.equal(labels.at(foot.x + 3, foot.y - 3).name, 'Town');
    assert.equal(labels.at(box.left + 1, box.top + 1), town);
    assert.equal(labels.at(box.left - 12, box.top - 12), undefined);
    const namesOf = (...more) => {
        painted.length = 0;
        labels.draw(context, ...more);
        return painted.slice();
    };
    assert.deepEqual(namesOf(places, [box]), ['Ridge', 'Mark', 'Lone'], 'a card covers it');
    shape.raiseSea(60);
    assert.deepEqual(namesOf(places), ['Ridge']);
});

test('dungeons are named from near by, and no name lies on the stem of another', () => {
    const namesFrom = (distance, places) => {
        const {sight, shape} = windowOn(PLAIN, {x: 700, y: 900, distance, heading: 0, tilt: 0}), labels = new ReliefLabels(sight, shape);
        labels.draw(new Proxy({measureText: text => ({width: text.length * 7})}, {get: (target, name) => target[name] || (() => {}), set: () => true}), places);
        return labels.shown.map(({place}) => place.name);
    };
    const town = {kind: 'place', look: 'town', name: 'Town', x: 700, y: 900}, cave = {kind: 'dungeon', name: 'Cave', x: 640, y: 900};
    assert.deepEqual(namesFrom(380, [cave, town]), ['Town', 'Cave']);
    assert.deepEqual(namesFrom(500, [cave, town]), ['Town']);
    // At this distance a point is 4 pixels: the other's name is 18 lower than the town's, beside its foot.
    const distance = ReliefView.distanceOfZoom(2, 600), below = {...cave, x: 700, y: 900 - 4.5};
    assert.deepEqual(namesFrom(distance, [town, below]), ['Town']);
    assert.deepEqual(namesFrom(distance, [town, {...below, x: 712}]), ['Town', 'Cave']);
});

test('a way is sampled evenly, through its corners', () => {
    const corners = [{x: 0, y: 0}, {x: 30, y: 40}, {x: 30, y: 40}, {x: 30, y: 90}], samples = samplesOfWay(corners, 10);
    assert.deepEqual(samples.map(({x, y}) => [x, y]).slice(4, 8), [[24, 32], [30, 40], [30, 40], [30, 50]]);
    assert.deepEqual([samples.length, samples[11], samplesOfWay([{x: 5, y: 6}])], [12, {x: 30, y: 90}, [{x: 5, y: 6}]]);
});

test('the way and the pin lie on the land, faint where a mountain hides them', () => {
    const {sight, shape} = windowOn(RIDGED, {x: 1000, y: 500, distance: 120, heading: 90, tilt: 70}, {rise: 2}), calls = [];
    const context = new Proxy({globalAlpha: 1}, {
        get: (target, name) => name in target ? target[name] : (...values) => calls.push([name, target.globalAlpha, ...values]),
        set: (target, name, value) => Reflect.set(target, name, value)});
    const overlay = new ReliefOverlay({getContext: () => context}, sight, shape), pixelOf = place => sight.pixelOf({...place, z: shape.heightAt(place.x, place.y)});
    overlay.density = 1;
    const draw = (way, pin) => {
        calls.length = 0;
        overlay.draw({labels: () => [], way: () => way, pin: () => pin, covers: () => []}, false);
        return name => calls.filter(([called]) => called === name);
    };
    const seen = {x: 980, y: 490}, top = {x: 1021, y: 500}, hidden = {x: 1060, y: 500};
    const way = draw([seen, top, hidden], null), ends = way('lineTo');
    assert.deepEqual([...new Set(ends.map(([, alpha]) => alpha))], [0.25, 1]);
    assert.deepEqual(way('arc').map(([, , x, y]) => [x, y]), [seen, top].map(place => [pixelOf(place).x, pixelOf(place).y]), 'corners in sight');
    const {x, y} = pixelOf(hidden), [, alpha, lastX, lastY] = ends.filter(([, faint]) => faint < 1).pop();
    assert.deepEqual([alpha, lastX, lastY], [0.25, x, y]);
    for (const [place, strength] of [[seen, 1], [hidden, 0.25]]) {
        const [, begun, left, middle] = draw([], place)('moveTo')[0];
        nearAll([begun, left, middle], [strength, pixelOf(place).x - 14, pixelOf(place).y]);
    }
    assert.deepEqual(draw([], {x: 100, y: 500})('moveTo'), [], 'behind the eye');
});

test('the sea stands level at its shores\' height; rivers, and sea far above it, keep theirs', () => {
    const {data} = LAND_FLAG, coast = landOf({word: DEEP, height: 0, flags: data}, ({heights, low, blocks}, at) => {
        for (let y = 0; y < LAND_SIZE; ++y) {
            low.fill(SHALLOW, at(900, y), at(1000, y));
            heights.fill(y % 17 === 0 ? 4 : y % 3 === 0 ? 2 : 3, at(900, y), at(1000, y)); // now and then higher, often lower
            low.fill(GRASS, at(1000, y), at(LAND_SIZE - 1, y) + 1);
            heights.fill(5, at(1000, y), at(LAND_SIZE - 1, y) + 1);
        }
        low[at(1500, 700)] = 16 << 2;
        [low[at(1600, 700)], heights[at(1600, 700)]] = [SHALLOW, 100];
        blocks[200 << 8 | 10] = 0;
    });
    assert.equal(seaIndex(coast), 3);
    const {land, level} = landWithLevelSea(coast), heightAt = (x, y) => land.heightAt(x, y);
    assert.equal(level, 36);
    assert.deepEqual([heightAt(5, 5), heightAt(950, 34), heightAt(950, 41), heightAt(1000, 40), heightAt(1500, 700), heightAt(1600, 700)],
        [36, 36, 36, 60, 60, 1200]);
    assert.equal(heightAt(200 * 8 + 4, 10 * 8 + 4), 36, 'where there is no land');
    assert.deepEqual([coast.heightAt(5, 5), coast.heightAt(950, 41)], [0, 36], 'the land itself is as it was');
    assert.deepEqual([landWithLevelSea(PLAIN).land, landWithLevelSea(PLAIN).level], [PLAIN, 0], 'no shore, no sea');

    const bytes = groundBytes(land, {azimuth: 90, altitude: 90, rise: 1}), wetAt = (x, y) => bytes[(y * GROUND_SIZE + x) * 2 + 1];
    assert.deepEqual([wetAt(5, 5), wetAt(950, 40), wetAt(1000, 40), wetAt(1500, 700), wetAt(1604, 84), wetAt(2040, 2040)], [255, 255, 0, 255, 255, 0]);
});

test('shadows lie behind what stands in the light, as long as the light is low', () => {
    const middle = 1000, {heights, elevations} = landOf({word: GRASS, height: 1}, (planes, at) => {
        for (let y = middle - 20; y <= middle + 20; ++y)
            planes.heights.fill(21, at(middle - 20, y), at(middle + 20, y) + 1); // twenty cells high
    });
    const cast = light => {
        const shades = castShadows(heights, elevations, {altitude: 45, rise: 1, ...light});
        return (...spots) => spots.map(([x, y]) => shades[(middle + y) * LAND_SIZE + middle + x]);
    };
    // The light comes from each side in turn; the shadow is twenty cells long on the other.
    for (const [azimuth, x, y] of [[0, 0, -1], [90, -1, 0], [180, 0, 1], [270, 1, 0]]) {
        const along = distance => [x * distance, y * distance];
        assert.deepEqual(cast({azimuth})(along(30), along(38), along(42), along(0), along(-30)), [255, 255, 0, 0, 0], `${azimuth}`);
    }
    assert.deepEqual(cast({azimuth: 315})([30, -30], [-30, 30], [-30, -30]), [255, 0, 0], 'across the corner');
    assert.deepEqual(cast({azimuth: 0, rise: 2})([0, -55], [0, -65]), [255, 0], 'twice as high, twice as long');
    assert.deepEqual(cast({azimuth: 0, altitude: 30})([0, -50], [0, -58]), [255, 0]);
    assert.deepEqual(cast({azimuth: 0, sea: 11})([0, -28], [0, -32]), [255, 0], 'on a raised sea it is shorter');
    assert.ok(cast({azimuth: 0, altitude: 0})([0, -500])[0] < 255, 'the last light is not quite level');
});

test('squares cover the land once, the near ones finer, nearest first', () => {
    const tree = new ReliefTree(RIDGED);
    assert.deepEqual([tree.lowest, tree.highest], [1, 10]);
    const chosen = tree.choose({x: 300, y: 400, z: 50}, elevation => elevation, () => true), covered = new Uint8Array(64 * 64);
    for (const {x, y, cell} of chosen)
        for (let row = 0; row < cell; ++row)
            for (let column = 0; column < cell; ++column)
                ++covered[(y / 32 + row) * 64 + x / 32 + column];
    assert.ok(covered.every(count => count === 1));
    const at = (x, y) => chosen.find(square => x >= square.x && y >= square.y && x < square.x + square.cell * 32 && y < square.y + square.cell * 32);
    assert.ok(at(300, 400).cell === 1 && at(2000, 2000).cell > 4);
    assert.deepEqual(chosen.map(({distance}) => distance), chosen.map(({distance}) => distance).sort((a, b) => a - b));
    assert.equal(tree.choose({x: 300, y: 400, z: 50}, elevation => elevation, (west, south, low, east) => east <= 512).every(({x}) => x < 512), true);
});

test('the rose, its winds and the names\' neighbours', () => {
    assert.deepEqual([0, 44, 91, 181, 315, 337, 338].map(windOf), ['north', 'north-east', 'east', 'south', 'north-west', 'north-west', 'north']);
    const rose = roseOf(), norths = rose.filter(({part}) => part === 'north');
    assert.deepEqual([rose.length, norths.length], [16, 2]);
    nearAll(norths[0].corners[1], [0, -33]);
    const names = [{x: 100, y: 0}, {x: 50, y: 30}, {x: 0, y: 80}, {x: -40, y: 5}];
    assert.deepEqual([[1, 0], [0, 1], [-1, 0], [0, -1]].map(direction => names.indexOf(nextOf({x: 0, y: 0}, names, direction))), [0, 2, 3, -1]);
});

test('waves go on where their picture ends, and are level as a whole', () => {
    const bytes = waveBytes(), slopes = at => [bytes[at * 4], bytes[at * 4 + 1]];
    const step = (one, other) => Math.max(...slopes(one).map((value, index) => Math.abs(value - slopes(other)[index])));
    let inside = 0, across = 0;
    for (let y = 0; y < WAVES_SIZE; ++y) {
        inside = Math.max(inside, step(y * WAVES_SIZE + 60, y * WAVES_SIZE + 61));
        across = Math.max(across, step(y * WAVES_SIZE, y * WAVES_SIZE + WAVES_SIZE - 1));
    }
    assert.ok(across <= inside * 1.5, `${across}, ${inside}`);
    near(bytes.reduce((sum, value, at) => sum + (at % 4 === 0 ? value : 0), 0) / WAVES_SIZE ** 2, 127.5, 1);
    assert.ok(new Set(bytes).size > 100);
});

test('a worker draws the level sea where colours do not tell heights', async () => {
    const replies = [];
    Object.assign(global, {onmessage: null, postMessage: reply => replies.push(reply)});
    await import('../../../web/page/worker.js');
    const tell = async data => {
        await global.onmessage({data});
        return replies.pop();
    };
    const newer = planesOf({word: DEEP, height: 1}, (planes, at) => {
        planes.low.fill(GRASS, 0, 900); // A shore, in the south.
        [100, 103, 105].forEach(x => planes.heights[at(x, 100)] = 0);
    });
    await tell({action: 'describe', description: {heights: HEIGHTS, colors: COLORS}});
    await tell({action: 'take', planes: {newer, older: null}});
    const colors = async (base, isLevel) => {
        const view = {base, azimuth: 315, altitude: 45, types: [], kinds: [], contours: 0, density: 1};
        const {pixels} = await tell({action: 'draw', view, area: {scale: 1, x: 98, y: 1936, width: 10, height: 8, isLevel}});
        return new Set(Array.from({length: 80}, (_, index) => pixels.slice(index * 4, index * 4 + 3).join())).size;
    };
    assert.deepEqual([await colors('land', true), await colors('height', true)], [1, 2]);
    assert.ok(await colors('land', false) > 2);
    assert.match((await tell({action: 'draw'})).error, /isLevel/);
});
