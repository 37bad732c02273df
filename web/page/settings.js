// What is shown, and how: one object that everything looks at and listens to.

export const DEFAULTS = Object.freeze({
    base: 'land', // or 'height', 'slope', 'difference'
    azimuth: 315,
    altitude: 45,
    squares: false,
    contours: false,
    snow: false,
    water: false,
    roads: false,
    impassable: false,
    objects: false,
    changes: false,
    swipe: false,
    blocks: true,
    grid: true,
    places: true,
    dungeons: true,
    marks: true,
    relief: false,
    exaggeration: 1.5,
    seaLevel: 0, // real height that the sea stands above the lowest land
    haze: 1,
    types: Object.freeze([]), // land types that are picked; none: all
});

/** Settings that the land's own pixels depend on. */
const PAINTED = ['base', 'azimuth', 'altitude', 'squares', 'contours', 'snow', 'water', 'roads', 'impassable',
    'objects', 'changes', 'types'];

export class Settings {
    constructor() {
        this.values = {...DEFAULTS};
        this.listeners = [];
    }

    get(name) {
        return this.values[name];
    }

    /** Changes some settings; listeners learn once which. */
    set(changes) {
        const names = Object.keys(changes).filter(
            name => name in DEFAULTS && JSON.stringify(changes[name]) !== JSON.stringify(this.values[name]));
        if (names.length === 0)
            return;
        for (const name of names)
            this.values[name] = changes[name];
        for (const listener of this.listeners)
            listener(new Set(names));
    }

    listen(listener) {
        this.listeners.push(listener);
    }

    static affectsPaint(names) {
        return PAINTED.some(name => names.has(name));
    }

    /** The settings that a worker paints by; `contours` becomes the interval for a zoom. */
    forPainting(zoom) {
        const view = Object.fromEntries(PAINTED.map(name => [name, this.values[name]]));
        view.contours = view.contours ? contourInterval(zoom) : 0;
        return view;
    }
}

/** Real height between contour lines: the farther out, the more. */
export function contourInterval(zoom) {
    return zoom <= -2 ? 200 : zoom <= -1 ? 100 : zoom <= 1 ? 50 : zoom <= 3 ? 20 : 10;
}
