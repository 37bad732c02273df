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

/** Colours run into each other between points, but keep to their points longer than evenly. */
const sharpened = t => t <= 0.2 ? 0 : t >= 0.8 ? 1 : (t - 0.2) / 0.6;

function drawSmooth(picture, painter) {
    const {land, light, colors} = painter;
    const surface = new SurfaceRow(land, picture.scale, picture.x, picture.width);
    const mixed = new Float32Array(3);
    for (let row = 0; row < picture.height; ++row) {
        const y = picture.placeOfRow(row);
        if (y < -0.5 || y >= LAND_SIZE - 0.5)
            continue;
        surface.sample(y);
        const j = Math.max(0, Math.min(LAND_SIZE - 2, Math.floor(y))), fy = sharpened(y - j);
        for (let column = 0; column < picture.width; ++column) {
            const x = picture.placeOfColumn(column);
            if (x < -0.5 || x >= LAND_SIZE - 0.5)
                continue;
            if (!land.present[Math.round(y) * LAND_SIZE + Math.round(x)]) {
                painter.paintSea();
                picture.set(column, row, painter.red, painter.green, painter.blue);
                continue;
            }
            const i = Math.max(0, Math.min(LAND_SIZE - 2, Math.floor(x))), fx = sharpened(x - i);
            const at = j * LAND_SIZE + i;
            const low = land.low, a = low[at] * 3, b = low[at + 1] * 3, c = low[at + LAND_SIZE] * 3, d = low[at + LAND_SIZE + 1] * 3;
            const share = lightOfSlope(surface.dx[column], surface.dy[column], light);
            for (let index = 0; index < 3; ++index) {
                const south = colors[a + index] * (1 - fx) + colors[b + index] * fx;
                const north = colors[c + index] * (1 - fx) + colors[d + index] * fx;
                mixed[index] = (south * (1 - fy) + north * fy) * share;
            }
            picture.set(column, row, mixed[0], mixed[1], mixed[2]);
        }
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
    const levelsOfRow = row => {
        surface.sample(picture.placeOfRow(row));
        return Array.from(surface.elevation, elevation => Math.floor(elevation * UNITS_PER_CELL / interval + 1e-4));
    };
    let levels = levelsOfRow(0);
    for (let row = 0; row < picture.height; ++row) {
        const below = levelsOfRow(row + 1);
        const y = picture.placeOfRow(row);
        for (let column = 0; column < picture.width && y >= -0.5 && y < LAND_SIZE - 0.5; ++column) {
            const x = picture.placeOfColumn(column), level = levels[column];
            if (x < -0.5 || x >= LAND_SIZE - 0.5 || level === levels[column + 1] && level === below[column])
                continue;
            const upper = Math.max(level, levels[column + 1], below[column]);
            picture.blend(column, row, upper % CONTOURS_PER_MAIN === 0 ? MAIN_CONTOUR : CONTOUR);
        }
        levels = below;
    }
}
