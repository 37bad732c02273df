// Draws a piece of the flat map. At zoom z a point is 2^z pixels wide; pixel (0, 0) of the world is
// at its north-west corner, so that at zoom 0 pixel (x, y) is the land point (x, 2040 - y).
import {BLOCKS, CELLS, LAND_FLAG, LAND_SIZE, UNITS_PER_CELL} from './land.js';
import {lightOfSlope} from './light.js';
import {PointPainter} from './points.js';
import {SurfaceRow} from './surface.js';

const TINTS = {
    impassable: [150, 20, 60, 0.45], objects: [250, 170, 0, 0.42],
    changed: [0, 170, 60, 0.55], added: [20, 70, 240, 0.55], removed: [230, 30, 30, 0.55]};
const CONTOUR = [70, 45, 20, 0.4], MAIN_CONTOUR = [60, 35, 10, 0.75];
export const CONTOURS_PER_MAIN = 5;

/**
 * `land`: what is drawn; `otherLand`: what heights are compared with, or null; `view`: the settings
 * of settings.js; `area`: `{zoom, x, y, width, height}` in pixels. Gives red, green, blue and alpha
 * of each pixel, transparent outside the world.
 */
export function drawArea(land, otherLand, colors, view, area) {
    const picture = new Picture(area);
    const painter = new PointPainter(land, otherLand, colors, view);
    if (area.zoom < 0)
        drawAveraged(picture, painter, view);
    else if (area.zoom === 0 || view.squares || view.base !== 'land')
        drawSquares(picture, painter);
    else
        drawSmooth(picture, painter);
    tintBlocks(picture, land.blocks, view);
    if (view.contours)
        drawContours(picture, land, view.contours);
    return picture.bytes;
}

class Picture {
    constructor(area) {
        Object.assign(this, area);
        this.scale = 2 ** area.zoom;
        this.bytes = new Uint8ClampedArray(area.width * area.height * 4);
    }

    /** Calls back with column and row of the area and the place of the pixel's middle in points. */
    forEachPixel(draw) {
        for (let row = 0; row < this.height; ++row) {
            const y = this.placeOfRow(row);
            if (y < -0.5 || y >= LAND_SIZE - 0.5)
                continue;
            for (let column = 0; column < this.width; ++column) {
                const x = this.placeOfColumn(column);
                if (x >= -0.5 && x < LAND_SIZE - 0.5)
                    draw(column, row, x, y);
            }
        }
    }

    placeOfColumn(column) {
        return (this.x + column + 0.5) / this.scale - 0.5;
    }

    placeOfRow(row) {
        return LAND_SIZE - 0.5 - (this.y + row + 0.5) / this.scale;
    }

    set(column, row, red, green, blue) {
        const at = (row * this.width + column) * 4;
        // Cut off, not rounded, as in the picture.
        this.bytes[at] = red | 0;
        this.bytes[at + 1] = green | 0;
        this.bytes[at + 2] = blue | 0;
        this.bytes[at + 3] = 255;
    }

    blend(column, row, [red, green, blue, share]) {
        const at = (row * this.width + column) * 4;
        this.bytes[at] += (red - this.bytes[at]) * share;
        this.bytes[at + 1] += (green - this.bytes[at + 1]) * share;
        this.bytes[at + 2] += (blue - this.bytes[at + 2]) * share;
    }
}

function drawSquares(picture, painter) {
    let lastX, lastY;
    picture.forEachPixel((column, row, x, y) => {
        const i = Math.round(x), j = Math.round(y);
        if (i !== lastX || j !== lastY)
            painter.paint(lastX = i, lastY = j);
        picture.set(column, row, painter.red, painter.green, painter.blue);
    });
}

/** Each pixel is the mean of the points under it; a road that is brought out is not lost in it. */
function drawAveraged(picture, painter, view) {
    const step = 1 / picture.scale;
    picture.forEachPixel((column, row) => {
        const west = (picture.x + column) * step, north = LAND_SIZE - 1 - (picture.y + row) * step;
        let red = 0, green = 0, blue = 0, count = 0, hasRoad = false;
        for (let y = north; y > north - step && y >= 0; --y)
            for (let x = west; x < west + step && x < LAND_SIZE; ++x) {
                painter.paint(x, y);
                red += painter.red;
                green += painter.green;
                blue += painter.blue;
                ++count;
                hasRoad = hasRoad || view.roads && painter.isRoad(x, y);
            }
        if (hasRoad)
            picture.set(column, row, ...painter.roadColor());
        else
            picture.set(column, row, red / count, green / count, blue / count);
    });
}

function drawSmooth(picture, painter) {
    const {land, light} = painter;
    const surface = new SurfaceRow(land, picture.scale, picture.x, picture.width);
    const mixer = new ColorMixer(land, painter.colors);
    for (let row = 0; row < picture.height; ++row) {
        const y = picture.placeOfRow(row);
        if (y < -0.5 || y >= LAND_SIZE - 0.5)
            continue;
        surface.sample(y);
        const nearest = Math.round(y) * LAND_SIZE;
        for (let column = 0; column < picture.width; ++column) {
            const x = picture.placeOfColumn(column);
            if (x < -0.5 || x >= LAND_SIZE - 0.5)
                continue;
            if (land.present[nearest + Math.round(x)]) {
                mixer.mix(x, y);
                const share = lightOfSlope(surface.dx[column], surface.dy[column], light);
                picture.set(column, row, mixer.red * share, mixer.green * share, mixer.blue * share);
            } else {
                painter.paintSea();
                picture.set(column, row, painter.red, painter.green, painter.blue);
            }
        }
    }
}

