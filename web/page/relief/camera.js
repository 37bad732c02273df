// From where the relief is seen: a place on the land in the middle of the window, how far off the
// eye is, where it looks (degrees from the north over the east) and how far the view is tilted from
// looking straight down.
import {LAND_SIZE} from '../land.js';

export const FIELD_OF_VIEW = 45; // degrees, from the window's lower edge to its upper one
export const MOST_TILT = 82;
export const CLOSEST_VIEW = 14;
export const FARTHEST_VIEW = 5000;
const radians = degrees => degrees * Math.PI / 180;
const TAN = Math.tan(radians(FIELD_OF_VIEW / 2));

const clampTo = (value, low, high) => Math.max(low, Math.min(high, value));

export class ReliefView {
    constructor(shape) {
        this.shape = shape;
        Object.assign(this, {x: LAND_SIZE / 2, y: LAND_SIZE / 2, distance: 1000, heading: 0, tilt: 0});
    }

    /** The zoom of a flat map that shows the middle as large, in a window of this height. */
    zoomIn(height) {
        return Math.log2(height / (2 * TAN * this.distance));
    }

    static distanceOfZoom(zoom, height) {
        return height / (2 * TAN * 2 ** zoom);
    }

    values() {
        const {x, y, distance, heading, tilt} = this;
        return {x, y, distance, heading, tilt};
    }

    set(values) {
        Object.assign(this, values);
        this.x = clampTo(this.x, 0, LAND_SIZE - 1);
        this.y = clampTo(this.y, 0, LAND_SIZE - 1);
        this.distance = clampTo(this.distance, CLOSEST_VIEW, FARTHEST_VIEW);
        this.tilt = clampTo(this.tilt, 0, MOST_TILT);
        this.heading = (this.heading % 360 + 360) % 360;
    }

    /** To the right and ahead as it looks in the window, in points. */
    moveBy(right, ahead) {
        const h = radians(this.heading);
        this.set({x: this.x + right * Math.cos(h) + ahead * Math.sin(h), y: this.y - right * Math.sin(h) + ahead * Math.cos(h)});
    }

    /** Sets a camera of the library; never inside the land. */
    aim(camera) {
        const h = radians(this.heading), t = radians(this.tilt);
        const ground = this.shape.heightAt(this.x, this.y);
        const eye = {
            x: this.x - this.distance * Math.sin(t) * Math.sin(h), y: this.y - this.distance * Math.sin(t) * Math.cos(h),
            z: ground + this.distance * Math.cos(t)};
        eye.z = Math.max(eye.z, this.shape.heightAt(eye.x, eye.y) + Math.max(1, this.distance * 0.02));
        camera.position.set(eye.x, eye.y, eye.z);
        camera.up.set(Math.sin(h) * Math.cos(t), Math.cos(h) * Math.cos(t), Math.sin(t));
        camera.lookAt(this.x, this.y, ground);
        camera.near = Math.max(0.5, this.distance * 0.02);
        camera.far = 40000;
        camera.updateProjectionMatrix();
        camera.updateMatrixWorld();
    }
}

/** Brings a view from one state to another in some time. */
export class ReliefFlight {
    constructor(view, to, duration) {
        const turn = ((to.heading ?? view.heading) - view.heading + 540) % 360 - 180;
        this.view = view;
        this.from = view.values();
        this.to = {...this.from, ...to, heading: this.from.heading + turn};
        this.duration = duration;
        this.start = performance.now();
        // Far flights rise on the way, so that one sees where they go.
        const way = Math.hypot(this.to.x - this.from.x, this.to.y - this.from.y);
        this.lift = Math.max(0, way * 0.6 - Math.max(this.from.distance, this.to.distance));
    }

    /** Whether it goes on. */
    step(now) {
        const share = this.duration > 0 ? Math.min(1, (now - this.start) / this.duration) : 1;
        const eased = share * share * (3 - 2 * share), {from, to} = this;
        const between = name => from[name] + (to[name] - from[name]) * eased;
        this.view.set({
            x: between('x'), y: between('y'), heading: between('heading'), tilt: between('tilt'),
            distance: from.distance * (to.distance / from.distance) ** eased + this.lift * 4 * eased * (1 - eased)});
        return share < 1;
    }
}
