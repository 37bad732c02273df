// The land between its points: a smooth surface through all of them (Catmull-Rom in both
// directions). At a point it rises as the picture's shading takes it: half the difference between
// the neighbours on both sides. So the colours at the points are those of the picture.
import {LAND_SIZE} from './land.js';

/** Shares of the four points around a place at `t` from the second to the third, and their changes. */
function weights(t) {
    return [
        ((-0.5 * t + 1) * t - 0.5) * t, (1.5 * t - 2.5) * t * t + 1, ((-1.5 * t + 2) * t + 0.5) * t, (0.5 * t - 0.5) * t * t,
        (-1.5 * t + 2) * t - 0.5, (4.5 * t - 5) * t, (-4.5 * t + 4) * t + 0.5, (1.5 * t - 1) * t];
}

const clampIndex = value => value < 0 ? 0 : value > LAND_SIZE - 1 ? LAND_SIZE - 1 : value;

/** A stretch of a row of pixels, `count` of them, each `1 / scale` points wide. */
export class SurfaceRow {
    constructor(land, scale, firstPixel, count) {
        this.land = land;
        this.count = count;
        this.columns = new Int32Array(count);
        this.fractions = new Float32Array(count);
        this.weights = [];
        // At a whole scale the same shares come back with every point.
        const period = Number.isInteger(scale) ? scale : count;
        for (let pixel = 0; pixel < count; ++pixel) {
            const x = (firstPixel + pixel + 0.5) / scale - 0.5;
            this.columns[pixel] = Math.floor(x);
            this.fractions[pixel] = x - Math.floor(x);
            this.weights.push(pixel < period ? weights(this.fractions[pixel]) : this.weights[pixel - period]);
        }
        this.west = this.columns[0] - 1;
        const width = this.columns[count - 1] + 3 - this.west;
        this.values = new Float32Array(width);
        this.climbs = new Float32Array(width);
        this.elevation = new Float32Array(count);
        this.dx = new Float32Array(count);
        this.dy = new Float32Array(count);
    }

    /** Fills `elevation` (in cells), `dx` and `dy` (rise to the east and north) for the row at `y`. */
    sample(y) {
        const {heights, elevations} = this.land;
        const row = Math.floor(y), w = weights(y - row);
        const starts = [-1, 0, 1, 2].map(step => clampIndex(row + step) * LAND_SIZE);
        for (let column = 0; column < this.values.length; ++column) {
            const x = clampIndex(this.west + column);
            const a = elevations[heights[starts[0] + x]], b = elevations[heights[starts[1] + x]];
            const c = elevations[heights[starts[2] + x]], d = elevations[heights[starts[3] + x]];
            this.values[column] = w[0] * a + w[1] * b + w[2] * c + w[3] * d;
            this.climbs[column] = w[4] * a + w[5] * b + w[6] * c + w[7] * d;
        }
        for (let pixel = 0; pixel < this.count; ++pixel) {
            const start = this.columns[pixel] - 1 - this.west, v = this.weights[pixel];
            const a = this.values[start], b = this.values[start + 1], c = this.values[start + 2], d = this.values[start + 3];
            this.elevation[pixel] = v[0] * a + v[1] * b + v[2] * c + v[3] * d;
            this.dx[pixel] = v[4] * a + v[5] * b + v[6] * c + v[7] * d;
            this.dy[pixel] = v[0] * this.climbs[start] + v[1] * this.climbs[start + 1] +
                v[2] * this.climbs[start + 2] + v[3] * this.climbs[start + 3];
        }
    }
}
