// The coordinate grid with labels at the window's edges, and the outlines of land blocks once they
// are 32 pixels wide: lines on one canvas over the map.
import {BLOCKS, CELLS, LAND_SIZE} from './land.js';
import {pointOfUnit, unitOfPoint} from './coordinates.js';

const STEPS = [0.5, 1, 2, 5, 10, 20, 50];
const LEAST_DISTANCE = 90;
const BLOCK_ZOOM = 2;
const LAST_UNIT = 100;

const gridStep = zoom => STEPS.find(step => step * 10 * 2 ** zoom >= LEAST_DISTANCE) || STEPS[STEPS.length - 1];

export const GridLayer = L.Layer.extend({
    initialize(settings) {
        this.settings = settings;
        settings.listen(() => this._map && this.draw());
    },

    onAdd(map) {
        this.canvas = L.DomUtil.create('canvas', 'grid-lines leaflet-zoom-animated', map.getPane('overlayPane'));
        this.canvas.setAttribute('aria-hidden', 'true');
        this.draw();
    },

    onRemove() {
        this.canvas.remove();
    },

    getEvents() {
        const draw = () => this.draw();
        return {move: draw, moveend: draw, zoomend: draw, resize: draw, viewreset: draw, zoomanim: event => this.animate(event)};
    },

    /** Goes with the map while it zooms. */
    animate({zoom, center}) {
        const scale = this._map.getZoomScale(zoom, this.zoom);
        L.DomUtil.setTransform(this.canvas, this._map._latLngToNewLayerPoint(this.corner, zoom, center), scale);
    },

    draw() {
        const map = this._map;
        if (map._animatingZoom)
            return;
        const {x: width, y: height} = map.getSize(), density = window.devicePixelRatio || 1;
        this.zoom = map.getZoom();
        this.corner = map.containerPointToLatLng([0, 0]);
        L.DomUtil.setTransform(this.canvas, map.containerPointToLayerPoint([0, 0]), 1);
        Object.assign(this.canvas, {width: width * density, height: height * density});
        Object.assign(this.canvas.style, {width: `${width}px`, height: `${height}px`});
        // What is hidden has no size.
        this.covered = [...document.querySelectorAll('.card, .readout, #panel')].map(card => card.getBoundingClientRect()).filter(box => box.width > 0);
        this.paint(this.canvas.getContext('2d'), width, height, density);
    },

    /** Also used for the picture that is saved. */
    paint(context, width, height, density) {
        context.save();
        context.scale(density, density);
        if (this.settings.get('blocks') && this._map.getZoom() >= BLOCK_ZOOM)
            this.paintBlocks(context, width, height);
        if (this.settings.get('grid'))
            this.paintGrid(context, width, height);
        context.restore();
    },

    pixelX(x) {
        return Math.round(this._map.latLngToContainerPoint([0, x]).x) + 0.5;
    },

    pixelY(y) {
        return Math.round(this._map.latLngToContainerPoint([y, 0]).y) + 0.5;
    },

    /** The part of the world in view, in points. */
    area(width, height) {
        const north = this._map.containerPointToLatLng([0, 0]), south = this._map.containerPointToLatLng([width, height]);
        const inside = value => Math.max(0, Math.min(LAND_SIZE - 1, value));
        return {west: inside(north.lng), east: inside(south.lng), south: inside(south.lat), north: inside(north.lat)};
    },

    /** At the window's edge, unless something stands there. */
    paintEdgeLabel(context, text, x, y, align) {
        const {x: width} = this._map.getSize();
        const isCovered = this.covered.some(box => x > box.left - 30 && x < box.right + 30 && y > box.top - 10 && y < box.bottom + 10);
        if (!isCovered && (align !== 'center' || x > 40 && x < width - 40))
            paintLabel(context, text, x, y, align);
    },

    paintBlocks(context, width, height) {
        const {west, east, south, north} = this.area(width, height);
        const top = this.pixelY(north), bottom = this.pixelY(south), left = this.pixelX(west), right = this.pixelX(east);
        context.strokeStyle = 'rgba(30, 30, 30, 0.2)';
        context.lineWidth = 1;
        context.beginPath();
        for (let column = Math.ceil(west / CELLS); column <= Math.min(BLOCKS, east / CELLS); ++column)
            line(context, this.pixelX(column * CELLS), top, this.pixelX(column * CELLS), bottom);
        for (let row = Math.ceil(south / CELLS); row <= Math.min(BLOCKS, north / CELLS); ++row)
            line(context, left, this.pixelY(row * CELLS), right, this.pixelY(row * CELLS));
        context.stroke();
    },

    paintGrid(context, width, height) {
        const step = gridStep(this._map.getZoom());
        const {west, east, south, north} = this.area(width, height);
        const unitsIn = (from, to) => {
            const first = Math.max(-LAST_UNIT, Math.ceil(unitOfPoint(from) / step) * step);
            const last = Math.min(LAST_UNIT, unitOfPoint(to)), units = [];
            for (let count = 0; first + count * step <= last + 1e-6; ++count)
                units.push(first + count * step);
            return units;
        };
        const columns = unitsIn(west, east), rows = unitsIn(south, north);
        const edge = unit => pointOfUnit(Math.sign(unit) * Math.min(Math.abs(unit), LAST_UNIT));
        const [left, right] = [edge(unitOfPoint(west)), edge(unitOfPoint(east))].map(x => this.pixelX(x));
        const [top, bottom] = [edge(unitOfPoint(north)), edge(unitOfPoint(south))].map(y => this.pixelY(y));
        context.strokeStyle = 'rgba(40, 40, 40, 0.45)';
        context.lineWidth = 1;
        context.beginPath();
        for (const unit of columns)
            line(context, this.pixelX(pointOfUnit(unit)), top, this.pixelX(pointOfUnit(unit)), bottom);
        for (const unit of rows)
            line(context, left, this.pixelY(pointOfUnit(unit)), right, this.pixelY(pointOfUnit(unit)));
        context.stroke();
        const digits = step < 1 ? 1 : 0;
        const label = (unit, negative, positive) =>
            Math.abs(unit).toFixed(digits) + (Math.abs(unit) < 1e-6 ? '' : unit < 0 ? negative : positive);
        context.font = '12px system-ui, sans-serif';
        context.textBaseline = 'middle';
        for (const unit of columns)
            for (const y of [10, height - 10])
                this.paintEdgeLabel(context, label(unit, 'W', 'E'), this.pixelX(pointOfUnit(unit)), y, 'center');
        for (const unit of rows) {
            this.paintEdgeLabel(context, label(unit, 'S', 'N'), 6, this.pixelY(pointOfUnit(unit)), 'left');
            this.paintEdgeLabel(context, label(unit, 'S', 'N'), width - 6, this.pixelY(pointOfUnit(unit)), 'right');
        }
    },
});

function line(context, x1, y1, x2, y2) {
    context.moveTo(x1, y1);
    context.lineTo(x2, y2);
}

/** Dark letters with a light edge, readable on any land. */
export function paintLabel(context, text, x, y, align) {
    context.textAlign = align;
    context.lineWidth = 3;
    context.strokeStyle = 'rgba(255, 255, 255, 0.85)';
    context.strokeText(text, x, y);
    context.fillStyle = '#1b1b1b';
    context.fillText(text, x, y);
}
