// Names that stand on the land, each on a stem: as many as there is room for, towns first, then the
// nearest; none through a mountain, none of what the raised sea covers.
import {paintLabel} from '../lettering.js';
import {LOOK_COLORS, wordOfPlace} from '../placelooks.js';

const MOST_LABELS = 80;
const STEM = 26, LINE = 16, DOT = 4, GAP = 3; // pixels
/** Of places whose feet fall into the same small part of the window, one is named. */
const CELL_WIDTH = 24, CELL_HEIGHT = 12;
/** Dungeons are there by the hundred: from afar they would hide the land. */
const DUNGEONS_WITHIN = 400;

const FONTS = ['600 13px system-ui, sans-serif', '12px system-ui, sans-serif'];

/** What comes first where there is not room for all. */
export function rankOf({kind, look}) {
    if (kind === 'place')
        return look === 'town' || look === 'port' ? 0 : 2;
    return kind === 'dungeon' ? 3 : 1;
}

/** Of what stands in the window, at most one a cell, the more important and then the nearer first. */
export function bestOfCells(candidates) {
    const isBetter = (a, b) => a.rank - b.rank || a.eyeDistance - b.eyeDistance, cells = new Map();
    for (const candidate of candidates) {
        const cell = Math.floor(candidate.foot.x / CELL_WIDTH) * 0x10000 + Math.floor(candidate.foot.y / CELL_HEIGHT), other = cells.get(cell);
        if (!other || isBetter(candidate, other) < 0)
            cells.set(cell, candidate);
    }
    return [...cells.values()].sort(isBetter);
}

const overlap = (a, b) => a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom;

export class ReliefLabels {
    /** `sight`: see sight.js. */
    constructor(sight, shape) {
        Object.assign(this, {sight, shape});
        this.widths = new Map();
        /** What is named now: `{place, box, foot}`. */
        this.shown = [];
    }

    /** `places`: `{x, y, name, kind}` each; `covered`: parts of the window that names keep clear of. */
    draw(context, places, covered = []) {
        context.textBaseline = 'middle';
        this.shown = [];
        const taken = [...covered];
        const {width, height} = this.sight;
        for (const {place, point, foot, eyeDistance, rank} of bestOfCells(this.inView(places))) {
            context.font = FONTS[rank < 3 ? 0 : 1];
            const half = this.widthOf(context, place.name, rank) / 2 + 4, middle = foot.y - STEM;
            const box = {left: foot.x - half, right: foot.x + half, top: middle - LINE / 2, bottom: middle + LINE / 2};
            const room = {left: box.left - GAP, right: box.right + GAP, top: box.top, bottom: foot.y + DOT};
            const isOutside = box.left < 0 || box.right > width || box.top < 0 || foot.y > height;
            if (isOutside || taken.some(other => overlap(room, other)) || this.sight.isHidden(point, eyeDistance))
                continue;
            taken.push(room);
            this.shown.push({place, box, foot});
            drawStem(context, foot, LOOK_COLORS[wordOfPlace(place)]);
            paintLabel(context, place.name, foot.x, middle, 'center');
            if (this.shown.length === MOST_LABELS)
                break;
        }
    }

    widthOf(context, name, rank) {
        const key = `${rank < 3} ${name}`;
        if (!this.widths.has(key))
            this.widths.set(key, context.measureText(name).width);
        return this.widths.get(key);
    }

    /** Those before the eye and in the window. */
    inView(places) {
        const found = [];
        for (const place of places) {
            const {x, y} = place, point = {x, y, z: this.shape.heightAt(x, y)}, seen = this.sight.pixelOf(point);
            if (seen && !this.shape.drowns(x, y) && (place.kind !== 'dungeon' || seen.eyeDistance < DUNGEONS_WITHIN))
                found.push({place, point, foot: seen, eyeDistance: seen.eyeDistance, rank: rankOf(place)});
        }
        return found;
    }

    /** The place whose name or foot is at a pixel; undefined where there is none. */
    at(x, y) {
        const hit = this.shown.find(({box, foot}) => x >= box.left && x <= box.right && y >= box.top && y <= box.bottom ||
            Math.hypot(x - foot.x, y - foot.y) <= 2 * DOT);
        return hit && hit.place;
    }
}

function drawStem(context, foot, color) {
    for (const [width, style] of [[3, 'rgba(255, 255, 255, 0.85)'], [1.5, '#1b1b1b']]) {
        context.lineWidth = width;
        context.strokeStyle = style;
        context.beginPath();
        context.moveTo(foot.x, foot.y);
        context.lineTo(foot.x, foot.y - STEM + LINE / 2);
        context.stroke();
    }
    context.beginPath();
    context.arc(foot.x, foot.y, DOT, 0, 2 * Math.PI);
    context.fillStyle = color;
    context.fill();
    context.lineWidth = 1.5;
    context.strokeStyle = '#fff';
    context.stroke();
}
