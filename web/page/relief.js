// The land in relief: the flat map, tilted. Its canvas takes the flat map's place.
import {make, textOf} from './dom.js';
import {Signal} from './events.js';
import {byteColors} from './colors.js';
import {LAND_SIZE, UNITS_PER_CELL} from './land.js';
import {lightVector} from './light.js';
import {seaColor} from './points.js';
import {Settings} from './settings.js';
import {ReliefFlight, ReliefView} from './relief/camera.js';
import {paintRose} from './relief/compass.js';
import {ReliefGestures} from './relief/gestures.js';
import {ReliefOverlay} from './relief/overlay.js';
import {ReliefShape} from './relief/pick.js';
import {ReliefScene} from './relief/scene.js';
import {landWithLevelSea} from './relief/sea.js';
import {ReliefSight} from './relief/sight.js';
import {ReliefGround, ReliefSkin} from './relief/skin.js';
import {ReliefStops} from './relief/stops.js';
import {ReliefTree} from './relief/tree.js';

const FIRST_TILT = 58;
const isCalm = () => matchMedia('(prefers-reduced-motion: reduce)').matches;

/** The library is in the page as text, so that it costs nothing before it is wanted. */
function loadLibrary() {
    if (!window.THREE)
        document.head.append(make('script', {}, textOf('relief-library')));
    if (!window.THREE)
        throw new Error('its library does not start');
}

/** Asked for before the library, which would complain at length. */
function newContext(canvas) {
    const context = canvas.getContext('webgl', {alpha: false, antialias: true, powerPreference: 'high-performance'});
    if (!context)
        throw new Error('it has no WebGL');
    return context;
}

export class Relief {
    /**
     * `stage`: the element that the canvas goes into; `contents`: `labels` gives what stands on the
     * land, `way` the places along what is measured, `pin` the pinned place, if any, `covers` elements
     * that lie over the land. Throws where there is no relief to be had.
     */
    constructor(stage, world, painter, settings, contents) {
        Object.assign(this, {stage, world, settings, contents});
        /** The place under the cursor or null; the place clicked or null; one whose menu is wanted, and its pixel; one with a name; how much of the picture is there; rest. */
        Object.assign(this, {hovered: new Signal(), clicked: new Signal(), called: new Signal(), chosen: new Signal(), progress: new Signal(), moved: new Signal()});
        /** The view is another; the graphics processor is gone. */
        Object.assign(this, {turned: new Signal(), lost: new Signal()});
        this.canvas = make('canvas', {class: 'relief', tabindex: '0', role: 'application', hidden: true, 'aria-label': 'Land in relief. ' +
            'Arrow keys move, with Shift they turn and tilt, plus and minus come closer or go off, N turns north, Enter pins the middle, Tab goes on to the places.'});
        this.overlayCanvas = make('canvas', {class: 'relief-labels', hidden: true, 'aria-hidden': 'true'});
        const context = newContext(this.canvas);
        loadLibrary();
        const {land, level} = landWithLevelSea(world.newer);
        this.shape = new ReliefShape(land, level);
        this.view = new ReliefView(this.shape);
        this.tree = new ReliefTree(land);
        this.skin = new ReliefSkin(painter, settings, share => this.progress.emit(share), () => this.changed());
        this.ground = new ReliefGround(painter, () => this.changed());
        this.scene = new ReliefScene(this.canvas, context, this.shape, this.tree, this.skin, this.ground);
        this.sight = new ReliefSight(this.scene.camera, this.shape);
        this.overlay = new ReliefOverlay(this.overlayCanvas, this.sight, this.shape);
        this.stops = new ReliefStops(place => this.chosen.emit(place));
        this.gestures = new ReliefGestures(this);
        this.parts = [this.canvas, this.overlayCanvas, this.stops.element];
        stage.append(...this.parts);
        this.frames = 0;
        this.canvas.addEventListener('webglcontextlost', () => this.lost.emit());
        this.endings = [settings.listen(names => this.follow(names))];
        const observer = new ResizeObserver(() => this.resize());
        observer.observe(stage);
        this.endings.push(() => observer.disconnect());
    }

