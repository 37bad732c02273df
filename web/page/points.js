// The colour of a land point under the view's settings, light included.
import {byteColors, DIFFERENCE_COLORS, SLOPE_COLORS} from './colors.js';
import {DEEP_SEA, LAND_SIZE, ROAD} from './land.js';
import {lightAtPoint, lightOfSlope, lightVector} from './light.js';

const STEEPEST = 60;
/** A difference of so many real units has the strongest colour. */
const GREATEST_DIFFERENCE = 96;

/** What it paints goes into `red`, `green` and `blue`, from 0 to 255, with fractions. */
export class PointPainter {
    constructor(land, otherLand, colors, view) {
        this.land = land;
        this.otherLand = otherLand;
        this.base = view.base === 'difference' && !otherLand ? 'land' : view.base;
        this.light = lightVector(view.azimuth, view.altitude);
        this.colors = byteColors(colors, view);
        this.slope = {dx: 0, dy: 0};
    }

    /** A point of the world; one without land is deep sea. */
    paint(x, y) {
        const land = this.land, index = y * LAND_SIZE + x;
        if (land.present[index] === 0)
            return this.paintSea();
        const present = land.present, heights = land.heights, elevations = land.elevations;
        let share;
        if (x > 0 && y > 0 && x < LAND_SIZE - 1 && y < LAND_SIZE - 1 && present[index - 1] && present[index + 1] &&
            present[index - LAND_SIZE] && present[index + LAND_SIZE]) {
            const dx = (elevations[heights[index + 1]] - elevations[heights[index - 1]]) * 0.5;
            const dy = (elevations[heights[index + LAND_SIZE]] - elevations[heights[index - LAND_SIZE]]) * 0.5;
            this.slope.dx = dx;
            this.slope.dy = dy;
            share = lightOfSlope(dx, dy, this.light);
        } else {
            share = lightAtPoint(land, x, y, this.light, this.slope);
        }
        this.paintSurface(land.low[index], heights[index], share, this.differenceAt(index));
    }

    paintSea() {
        this.slope.dx = this.slope.dy = 0;
        this.paintSurface(DEEP_SEA << 2, 0, lightOfSlope(0, 0, this.light), 0);
    }

    /** `this.slope` says how steep it is. */
    paintSurface(low, heightIndex, share, difference) {
        if (this.base === 'height') {
            this.red = this.green = this.blue = heightIndex;
            return;
        }
        let table = this.colors, entry = low;
        if (this.base === 'slope') {
            const {dx, dy} = this.slope;
            table = SLOPE_COLORS;
            entry = Math.min(255, Math.atan(Math.sqrt(dx * dx + dy * dy)) * (180 / Math.PI * 255 / STEEPEST) | 0);
            share = 1;
        } else if (this.base === 'difference') {
            table = DIFFERENCE_COLORS;
            entry = 127.5 + Math.max(-127, Math.min(127, difference * (127 / GREATEST_DIFFERENCE))) | 0;
            share = 0.5 + share * 0.5;
        }
        // No point around it has land: its slope is unknown, and it comes out black.
        if (share !== share)
            share = 0;
        this.red = table[entry * 3] * share;
        this.green = table[entry * 3 + 1] * share;
        this.blue = table[entry * 3 + 2] * share;
    }

    /** Real height less that in the other land; 0 where either has none. */
    differenceAt(index) {
        const other = this.otherLand;
        if (this.base !== 'difference' || other.present[index] === 0 || this.land.present[index] === 0)
            return 0;
        return this.land.table[this.land.heights[index]] - other.table[other.heights[index]];
    }

    isRoad(x, y) {
        const index = y * LAND_SIZE + x;
        return this.land.present[index] === 1 && (this.land.low[index] & 3) !== 0;
    }

    /** Components of a road in full light. */
    roadColor() {
        return this.colors.subarray(3, 6);
    }
}
