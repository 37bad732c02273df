// A small map of the whole world with a frame around what is in view. It can be clicked and dragged;
// it is not there while the whole world is in view anyway.
import {make} from './dom.js';
import {LAND_SIZE} from './land.js';

/** From this zoom above that of the whole world on. */
const LEAST_ZOOM = 0.75;

/** Where the part of the world in view stands on a map of all of it: how far its sides are from those of the map. */
export function frameOfArea({west, south, east, north}) {
    const share = value => `${Math.max(0, Math.min(1, (value + 0.5) / LAND_SIZE)) * 100}%`, rest = value => share(LAND_SIZE - 1 - value);
    return {left: share(west), right: rest(east), top: rest(north), bottom: share(south)};
}

/** The place at a share of the map's width from its left, and of its height from its top. */
export const placeOfShare = (x, y) => ({x: x * LAND_SIZE - 0.5, y: (1 - y) * LAND_SIZE - 0.5});

export class Overview {
    constructor(flat) {
        this.flat = flat;
        this.canvas = make('canvas', {'aria-hidden': 'true'});
        this.frame = make('div', {class: 'frame'});
        this.element = make('div', {class: 'overview card', hidden: true, 'aria-hidden': 'true',
            onpointerdown: event => this.press(event), onpointermove: event => this.drag(event)}, this.canvas, this.frame);
        flat.moving.listen(() => this.follow());
        flat.moved.listen(() => this.follow());
        flat.worldDrawn.listen(picture => this.draw(picture));
    }

    draw(picture) {
        Object.assign(this.canvas, {width: picture.width, height: picture.height});
        this.canvas.getContext('2d').drawImage(picture, 0, 0);
        this.follow();
    }

    follow() {
        this.element.hidden = this.flat.zoom() < this.flat.wholeWorldZoom() + LEAST_ZOOM;
        Object.assign(this.frame.style, frameOfArea(this.flat.area()));
    }

    press(event) {
        this.element.setPointerCapture(event.pointerId);
        event.preventDefault();
        this.goTo(event);
    }

    drag(event) {
        if (this.element.hasPointerCapture(event.pointerId))
            this.goTo(event);
    }

    goTo({clientX, clientY}) {
        const {left, top, width, height} = this.canvas.getBoundingClientRect();
        this.flat.moveTo(placeOfShare((clientX - left) / width, (clientY - top) / height));
    }
}
