// Measures a way over the land. Its corners are set by clicks and can be dragged.
import {isInWorld, textOfPlace} from './coordinates.js';
import {make, notify} from './dom.js';
import {Signal} from './events.js';
import {latLngOfPlace, placeOfLatLng} from './flatmap.js';
import {LAND_SIZE} from './land.js';
import {MOST_CORNERS} from './link.js';
import {climbs, distancesOfCorners, pictureOfProfile, profileOfWay} from './profile.js';
import {heightText} from './readout.js';

const COLOR = '#d1122c';
const KEYS = {ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, -1], ArrowDown: [0, 1]};
const KEY_STEP = 8; // pixels

const inside = value => Math.max(0, Math.min(LAND_SIZE - 1, value));

export class Measure {
    constructor(flat, world, settings) {
        Object.assign(this, {flat, world, settings});
        /** The way, or whether it is shown, is another; measuring is to begin (true) or to end. */
        Object.assign(this, {changed: new Signal(), called: new Signal()});
        this.places = [];
        this.isActive = false;
        this.isKept = false; // in view, while something else is done
        this.lines = [['#fff', 5, 0.85], [COLOR, 3, 1]].map(([color, weight, opacity]) => L.polyline([], {color, weight, opacity, interactive: false}));
        this.spot = L.circleMarker([0, 0], {radius: 5, color: '#fff', weight: 1.5, fillColor: COLOR, fillOpacity: 1, interactive: false});
        this.corners = L.layerGroup();
        this.result = make('p', {class: 'result', role: 'status'});
        this.chart = make('div', {class: 'profile'});
        this.back = make('button', {onclick: () => this.takeBack()}, 'Take back');
        this.anew = make('button', {onclick: () => this.clear()}, 'Start anew');
        this.hint = make('p', {class: 'hint'}, 'Set corners along the way, on places as well; they can be dragged.');
        this.element = make('div', {}, this.hint, this.result, this.chart, make('div', {class: 'buttons'}, this.back, this.anew));
        settings.listen(names => names.has('relief') && this.followRelief(settings.get('relief')));
        world.filled.listen(() => this.draw());
        this.draw();
    }

    /** The places along what is measured, as far as it is shown. */
    way() {
        return this.isActive || this.isKept ? this.places : [];
    }

    /** The relief shows the way that is being measured, but corners are set on the flat map alone. */
    followRelief(isRelief) {
        if (!isRelief || !this.isActive)
            return;
        this.called.emit(false);
        this.keep();
    }

    keep() {
        this.isKept = this.places.length > 1;
        this.showLayers();
    }

    /** Takes a way that was kept out of view; whether there was one. */
    drop() {
        const {isKept} = this;
        this.isKept = false;
        this.showLayers();
        return isKept;
    }

    /** `isReplaced`: another panel is opened, and the way stays in view. */
    activate(isActive, isReplaced) {
        this.isActive = isActive;
        this.isKept = false;
        if (isActive)
            this.settings.set({relief: false});
        this.flat.container.classList.toggle('measuring', isActive);
        this.flat.map.doubleClickZoom[isActive ? 'disable' : 'enable']();
        if (isReplaced)
            this.keep();
        else
            this.showLayers();
    }

    showLayers() {
        for (const layer of [...this.lines, this.corners])
            if (this.isActive || this.isKept)
                layer.addTo(this.flat.map);
            else
                layer.remove();
        this.spot.remove();
        this.changed.emit();
    }

    /** Shows a way and measures on from its end; where the relief is shown, it is shown there. */
    begin(places) {
        this.places = places.map(({x, y}) => ({x, y}));
        this.draw();
        if (this.settings.get('relief') && places.length > 1)
            this.keep();
        else
            this.called.emit(true);
    }

    add(place) {
        if (!place || !isInWorld(place))
            return;
        if (this.places.length === MOST_CORNERS) {
            notify(`A way has no more than ${MOST_CORNERS} corners.`);
            return;
        }
        this.places.push({x: place.x, y: place.y});
        this.draw();
    }

    /** The last corner, or that of an index. */
    takeBack(index = this.places.length - 1) {
        this.places.splice(Math.max(0, index), 1);
        this.draw();
    }

    clear() {
        this.places = [];
        this.draw();
    }

    move(index, {x, y}) {
        this.places[index] = {x: inside(x), y: inside(y)};
        this.drawWay();
    }

    draw() {
        this.corners.clearLayers();
        this.places.forEach((place, index) => this.addCorner(place, index));
        this.drawWay();
    }

    addCorner(place, index) {
        const icon = L.divIcon({html: make('div', {class: 'way-corner'}), className: 'spot-icon', iconSize: [0, 0]});
        const marker = L.marker(latLngOfPlace(place), {icon, draggable: true, keyboard: false, zIndexOffset: 4000})
            .on('drag', event => this.move(index, placeOfLatLng(event.target.getLatLng())))
            .on('dragend', () => this.draw())
            // A click here, such as the second of two, is none on the map.
            .on('click', () => {});
        marker.on('add', () => {
            const element = marker.getElement();
            for (const [name, value] of [['role', 'button'], ['tabindex', '0'], ['aria-label', this.spoken(index)]])
                element.setAttribute(name, value);
            element.addEventListener('keydown', event => this.onKey(event, index));
        });
        this.corners.addLayer(marker);
    }

    spoken(index) {
        return `Corner ${index + 1} of ${this.places.length}, ${textOfPlace(this.places[index])}. Arrow keys move it, Delete takes it out`;
    }

    onKey(event, index) {
        const {map} = this.flat, step = KEYS[event.key];
        if (step) {
            const pixel = map.project(latLngOfPlace(this.places[index])).add(L.point(step).multiplyBy(KEY_STEP));
            this.move(index, placeOfLatLng(map.unproject(pixel)));
            this.draw();
        } else if (event.key === 'Delete' || event.key === 'Backspace') {
            this.takeBack(index);
        } else {
            return;
        }
        event.preventDefault();
        const corners = this.corners.getLayers(), next = corners[Math.min(index, corners.length - 1)];
        (next ? next.getElement() : this.flat.container).focus({preventScroll: true});
    }

    drawWay() {
        const latLngs = this.places.map(latLngOfPlace), {newer} = this.world;
        for (const line of this.lines)
            line.setLatLngs(latLngs);
        this.spot.remove();
        const profile = profileOfWay(newer, newer.heights.length > 0 ? this.places : []), {distance, samples} = profile;
        const heights = samples.map(({height}) => height), {up, down} = climbs(heights), round = height => heightText(Math.round(height));
        this.result.textContent = samples.length === 0 ? `${this.places.length} of at least 2 corners` :
            `${distance.toFixed(2)} map units, heights ${round(Math.min(...heights))} to ${round(Math.max(...heights))}, up ${Math.round(up)}, down ${Math.round(down)}`;
        this.chart.replaceChildren(...samples.length === 0 ? [] :
            [pictureOfProfile(profile, distancesOfCorners(this.places).slice(1, -1), ({place}) => this.spot.setLatLng(latLngOfPlace(place)).addTo(this.flat.map))]);
        this.hint.hidden = samples.length > 0;
        this.back.disabled = this.anew.disabled = this.places.length === 0;
        this.changed.emit();
    }
}
