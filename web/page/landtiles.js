// The land in pieces on the flat map, drawn by the workers for whatever zoom is shown, to the pixel
// of the screen. While a zoom changes, the pieces of the last one are shown larger or smaller; under
// them all lies a small picture of the whole world, so that no part is ever empty.
import {Signal} from './events.js';
import {LAND_SIZE} from './land.js';

const TILE = 256; // pixels of the page
/** So many tiles around the window are kept. */
const KEPT = 2;
const BACKDROP_SCALE = 1 / 8;
/** The small picture waits until nothing was changed for so long, in milliseconds. */
const BACKDROP_DELAY = 400;
/** North-west corner of the world: the origin of all pixels. */
const CORNER = [LAND_SIZE - 0.5, -0.5];

/** The tiles of one zoom, in an element that is placed and scaled as a whole. */
class Level {
    constructor(zoom, density, parent) {
        Object.assign(this, {zoom, density, scale: 2 ** zoom * density, side: Math.round(TILE * density), tiles: new Map()});
        this.element = L.DomUtil.create('div', 'land-level leaflet-zoom-animated', parent);
        this.last = Math.ceil(LAND_SIZE * this.scale / this.side) - 1;
    }

    /** Columns and rows of tiles under a box of the map in pixels of the page, at this level's zoom. */
    range(box, margin = 0) {
        const at = (value, step) => Math.max(0, Math.min(this.last, Math.floor(value * this.density / this.side) + step));
        const isOff = box.max.x < 0 || box.max.y < 0 || box.min.x > LAND_SIZE * 2 ** this.zoom || box.min.y > LAND_SIZE * 2 ** this.zoom;
        return isOff ? null : {west: at(box.min.x, -margin), east: at(box.max.x, margin), north: at(box.min.y, -margin), south: at(box.max.y, margin)};
    }

    /** The tile at a column and row, made if there is none. */
    tile(column, row) {
        const key = `${column} ${row}`;
        if (!this.tiles.has(key)) {
            const canvas = L.DomUtil.create('canvas', 'land-tile', this.element), size = this.side / this.density;
            canvas.width = canvas.height = this.side;
            Object.assign(canvas.style, {left: `${column * size}px`, top: `${row * size}px`, width: `${size}px`, height: `${size}px`});
            this.tiles.set(key, {column, row, canvas, isPainted: false, request: null});
        }
        return this.tiles.get(key);
    }

    drop(key) {
        const tile = this.tiles.get(key);
        tile.request = null;
        tile.canvas.remove();
        this.tiles.delete(key);
    }

    remove() {
        for (const tile of this.tiles.values())
            tile.request = null;
        this.element.remove();
    }
}

export class LandTiles {
    /** `pane`: name of the map's pane; `older`: draws that land. */
    constructor(map, painter, settings, {pane = 'tilePane', older = false} = {}) {
        Object.assign(this, {map, painter, settings, older});
        this.pane = map.getPane(pane);
        this.backdrop = L.DomUtil.create('canvas', 'land-backdrop leaflet-zoom-animated', this.pane);
        this.backdrop.width = this.backdrop.height = Math.ceil(LAND_SIZE * BACKDROP_SCALE);
        this.old = [];
        /** Tells the canvas of the small picture when it is drawn. */
        this.worldDrawn = new Signal();
        this.events = {
            zoom: () => this.place(), viewreset: () => this.place(), moveend: () => this.update(), resize: () => this.update(),
            zoomanim: event => this.animate(event), move: () => this.updateSoon()};
        map.on(this.events);
        this.place();
        this.update();
        this.paintBackdropSoon(0);
    }

    remove() {
        this.map.off(this.events);
        clearTimeout(this.backdropTimer);
        cancelAnimationFrame(this.request);
        [this.level, ...this.old].forEach(level => level.remove());
        this.backdrop.remove();
        this.level = null;
    }

    // -- where everything is

    /** Where the map is now. */
    place() {
        const origin = this.map.getPixelOrigin();
        this.placeAt(L.point(-origin.x, -origin.y), this.map.getZoom());
    }

    placeAt(corner, zoom) {
        for (const level of [this.level, ...this.old].filter(Boolean))
            L.DomUtil.setTransform(level.element, corner, 2 ** (zoom - level.zoom));
        L.DomUtil.setTransform(this.backdrop, corner, 2 ** zoom / BACKDROP_SCALE);
    }

