// The names in the relief for the keyboard and for screen readers: a button over each, of which the tab
// key comes to one; the arrow keys go on from there.
import {textOfPlace} from '../coordinates.js';
import {make} from '../dom.js';
import {wordOfPlace} from '../placelooks.js';

const DIRECTIONS = {ArrowRight: [1, 0], ArrowLeft: [-1, 0], ArrowDown: [0, 1], ArrowUp: [0, -1]};

/** The nearest of some `{x, y}` in a direction of the window; what lies aside of it counts as farther off. */
export function nextOf(from, others, [right, down]) {
    let best, least = Infinity;
    for (const other of others) {
        const x = other.x - from.x, y = other.y - from.y;
        const ahead = x * right + y * down, far = ahead + 2 * (Math.abs(x * down) + Math.abs(y * right));
        if (ahead > 0 && far < least)
            [best, least] = [other, far];
    }
    return best;
}

export class ReliefStops {
    constructor(choose) {
        this.choose = choose;
        this.element = make('div', {class: 'relief-stops', role: 'group', 'aria-label': 'Places in view', hidden: true,
            onkeydown: event => this.onKey(event)});
        this.stops = [];
    }

    /** `shown`: what ReliefLabels shows. The one with the focus keeps it while its place is in view. */
    follow(shown) {
        const {activeElement} = document, hadFocus = this.element.contains(activeElement);
        const last = this.stops.find(({button}) => button === activeElement);
        this.stops = shown.map(({place, box}) => this.stop(place, box));
        this.element.replaceChildren(...this.stops.map(({button}) => button));
        const same = last && this.stops.find(({place}) => place.name === last.place.name && place.x === last.place.x && place.y === last.place.y);
        const stop = same || this.stops[0];
        if (stop)
            stop.button.tabIndex = 0;
        if (hadFocus && stop)
            stop.button.focus({preventScroll: true});
    }

    stop(place, box) {
        const button = make('button', {tabindex: '-1', 'aria-label': `${wordOfPlace(place)} ${place.name}, ${textOfPlace(place)}`,
            onclick: () => this.choose(place)});
        Object.assign(button.style, {
            left: `${box.left}px`, top: `${box.top}px`, width: `${box.right - box.left}px`, height: `${box.bottom - box.top}px`});
        return {place, button, x: (box.left + box.right) / 2, y: (box.top + box.bottom) / 2};
    }

    onKey(event) {
        const from = this.stops.find(({button}) => button === event.target), direction = DIRECTIONS[event.key];
        if (!from || !direction)
            return;
        event.preventDefault();
        const next = nextOf(from, this.stops, direction);
        if (!next)
            return;
        from.button.tabIndex = -1;
        next.button.tabIndex = 0;
        next.button.focus({preventScroll: true});
    }
}
