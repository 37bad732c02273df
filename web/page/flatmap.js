// The flat map: Leaflet with tiles that the workers draw. A latitude is a point's y, a longitude its
// x; at zoom z a point is 2^z pixels wide.
import {LAND_SIZE} from './land.js';
import {Settings} from './settings.js';

const TILE = 256;
const MIN_ZOOM = -3, MAX_ZOOM = 6;

const landCRS = L.extend({}, L.CRS.Simple, {transformation: new L.Transformation(1, 0.5, -1, LAND_SIZE - 0.5)});
export const latLngOfPlace = place => L.latLng(place.y, place.x);
export const placeOfLatLng = latLng => ({x: latLng.lng, y: latLng.lat});
const WORLD = L.latLngBounds([-0.5, -0.5], [LAND_SIZE - 0.5, LAND_SIZE - 0.5]);

/** On dense screens tiles are drawn with twice as many pixels. */
const density = () => window.devicePixelRatio >= 1.5 ? 1 : 0;

const LandLayer = L.GridLayer.extend({
    initialize(painter, settings, options) {
        L.GridLayer.prototype.initialize.call(this, {
            tileSize: TILE, bounds: WORLD, noWrap: true, keepBuffer: 1, minZoom: MIN_ZOOM, maxZoom: MAX_ZOOM, ...options});
        this.painter = painter;
        this.settings = settings;
    },

    createTile(coords, done) {
        const canvas = L.DomUtil.create('canvas', 'land-tile');
        canvas.width = canvas.height = TILE << density();
        this.paint(canvas, coords).then(() => done(null, canvas), error => done(error, canvas));
        return canvas;
    },

    /** Whatever of it was asked for last is what it shows in the end. */
    async paint(canvas, coords) {
        const request = canvas.request = {};
        const zoom = coords.z + density(), size = canvas.width;
        const area = {zoom, x: coords.x * size, y: coords.y * size, width: size, height: size, older: this.options.older};
        const isWanted = () => canvas.request === request && this._map && this._tileZoom === coords.z;
        const image = await this.painter.draw(this.settings.forPainting(coords.z), area, isWanted);
        if (image && canvas.request === request)
            canvas.getContext('2d').putImageData(image, 0, 0);
    },

    /** Draws the tiles anew where they are, so that nothing blinks. */
    repaint() {
        for (const tile of Object.values(this._tiles || {}))
            if (tile.coords.z === this._tileZoom)
                this.paint(tile.el, tile.coords);
    },
});

export class FlatMap {
    constructor(container, painter, settings) {
        const isCalm = matchMedia('(prefers-reduced-motion: reduce)').matches;
        this.container = container;
        this.map = L.map(container, {
            crs: landCRS, minZoom: MIN_ZOOM, maxZoom: MAX_ZOOM, zoomControl: false, attributionControl: false,
            maxBounds: WORLD.pad(0.6), fadeAnimation: false, zoomAnimation: !isCalm, inertia: !isCalm, markerZoomAnimation: !isCalm,
            doubleClickZoom: true, keyboardPanDelta: 120, tap: false,
        });
        this.painter = painter;
        this.settings = settings;
        this.layer = new LandLayer(painter, settings, {});
        settings.listen(names => {
            if (Settings.affectsPaint(names))
                this.repaint();
        });
    }

    /** Starts drawing. */
    show() {
        this.layer.addTo(this.map);
    }

    repaint() {
        this.layer.repaint();
        if (this.olderLayer)
            this.olderLayer.repaint();
    }

    /** The land before it changed, in a pane of its own, of which a part can be cut off. */
    showOlder(isShown) {
        if (isShown && !this.olderLayer) {
            const pane = this.map.getPane('older') || this.map.createPane('older');
            pane.style.zIndex = 250;
            this.olderLayer = new LandLayer(this.painter, this.settings, {pane: 'older', older: true}).addTo(this.map);
        } else if (!isShown && this.olderLayer) {
            this.olderLayer.remove();
            this.olderLayer = null;
        }
    }

    /** The panes with tiles from the bottom up; `right` says where one is cut off. */
    panes() {
        const panes = [{element: this.map.getPane('tilePane')}];
        if (this.olderLayer)
            panes.push({element: this.map.getPane('older'), right: this.cutAt});
        return panes;
    }

    /** Shows the older land up to `x` pixels from the window's left side. */
    cutOlder(x) {
        const {map} = this, from = map.containerPointToLayerPoint([0, 0]), to = map.containerPointToLayerPoint([x, map.getSize().y]);
        this.cutAt = x;
        map.getPane('older').style.clip = `rect(${from.y}px, ${to.x}px, ${to.y}px, ${from.x}px)`;
    }

    /** The least zoom at which the world about fills the window. */
    wholeWorldZoom() {
        const {x, y} = this.map.getSize();
        return Math.max(MIN_ZOOM, Math.floor(Math.log2(Math.min(x, y) * 1.35 / LAND_SIZE)));
    }

    showWholeWorld() {
        this.map.setView(WORLD.getCenter(), this.wholeWorldZoom(), {animate: false});
    }

    center() {
        return placeOfLatLng(this.map.getCenter());
    }

    zoom() {
        return this.map.getZoom();
    }

    moveTo(place, zoom = this.zoom()) {
        this.map.setView(latLngOfPlace(place), Math.round(Math.max(MIN_ZOOM, Math.min(MAX_ZOOM, zoom))), {animate: false});
    }

    flyTo(place, zoom = Math.max(this.zoom(), 2)) {
        const far = this.map.project(latLngOfPlace(place), zoom).distanceTo(this.map.project(this.map.getCenter(), zoom)) > 4000;
        if (far || !this.map.options.zoomAnimation)
            this.moveTo(place, zoom);
        else
            this.map.flyTo(latLngOfPlace(place), zoom, {duration: 0.8});
    }
}
