// Where in the window the eye sees a point in space, and whether land stands before it.

export class ReliefSight {
    constructor(camera, shape) {
        Object.assign(this, {camera, shape, width: 1, height: 1});
    }

    resize(width, height) {
        Object.assign(this, {width, height});
    }

    /** `{x, y, eyeDistance}`, in pixels from the window's upper left corner; null outside the window. */
    pixelOf({x, y, z}) {
        const {position, projectionMatrix: {elements: p}, matrixWorldInverse: {elements: m}} = this.camera;
        const depth = -(m[2] * x + m[6] * y + m[10] * z + m[14]);
        if (depth <= 0)
            return null;
        const right = (m[0] * x + m[4] * y + m[8] * z + m[12]) * p[0] / depth, up = (m[1] * x + m[5] * y + m[9] * z + m[13]) * p[5] / depth;
        if (Math.abs(right) > 1 || Math.abs(up) > 1)
            return null;
        const eyeDistance = Math.hypot(x - position.x, y - position.y, z - position.z);
        return {x: (right + 1) / 2 * this.width, y: (1 - up) / 2 * this.height, eyeDistance};
    }

    /** The direction in which a pixel of the window lies, a vector of length 1. */
    directionTo(x, y) {
        const {projectionMatrix: {elements: p}, matrixWorldInverse: {elements: m}} = this.camera;
        const right = (x / this.width * 2 - 1) / p[0], up = (1 - y / this.height * 2) / p[5], length = Math.hypot(right, up, 1);
        const along = axis => (m[axis] * right + m[axis + 1] * up - m[axis + 2]) / length;
        return {x: along(0), y: along(4), z: along(8)};
    }

    /** Whether land stands before a point on the land; what is just below a ridge counts as seen. */
    isHidden({x, y, z}, eyeDistance) {
        return this.shape.hides(this.camera.position, {x, y, z: z + 1 + eyeDistance * 0.004});
    }
}
