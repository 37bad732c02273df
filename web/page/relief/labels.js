// Names that stand on the land, each on a stem: as many as there is room for, the nearest first, none
// through a mountain.
import {paintLabel} from '../graticule.js';

const MOST_LABELS = 80;
const STEM_PIXELS = 26; // pixels
const LABEL_PIXELS = 16;

export class ReliefLabels {
    /** `scene`: see scene.js; draws on a canvas over it. */
    constructor(canvas, scene, shape) {
        Object.assign(this, {canvas, scene, shape});
    }

    resize(width, height) {
        const density = Math.min(2, window.devicePixelRatio || 1);
        Object.assign(this.canvas, {width: width * density, height: height * density});
        Object.assign(this, {width, height, density});
    }

    /** `places`: `{x, y, name}` each. */
    draw(places) {
        const context = this.canvas.getContext('2d');
        context.setTransform(this.density, 0, 0, this.density, 0, 0);
        context.clearRect(0, 0, this.width, this.height);
        this.paint(context, places);
    }

    paint(context, places) {
        context.font = '600 13px system-ui, sans-serif';
        context.textBaseline = 'middle';
        const taken = [];
        for (const {name, foot, eyeDistance, point} of this.inView(places)) {
            const width = context.measureText(name).width + 8;
            const box = {left: foot.x - width / 2, right: foot.x + width / 2, top: foot.y - STEM_PIXELS - LABEL_PIXELS / 2, bottom: foot.y - STEM_PIXELS + LABEL_PIXELS / 2};
            if (box.left < 0 || box.right > this.width || box.top < 0 || taken.some(other => box.left < other.right && other.left < box.right && box.top < other.bottom && other.top < box.bottom))
                continue;
            if (this.shape.hides(this.scene.camera.position, {...point, z: point.z + 1 + eyeDistance * 0.004}))
                continue;
            taken.push(box);
            drawStem(context, foot);
            paintLabel(context, name, foot.x, foot.y - STEM_PIXELS, 'center');
            if (taken.length === MOST_LABELS)
                break;
        }
    }

    /** Those before the eye and in the window, the nearest first. */
    inView(places) {
        const eye = this.scene.camera.position, found = [];
        for (const {x, y, name} of places) {
            const point = {x, y, z: this.shape.heightAt(x, y)};
            const seen = this.scene.project(x, y, point.z);
            if (!seen || Math.abs(seen.x) > 1 || Math.abs(seen.y) > 1)
                continue;
            const foot = {x: (seen.x + 1) / 2 * this.width, y: (1 - seen.y) / 2 * this.height};
            found.push({name, foot, point, eyeDistance: Math.hypot(x - eye.x, y - eye.y, point.z - eye.z)});
        }
        return found.sort((a, b) => a.eyeDistance - b.eyeDistance);
    }
}

function drawStem(context, foot) {
    for (const [width, style] of [[3, 'rgba(255, 255, 255, 0.85)'], [1.5, '#1b1b1b']]) {
        context.lineWidth = width;
        context.strokeStyle = style;
        context.beginPath();
        context.moveTo(foot.x, foot.y);
        context.lineTo(foot.x, foot.y - STEM_PIXELS + LABEL_PIXELS / 2);
        context.stroke();
    }
    context.beginPath();
    context.arc(foot.x, foot.y, 3, 0, 2 * Math.PI);
    context.fillStyle = '#c42020';
    context.fill();
}
