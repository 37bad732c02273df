// Places in points (x to the east, y to the north, 0 to 2040), in map units and as text.
import {CELLS, LAND_SIZE} from './land.js';

const OFFSET = 101.9;
const POINTS_PER_UNIT = 10;

export const unitOfPoint = value => value / POINTS_PER_UNIT - OFFSET;
export const pointOfUnit = value => (value + OFFSET) * POINTS_PER_UNIT;

function letterText(value, digits, negative, positive) {
    return Math.abs(value).toFixed(digits) + (value < 0 ? negative : positive);
}

/** Map units as the game writes them: `24.2S 57.0E`. */
export function textOfUnits(x, y, digits = 1) {
    return `${letterText(y, digits, 'S', 'N')} ${letterText(x, digits, 'W', 'E')}`;
}

export function textOfPlace(place, digits = 1) {
    return textOfUnits(unitOfPoint(place.x), unitOfPoint(place.y), digits);
}

/** The place that a text such as `24.2S, 57E` names, in points; undefined where it names none. */
export function placeOfText(text) {
    const match = /^\s*([-+]?[\d.]+)\s*([ns])\s*,?\s*([-+]?[\d.]+)\s*([ew])/i.exec(text);
    if (!match)
        return undefined;
    const north = Number(match[1]) * (/s/i.test(match[2]) ? -1 : 1);
    const east = Number(match[3]) * (/w/i.test(match[4]) ? -1 : 1);
    return Number.isFinite(north + east) ? {x: pointOfUnit(east), y: pointOfUnit(north)} : undefined;
}

/** The middle of a block. */
export function placeOfBlock(number) {
    return {x: ((number >> 8) + 0.5) * CELLS, y: ((number & 0xFF) + 0.5) * CELLS};
}

export const blockText = number => number.toString(16).toUpperCase().padStart(4, '0');

export function isInWorld({x, y}) {
    return x >= -0.5 && y >= -0.5 && x <= LAND_SIZE - 0.5 && y <= LAND_SIZE - 0.5;
}
