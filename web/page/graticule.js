// The coordinate grid with labels at the window's edges, and the outlines of land blocks once they
// are 32 pixels wide: lines on one canvas over the map.
import {paintContourLabels} from './contourlabels.js';
import {pointOfUnit, unitOfPoint} from './coordinates.js';
import {latLngOfPlace} from './flatmap.js';
import {BLOCKS, CELLS, LAND_SIZE} from './land.js';
import {isDarkLand, paintLabel} from './lettering.js';

const STEPS = [0.5, 1, 2, 5, 10, 20, 50];
const LEAST_DISTANCE = 90;
const BLOCK_ZOOM = 2;
const LAST_UNIT = 100;
/** The sea beyond the world, and the line around it: seen on light sea and on black. */
const BEYOND = 'rgba(8, 20, 34, 0.16)', EDGE = 'rgba(255, 255, 255, 0.45)';

/** Map units between two lines of the grid. */
export const gridStep = zoom => STEPS.find(step => step * 10 * 2 ** zoom >= LEAST_DISTANCE) || STEPS[STEPS.length - 1];

/** The map units between two places of an axis, in points, that have a line of the grid. */
export function gridUnits(from, to, step) {
    const first = Math.max(-LAST_UNIT, Math.ceil(unitOfPoint(from) / step) * step);
    const last = Math.min(LAST_UNIT, unitOfPoint(to)), units = [];
    for (let count = 0; first + count * step <= last + 1e-6; ++count)
        units.push(first + count * step);
    return units;
}

/** What stands at a line: its map units, and on which side of the world's middle it is. */
export function gridLabel(unit, step, negative, positive) {
    return Math.abs(unit).toFixed(step < 1 ? 1 : 0) + (Math.abs(unit) < 1e-6 ? '' : unit < 0 ? negative : positive);
}

export class Graticule {
    /** `world`: whose contours are labelled. */
    constructor(flat, settings, world) {
        Object.assign(this, {flat, world});
        this.map = flat.map;
        this.settings = settings;
        this.covers = [];
        this.canvas = L.DomUtil.create('canvas', 'grid-lines leaflet-zoom-animated', this.map.getPane('overlayPane'));
        this.canvas.setAttribute('aria-hidden', 'true');
        this.observer = new ResizeObserver(() => this.draw());
        this.map.on('move moveend zoomend resize viewreset', () => this.draw());
        this.map.on('zoomanim', event => this.animate(event));
        settings.listen(() => this.draw());
        world.filled.listen(() => this.draw());
        this.draw();
    }

    /** Its labels stay away from elements that lie on the map, which may come, go and grow. */
    keepClearOf(elements) {
        this.covers = [...elements];
        for (const element of this.covers)
            this.observer.observe(element);
    }

    /** Goes with the map while it zooms. */
    animate({zoom, center}) {
        const scale = this.map.getZoomScale(zoom, this.zoom);
        L.DomUtil.setTransform(this.canvas, this.map._latLngToNewLayerPoint(this.corner, zoom, center), scale);
    }

    draw() {
        const {map} = this;
        if (map._animatingZoom)
            return;
        const {x: width, y: height} = map.getSize(), density = window.devicePixelRatio || 1;
        this.zoom = map.getZoom();
        this.corner = map.containerPointToLatLng([0, 0]);
        L.DomUtil.setTransform(this.canvas, map.containerPointToLayerPoint([0, 0]), 1);
        Object.assign(this.canvas, {width: width * density, height: height * density});
        Object.assign(this.canvas.style, {width: `${width}px`, height: `${height}px`});
        // What is hidden has no size.
        this.covered = this.covers.map(element => element.getBoundingClientRect()).filter(box => box.width > 0);
        this.paint(this.canvas.getContext('2d'), width, height, density);
    }

    /** Also used for the picture that is saved. */
    paint(context, width, height, density) {
        context.save();
        context.scale(density, density);
        if (this.settings.get('blocks') && this.map.getZoom() >= BLOCK_ZOOM)
            this.paintBlocks(context);
        this.paintEdge(context, width, height);
        if (this.settings.get('grid'))
            this.paintGrid(context, width, height);
        if (this.settings.get('contours'))
            paintContourLabels(context, this.map, this.world.newer, this.settings.contourInterval(this.map.getZoom()), {width, height});
        context.restore();
    }