    /** Goes with the map to where it zooms, and begins to draw what will be there. */
    animate({center, zoom}) {
        this.begin(zoom, this.map.getPixelBounds(center, zoom));
        this.place();
        // The movement begins where things are shown.
        this.level.element.getBoundingClientRect();
        this.placeAt(this.map._latLngToNewLayerPoint(L.latLng(CORNER), zoom, center), zoom);
    }

    // -- what there is

    updateSoon() {
        this.request = this.request || requestAnimationFrame(() => {
            this.request = 0;
            // In a flight the zoom is another with every step.
            if (this.level && this.level.zoom === this.map.getZoom())
                this.update();
        });
    }

    update() {
        this.begin(this.map.getZoom(), this.map.getPixelBounds());
        this.place();
    }

    /** Sees to the tiles for a zoom under a box of the map in pixels. */
    begin(zoom, box) {
        const density = window.devicePixelRatio || 1;
        if (!this.level || this.level.zoom !== zoom || this.level.density !== density) {
            if (this.level)
                this.retire(this.level);
            this.level = new Level(zoom, density, this.pane);
        }
        const {level} = this, wanted = level.range(box), kept = level.range(box, KEPT), tiles = [];
        for (const [key, {column, row}] of [...level.tiles])
            if (!kept || column < kept.west || column > kept.east || row < kept.north || row > kept.south)
                level.drop(key);
        for (let row = wanted ? wanted.north : 0; wanted && row <= wanted.south; ++row)
            for (let column = wanted.west; column <= wanted.east; ++column)
                tiles.push(level.tile(column, row));
        this.inView = new Set(tiles);
        const middle = box.getCenter().multiplyBy(density / level.side)._subtract([0.5, 0.5]);
        const away = ({column, row}) => Math.hypot(column - middle.x, row - middle.y);
        tiles.filter(tile => !tile.isPainted && !tile.request).sort((a, b) => away(a) - away(b)).forEach(tile => this.paint(tile));
        this.settle();
    }

    /** Shown on until all is drawn that takes its place. */
    retire(level) {
        const isOfUse = [...level.tiles.values()].some(tile => tile.isPainted);
        for (const [key, tile] of [...level.tiles])
            if (!tile.isPainted)
                level.drop(key);
        if (isOfUse)
            this.old.push(level);
        else
            level.remove();
    }

    settle() {
        if (this.level && [...this.inView].every(tile => tile.isPainted))
            this.old.splice(0).forEach(level => level.remove());
    }

    // -- drawing

    /** Whatever of a tile was asked for last is what it shows in the end. */
    async paint(tile) {
        const request = tile.request = {}, {zoom, density, scale, side} = this.level;
        const area = {scale, x: tile.column * side, y: tile.row * side, width: side, height: side, older: this.older};
        const isWanted = () => tile.request === request;
        const image = await this.painter.draw(this.settings.forPainting(zoom, density), area, isWanted);
        if (!image || !isWanted())
            return;
        tile.canvas.getContext('2d').putImageData(image, 0, 0);
        tile.request = null;
        tile.isPainted = true;
        this.settle();
    }

    /** Draws everything anew where it is, so that nothing blinks. */
    repaint() {
        for (const [key, tile] of [...this.level.tiles])
            if (this.inView.has(tile))
                this.paint(tile);
            else
                this.level.drop(key);
        this.paintBackdropSoon(BACKDROP_DELAY);
    }

    paintBackdropSoon(delay) {
        clearTimeout(this.backdropTimer);
        this.backdropTimer = setTimeout(async () => {
            const timer = this.backdropTimer, {width, height} = this.backdrop;
            const area = {scale: BACKDROP_SCALE, x: 0, y: 0, width, height, older: this.older};
            const image = await this.painter.draw(this.settings.forPainting(Math.log2(BACKDROP_SCALE)), area, () => timer === this.backdropTimer);
            if (!image || timer !== this.backdropTimer)
                return;
            this.backdrop.getContext('2d').putImageData(image, 0, 0);
            this.worldDrawn.emit(this.backdrop);
        }, delay);
    }
}
