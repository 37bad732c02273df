// Contour lines, with soft edges and as wide as the screen's density asks for.
import {Mask} from './mask.js';
import {UNITS_PER_CELL} from './land.js';
import {SurfaceRow} from './surface.js';

const CONTOUR = [70, 45, 20], MAIN_CONTOUR = [60, 35, 10];
const STRENGTH = 0.45, MAIN_STRENGTH = 0.75;
const WIDTH = 1, MAIN_WIDTH = 1.4; // pixels of the page
export const CONTOURS_PER_MAIN = 5;
/** How far around a picture lines are looked for that reach into it. */
const MARGIN = 3;
/**
 * Land that is level at a contour's height lies above it, in shares of the interval; as far as its
 * smoothed edge sinks below it, or there would be two lines.
 */
const ABOVE = 0.02;

const ON_DARK = [240, 222, 190];

/** `contours`: real height from line to line. */
export function drawContours(picture, land, {contours: interval, density, base}) {
    const {width, height} = picture, across = width + 2 * MARGIN;
    const surface = new SurfaceRow(land, picture.scale, picture.x - MARGIN, across), factor = UNITS_PER_CELL / interval;
    const masks = {contour: new Mask(picture), main: new Mask(picture)};
    const takeLevels = (row, into) => {
        surface.sample(picture.placeOfRow(row));
        for (let column = 0; column < across; ++column)
            into[column] = surface.elevation[column] * factor + ABOVE;
    };
    let rows = [-1, 0, 1].map(() => new Float64Array(across));
    [-1, 0, 1].forEach((step, index) => takeLevels(step - MARGIN, rows[index]));
    for (let row = -MARGIN; row < height + MARGIN; ++row) {
        const [above, here, below] = rows;
        for (let column = 1; column < across - 1; ++column) {
            const level = here[column], right = here[column + 1], down = below[column];
            // Across the line, whichever way that is rather.
            const isUpright = Math.abs(right - here[column - 1]) >= Math.abs(down - above[column]);
            const next = isUpright ? right : down;
            if (Math.floor(level) === Math.floor(next))
                continue;
            const line = Math.max(Math.floor(level), Math.floor(next)), share = (line - level) / (next - level);
            const isMain = line % CONTOURS_PER_MAIN === 0, half = (isMain ? MAIN_WIDTH : WIDTH) * density / 2;
            masks[isMain ? 'main' : 'contour'].cross(column - MARGIN, row, share, half, isUpright);
        }
        rows = [here, below, above];
        if (row + 1 < height + MARGIN)
            takeLevels(row + 2, rows[2]);
    }
    const isDark = base === 'height';
    masks.contour.blend(isDark ? ON_DARK : CONTOUR, STRENGTH);
    masks.main.blend(isDark ? ON_DARK : MAIN_CONTOUR, MAIN_STRENGTH);
}
