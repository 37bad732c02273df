// Keeps the address as the view is, and the view as the address says.
import {textOfPlace} from './coordinates.js';
import {copyText} from './dom.js';
import {fragmentOfState, fragmentToRemember, stateOfFragment} from './link.js';

/** Not with every step of a movement: browsers refuse too many changes of the address. */
const DELAY = 250;
/** In the browser's memory, for all worlds. */
const LAYERS = 'plotterra layers';

export class Address {
    constructor(navigation, settings, readout, measure) {
        Object.assign(this, {navigation, settings, readout, measure});
    }

    /** Follows the view from now on, and the reader who goes back or pastes another address. */
    listen() {
        for (const signal of [this.navigation.moved, this.measure.changed])
            signal.listen(() => this.noteSoon());
        this.settings.listen(() => {
            this.noteSoon();
            remember(fragmentToRemember(this.settings.values, this.settings.usual));
        });
        this.readout.pinned.listen(place => {
            if (!this.mark || place === this.mark)
                return;
            this.mark = undefined; // It is gone from the map.
            this.noteSoon();
        });
        addEventListener('hashchange', () => {
            if (location.hash !== this.noted)
                this.restore();
        });
    }

    noteSoon() {
        clearTimeout(this.timer);
        this.timer = setTimeout(() => {
            history.replaceState(null, '', this.fragment());
            this.noted = location.hash;
        }, DELAY);
    }

    fragment(mark = this.mark) {
        return fragmentOfState({...this.navigation.view(), settings: this.settings.values, mark, way: this.measure.way()}, this.settings.usual);
    }

    /** A link to the view, with a mark at a place if there is one. */
    copyLink(place) {
        const mark = place && {...place, name: textOfPlace(place)};
        copyText(location.href.replace(/#.*/, '') + this.fragment(mark || undefined));
    }

    /** What the address says, or if it says nothing the layers of the last visit. */
    state() {
        return stateOfFragment(location.hash || remembered(), this.settings.usual);
    }

    /** As much of it as can be had before there is a land. */
    restoreLayers() {
        const {settings, place, zoom, relief} = this.state();
        this.settings.set(settings);
        if (place && !relief)
            this.navigation.restore({place, zoom});
    }

    restore() {
        const {settings, mark, way, ...view} = this.state();
        this.settings.set({...settings, relief: this.settings.get('relief')});
        this.navigation.restore(view);
        this.mark = mark;
        if (mark)
            this.readout.pin(mark, mark.name);
        if (way)
            this.measure.begin(way);
    }
}

function remember(text) {
    try {
        localStorage.setItem(LAYERS, text);
    } catch {
        // The browser keeps nothing for this page.
    }
}

function remembered() {
    try {
        return localStorage.getItem(LAYERS) || '';
    } catch {
        return '';
    }
}