    /** For good. */
    remove() {
        this.endings.forEach(end => end());
        this.stopFlight();
        this.setHidden(true);
        this.parts.forEach(part => part.remove());
    }

    setHidden(isHidden) {
        this.parts.forEach(part => part.hidden = isHidden);
    }

    get isShown() {
        return !this.canvas.hidden;
    }

    /** Where it looks from: see relief/camera.js; with the zoom of a flat map that shows the middle as large. */
    viewNow() {
        return {...this.view.values(), zoom: this.view.zoomIn(this.height)};
    }

    /** From a flat map with this place in the middle at this zoom; `view`: tilt and heading, if any. */
    show({x, y, zoom}, view = {}) {
        const isNew = this.frames === 0, wasShown = this.isShown;
        this.setHidden(false);
        this.takeSettings();
        this.resize();
        // Called back on its way to the flat map, it turns round where it is.
        if (!wasShown)
            this.view.set({x, y, distance: ReliefView.distanceOfZoom(zoom, this.height), heading: 0, tilt: 0});
        if (isNew || this.isStale)
            this.repaint();
        this.ground.follow(this.light);
        this.flyTo({tilt: FIRST_TILT, heading: 0, ...view}, 700);
        this.canvas.focus({preventScroll: true, focusVisible: false});
    }

    /**
     * Back to where the flat map takes over, at the zoom that `settled` makes of its own; told when it is
     * there or was interrupted.
     */
    descend(settled) {
        const zoom = settled(this.view.zoomIn(this.height));
        return this.flyTo({tilt: 0, heading: 0, distance: ReliefView.distanceOfZoom(zoom, this.height)}, 500);
    }

    // -- settings

    follow(names) {
        if (Settings.affectsPaint(names))
            this.isStale = true;
        if (!this.isShown)
            return;
        this.takeSettings();
        if (this.isStale)
            this.repaint();
        this.ground.follow(this.light);
        this.changed();
    }

    takeSettings() {
        const {scene, shape, world} = this, {azimuth, altitude, base, exaggeration, seaLevel, shadows} = this.settings.values;
        shape.rise = exaggeration;
        shape.raiseSea(seaLevel);
        this.seaColor = seaColor(byteColors(world.colors, this.settings.values), this.settings.values);
        scene.setLight(lightVector(azimuth, altitude), this.seaColor, base === 'land', shadows);
        this.light = {azimuth, altitude, rise: shape.rise, sea: shape.sea};
    }

    repaint() {
        this.isStale = false;
        this.skin.repaint(this.view, this.seaColor);
    }

    /** Real height from the sea to the highest land. */
    get heightRange() {
        return (this.tree.highest - this.shape.floor) * UNITS_PER_CELL;
    }

    // -- drawing

    resize() {
        if (!this.isShown)
            return;
        this.width = this.stage.clientWidth;
        this.height = this.stage.clientHeight;
        this.scene.resize(this.width, this.height);
        this.sight.resize(this.width, this.height);
        this.overlay.resize(this.width, this.height);
        this.changed();
    }

    /** Has the window drawn anew at its next turn. */
    changed() {
        if (this.isShown && !this.request)
            this.request = requestAnimationFrame(now => this.frame(now));
    }

    frame(now) {
        this.request = 0;
        if (!this.isShown)
            return;
        const seconds = Math.min(0.1, (now - (this.lastFrame || now)) / 1000);
        let goesOn = this.gestures.step(seconds);
        let hasLanded = false;
        if (this.flight) {
            hasLanded = !this.flight.step(now);
            goesOn = goesOn || !hasLanded;
        }
        this.drawNow();
        if (hasLanded)
            this.stopFlight(true);
        this.lastFrame = goesOn ? now : 0;
        if (goesOn)
            this.changed();
        else
            this.rest();
    }

    rest() {
        this.stops.follow(this.overlay.labels.shown);
        this.moved.emit();
    }