/**
 * Colours between points. Of the four around a place each counts by how near it is and by how much
 * of the place its land type has: edges between types come out as curves, and at a point its own
 * colour is all there is.
 */
class ColorMixer {
    constructor(land, colors) {
        Object.assign(this, {low: land.low, colors, red: 0, green: 0, blue: 0});
    }

    mix(x, y) {
        const i = x < 0 ? 0 : x > LAND_SIZE - 1.001 ? LAND_SIZE - 2 : Math.floor(x);
        const j = y < 0 ? 0 : y > LAND_SIZE - 1.001 ? LAND_SIZE - 2 : Math.floor(y);
        const at = j * LAND_SIZE + i, {low, colors} = this;
        const a = low[at], b = low[at + 1], c = low[at + LAND_SIZE], d = low[at + LAND_SIZE + 1];
        if (a === b && a === c && a === d) {
            this.red = colors[a * 3];
            this.green = colors[a * 3 + 1];
            this.blue = colors[a * 3 + 2];
            return;
        }
        const fx = Math.max(0, Math.min(1, x - i)), fy = Math.max(0, Math.min(1, y - j));
        let wa = (1 - fx) * (1 - fy), wb = fx * (1 - fy), wc = (1 - fx) * fy, wd = fx * fy;
        const ga = wa + (b === a ? wb : 0) + (c === a ? wc : 0) + (d === a ? wd : 0);
        const gb = wb + (a === b ? wa : 0) + (c === b ? wc : 0) + (d === b ? wd : 0);
        const gc = wc + (a === c ? wa : 0) + (b === c ? wb : 0) + (d === c ? wd : 0);
        const gd = wd + (a === d ? wa : 0) + (b === d ? wb : 0) + (c === d ? wc : 0);
        wa *= ga * ga * ga * ga;
        wb *= gb * gb * gb * gb;
        wc *= gc * gc * gc * gc;
        wd *= gd * gd * gd * gd;
        const whole = 1 / (wa + wb + wc + wd);
        this.red = (colors[a * 3] * wa + colors[b * 3] * wb + colors[c * 3] * wc + colors[d * 3] * wd) * whole;
        this.green = (colors[a * 3 + 1] * wa + colors[b * 3 + 1] * wb + colors[c * 3 + 1] * wc + colors[d * 3 + 1] * wd) * whole;
        this.blue = (colors[a * 3 + 2] * wa + colors[b * 3 + 2] * wb + colors[c * 3 + 2] * wc + colors[d * 3 + 2] * wd) * whole;
    }
}

// -- over the land

function tintOfBlock(flags, view) {
    if (view.changes) {
        if (flags & LAND_FLAG.changed)
            return TINTS.changed;
        if (flags & LAND_FLAG.added)
            return TINTS.added;
        if (flags & LAND_FLAG.removed)
            return TINTS.removed;
    }
    if (view.objects && flags & LAND_FLAG.objects)
        return TINTS.objects;
    if (view.impassable && flags & LAND_FLAG.data && !(flags & LAND_FLAG.passable))
        return TINTS.impassable;
    return null;
}

function tintBlocks(picture, blocks, view) {
    if (!view.changes && !view.objects && !view.impassable)
        return;
    picture.forEachPixel((column, row, x, y) => {
        const number = blockColumn(x) << 8 | blockColumn(y);
        const tint = tintOfBlock(blocks[number], view);
        if (tint)
            picture.blend(column, row, tint);
    });
}

const blockColumn = place => Math.max(0, Math.min(BLOCKS - 1, Math.floor(place / CELLS)));

/** A line wherever the level of a pixel and that of its neighbour to the east or south differ. */
function drawContours(picture, land, interval) {
    const width = picture.width + 1;
    const surface = new SurfaceRow(land, picture.scale, picture.x, width);
    const factor = UNITS_PER_CELL / interval;
    const takeLevels = (row, into) => {
        surface.sample(picture.placeOfRow(row));
        for (let column = 0; column < width; ++column)
            into[column] = Math.floor(surface.elevation[column] * factor + 1e-4);
    };
    let levels = new Int32Array(width), below = new Int32Array(width);
    takeLevels(0, levels);
    for (let row = 0; row < picture.height; ++row) {
        takeLevels(row + 1, below);
        const y = picture.placeOfRow(row);
        for (let column = 0; column < picture.width && y >= -0.5 && y < LAND_SIZE - 0.5; ++column) {
            const x = picture.placeOfColumn(column), level = levels[column];
            if (x < -0.5 || x >= LAND_SIZE - 0.5 || level === levels[column + 1] && level === below[column])
                continue;
            const upper = Math.max(level, levels[column + 1], below[column]);
            picture.blend(column, row, upper % CONTOURS_PER_MAIN === 0 ? MAIN_CONTOUR : CONTOUR);
        }
        [levels, below] = [below, levels];
    }
}
