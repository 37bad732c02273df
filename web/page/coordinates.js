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

// Blanks stand on one side of an optional comma alone: tried on both, a long run of them would be
// gone through again from each of its places. An E before digits belongs to the number.
const NUMBER = String.raw`([-+]?(?:\d+(?:[.,]\d*)?|\.\d+)(?:e[-+]?\d+)?)`;
const NORTH_FIRST = new RegExp(String.raw`^\s*${NUMBER}\s*([ns])\s*(?:,\s*)?${NUMBER}\s*([ew])`, 'i');
const EAST_FIRST = new RegExp(String.raw`^\s*${NUMBER}\s*([ew])(?:\s*,\s*|\s+)${NUMBER}\s*([ns])`, 'i');

/** What a number and its letter come to: `24,2` and `S` as -24.2. */
const signedUnit = (number, letter) => Number(number.replace(',', '.')) * (/[sw]/i.test(letter) ? -1 : 1);

/** The place that a text such as `24.2S, 57E` or `57E 24,2S` names, in points; undefined where it names none. */
export function placeOfText(text) {
    const northFirst = NORTH_FIRST.exec(text), eastFirst = northFirst ? null : EAST_FIRST.exec(text);
    if (!northFirst && !eastFirst)
        return undefined;
    const [, first, firstLetter, second, secondLetter] = northFirst || eastFirst;
    const one = signedUnit(first, firstLetter), two = signedUnit(second, secondLetter), [north, east] = northFirst ? [one, two] : [two, one];
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
