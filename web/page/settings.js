// What is shown, and how: one object that everything looks at and listens to.
import {CHANGE_KINDS} from './changekinds.js';
import {Signal} from './events.js';

/** On or off; a link names it under `show`. */
const flag = (usual, more) => ({usual, ...more});
/** One of some words; `link`: what a link calls it. */
const choice = (usual, words, link, more) => ({usual, words, link, ...more});
/** A number within bounds, set in steps; those that share a link's name stand there together. */
const number = (usual, [least, most, step], link, more) => ({usual, least, most, step, link, ...more});
/** Several whole numbers below `end`. */
const list = (usual, end, link, more) => ({usual: Object.freeze(usual), end, link, ...more});

/** Several of some words. */
const choices = (usual, words, link, more) => ({usual: Object.freeze(usual), words, link, ...more});

/** The land's own pixels depend on it. */
const PAINTED = {isPainted: true};
/** Not remembered from visit to visit. */
const OF_THE_MOMENT = {isRemembered: false};

/** All that can be set. A row is all that settings, links and workers ask of a new one. */
export const SETTINGS = Object.freeze({
    base: choice('land', ['land', 'height', 'slope', 'difference'], 'base', PAINTED),
    azimuth: number(315, [0, 360, 5], 'light', PAINTED),
    altitude: number(45, [0, 90, 5], 'light', PAINTED),
    squares: flag(false, PAINTED),
    grain: flag(true, PAINTED),
    contours: flag(false, PAINTED),
    interval: number(0, [0, 500, 5], 'interval', PAINTED), // real height between contours; 0: by the zoom
    snow: flag(false, PAINTED),
    water: flag(false, PAINTED),
    roads: flag(false, PAINTED),
    impassable: flag(false, PAINTED),
    objects: flag(false, PAINTED),
    changes: flag(false, PAINTED),
    kinds: choices(CHANGE_KINDS, CHANGE_KINDS, 'kinds', {...PAINTED, ...OF_THE_MOMENT}), // of changes
    swipe: flag(false, {...PAINTED, ...OF_THE_MOMENT}),
    blocks: flag(true),
    grid: flag(true),
    places: flag(true),
    dungeons: flag(true),
    marks: flag(true),
    exaggeration: number(1.5, [0.25, 8, 0.25], 'rise'),
    seaLevel: number(0, [0, 10000, 1], 'sea', OF_THE_MOMENT), // real height that the sea stands higher than it does
    shadows: flag(true),
    haze: number(1, [0, 3, 0.1], 'haze'),
    types: list([], 64, 'types', {...PAINTED, ...OF_THE_MOMENT}), // land types that are picked; none: all
    relief: flag(false, {isInAddress: false, ...OF_THE_MOMENT}), // a link's view says it
});

const NAMES = Object.keys(SETTINGS);
const PAINTED_NAMES = NAMES.filter(name => SETTINGS[name].isPainted);

export const DEFAULTS = Object.freeze(Object.fromEntries(NAMES.map(name => [name, SETTINGS[name].usual])));

export class Settings {
    /** `usual`: what differs from the defaults on this page. */
    constructor(usual = {}) {
        this.usual = Object.freeze({...DEFAULTS, ...usual});
        this.values = {...this.usual};
        this.changed = new Signal();
    }

    get(name) {
        return this.values[name];
    }

    /** Changes some settings; listeners learn once which. */
    set(changes) {
        const names = Object.keys(changes).filter(
            name => name in SETTINGS && JSON.stringify(changes[name]) !== JSON.stringify(this.values[name]));
        if (names.length === 0)
            return;
        for (const name of names)
            this.values[name] = changes[name];
        this.changed.emit(new Set(names));
    }

    toggle(name) {
        this.set({[name]: !this.values[name]});
    }

    /** Back to what is usual. */
    reset(...names) {
        this.set(Object.fromEntries(names.map(name => [name, this.usual[name]])));
    }

    /** `listener` is called with the set of names that changed. */
    listen(listener) {
        return this.changed.listen(listener);
    }

    static affectsPaint(names) {
        return PAINTED_NAMES.some(name => names.has(name));
    }

    /** What a worker paints by: see tile.js. */
    forPainting(zoom, density = 1) {
        const view = Object.fromEntries(PAINTED_NAMES.map(name => [name, this.values[name]]));
        return {...view, contours: view.contours ? this.contourInterval(zoom) : 0, density};
    }

    /** Real height between contour lines. */
    contourInterval(zoom) {
        return this.values.interval || usualInterval(zoom);
    }
}

/** The farther out, the more. */
function usualInterval(zoom) {
    return zoom < -1.5 ? 200 : zoom < -0.5 ? 100 : zoom < 1.5 ? 50 : zoom < 3.5 ? 20 : 10;
}
