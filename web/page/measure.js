// Measures a way over the land, with a profile of the heights along it.
import {unitOfPoint} from './coordinates.js';
import {make, makeShape} from './dom.js';
import {Signal} from './events.js';
import {latLngOfPlace} from './flatmap.js';
import {heightText} from './readout.js';

const SAMPLES = 400;
const WIDTH = 300, HEIGHT = 90;

/** Distance in map units along places, and `count` samples `{place, distance, height}` on the way. */
export function profileOfWay(land, places, count = SAMPLES) {
    const lengths = places.slice(1).map((place, index) => Math.hypot(place.x - places[index].x, place.y - places[index].y));
    const whole = lengths.reduce((sum, length) => sum + length, 0), samples = [];
    for (let index = 0; index <= count && whole > 0; ++index) {
        let left = whole * index / count, leg = 0;
        while (leg < lengths.length - 1 && left > lengths[leg])
            left -= lengths[leg++];
        const share = lengths[leg] > 0 ? Math.min(1, left / lengths[leg]) : 0, from = places[leg], to = places[leg + 1];
        const place = {x: from.x + (to.x - from.x) * share, y: from.y + (to.y - from.y) * share};
        samples.push({place, distance: unitsOfPoints(whole * index / count), height: land.heightBetween(place.x, place.y)});
    }
    return {distance: unitsOfPoints(whole), samples};
}

const unitsOfPoints = points => unitOfPoint(points) - unitOfPoint(0);

export class Measure {
    constructor(flat, world, settings) {
        Object.assign(this, {flat, world, settings});
        /** The way, or whether it is shown, is another. */
        this.changed = new Signal();
        this.places = [];
        this.isActive = false;
        this.line = L.polyline([], {color: '#d1122c', weight: 3, interactive: false});
        this.spot = L.circleMarker([0, 0], {radius: 5, color: '#d1122c', fillOpacity: 1, interactive: false});
        this.corners = L.layerGroup();
        this.result = make('p', {class: 'result', role: 'status'});
        this.chart = make('div', {class: 'profile'});
        this.element = make('div', {},
            make('p', {class: 'hint'}, 'Click along the way. Backspace takes the last point back.'), this.result, this.chart,
            make('div', {class: 'buttons'}, make('button', {onclick: () => this.takeBack()}, 'Take back'),
                make('button', {onclick: () => this.clear()}, 'Start anew')));
        document.addEventListener('keydown', event => {
            if (this.isActive && event.key === 'Backspace' && !event.target.matches('input, textarea'))
                this.takeBack();
        });
        this.draw();
    }

    /** The places along what is measured now. */
    way() {
        return this.isActive ? this.places : [];
    }

    activate(isActive) {
        this.isActive = isActive;
        if (isActive)
            this.settings.set({relief: false});
        this.flat.container.classList.toggle('measuring', isActive);
        this.flat.map.doubleClickZoom[isActive ? 'disable' : 'enable']();
        if (isActive)
            [this.line, this.corners].forEach(layer => layer.addTo(this.flat.map));
        else
            [this.line, this.corners, this.spot].forEach(layer => layer.remove());
        this.changed.emit();
    }

    add(place) {
        this.places.push(place);
        this.draw();
    }

    takeBack() {
        this.places.pop();
        this.draw();
    }

    clear() {
        this.places = [];
        this.draw();
    }

    draw() {
        const latLngs = this.places.map(latLngOfPlace);
        this.line.setLatLngs(latLngs);
        this.corners.clearLayers();
        for (const latLng of latLngs)
            L.circleMarker(latLng, {radius: 4, weight: 2, color: '#d1122c', fillColor: '#fff', fillOpacity: 1, interactive: false})
                .addTo(this.corners);
        this.spot.remove();
        const {distance, samples} = profileOfWay(this.world.newer, this.places);
        const heights = samples.map(({height}) => height), {up, down} = climbs(heights);
        this.result.textContent = samples.length === 0 ? `${this.places.length} of at least 2 points` :
            `${distance.toFixed(2)} map units, heights ${heightText(Math.round(Math.min(...heights)))} to ${heightText(Math.round(Math.max(...heights)))}, ` +
            `up ${Math.round(up)}, down ${Math.round(down)}`;
        this.chart.replaceChildren(...samples.length === 0 ? [] : [this.drawProfile(samples, distance)]);
        this.changed.emit();
    }

    drawProfile(samples, distance) {
        const heights = samples.map(({height}) => height), low = Math.min(...heights), high = Math.max(low + 1, ...heights);
        const points = samples.map(({distance: at, height}) =>
            `${(at / distance * WIDTH).toFixed(1)},${(HEIGHT - 4 - (height - low) / (high - low) * (HEIGHT - 8)).toFixed(1)}`);
        const picture = makeShape('svg', {viewBox: `0 0 ${WIDTH} ${HEIGHT}`, preserveAspectRatio: 'none', role: 'img',
            'aria-label': `Profile of heights from ${Math.round(low)} to ${Math.round(high)}`});
        const cursor = makeShape('line', {y1: 0, y2: HEIGHT, x1: -9, x2: -9, class: 'cursor'});
        picture.append(makeShape('polygon', {points: `0,${HEIGHT} ${points.join(' ')} ${WIDTH},${HEIGHT}`, class: 'ground'}),
            makeShape('polyline', {points: points.join(' '), class: 'surface'}), cursor);
        const caption = make('p', {class: 'detail'}, `0 to ${distance.toFixed(1)} map units`);
        picture.addEventListener('pointermove', event => {
            const box = picture.getBoundingClientRect(), share = Math.max(0, Math.min(1, (event.clientX - box.left) / box.width));
            const sample = samples[Math.round(share * (samples.length - 1))];
            cursor.setAttribute('x1', share * WIDTH);
            cursor.setAttribute('x2', share * WIDTH);
            caption.textContent = `${sample.distance.toFixed(2)} map units: height ${Math.round(sample.height)}`;
            this.spot.setLatLng(latLngOfPlace(sample.place)).addTo(this.flat.map);
        });
        return make('figure', {}, picture, caption);
    }
}

/** How far heights go up in all, and down. */
export function climbs(heights) {
    let up = 0, down = 0;
    for (let index = 1; index < heights.length; ++index) {
        up += Math.max(0, heights[index] - heights[index - 1]);
        down += Math.max(0, heights[index - 1] - heights[index]);
    }
    return {up, down};
}
