// Pictures of what is in view, to be kept or printed.
import {fileName, make, notify, saveFile} from './dom.js';
import {latLngOfPlace} from './flatmap.js';
import {paintLabel} from './lettering.js';

const MARK = '#d1122c';
const PIN_ARM = 14; // pixels

/**
 * The flat map as it is in view, with `factor` pixels to one of the page: letters, lines and spots
 * grow along. `way`: places that are measured along; `pin`: the pinned place, if any.
 */
async function pictureOfFlatMap({flat, graticule, way, pin}, factor) {
    const {width, height} = flat.container.getBoundingClientRect();
    const canvas = make('canvas', {width: Math.round(width * factor), height: Math.round(height * factor)});
    const context = canvas.getContext('2d');
    context.fillStyle = getComputedStyle(flat.container).backgroundColor;
    context.fillRect(0, 0, canvas.width, canvas.height);
    await flat.paintLand(context, factor);
    graticule.paint(context, width, height, factor);
    context.scale(factor, factor);
    paintWay(context, flat, way);
    paintSpots(context, flat.container);
    if (pin)
        paintPin(context, flat, pin);
    return canvas;
}

function paintWay(context, flat, way) {
    const points = way.map(place => flat.map.latLngToContainerPoint(latLngOfPlace(place)));
    context.lineJoin = context.lineCap = 'round';
    context.beginPath();
    for (const {x, y} of points)
        context.lineTo(x, y);
    strokeTwice(context, 3);
    context.fillStyle = '#fff';
    for (const {x, y} of points) {
        context.beginPath();
        context.arc(x, y, 5, 0, 7);
        context.fill();
        context.lineWidth = 2;
        context.stroke();
    }
}

function strokeTwice(context, width) {
    for (const [color, lineWidth] of [['rgba(255, 255, 255, 0.85)', width + 2], [MARK, width]]) {
        Object.assign(context, {strokeStyle: color, lineWidth});
        context.stroke();
    }
}

/** The cross of the pinned place. */
function paintPin(context, flat, place) {
    const {x, y} = flat.map.latLngToContainerPoint(latLngOfPlace(place));
    context.lineCap = 'butt';
    context.beginPath();
    context.moveTo(x - PIN_ARM, y);
    context.lineTo(x + PIN_ARM, y);
    context.moveTo(x, y - PIN_ARM);
    context.lineTo(x, y + PIN_ARM);
    strokeTwice(context, 2);
}

function paintSpots(context, container) {
    const isDark = container.classList.contains('dark-land'), box = container.getBoundingClientRect();
    context.textBaseline = 'middle';
    for (const spot of container.querySelectorAll('.spot, .gathered')) {
        const {left, top, width, height} = spot.getBoundingClientRect(), style = getComputedStyle(spot), shape = spot.matches('.spot') ? getComputedStyle(spot, '::before') : style;
        const x = left - box.left + width / 2, y = top - box.top + height / 2;
        context.beginPath();
        const edge = parseFloat(shape.borderTopWidth);
        tracePath(context, shape, x, y, (width - edge) / 2, (height - edge) / 2);
        context.fillStyle = shape.backgroundColor;
        context.fill();
        context.strokeStyle = shape.borderTopColor;
        context.lineWidth = edge;
        context.stroke();
        const {fontWeight, fontSize} = getComputedStyle(spot.querySelector('.name') || spot);
        context.font = `${fontWeight} ${fontSize} system-ui, sans-serif`;
        if (spot.classList.contains('gathered')) {
            context.fillStyle = style.color;
            context.textAlign = 'center';
            context.fillText(spot.textContent, x, y);
        }
        const lines = spot.querySelectorAll('.line'), isLeft = spot.querySelector('.name.left') !== null, away = width / 2 + 4;
        lines.forEach((line, index) => paintLabel(context, line.textContent, isLeft ? x - away : x + away,
            y + (index - (lines.length - 1) / 2) * line.getBoundingClientRect().height, isLeft ? 'right' : 'left', isDark));
    }
}

/** Of a spot or number: turned squares are told by their turning, round ones by their corners. */
function tracePath(context, style, x, y, half, halfHeight) {
    if (style.transform !== 'none') {
        const reach = half * Math.SQRT2;
        context.moveTo(x, y - reach);
        for (const [dx, dy] of [[reach, 0], [0, reach], [-reach, 0]])
            context.lineTo(x + dx, y + dy);
        context.closePath();
    } else if (style.borderRadius === '50%') {
        context.arc(x, y, half, 0, 7);
    } else {
        context.roundRect(x - half, y - halfHeight, 2 * half, 2 * halfHeight, parseFloat(style.borderRadius));
    }
}

/** The relief as it is in view. */
function pictureOfRelief(relief) {
    const density = window.devicePixelRatio || 1;
    const canvas = make('canvas', {width: Math.round(relief.width * density), height: Math.round(relief.height * density)});
    relief.paint(canvas.getContext('2d'), canvas.width, canvas.height);
    return canvas;
}

const SIZES = [
    [1, 'As on the screen', 'Pixel by pixel what is in view.'],
    [2, 'Twice as dense', 'For a print the size of a sheet; letters grow along.'],
    [4, 'Four times as dense', 'For a poster; letters grow along.']];

export class PicturePanel {
    /** `parts`: `flat`, `relief` (its switch), `graticule`, `measure`, `readout`, `title`. */
    constructor(parts) {
        Object.assign(this, parts);
        this.element = make('div', {class: 'pictures'}, ...SIZES.map(([factor, label, hint]) => make('div', {class: 'size'},
            make('button', {'data-factor': factor, onclick: () => this.save(factor)}, label),
            make('span', {class: 'detail'}, hint))), make('p', {class: 'hint'}, 'What is in view is saved as a PNG file.'));
    }

    async save(factor) {
        const {flat, relief, graticule, measure, readout} = this;
        const canvas = relief.isShown ? pictureOfRelief(relief.shown) :
            await pictureOfFlatMap({flat, graticule, way: measure.way(), pin: readout.place}, factor === 1 ? window.devicePixelRatio || 1 : factor);
        canvas.toBlob(blob => {
            if (blob)
                saveFile(fileName(this.title, '.png'), blob);
            else
                notify('The browser makes no picture as large as that.');
        }, 'image/png');
    }
}
