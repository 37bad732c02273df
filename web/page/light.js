// How much light a slope gets: half and more where it faces the light, less where it does not.
import {LAND_SIZE} from './land.js';

/** A vector of length 1 towards the light; degrees from the north over the east, and above level. */
export function lightVector(azimuth, altitude) {
    const a = azimuth * Math.PI / 180, h = altitude * Math.PI / 180;
    return [Math.sin(a) * Math.cos(h), Math.cos(a) * Math.cos(h), Math.sin(h)];
}

/** For a surface that rises by `dx` to the east and by `dy` to the north, a cell each. */
export function lightOfSlope(dx, dy, light) {
    const share = (1 + (light[2] - dx * light[0] - dy * light[1]) / Math.sqrt(dx * dx + dy * dy + 1)) * 0.5;
    return share > 0 ? share : 0;
}

/**
 * Light at a land point: from the triangles to those of its neighbours that have land, of which there
 * are always some, since land comes by the block.
 */
export function lightAtPoint(land, x, y, light, slope) {
    const center = elevationAt(land, x, y);
    const west = land.has(x - 1, y) ? elevationAt(land, x - 1, y) - center : NaN;
    const east = land.has(x + 1, y) ? elevationAt(land, x + 1, y) - center : NaN;
    const south = land.has(x, y - 1) ? elevationAt(land, x, y - 1) - center : NaN;
    const north = land.has(x, y + 1) ? elevationAt(land, x, y + 1) - center : NaN;
    let nx = 0, ny = 0, nz = 0;
    for (const [a, b, rise, climb] of [[west, south, west, south], [west, north, west, -north],
                                       [east, south, -east, south], [east, north, -east, -north]])
        if (a === a && b === b) {
            nx += rise;
            ny += climb;
            ++nz;
        }
    slope.dx = -nx / nz;
    slope.dy = -ny / nz;
    return lightOfSlope(slope.dx, slope.dy, light);
}

function elevationAt(land, x, y) {
    return land.elevations[land.heights[y * LAND_SIZE + x]];
}
