// Roads brought out: lines from each point of a road to those next to it.
import {LAND_SIZE} from './land.js';
import {Mask} from './mask.js';

const ROAD = [176, 30, 22], EDGE = [255, 244, 226];
const WIDTH = 1.6, WIDEST = 4, EDGE_WIDTH = 1; // pixels of the page
const WIDTH_OF_POINT = 0.35;

export function drawRoads(picture, land, density) {
    const half = Math.min(WIDEST, Math.max(WIDTH, picture.scale / density * WIDTH_OF_POINT)) * density / 2;
    const lines = new Mask(picture), edges = new Mask(picture);
    eachRoad(picture, land, (x, y, toX, toY) => {
        const [x1, y1, x2, y2] = [picture.columnOfPlace(x), picture.rowOfPlace(y), picture.columnOfPlace(toX), picture.rowOfPlace(toY)];
        lines.line(x1, y1, x2, y2, half);
        // From afar edges would be all there is.
        if (picture.scale >= 1)
            edges.line(x1, y1, x2, y2, half + EDGE_WIDTH * density);
    });
    edges.blend(EDGE, 0.7);
    lines.blend(ROAD, 1);
}

/** The eight ways from a point to the next. */
const WAYS = [[1, 0], [0, 1], [-1, 0], [0, -1], [1, 1], [-1, 1], [-1, -1], [1, -1]];

/**
 * Calls back with each stretch. A road that goes on through a point leads from half-way before it to
 * half-way behind, which makes slanting lines of stairs; all others begin and end at the point.
 */
function eachRoad(picture, land, draw) {
    const inside = value => Math.max(0, Math.min(LAND_SIZE - 1, value)), reach = 1 + Math.ceil(4 / picture.scale);
    const west = inside(Math.floor(picture.placeOfColumn(0)) - reach), east = inside(Math.ceil(picture.placeOfColumn(picture.width)) + reach);
    const north = inside(Math.ceil(picture.placeOfRow(0)) + reach), south = inside(Math.floor(picture.placeOfRow(picture.height)) - reach);
    const isRoad = (x, y) => x >= 0 && x < LAND_SIZE && y >= 0 && y < LAND_SIZE &&
        (land.low[y * LAND_SIZE + x] & 3) !== 0 && land.present[y * LAND_SIZE + x] > 0;
    // Slantwise only where there is no way around the corner.
    const leads = (x, y, [dx, dy]) => isRoad(x + dx, y + dy) && (dx === 0 || dy === 0 || !isRoad(x + dx, y) && !isRoad(x, y + dy));
    for (let y = south; y <= north; ++y)
        for (let x = west, index = y * LAND_SIZE + west; x <= east; ++x, ++index) {
            if ((land.low[index] & 3) === 0 || !isRoad(x, y))
                continue;
            const ends = WAYS.filter(way => leads(x, y, way)).map(([dx, dy]) => [x + dx / 2, y + dy / 2]);
            if (ends.length === 2)
                draw(...ends[0], ...ends[1]);
            else
                (ends.length > 0 ? ends : [[x, y]]).forEach(end => draw(x, y, ...end));
        }
}