    drawNow() {
        ++this.frames;
        const {gestures, canvas, view} = this;
        this.skin.follow(view);
        this.scene.draw(view, this.shape, this.settings.get('haze'));
        this.overlay.draw(this.contents, gestures.isByKeyboard && document.activeElement === canvas);
        if (gestures.isByKeyboard || !gestures.hasCursor)
            this.hovered.emit(this.placeAt(this.width / 2, this.height / 2));
        this.turned.emit(view.values());
    }

    /** What is in the window, drawn on another canvas' context, with a rose that tells where it looks. */
    paint(context, width, height) {
        this.drawNow();
        context.drawImage(this.canvas, 0, 0, width, height);
        context.drawImage(this.overlayCanvas, 0, 0, width, height);
        const size = Math.min(width, height) / 9;
        paintRose(context, width - size * 0.75, height - size * 0.75, size, this.view.heading);
    }

    // -- moving

    /** Tells whether it came there, or something else came between. */
    flyTo(to, duration = 900) {
        this.stopFlight();
        return new Promise(resolve => {
            this.flight = new ReliefFlight(this.view, to, isCalm() ? 0 : duration);
            this.landed = resolve;
            this.changed();
        });
    }

    stopFlight(isThere = false) {
        const {landed} = this;
        this.flight = this.landed = null;
        if (landed)
            landed(isThere);
    }

    turnNorth() {
        this.flyTo({heading: 0}, 500);
    }

    /** Closer to the middle of the window, or off from it, by a factor. */
    zoomBy(factor) {
        const distance = (this.flight ? this.flight.to.distance : this.view.distance) * factor;
        this.flyTo({distance}, 300);
    }

    showWholeWorld() {
        this.flyTo({x: LAND_SIZE / 2, y: LAND_SIZE / 2, distance: LAND_SIZE * 1.3, heading: 0, tilt: 40});
    }

    /** The place of the land at a pixel of the window, or null. */
    placeAt(x, y) {
        return this.shape.meet(this.scene.camera.position, this.sight.directionTo(x, y), 6000, this.tree.highest);
    }

    /** What a pixel shows, to be dragged along. */
    grab(x, y) {
        const place = this.placeAt(x, y);
        return place && {...place, z: this.shape.heightAt(place.x, place.y)};
    }

    /** Moves the view so that what was grabbed comes to a pixel, as far as that lies below the horizon. */
    drag(grabbed, x, y) {
        this.view.aim(this.scene.camera);
        const {position} = this.scene.camera, direction = this.sight.directionTo(x, y);
        const distance = (grabbed.z - position.z) / direction.z;
        if (!(distance > 0 && distance < this.view.distance * 6))
            return;
        this.view.set({
            x: this.view.x + grabbed.x - position.x - distance * direction.x,
            y: this.view.y + grabbed.y - position.y - distance * direction.y});
        this.changed();
    }

    /** Comes closer to what a pixel shows, or goes off from it, by a factor. */
    approach(x, y, factor, duration) {
        const {view} = this, place = this.placeAt(x, y) || view;
        const to = {x: place.x + (view.x - place.x) * factor, y: place.y + (view.y - place.y) * factor, distance: view.distance * factor};
        if (duration > 0) {
            this.flyTo(to, duration);
            return;
        }
        this.stopFlight();
        view.set(to);
        this.changed();
    }

    hover(pixel) {
        this.canvas.style.cursor = pixel && this.overlay.labels.at(pixel.x, pixel.y) ? 'pointer' : '';
        this.hovered.emit(pixel && this.placeAt(pixel.x, pixel.y));
    }

    click(pixel) {
        const place = this.overlay.labels.at(pixel.x, pixel.y);
        if (place)
            this.chosen.emit(place);
        else
            this.clicked.emit(this.placeAt(pixel.x, pixel.y));
    }

    /** Asks for the menu of what a pixel of the window shows. */
    callAt({x, y}) {
        this.called.emit(this.placeAt(x, y), {x, y});
    }

    callAtMiddle() {
        this.callAt({x: this.width / 2, y: this.height / 2});
    }

    clickMiddle() {
        this.clicked.emit(this.placeAt(this.width / 2, this.height / 2));
    }
}
