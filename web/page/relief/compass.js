// The compass rose: which way is north, and the way back to it.
import {make, makeShape} from '../dom.js';

const WINDS = ['north', 'north-east', 'east', 'south-east', 'south', 'south-west', 'west', 'north-west'];
const LONG = 33, SHORT = 22, WAIST = 8, LETTER = 41; // of a rose 100 wide
const TILT_SHOWN = 0.5; // else its letter could not be read

/** The name of the wind nearest to a heading in degrees. */
export const windOf = heading => WINDS[Math.round(heading / 45) & 7];

/** The halves of the rose's eight points: `{part, corners}`, the points between the winds first. */
export function roseOf() {
    const halves = [];
    for (const [first, length, waist] of [[45, SHORT, WAIST * 0.8], [0, LONG, WAIST]])
        for (let angle = first; angle < 360; angle += 90)
            for (const side of [-1, 1]) {
                const turned = (x, y) => {
                    const [sin, cos] = [Math.sin(angle * Math.PI / 180), Math.cos(angle * Math.PI / 180)];
                    return [x * cos - y * sin, x * sin + y * cos];
                };
                halves.push({part: angle === 0 ? 'north' : side < 0 ? 'dark' : 'light',
                    corners: [[0, 0], turned(0, -length), turned(side * waist, -waist)]});
            }
    return halves;
}

/** On a picture: `x`, `y`: its middle; `heading`: where the picture looks. */
export function paintRose(context, x, y, size, heading) {
    const fills = {north: '#d1122c', dark: '#1b1b1b', light: '#fff'};
    context.save();
    context.translate(x, y);
    context.scale(size / 100, size / 100);
    context.beginPath();
    context.arc(0, 0, 49, 0, 2 * Math.PI);
    context.fillStyle = 'rgba(255, 255, 255, 0.8)';
    context.fill();
    context.rotate(-heading * Math.PI / 180);
    for (const {part, corners} of roseOf()) {
        context.beginPath();
        corners.forEach(corner => context.lineTo(...corner));
        context.closePath();
        context.fillStyle = fills[part];
        context.fill();
        context.strokeStyle = fills.dark;
        context.stroke();
    }
    context.fillStyle = fills.dark;
    context.font = '700 17px system-ui, sans-serif';
    context.textAlign = 'center';
    context.textBaseline = 'middle';
    context.fillText('N', 0, -LETTER);
    context.restore();
}

export class Compass {
    constructor(turnNorth) {
        const halves = roseOf().map(({part, corners}) => makeShape('path', {class: part, d: `M${corners.map(corner => corner.join(' ')).join('L')}Z`}));
        this.rose = makeShape('g', {}, ...halves, makeShape('text', {y: 6 - LETTER, 'text-anchor': 'middle'}, 'N'));
        this.plane = makeShape('svg', {viewBox: '-50 -50 100 100', 'aria-hidden': 'true'}, this.rose);
        this.element = make('button', {class: 'compass', title: 'Turn to the north (N)', onclick: turnNorth}, this.plane);
    }

    /** Where the window looks, and how far its view is tilted, in degrees. */
    show({heading, tilt}) {
        this.rose.setAttribute('transform', `rotate(${-heading})`);
        this.plane.style.transform = `rotateX(${tilt * TILT_SHOWN}deg)`;
        const label = `Looks ${windOf(heading)}. Turn to the north`;
        if (this.element.getAttribute('aria-label') !== label)
            this.element.setAttribute('aria-label', label);
    }
}
