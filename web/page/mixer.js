// Colours between land points.
import {LAND_SIZE} from './land.js';

/**
 * Of the four points around a place each counts by how near it is and by how much
 * of the place its land type has: edges between types come out as curves, and at a point its own
 * colour is all there is.
 */
export class ColorMixer {
    constructor(land, colors) {
        Object.assign(this, {low: land.low, colors, red: 0, green: 0, blue: 0, strongest: 0});
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
            this.strongest = a;
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
        this.strongest = wa >= wb && wa >= wc && wa >= wd ? a : wb >= wc && wb >= wd ? b : wc >= wd ? c : d;
        const whole = 1 / (wa + wb + wc + wd);
        this.red = (colors[a * 3] * wa + colors[b * 3] * wb + colors[c * 3] * wc + colors[d * 3] * wd) * whole;
        this.green = (colors[a * 3 + 1] * wa + colors[b * 3 + 1] * wb + colors[c * 3 + 1] * wc + colors[d * 3 + 1] * wd) * whole;
        this.blue = (colors[a * 3 + 2] * wa + colors[b * 3 + 2] * wb + colors[c * 3 + 2] * wc + colors[d * 3 + 2] * wd) * whole;
    }
}
