// Where a ray meets the land, reckoned from the land itself.
import {LAND_SIZE, UNITS_PER_CELL} from '../land.js';

/** How the land is raised: heights in points of its places. */
export class ReliefShape {
    /** The sea stands at the real height `level`, which goes on around the world. */
    constructor(land, level) {
        this.land = land;
        this.floor = level / UNITS_PER_CELL;
        this.rise = 1;
        this.sea = -Infinity; // an elevation
    }

    /** Has the sea stand so much higher than it does, in real height. */
    raiseSea(height) {
        this.sea = height > 0 ? this.floor + height / UNITS_PER_CELL : -Infinity;
    }

    /** Whether the raised sea covers a place. */
    drowns(x, y) {
        return this.land.heightBetween(x, y) / UNITS_PER_CELL < this.sea;
    }

    heightOfElevation(elevation) {
        return Math.max(elevation, this.sea) * this.rise;
    }

    /** Outside the world, that of its nearest edge. */
    heightAt(x, y) {
        return this.heightOfElevation(this.land.heightBetween(x, y) / UNITS_PER_CELL);
    }

    /**
     * The place where a ray first meets the land, which goes on level outside the world; null where
     * it meets nothing within `farthest`. `direction` has length 1; no land is above `highest`.
     */
    meet(from, direction, farthest, highest) {
        const top = this.heightOfElevation(highest);
        let near = 0;
        if (from.z > top) {
            if (direction.z >= 0)
                return null;
            near = (top - from.z) / direction.z;
        }
        const above = distance => from.z + distance * direction.z -
            this.heightAt(from.x + distance * direction.x, from.y + distance * direction.y);
        for (let far = near; far < farthest; near = far) {
            far = near + Math.max(0.4, near * 0.004);
            if (above(far) > 0)
                continue;
            for (let halving = 0; halving < 12; ++halving) {
                const middle = (near + far) / 2;
                if (above(middle) > 0)
                    near = middle;
                else
                    far = middle;
            }
            return {x: from.x + far * direction.x, y: from.y + far * direction.y};
        }
        return null;
    }

    /** Whether land stands between two points in space. */
    hides(from, to) {
        const [dx, dy, dz] = [to.x - from.x, to.y - from.y, to.z - from.z];
        const steps = Math.min(600, Math.ceil(Math.hypot(dx, dy) / 2));
        for (let step = 1; step < steps; ++step) {
            const t = step / steps, x = from.x + t * dx, y = from.y + t * dy;
            if (x >= 0 && y >= 0 && x < LAND_SIZE && y < LAND_SIZE && this.heightAt(x, y) > from.z + t * dz)
                return true;
        }
        return false;
    }
}
