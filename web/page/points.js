// The colours of land points under the view's settings, light included.
import {byteColors, DIFFERENCE_COLORS, SLOPE_COLORS} from './colors.js';
import {DEEP_SEA, LAND_SIZE} from './land.js';
import {lightAtPoint, lightOfSlope, lightVector} from './light.js';

export const STEEPEST = 60; // degrees
/** A difference of so many real units has the strongest colour. */
export const GREATEST_DIFFERENCE = 96;
const ENTRIES_OF_TANGENT = 255 / STEEPEST * 180 / Math.PI;

export class PointPainter {
    constructor(land, otherLand, colors, view) {
        this.land = land;
        this.otherLand = otherLand;
        this.base = view.base === 'difference' && !otherLand ? 'land' : view.base;
        this.light = lightVector(view.azimuth, view.altitude);
        this.colors = byteColors(colors, view);
        this.slope = {dx: 0, dy: 0};
        this.row = new Float64Array(0);
        this.painted = '';
        this.sea = seaColor(this.colors, {...view, base: this.base});
    }

    /**
     * Points of a row, from `west` to before `east`: red, green and blue of each, from 0 to 255 with
     * fractions. They are good until the next row is asked for. A point without land is deep sea.
     */
    paintRow(y, west, east) {
        const asked = `${y} ${west} ${east}`;
        if (this.painted === asked)
            return this.row;
        this.painted = asked;
        if (this.row.length < (east - west) * 3)
            this.row = new Float64Array((east - west) * 3);
        if (this.base === 'land')
            this.paintLand(y, west, east);
        else
            this.paintOther(y, west, east);
        return this.row;
    }

    paintLand(y, west, east) {
        const {row, colors, sea} = this, {present, heights, elevations, low} = this.land, [lx, ly, lz] = this.light;
        for (let x = west, index = y * LAND_SIZE + west, to = 0; x < east; ++x, ++index, to += 3) {
            let share;
            if (present[index] === 2) {
                const dx = (elevations[heights[index + 1]] - elevations[heights[index - 1]]) * 0.5;
                const dy = (elevations[heights[index + LAND_SIZE]] - elevations[heights[index - LAND_SIZE]]) * 0.5;
                share = (1 + (lz - dx * lx - dy * ly) / Math.sqrt(dx * dx + dy * dy + 1)) * 0.5;
                share = share > 0 ? share : 0;
            } else if (present[index] === 1) {
                share = lightAtPoint(this.land, x, y, this.light, this.slope);
            } else {
                row[to] = sea[0];
                row[to + 1] = sea[1];
                row[to + 2] = sea[2];
                continue;
            }
            const entry = low[index] * 3;
            row[to] = colors[entry] * share;
            row[to + 1] = colors[entry + 1] * share;
            row[to + 2] = colors[entry + 2] * share;
        }
    }

    /** Its light; `this.slope` says how steep it is. */
    shareAt(x, y, index) {
        const {present, heights, elevations} = this.land, {slope} = this;
        if (present[index] < 2)
            return lightAtPoint(this.land, x, y, this.light, slope);
        slope.dx = (elevations[heights[index + 1]] - elevations[heights[index - 1]]) * 0.5;
        slope.dy = (elevations[heights[index + LAND_SIZE]] - elevations[heights[index - LAND_SIZE]]) * 0.5;
        return lightOfSlope(slope.dx, slope.dy, this.light);
    }

    paintOther(y, west, east) {
        const {land, row} = this;
        for (let x = west, index = y * LAND_SIZE + west, to = 0; x < east; ++x, ++index, to += 3) {
            if (land.present[index] === 0) {
                row.set(this.sea, to);
                continue;
            }
            const share = this.shareAt(x, y, index), height = land.heights[index];
            if (this.base === 'height')
                row[to] = row[to + 1] = row[to + 2] = height;
            else if (this.base === 'slope')
                this.take(to, SLOPE_COLORS, entryOfSlope(this.slope), 1);
            else
                this.take(to, DIFFERENCE_COLORS, entryOfDifference(this.differenceAt(index)), 0.5 + share * 0.5);
        }
    }

    take(to, table, entry, share) {
        this.row[to] = table[entry * 3] * share;
        this.row[to + 1] = table[entry * 3 + 1] * share;
        this.row[to + 2] = table[entry * 3 + 2] * share;
    }

    /** Real height less that in the other land; 0 where either has none. */
    differenceAt(index) {
        const {land, otherLand: other} = this;
        return other.present[index] && land.present[index] ? land.table[land.heights[index]] - other.table[other.heights[index]] : 0;
    }
}

const entryOfSlope = ({dx, dy}) => Math.min(255, Math.atan(Math.sqrt(dx * dx + dy * dy)) * ENTRIES_OF_TANGENT | 0);
const entryOfDifference = difference =>
    127.5 + Math.max(-127, Math.min(127, difference * (127 / GREATEST_DIFFERENCE))) | 0;

/** Where there is no land: level deep sea; `table`: see `byteColors`. */
export function seaColor(table, view) {
    const share = lightOfSlope(0, 0, lightVector(view.azimuth, view.altitude));
    const scaled = (colors, entry, factor) => [0, 1, 2].map(index => colors[entry * 3 + index] * factor);
    switch (view.base) {
    case 'height': return [0, 0, 0];
    case 'slope': return scaled(SLOPE_COLORS, 0, 1);
    case 'difference': return scaled(DIFFERENCE_COLORS, entryOfDifference(0), 0.5 + share * 0.5);
    default: return scaled(table, DEEP_SEA << 2, share);
    }
}
