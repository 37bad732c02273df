// What else stands where something is pinned: places, dungeons and marks that share a spot.
import {make} from './dom.js';
import {wordOfPlace} from './placelooks.js';
import {WindowedList} from './windowedlist.js';

const NEAR = 0.75; // points

/** All of some places that stand at one, but for the one named so. */
export function othersAt(places, {x, y}, name) {
    const isNear = other => Math.abs(other.x - x) < NEAR && Math.abs(other.y - y) < NEAR;
    const found = places.filter(isNear), self = found.findIndex(other => other.name === name);
    return self < 0 ? found : [...found.slice(0, self), ...found.slice(self + 1)];
}

/** `choose` is called with the place that is chosen. Null where nothing else is there. */
export function othersHere(places, place, name, choose) {
    const others = othersAt(places, place, name);
    if (others.length === 0)
        return null;
    const list = new WindowedList('here', other => make('li', {}, make('button', {class: 'row', onclick: () => choose(other)},
        make('span', {class: 'detail'}, `${wordOfPlace(other)} `), other.name)));
    list.show(others);
    return make('div', {class: 'others'}, make('p', {class: 'detail'}, name ? `Also here: ${others.length}` : `Here: ${others.length}`), list.element);
}
