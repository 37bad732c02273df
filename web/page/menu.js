// A menu for a place of the land: what can be done there.
import {make} from './dom.js';

/** Between the menu and the window's sides, in pixels. */
const GAP = 8;

export class PointMenu {
    /** `items`: `[label, act]`; `label` gives a text for the place, `act` is given the place. */
    constructor(items) {
        this.items = items;
        this.element = make('div', {class: 'menu card', role: 'menu', 'aria-label': 'At this place', hidden: true, onkeydown: event => this.onKey(event)});
        this.element.addEventListener('contextmenu', event => event.preventDefault());
        for (const kind of ['pointerdown', 'wheel'])
            document.addEventListener(kind, event => this.element.contains(event.target) || this.close(), {capture: true, passive: true});
        addEventListener('resize', () => this.close());
        this.element.addEventListener('focusout', ({relatedTarget}) => {
            if (relatedTarget && !this.element.contains(relatedTarget))
                this.close();
        });
    }

    /** `pixel`: of the window, where the menu begins. */
    open(place, {x, y}) {
        if (this.element.hidden)
            this.before = document.activeElement;
        this.element.replaceChildren(...this.items.map(([label, act]) => make('button', {role: 'menuitem', tabindex: '-1', onclick: () => {
            this.close();
            act(place);
        }}, label(place))));
        this.element.hidden = false;
        const {offsetWidth: width, offsetHeight: height} = this.element, within = (from, size, whole) => Math.max(GAP, from + size + GAP <= whole ? from : whole - size - GAP);
        Object.assign(this.element.style, {left: `${within(x, width, innerWidth)}px`, top: `${within(y, height, innerHeight)}px`});
        this.element.firstElementChild.focus({preventScroll: true});
    }

    /** Whether there was one. */
    close() {
        if (this.element.hidden)
            return false;
        const hadFocus = this.element.contains(document.activeElement);
        this.element.hidden = true;
        if (hadFocus && this.before)
            this.before.focus({preventScroll: true});
        return true;
    }

    onKey(event) {
        const buttons = [...this.element.children], last = buttons.length - 1, at = buttons.indexOf(document.activeElement);
        const next = {ArrowDown: at === last ? 0 : at + 1, ArrowUp: at <= 0 ? last : at - 1, Home: 0, End: last}[event.key];
        if (event.key === 'Tab')
            this.close();
        if (next === undefined)
            return;
        event.preventDefault();
        buttons[next].focus();
    }
}
