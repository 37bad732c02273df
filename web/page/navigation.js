// Where the reader is, on the flat map or in the relief, and the ways to somewhere else.
import {Signal} from './events.js';

const FOUND_ZOOM = 2;

export class Navigation {
    constructor(world, flat, relief, readout) {
        Object.assign(this, {world, flat, relief, readout});
        /** Another part of the land is in view. */
        this.moved = new Signal();
        for (const map of [flat, relief])
            map.moved.listen(() => this.moved.emit());
    }

    /** `{place, zoom, relief}`: the place in the middle; heading, tilt and distance while the relief is shown, else null. */
    view() {
        const relief = this.relief.view();
        return relief ? {place: {x: relief.x, y: relief.y}, zoom: relief.zoom, relief} :
            {place: this.flat.center(), zoom: this.flat.zoom(), relief: null};
    }

    /** Shows what `view()` gave; what is missing of it stays as it is. */
    restore({place, zoom = FOUND_ZOOM, relief}) {
        this.relief.restore(place && {...place, zoom}, relief);
    }

    /** The map that is shown takes the keys. */
    focus() {
        const {shown} = this.relief;
        (shown ? shown.canvas : this.flat.container).focus({preventScroll: true});
    }

    goTo(place, zoom = Math.max(this.flat.zoom(), FOUND_ZOOM)) {
        if (this.relief.isShown)
            this.relief.flyTo(place);
        else
            this.flat.flyTo(place, zoom);
    }

    /** `entry`: what the search found. */
    goToFound({kind, name, place}) {
        this.goTo(place);
        if (kind === 'block')
            this.flat.frameBlock(place);
        this.readout.pin(place, kind === 'coordinate' ? '' : name);
    }

    goToBlock(number, place) {
        this.goTo(place);
        this.flat.frameBlock(place);
        this.readout.pin(place, this.world.dungeonNames.get(number));
    }
}