    pixelX(x) {
        return Math.round(this.map.latLngToContainerPoint(latLngOfPlace({x, y: 0})).x) + 0.5;
    }

    pixelY(y) {
        return Math.round(this.map.latLngToContainerPoint(latLngOfPlace({x: 0, y})).y) + 0.5;
    }

    /** The part of the world in view, in points. */
    area() {
        const inside = value => Math.max(0, Math.min(LAND_SIZE - 1, value));
        return Object.fromEntries(Object.entries(this.flat.area()).map(([side, value]) => [side, inside(value)]));
    }

    /** Where the world ends and the sea around it begins. */
    paintEdge(context, width, height) {
        const [left, right] = [-0.5, LAND_SIZE - 0.5].map(x => this.pixelX(x)), [bottom, top] = [-0.5, LAND_SIZE - 0.5].map(y => this.pixelY(y));
        context.beginPath();
        context.rect(0, 0, width, height);
        context.rect(left, top, right - left, bottom - top);
        context.fillStyle = BEYOND;
        context.fill('evenodd');
        context.lineWidth = 1;
        context.strokeStyle = EDGE;
        context.strokeRect(left, top, right - left, bottom - top);
    }

    /** At the window's edge, unless something stands there. */
    paintEdgeLabel(context, text, x, y, align) {
        const {x: width} = this.map.getSize();
        const isCovered = this.covered.some(box => x > box.left - 30 && x < box.right + 30 && y > box.top - 10 && y < box.bottom + 10);
        if (!isCovered && (align !== 'center' || x > 40 && x < width - 40))
            paintLabel(context, text, x, y, align, isDarkLand(this.settings));
    }

    paintBlocks(context) {
        const {west, east, south, north} = this.area();
        const top = this.pixelY(north), bottom = this.pixelY(south), left = this.pixelX(west), right = this.pixelX(east);
        context.strokeStyle = isDarkLand(this.settings) ? 'rgba(230, 230, 230, 0.18)' : 'rgba(30, 30, 30, 0.2)';
        context.lineWidth = 1;
        context.beginPath();
        for (let column = Math.ceil(west / CELLS); column <= Math.min(BLOCKS, east / CELLS); ++column)
            line(context, this.pixelX(column * CELLS), top, this.pixelX(column * CELLS), bottom);
        for (let row = Math.ceil(south / CELLS); row <= Math.min(BLOCKS, north / CELLS); ++row)
            line(context, left, this.pixelY(row * CELLS), right, this.pixelY(row * CELLS));
        context.stroke();
    }

    paintGrid(context, width, height) {
        const step = gridStep(this.map.getZoom());
        const {west, east, south, north} = this.area();
        const columns = gridUnits(west, east, step), rows = gridUnits(south, north, step);
        const edge = unit => pointOfUnit(Math.sign(unit) * Math.min(Math.abs(unit), LAST_UNIT));
        const [left, right] = [edge(unitOfPoint(west)), edge(unitOfPoint(east))].map(x => this.pixelX(x));
        const [top, bottom] = [edge(unitOfPoint(north)), edge(unitOfPoint(south))].map(y => this.pixelY(y));
        context.strokeStyle = isDarkLand(this.settings) ? 'rgba(230, 230, 230, 0.35)' : 'rgba(40, 40, 40, 0.45)';
        context.lineWidth = 1;
        context.beginPath();
        for (const unit of columns)
            line(context, this.pixelX(pointOfUnit(unit)), top, this.pixelX(pointOfUnit(unit)), bottom);
        for (const unit of rows)
            line(context, left, this.pixelY(pointOfUnit(unit)), right, this.pixelY(pointOfUnit(unit)));
        context.stroke();
        context.font = '12px system-ui, sans-serif';
        context.textBaseline = 'middle';
        for (const unit of columns)
            for (const y of [10, height - 10])
                this.paintEdgeLabel(context, gridLabel(unit, step, 'W', 'E'), this.pixelX(pointOfUnit(unit)), y, 'center');
        for (const unit of rows) {
            this.paintEdgeLabel(context, gridLabel(unit, step, 'S', 'N'), 6, this.pixelY(pointOfUnit(unit)), 'left');
            this.paintEdgeLabel(context, gridLabel(unit, step, 'S', 'N'), width - 6, this.pixelY(pointOfUnit(unit)), 'right');
        }
    }
}

function line(context, x1, y1, x2, y2) {
    context.moveTo(x1, y1);
    context.lineTo(x2, y2);
}
