// The land in relief: the flat map, tilted. Its canvas takes the flat map's place.
import {make, textOf} from './dom.js';
import {LAND_SIZE, UNITS_PER_CELL} from './land.js';
import {byteColors} from './colors.js';
import {lightVector} from './light.js';
import {Settings} from './settings.js';
import {ReliefFlight, ReliefView} from './relief/camera.js';
import {ReliefGestures} from './relief/gestures.js';
import {ReliefLabels} from './relief/labels.js';
import {ReliefShape} from './relief/pick.js';
import {ReliefScene} from './relief/scene.js';
import {ReliefSkin} from './relief/skin.js';
import {ReliefTree} from './relief/tree.js';

const FIRST_TILT = 58;
const isCalm = () => matchMedia('(prefers-reduced-motion: reduce)').matches;

/** The library is in the page as text, so that it costs nothing before it is wanted. */
function loadLibrary() {
    if (!window.THREE)
        document.head.append(make('script', {}, textOf('relief-library')));
    return window.THREE;
}

export class Relief {
    /**
     * `stage`: the element that the canvas goes into; `actions`: `hover` and `click` are told places,
     * `progress` how much of the first picture is there, `labels` gives what stands on the land,
     * `moved` hears of a view that has come to rest. Throws where there is no relief to be had.
     */
    constructor(stage, world, painter, settings, actions) {
        Object.assign(this, {stage, world, settings, actions});
        this.canvas = make('canvas', {class: 'relief', tabindex: '0', role: 'application', hidden: true,
            'aria-label': 'Land in relief. Arrow keys move, Q and E turn, R and F tilt, plus and minus come closer or go off.'});
        this.labelCanvas = make('canvas', {class: 'relief-labels', hidden: true, 'aria-hidden': 'true'});
        this.shape = new ReliefShape(world.newer);
        this.view = new ReliefView(this.shape);
        if (!loadLibrary())
            throw new Error('its library does not start');
        this.tree = new ReliefTree(world.newer);
        this.skin = new ReliefSkin(painter, settings, actions.progress, () => this.changed());
        this.scene = new ReliefScene(this.canvas, world.newer, this.tree, this.skin);
        this.labels = new ReliefLabels(this.labelCanvas, this.scene, this.shape);
        this.gestures = new ReliefGestures(this);
        stage.append(this.canvas, this.labelCanvas);
        this.frames = 0;
        settings.listen(names => this.follow(names));
        new ResizeObserver(() => this.resize()).observe(stage);
    }

    get isShown() {
        return !this.canvas.hidden;
    }

    /** From a flat map with this place in the middle at this zoom; `view`: tilt and heading, if any. */
    show({x, y, zoom}, view = {}) {
        const isNew = this.frames === 0;
        this.canvas.hidden = this.labelCanvas.hidden = false;
        this.takeSettings();
        this.resize();
        this.view.set({x, y, distance: ReliefView.distanceOfZoom(zoom, this.height), heading: 0, tilt: 0});
        if (isNew || this.isStale)
            this.repaint();
        this.flyTo({tilt: FIRST_TILT, heading: 0, ...view}, 700);
        this.canvas.focus({preventScroll: true, focusVisible: false});
    }

    /** Back to where the flat map takes over: told the place in the middle and the zoom. */
    async hide() {
        await this.flyTo({tilt: 0, heading: 0}, 500);
        this.canvas.hidden = this.labelCanvas.hidden = true;
        return {x: this.view.x, y: this.view.y, zoom: this.view.zoomIn(this.height)};
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
        this.changed();
    }

    takeSettings() {
        const {settings, shape} = this;
        shape.rise = settings.get('exaggeration');
        shape.sea = settings.get('seaLevel') > 0 ? this.tree.lowest + settings.get('seaLevel') / UNITS_PER_CELL : -Infinity;
        this.seaColor = this.scene.setSeaColor(byteColors(this.world.colors, settings.values),
            lightVector(settings.get('azimuth'), settings.get('altitude')));
    }

    repaint() {
        this.isStale = false;
        this.skin.repaint(this.view, this.seaColor);
    }

    /** Real height from the lowest land to the highest. */
    get heightRange() {
        return (this.tree.highest - this.tree.lowest) * UNITS_PER_CELL;
    }

    // -- drawing

    resize() {
        if (!this.isShown)
            return;
        this.width = this.stage.clientWidth;
        this.height = this.stage.clientHeight;
        this.scene.resize(this.width, this.height);
        this.labels.resize(this.width, this.height);
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
        if (this.flight) {
            const {flight} = this;
            goesOn = flight.step(now) || goesOn;
            if (!goesOn)
                this.stopFlight();
        }
        this.drawNow();
        this.lastFrame = goesOn ? now : 0;
        if (goesOn)
            this.changed();
        else
            this.actions.moved();
    }

    drawNow() {
        ++this.frames;
        this.skin.follow(this.view);
        this.scene.draw(this.view, this.shape, this.settings.get('haze'));
        this.labels.draw(this.actions.labels());
    }

    /** What is in the window, drawn on another canvas' context. */
    paint(context, width, height) {
        this.drawNow();
        context.drawImage(this.canvas, 0, 0, width, height);
        context.drawImage(this.labelCanvas, 0, 0, width, height);
    }

    // -- moving

    /** Resolves when it is there, or something else came between. */
    flyTo(to, duration = 900) {
        this.stopFlight();
        return new Promise(resolve => {
            this.flight = new ReliefFlight(this.view, to, isCalm() ? 0 : duration);
            this.landed = resolve;
            this.changed();
        });
    }

    stopFlight() {
        const {landed} = this;
        this.flight = this.landed = null;
        if (landed)
            landed();
    }

    showWholeWorld() {
        this.flyTo({x: LAND_SIZE / 2, y: LAND_SIZE / 2, distance: LAND_SIZE * 1.3, heading: 0, tilt: 40});
    }

    /** The place of the land at a pixel of the window, or null. */
    placeAt(x, y) {
        const {position} = this.scene.camera;
        return this.shape.meet(position, this.scene.directionAt(x / this.width * 2 - 1, 1 - y / this.height * 2), 6000, this.tree.highest);
    }

    /** What a pixel shows, to be dragged along. */
    grab(x, y) {
        const place = this.placeAt(x, y);
        return place && {...place, z: this.shape.heightAt(place.x, place.y)};
    }

    /** Moves the view so that what was grabbed comes to a pixel, as far as that lies below the horizon. */
    drag(grabbed, x, y) {
        this.view.aim(this.scene.camera);
        const {position} = this.scene.camera, direction = this.scene.directionAt(x / this.width * 2 - 1, 1 - y / this.height * 2);
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
        this.actions.hover(pixel && this.placeAt(pixel.x, pixel.y));
    }

    click(pixel) {
        this.actions.click(this.placeAt(pixel.x, pixel.y));
    }
}
