// The flat map: Leaflet with a land that the workers draw. A latitude is a point's y, a longitude its
// x; at zoom z a point is 2^z pixels wide.
import {byteColors} from './colors.js';
import {Signal} from './events.js';
import {LAND_SIZE} from './land.js';
import {LandTiles} from './landtiles.js';
import {isDarkLand} from './lettering.js';
import {seaColor} from './points.js';
import {Settings} from './settings.js';

export const MAX_ZOOM = 6;
const MIN_ZOOM = -3.5, ZOOM_STEP = 0.25;
/** Of the wheel, for a zoom that shows everything twice as large: about two steps of it. */
const WHEEL_PIXELS = 220;
const PIECE = 512; // pixels of a picture that are drawn at once
const MARGIN = 8; // pixels around the whole world
const FAR_FLIGHT = 4000; // pixels

export const latLngOfPlace = place => [place.y, place.x];
/** The zoom that the map comes to rest at. */
export const settledZoom = zoom => Math.round(Math.max(MIN_ZOOM, Math.min(MAX_ZOOM, zoom)) / ZOOM_STEP) * ZOOM_STEP;
export const placeOfLatLng = latLng => ({x: latLng.lng, y: latLng.lat});
const WORLD = [[-0.5, -0.5], [LAND_SIZE - 0.5, LAND_SIZE - 0.5]];

/** Pixel (0, 0) of the world at its north-west corner, half a point beyond the point there. */
const landCRS = () => L.extend({}, L.CRS.Simple, {transformation: new L.Transformation(1, 0.5, -1, LAND_SIZE - 0.5)});

export class FlatMap {
    /** `colors`: of the land types. */
    constructor(container, painter, settings, colors) {
        const isCalm = matchMedia('(prefers-reduced-motion: reduce)').matches;
        Object.assign(this, {container, colors});
        /** The library's map, which layers are added to. */
        this.map = L.map(container, {
            crs: landCRS(), minZoom: MIN_ZOOM, maxZoom: MAX_ZOOM, zoomSnap: ZOOM_STEP, wheelPxPerZoomLevel: WHEEL_PIXELS, zoomControl: false, attributionControl: false,
            fadeAnimation: false, zoomAnimation: !isCalm, inertia: !isCalm,
            markerZoomAnimation: !isCalm, doubleClickZoom: true, keyboardPanDelta: 120, tap: false,
        });
        this.painter = painter;
        this.settings = settings;
        this.frame = L.rectangle(WORLD, {color: '#d1122c', weight: 2, fill: false, interactive: false});
        this.pin = L.marker([0, 0], {icon: L.divIcon({className: 'pin', iconSize: [0, 0]}), interactive: false, keyboard: false});
        /** The place under the cursor or null; the place clicked; one whose menu is wanted, and its pixel; during a movement; after it; a small picture of the world. */
        Object.assign(this, {hovered: new Signal(), clicked: new Signal(), called: new Signal(), moving: new Signal(), moved: new Signal(), worldDrawn: new Signal()});
        this.map.on('mousemove', event => this.hovered.emit(placeOfLatLng(event.latlng)));
        this.map.on('mouseout', () => this.hovered.emit(null));
        this.map.on('click', event => this.clicked.emit(placeOfLatLng(event.latlng)));
        this.map.on('contextmenu', event => this.callAt(event.containerPoint));
        this.map.on('move', () => this.moving.emit());
        this.map.on('moveend', () => this.keepInWorld());
        this.map.on('moveend zoomend', () => this.moved.emit());
        settings.listen(names => {
            if (!Settings.affectsPaint(names))
                return;
            this.showSea();
            this.repaint();
        });
        this.showSea();
    }

    /** Starts drawing. */
    show() {
        this.tiles = new LandTiles(this.map, this.painter, this.settings);
        this.tiles.worldDrawn.listen(picture => this.worldDrawn.emit(picture));
    }

    /** Around the world the sea goes on, under the same light. */
    showSea() {
        const view = this.settings.values, color = seaColor(byteColors(this.colors, view), view);
        this.container.classList.toggle('dark-land', isDarkLand(this.settings));
        document.documentElement.style.setProperty('--sea', `rgb(${color.map(Math.floor)})`);
    }

    repaint() {
        for (const tiles of [this.tiles, this.olderTiles])
            if (tiles)
                tiles.repaint();
    }

