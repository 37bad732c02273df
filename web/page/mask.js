// How much of each pixel of a picture is covered by lines.

export class Mask {
    constructor(picture) {
        this.picture = picture;
        this.shares = null; // made when it is first needed
    }

    cover(column, row, share) {
        const {left, right, top, bottom, width, height} = this.picture;
        if (share <= 0 || column < left || column >= right || row < top || row >= bottom)
            return;
        this.shares = this.shares || new Float32Array(width * height);
        const at = row * width + column;
        this.shares[at] = Math.max(this.shares[at], Math.min(1, share));
    }

    /**
     * Where a line of half width `half` crosses between the middle of a pixel and that of the next
     * one, to the right if it is upright, else downward; `share`: how far from the first.
     */
    cross(column, row, share, half, isUpright) {
        for (let step = Math.floor(share - half - 0.5); step <= Math.ceil(share + half + 0.5); ++step) {
            const covered = half + 0.5 - Math.abs(step - share);
            this.cover(isUpright ? column + step : column, isUpright ? row : row + step, covered);
        }
    }

    /** A straight line between two places in pixels. */
    line(x1, y1, x2, y2, half) {
        const dx = x2 - x1, dy = y2 - y1, length = dx * dx + dy * dy;
        for (let row = Math.floor(Math.min(y1, y2) - half - 1); row <= Math.max(y1, y2) + half + 1; ++row)
            for (let column = Math.floor(Math.min(x1, x2) - half - 1); column <= Math.max(x1, x2) + half + 1; ++column) {
                const x = column + 0.5 - x1, y = row + 0.5 - y1;
                const along = length > 0 ? Math.max(0, Math.min(1, (x * dx + y * dy) / length)) : 0;
                this.cover(column, row, half + 0.5 - Math.hypot(x - along * dx, y - along * dy));
            }
    }

    blend(color, strength) {
        const {left, right, top, bottom, width} = this.picture;
        for (let row = top; this.shares && row < bottom; ++row)
            for (let column = left; column < right; ++column)
                if (this.shares[row * width + column] > 0)
                    this.picture.blend(column, row, color, this.shares[row * width + column] * strength);
    }
}
