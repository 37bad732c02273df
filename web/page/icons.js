// The tools' pictures: lines in a square of 24 units.
import {makeShape} from './dom.js';

const SHAPES = {
    relief: 'M2 19 9 7l5 8 3-4 5 8z',
    layers: 'm12 3 9 5-9 5-9-5zM3 12.5l9 5 9-5M3 16.5l9 5 9-5',
    changes: 'M4 8h13l-4-4M20 16H7l4 4',
    marks: 'M12 21c-4-5-6-8-6-11a6 6 0 0 1 12 0c0 3-2 6-6 11zM12 8.5a1.5 1.5 0 1 0 0 3 1.5 1.5 0 1 0 0-3',
    measure: 'M3 16 16 3l5 5L8 21zM7 12l2 2M10 9l2 2M13 6l2 2',
    picture: 'M3 5h18v14H3zM3 16l5-5 4 4 3-3 6 5M16 8.5v1',
    link: 'M10 14a4 4 0 0 0 6 0l3-3a4 4 0 0 0-6-6l-1 1M14 10a4 4 0 0 0-6 0l-3 3a4 4 0 0 0 6 6l1-1',
    about: 'M9 9a3 3 0 1 1 4 3c-1 .5-1 1-1 2M12 17.5v.5',
    more: 'M5 12h.01M12 12h.01M19 12h.01',
    full: 'M4 9V4h5M15 4h5v5M20 15v5h-5M9 20H4v-5',
};

/** A picture by its name, for those who see it; what it stands for is told by the button's text. */
export function icon(name) {
    return makeShape('svg', {viewBox: '0 0 24 24', class: 'icon', 'aria-hidden': 'true'}, makeShape('path', {d: SHAPES[name]}));
}
