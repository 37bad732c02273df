import assert from 'node:assert/strict';
import test from 'node:test';
import {contourLabels} from '../../../web/page/contourlabels.js';
import {legendEntries} from '../../../web/page/legend.js';
import {frameOfArea, placeOfShare} from '../../../web/page/overview.js';
import {scaleOfZoom} from '../../../web/page/scalebar.js';
import {Settings} from '../../../web/page/settings.js';
import {TINTS} from '../../../web/page/tints.js';
import {HEIGHTS, landOf} from './world.mjs';

/** What light of red, green and blue becomes for those who lack a kind of cones. */
const EYES = {
    all: [[1, 0, 0], [0, 1, 0], [0, 0, 1]],
    long: [[0.152286, 1.052583, -0.204868], [0.114503, 0.786281, 0.099216], [-0.003882, -0.048116, 1.051998]],
    middle: [[0.367322, 0.860646, -0.227968], [0.280085, 0.672501, 0.047413], [-0.01182, 0.04294, 0.968881]],
    short: [[1.255528, -0.076749, -0.178779], [-0.078411, 0.930809, 0.147602], [0.004733, 0.691367, 0.3039]]};

/** Lightness, and how red or green, how yellow or blue a colour seems: CIE L*a*b*. */
function seen(color, eye) {
    const light = color.map(part => part > 10 ? ((part / 255 + 0.055) / 1.055) ** 2.4 : part / 255 / 12.92), times = (rows, vector) => rows.map(row => row.reduce((sum, value, index) => sum + value * vector[index], 0));
    const [x, y, z] = times([[0.4339, 0.3762, 0.1899], [0.2126, 0.7152, 0.0722], [0.0177, 0.1095, 0.8729]], times(eye, light).map(part => Math.max(0, Math.min(1, part))))
        .map(part => part > 0.008856 ? Math.cbrt(part) : 7.787 * part + 16 / 116);
    return [116 * y - 16, 500 * (x - y), 200 * (y - z)];
}

test('tints of blocks are told apart by all eyes', () => {
    for (const [missing, eye] of Object.entries(EYES))
        for (const [one, color] of Object.entries(TINTS))
            for (const [other, otherColor] of Object.entries(TINTS).filter(([name]) => name < one)) {
                const [a, b] = [seen(color, eye), seen(otherColor, eye)], far = Math.hypot(...a.map((value, index) => value - b[index]));
                assert.ok(far > 28, `${one} and ${other} without the cones for ${missing} waves: ${far.toFixed(0)}`);
            }
});

test('the legend says what is shown and is not the game\'s own', () => {
    const settings = new Settings(), titles = zoom => legendEntries(settings, zoom, HEIGHTS, true).map(({title}) => title);
    assert.deepEqual(titles(0), []);
    settings.set({contours: true, base: 'slope', changes: true});
    assert.deepEqual(titles(0), ['Steepness', 'Contours every 50, bold every 250', 'Changed blocks']);
    assert.deepEqual(titles(4)[1], 'Contours every 10, bold every 50');
    settings.set({interval: 35});
    assert.equal(titles(4)[1], 'Contours every 35, bold every 175');
    assert.equal(settings.forPainting(4).contours, 35);
    settings.set({base: 'height', kinds: ['added', 'new'], contours: false});
    const [height, changes] = legendEntries(settings, 0, HEIGHTS, true);
    assert.deepEqual([height.labels, height.colors[0], height.colors[16]], [['0', '1536', '3060'], [0, 0, 0], [255, 255, 255]]);
    assert.deepEqual(changes.swatches.map(([kind]) => kind), ['added', 'new']);
    assert.equal(legendEntries(settings, 0, HEIGHTS, false).length, 1);
    settings.set({base: 'slope'});
    assert.deepEqual(legendEntries(settings, 0, [], false)[0].labels, ['0°', '30°', '60°']);
});

test('the scale bar is as long as it says, and never long', () => {
    for (let zoom = -3.5; zoom <= 6; zoom += 0.25) {
        const {units, width} = scaleOfZoom(zoom);
        assert.ok(Math.abs(width - units * 10 * 2 ** zoom) < 1e-9 && width <= 110 && width > 40, `${zoom}: ${width}`);
    }
    assert.deepEqual([-1.25, 0, 4].map(zoom => scaleOfZoom(zoom).units), [20, 10, 0.5]);
});

test('the overview has a frame around what is in view, and leads to what is pressed', () => {
    const shares = area => Object.values(frameOfArea(area)).map(text => Math.round(parseFloat(text)));
    assert.deepEqual(shares({west: 203.6, south: 407.7, east: 611.8, north: 1836.4}), [10, 70, 10, 20]);
    assert.deepEqual(shares({west: -900, south: -1, east: 5000, north: 2041}), [0, 0, 0, 0]);
    assert.deepEqual(placeOfShare(0.25, 0.1), {x: 509.75, y: 1836.4});
});

test('main contours are labelled with their height, along the line, wherever the window is', () => {
    // A slope to the east, 12 a point: at zoom 1 a main line every 250.
    const land = landOf({}, (planes, at) => {
        for (let y = 0; y < 2041; ++y)
            for (let x = 0; x < 250; ++x)
                planes.heights[at(x, y)] = x;
    });
    const box = {left: 0, top: 1000, right: 600, bottom: 1800}, labels = contourLabels(land, 1, 50, box);
    assert.ok(labels.length >= 4, `${labels.length} labels`);
    for (const {x, text, angle} of labels) {
        assert.ok(Number(text) % 250 === 0 && Math.abs((x / 2 - 0.5) * 12 - text) < 3 * 12, `${text} at ${x}`);
        assert.ok(Math.abs(Math.abs(angle) - Math.PI / 2) < 0.1, `${angle}`);
    }
    // Another part has the same ones.
    const others = contourLabels(land, 1, 50, {left: 150, top: 900, right: 700, bottom: 1500});
    assert.ok(others.filter(other => labels.some(({x, y}) => x === other.x && y === other.y)).length > 1);
    assert.deepEqual(contourLabels(landOf({height: 9}), 1, 50, box), []);
});
