// Draws a piece of the flat map. At a scale of s a point is s pixels wide; pixel (0, 0) of the world
// is at its north-west corner, so that at scale 1 pixel (x, y) is the land point (x, 2040 - y).
import {drawContours} from './contours.js';
import {grainAt, grainShare} from './grain.js';
import {ColorMixer} from './mixer.js';
import {PointPainter} from './points.js';
import {drawRoads} from './roads.js';
import {SurfaceRow} from './surface.js';
import {LAND_SIZE, landTypeOfByte} from './land.js';
import {lightOfSlope} from './light.js';
import {drawTints} from './tints.js';

/**
 * `lands`: `newer`, and `older` or null; `view`: the settings of settings.js, with `contours` as an
 * interval and `density`, the screen's pixels to one of the page's; `area`: `{scale, x, y, width,
 * height}` in pixels, and `older` for that land. Gives red, green, blue and alpha of each pixel,
 * transparent outside the world.
 */
export function drawArea(lands, colors, view, area) {
    const picture = new Picture(area), land = area.older ? lands.older : lands.newer;
    const painter = new PointPainter(land, area.older ? null : lands.older, colors, view);
    if (picture.isEmpty)
        return picture.bytes;
    if (area.scale < 1)
        drawAveraged(picture, painter);
    else if (area.scale === 1 || view.squares || view.base !== 'land')
        drawSquares(picture, painter);
    else
        drawSmooth(picture, painter, view.grain ? grainShare(picture.scale) : 0);
    drawTints(picture, land, lands, view);
    if (view.roads)
        drawRoads(picture, land, view.density);
    if (view.contours)
        drawContours(picture, land, view);
    return picture.bytes;
}

export class Picture {
    constructor({scale, x, y, width, height}) {
        Object.assign(this, {scale, x, y, width, height});
        this.bytes = new Uint8ClampedArray(width * height * 4);
        /** The pixels in the world: columns `left` to before `right`, rows `top` to before `bottom`. */
        const world = LAND_SIZE * scale, last = Math.ceil(world - 1e-6);
        this.left = Math.max(0, -x);
        this.top = Math.max(0, -y);
        this.right = Math.min(width, last - x);
        this.bottom = Math.min(height, last - y);
        this.isEmpty = this.left >= this.right || this.top >= this.bottom;
    }

    /** The place of the middle of a column or row of pixels, in points. */
    placeOfColumn(column) {
        return (this.x + column + 0.5) / this.scale - 0.5;
    }

    placeOfRow(row) {
        return LAND_SIZE - 0.5 - (this.y + row + 0.5) / this.scale;
    }

    /** The pixel, with fractions, that a place is at. */
    columnOfPlace(x) {
        return (x + 0.5) * this.scale - this.x;
    }

    rowOfPlace(y) {
        return (LAND_SIZE - 0.5 - y) * this.scale - this.y;
    }

    set(column, row, red, green, blue) {
        const at = (row * this.width + column) * 4;
        // Cut off, not rounded, as in the picture.
        this.bytes[at] = red | 0;
        this.bytes[at + 1] = green | 0;
        this.bytes[at + 2] = blue | 0;
        this.bytes[at + 3] = 255;
    }

    blend(column, row, [red, green, blue], share) {
        const at = (row * this.width + column) * 4;
        this.bytes[at] += (red - this.bytes[at]) * share;
        this.bytes[at + 1] += (green - this.bytes[at + 1]) * share;
        this.bytes[at + 2] += (blue - this.bytes[at + 2]) * share;
    }
}

const nearest = place => Math.max(0, Math.min(LAND_SIZE - 1, Math.round(place)));

