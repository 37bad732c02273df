// How long a round number of map units is in the window.
import {make} from './dom.js';

const LENGTHS = [0.1, 0.2, 0.5, 1, 2, 5, 10, 20, 50, 100];
const WIDEST = 110; // pixels
const POINTS_PER_UNIT = 10;

/** `{units, width}` for a zoom: the longest that has room. */
export function scaleOfZoom(zoom) {
    const pixels = units => units * POINTS_PER_UNIT * 2 ** zoom;
    const units = LENGTHS.filter(length => pixels(length) <= WIDEST).pop() || LENGTHS[0];
    return {units, width: pixels(units)};
}

export class ScaleBar {
    constructor(flat) {
        this.text = make('span', {});
        this.element = make('div', {class: 'scale-bar', role: 'img'}, this.text);
        const show = () => {
            const {units, width} = scaleOfZoom(flat.zoom());
            this.text.textContent = units === 1 ? '1 map unit' : `${units} map units`;
            this.element.setAttribute('aria-label', `Scale: ${this.text.textContent}`);
            this.element.style.width = `${width}px`;
        };
        flat.moving.listen(show);
        show();
    }
}