    /** The land before it changed, in a pane of its own, of which a part can be cut off. */
    showOlder(isShown) {
        if (isShown && !this.olderTiles) {
            const pane = this.map.getPane('older') || this.map.createPane('older');
            pane.style.zIndex = 250;
            this.olderTiles = new LandTiles(this.map, this.painter, this.settings, {pane: 'older', older: true});
        } else if (!isShown && this.olderTiles) {
            this.olderTiles.remove();
            this.olderTiles = null;
        }
    }

    /** Shows the older land up to `x` pixels from the window's left side. */
    cutOlder(x) {
        const {map} = this, from = map.containerPointToLayerPoint([0, 0]), to = map.containerPointToLayerPoint([x, map.getSize().y]);
        this.cutAt = x;
        map.getPane('older').style.clip = `rect(${from.y}px, ${to.x}px, ${to.y}px, ${from.x}px)`;
    }

    /** Asks for the menu of what a pixel of the window shows. */
    callAt({x, y}) {
        this.called.emit(placeOfLatLng(this.map.containerPointToLatLng([x, y])), {x, y});
    }

    callAtMiddle() {
        this.callAt(this.map.getSize().divideBy(2));
    }

    /** The middle of the window stays in the world, at any zoom. */
    keepInWorld() {
        const {x, y} = this.center(), inside = value => Math.max(-0.5, Math.min(LAND_SIZE - 0.5, value));
        if (Math.max(Math.abs(x - inside(x)), Math.abs(y - inside(y))) > 2 ** -this.zoom())
            this.map.panTo([inside(y), inside(x)]);
    }

    /** Out of reach, for keys as well, while something else is in its place. */
    setInert(isInert) {
        this.container.inert = isInert;
    }

    // -- what is in view

    /** The greatest zoom at which the window holds all of the world. */
    wholeWorldZoom() {
        return this.map.getBoundsZoom(WORLD, false, L.point(2 * MARGIN, 2 * MARGIN));
    }

    showWholeWorld() {
        this.map.fitBounds(WORLD, {animate: false, padding: [MARGIN, MARGIN]});
    }

    /** The part of the map in the window, in points; it may reach beyond the world. */
    area() {
        const bounds = this.map.getBounds();
        return {west: bounds.getWest(), south: bounds.getSouth(), east: bounds.getEast(), north: bounds.getNorth()};
    }

    center() {
        return placeOfLatLng(this.map.getCenter());
    }

    zoom() {
        return this.map.getZoom();
    }

    moveTo(place, zoom = this.zoom()) {
        this.map.setView(latLngOfPlace(place), Math.max(MIN_ZOOM, Math.min(MAX_ZOOM, zoom)), {animate: false});
    }

    flyTo(place, zoom = Math.max(this.zoom(), 2)) {
        const {map} = this, way = map.project(latLngOfPlace(place), zoom).distanceTo(map.project(map.getCenter(), zoom));
        if (way > FAR_FLIGHT || !map.options.zoomAnimation)
            this.moveTo(place, zoom);
        else
            map.flyTo(latLngOfPlace(place), zoom, {duration: 0.8});
    }

    /** Draws the land that is in view on a canvas of its own, `factor` pixels to one of the page. */
    async paintLand(context, factor) {
        const box = this.map.getPixelBounds(), left = Math.round(box.min.x * factor), top = Math.round(box.min.y * factor);
        const {width, height} = context.canvas, view = this.settings.forPainting(this.zoom(), factor), parts = [];
        const draw = async (x, y, right, older) => {
            const size = {width: Math.min(PIECE, right - x), height: Math.min(PIECE, height - y)};
            const image = await this.painter.draw(view, {scale: 2 ** this.zoom() * factor, x: left + x, y: top + y, ...size, older});
            const piece = Object.assign(document.createElement('canvas'), size);
            piece.getContext('2d').putImageData(image, 0, 0);
            context.drawImage(piece, x, y);
        };
        for (const [right, older] of [[width, false], ...this.olderTiles ? [[Math.round(this.cutAt * factor), true]] : []]) {
            for (let y = 0; y < height; y += PIECE)
                for (let x = 0; x < right; x += PIECE)
                    parts.push(draw(x, y, right, older));
            await Promise.all(parts.splice(0));
        }
    }

    // -- what lies on it

    /** Marks one block. */
    frameBlock({x, y}) {
        this.frame.setBounds([[y - 4, x - 4], [y + 4, x + 4]]).addTo(this.map);
    }

    /** A cross at the pinned place; none for null. */
    showPin(place) {
        if (place)
            this.pin.setLatLng(latLngOfPlace(place)).addTo(this.map);
        else
            this.pin.remove();
    }
}
