// What lies over the relief: the measured way, the pinned place, the names, and the middle of the window
// while it is steered by keyboard.
import {ReliefLabels} from './labels.js';

const MARK = '#d1122c', EDGE = 'rgba(255, 255, 255, 0.85)';
const PIN_ARM = 14, MIDDLE_ARM = 12; // pixels
const WAY_SAMPLES = 300;
/** How much is left of what is behind a mountain. */
const HIDDEN = 0.25;

/** Places along a way, about `count` of them at even distances, its corners among them. */
export function samplesOfWay(places, count = WAY_SAMPLES) {
    const lengthTo = index => Math.hypot(places[index].x - places[index - 1].x, places[index].y - places[index - 1].y);
    const step = places.slice(1).reduce((sum, _, index) => sum + lengthTo(index + 1), 0) / count, samples = places.slice(0, 1);
    for (let index = 1; index < places.length; ++index) {
        const from = places[index - 1], to = places[index], parts = Math.max(1, Math.ceil(lengthTo(index) / step) || 1);
        for (let part = 1; part <= parts; ++part)
            samples.push({x: from.x + (to.x - from.x) * part / parts, y: from.y + (to.y - from.y) * part / parts});
    }
    return samples;
}

export class ReliefOverlay {
    /** `sight`: see sight.js. */
    constructor(canvas, sight, shape) {
        Object.assign(this, {canvas, sight, shape});
        this.labels = new ReliefLabels(this.sight, shape);
    }

    resize(width, height) {
        const density = Math.min(2, window.devicePixelRatio || 1);
        Object.assign(this.canvas, {width: width * density, height: height * density});
        this.density = density;
    }

    /** As `contents` of relief.js gives it; `hasMiddle`: whether the middle is marked. */
    draw({labels, way, pin, covers}, hasMiddle) {
        const context = this.canvas.getContext('2d'), {width, height} = this.sight;
        context.setTransform(this.density, 0, 0, this.density, 0, 0);
        context.clearRect(0, 0, width, height);
        this.drawWay(context, way());
        // What is hidden has no size.
        const covered = covers().map(element => element.getBoundingClientRect()).filter(box => box.width > 0);
        this.labels.draw(context, labels(), covered);
        const place = pin(), spot = place && this.seen(place);
        if (spot) {
            context.globalAlpha = spot.isHidden ? HIDDEN : 1;
            drawCross(context, spot.x, spot.y, PIN_ARM, MARK);
            context.globalAlpha = 1;
        }
        if (hasMiddle)
            drawCross(context, width / 2, height / 2, MIDDLE_ARM, '#1d5fa8');
    }

    /** A place's pixel and whether land stands before it; null outside the window. */
    seen({x, y}) {
        const point = {x, y, z: this.shape.heightAt(x, y)}, pixel = this.sight.pixelOf(point);
        return pixel && {...pixel, isHidden: this.sight.isHidden(point, pixel.eyeDistance)};
    }

    drawWay(context, way) {
        const spots = samplesOfWay(way).map(place => this.seen(place));
        context.lineJoin = context.lineCap = 'round';
        for (const isHidden of [true, false]) {
            context.globalAlpha = isHidden ? HIDDEN : 1;
            context.beginPath();
            spots.forEach((spot, index) => {
                const last = spots[index - 1];
                if (!spot || !last || (spot.isHidden || last.isHidden) !== isHidden)
                    return;
                context.moveTo(last.x, last.y);
                context.lineTo(spot.x, spot.y);
            });
            strokeTwice(context, MARK, 3);
        }
        context.globalAlpha = 1;
        for (const corner of way.map(place => this.seen(place)).filter(spot => spot && !spot.isHidden)) {
            context.beginPath();
            context.arc(corner.x, corner.y, 4, 0, 2 * Math.PI);
            context.fillStyle = '#fff';
            context.fill();
            context.lineWidth = 2;
            context.strokeStyle = MARK;
            context.stroke();
        }
    }
}

function strokeTwice(context, color, width) {
    for (const [style, lineWidth] of [[EDGE, width + 2], [color, width]]) {
        Object.assign(context, {strokeStyle: style, lineWidth});
        context.stroke();
    }
}

function drawCross(context, x, y, arm, color) {
    context.lineCap = 'butt';
    context.beginPath();
    context.moveTo(x - arm, y);
    context.lineTo(x + arm, y);
    context.moveTo(x, y - arm);
    context.lineTo(x, y + arm);
    strokeTwice(context, color, 2);
}