function drawSquares(picture, painter) {
    const {left, right, top, bottom, width, bytes} = picture, columns = new Int32Array(right);
    for (let column = left; column < right; ++column)
        columns[column] = nearest(picture.placeOfColumn(column));
    const west = columns[left], east = columns[right - 1] + 1;
    let last = -1;
    for (let row = top; row < bottom; ++row) {
        const y = nearest(picture.placeOfRow(row)), start = row * width * 4;
        if (y === last) {
            bytes.copyWithin(start, start - width * 4, start);
            continue;
        }
        const points = painter.paintRow(last = y, west, east);
        for (let column = left; column < right; ++column) {
            const from = (columns[column] - west) * 3;
            picture.set(column, row, points[from], points[from + 1], points[from + 2]);
        }
    }
}

/** Each pixel is the mean of the points under it, by how much of each is under it. */
function drawAveraged(picture, painter) {
    const {scale, left, right, top, bottom} = picture, size = 1 / scale;
    const west = Math.max(0, Math.floor((picture.x + left) * size + 1e-9)), east = Math.min(LAND_SIZE, Math.ceil((picture.x + right) * size - 1e-9));
    // A point is in one pixel, or in two; the second has what the first has not. Before the first
    // pixel and after the last there is one more, so that nothing need be asked.
    const places = new Int32Array(east - west), shares = new Float64Array(east - west), sums = new Float64Array((right - left + 3) * 3);
    const areas = new Float64Array(right - left + 3);
    for (let index = 0; index < places.length; ++index) {
        const from = (west + index) * scale - picture.x - left, first = Math.floor(from + 1e-9), share = Math.min(1, (first + 1 - from) * size);
        places[index] = (first + 1) * 3;
        shares[index] = share > 1 - 1e-6 ? 1 : share;
        areas[first + 1] += shares[index];
        areas[first + 2] += 1 - shares[index];
    }
    for (let row = top; row < bottom; ++row) {
        sums.fill(0);
        const north = (picture.y + row) * size, south = Math.min(LAND_SIZE, north + size);
        for (let line = Math.floor(north + 1e-9); line < south - 1e-9; ++line) {
            const part = Math.min(line + 1, south) - Math.max(line, north);
            addRow(sums, painter.paintRow(LAND_SIZE - 1 - line, west, east), places, shares, part);
        }
        for (let column = left; column < right; ++column) {
            const pixel = column - left + 1, at = pixel * 3, whole = 1 / (areas[pixel] * (south - north));
            // What is whole but for the reckoning stays whole.
            picture.set(column, row, sums[at] * whole + 1e-6, sums[at + 1] * whole + 1e-6, sums[at + 2] * whole + 1e-6);
        }
    }
}

function addRow(sums, points, places, shares, part) {
    for (let index = 0, from = 0; index < places.length; ++index, from += 3) {
        const at = places[index], share = shares[index] * part;
        sums[at] += points[from] * share;
        sums[at + 1] += points[from + 1] * share;
        sums[at + 2] += points[from + 2] * share;
        if (shares[index] < 1) {
            const rest = part - share;
            sums[at + 3] += points[from] * rest;
            sums[at + 4] += points[from + 1] * rest;
            sums[at + 5] += points[from + 2] * rest;
        }
    }
}

/** `grain`: how much of it is to be seen. */
function drawSmooth(picture, painter, grain) {
    const {land, light, sea} = painter, {left, right} = picture;
    const surface = new SurfaceRow(land, picture.scale, picture.x, right);
    const mixer = new ColorMixer(land, painter.colors);
    for (let row = picture.top; row < picture.bottom; ++row) {
        const y = picture.placeOfRow(row), start = nearest(y) * LAND_SIZE;
        surface.sample(y);
        for (let column = left; column < right; ++column) {
            const x = picture.placeOfColumn(column);
            if (land.present[start + nearest(x)]) {
                mixer.mix(x, y);
                let share = lightOfSlope(surface.dx[column], surface.dy[column], light);
                if (grain > 0)
                    share *= grainAt(landTypeOfByte(mixer.strongest), x, y, grain);
                picture.set(column, row, mixer.red * share, mixer.green * share, mixer.blue * share);
            } else {
                picture.set(column, row, ...sea);
            }
        }
    }
}
