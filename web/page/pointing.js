// What the reader points at: with a cursor, or with the middle of the window where there is none.
import {isInWorld} from './coordinates.js';
import {Signal} from './events.js';
import {listenToLongPress} from './longpress.js';
import {isMenuKey} from './shortcuts.js';

export class Pointing {
    constructor(flat, relief) {
        this.flat = flat;
        /**
         * The place pointed at, or null; the place picked by click or key, or null for none; the place whose menu is wanted,
         * and the window's pixel there.
         */
        Object.assign(this, {hovered: new Signal(), picked: new Signal(), called: new Signal()});
        for (const map of [flat, relief]) {
            map.hovered.listen(place => this.hovered.emit(place));
            map.clicked.listen(place => this.picked.emit(place));
            map.called.listen((place, pixel) => place && isInWorld(place) && this.called.emit(place, pixel));
        }
        this.hasCursor = matchMedia('(hover: hover)').matches;
        this.listenToHands();
        flat.moving.listen(() => this.showMiddle());
    }

    /** The map also takes the focus when it is clicked: only with the keyboard its middle is marked. */
    listenToHands() {
        const {container} = this.flat, note = isByKeyboard => container.classList.toggle('by-keyboard', isByKeyboard);
        document.addEventListener('keydown', () => note(true), true);
        document.addEventListener('pointerdown', () => note(false), true);
        document.addEventListener('pointermove', event => this.hasCursor = event.pointerType === 'mouse', true);
        container.addEventListener('focus', () => this.showMiddle());
        container.addEventListener('keydown', event => {
            if (event.target !== container)
                return;
            if (event.key === 'Enter')
                this.picked.emit(this.flat.center());
            else if (isMenuKey(event))
                this.flat.callAtMiddle();
            else
                return;
            event.preventDefault();
        });
        listenToLongPress(container, pixel => this.flat.callAt(pixel));
    }

    showMiddle() {
        if (!this.hasCursor || this.flat.container.matches('.by-keyboard:focus'))
            this.hovered.emit(this.flat.center());
    }
}
