// The switch between the flat map and the relief, and what is set for the relief alone.
import {make, notify} from './dom.js';
import {Signal} from './events.js';
import {settledZoom} from './flatmap.js';
import {icon} from './icons.js';
import {Relief} from './relief.js';
import {CLOSEST_VIEW, FARTHEST_VIEW, ReliefView} from './relief/camera.js';
import {Compass} from './relief/compass.js';
import {SETTINGS} from './settings.js';

const SLIDERS = [
    ['exaggeration', 'Heights', value => `× ${value}`],
    ['seaLevel', 'Sea level', value => value > 0 ? `+${value}` : 'as it is'],
    ['haze', 'Haze', value => value > 0 ? `${Math.round(value * 100)} %` : 'none']];
/** Where the settings would hide the land, they are folded at first. */
const SMALL = '(max-width: 760px), (max-height: 500px)';
/** What is gone to is seen from no farther off. */
const FOUND_DISTANCE = 400;

export class ReliefSwitch {
    /** `parts`: `stage`, `world`, `painter`, `settings`, `flat`, and `contents`, which lie on the relief: see relief.js. */
    constructor(parts) {
        Object.assign(this, parts);
        /** As those of the flat map, of the relief; and a place with a name that was chosen there. */
        Object.assign(this, {hovered: new Signal(), clicked: new Signal(), called: new Signal(), chosen: new Signal(), moved: new Signal()});
        this.turns = 0;
        this.button = make('button', {class: 'relief-switch', 'aria-pressed': 'false', title: 'Relief or flat map (R)', disabled: true,
            onclick: () => this.settings.toggle('relief')}, icon('relief'), make('span', {}, 'Relief'));
        this.compass = new Compass(() => this.relief.turnNorth());
        this.closer = this.zoomButton('+', 'Come closer', 0.5);
        this.farther = this.zoomButton('−', 'Go farther off', 2);
        this.steering = make('div', {class: 'relief-steering', role: 'group', 'aria-label': 'View of the relief', hidden: true},
            this.compass.element, make('div', {class: 'zoom card'}, this.closer, this.farther));
        this.inputs = new Map();
        this.panel = make('details', {class: 'relief-settings card', hidden: true, open: !matchMedia(SMALL).matches},
            make('summary', {}, 'Heights, sea and air'), ...SLIDERS.map(slider => this.slider(...slider)), this.checkbox('shadows', 'Shadows'));
        this.progress = make('progress', {max: '1', value: '0', class: 'relief-progress', hidden: true, 'aria-label': 'Land drawn so far'});
        this.world.filled.listen(() => this.button.disabled = false);
        this.settings.listen(names => {
            if (names.has('relief'))
                this.toggle(this.settings.get('relief'));
            this.showValues();
        });
        this.showValues();
    }

    zoomButton(sign, hint, factor) {
        return make('button', {title: hint, 'aria-label': hint, onclick: () => this.relief.zoomBy(factor)}, sign);
    }

    checkbox(name, label) {
        const input = make('input', {type: 'checkbox', name, onchange: () => this.settings.set({[name]: input.checked})});
        this.inputs.set(name, {show: value => input.checked = value});
        return make('label', {class: 'choice'}, input, label);
    }

    slider(name, label, textOf) {
        const {least: min, most: max, step} = SETTINGS[name], output = make('output', {});
        const input = make('input', {type: 'range', name, min, max, step,
            oninput: () => this.settings.set({[name]: Number(input.value)})});
        this.inputs.set(name, {input, show: value => {
            input.value = value;
            output.textContent = textOf(value);
        }});
        return make('label', {class: 'slider'}, make('span', {}, label), input, output);
    }

    showValues() {
        for (const [name, {show}] of this.inputs)
            show(this.settings.get(name));
    }

    toggle(isOn) {
        if (isOn && !this.relief && !this.make()) {
            this.settings.set({relief: false});
            return;
        }
        this.button.setAttribute('aria-pressed', String(isOn));
        this.panel.hidden = this.steering.hidden = !isOn;
        // What belongs to the flat map alone goes.
        this.stage.classList.toggle('in-relief', isOn);
        if (isOn)
            this.tilt();
        else if (this.relief)
            this.lay();
    }

    /** False, and said, where the relief cannot be had; the flat map goes on. */
    make() {
        const {stage, world, painter, settings, contents} = this;
        try {
            this.relief = new Relief(stage, world, painter, settings, contents);
        } catch (error) {
            notify(`This browser shows no relief (${error.message}); the flat map works all the same.`);
            this.button.disabled = true;
            return false;
        }
        for (const name of ['hovered', 'clicked', 'called', 'chosen', 'moved'])
            this.relief[name].listen((...details) => this[name].emit(...details));
        this.relief.progress.listen(share => {
            this.progress.value = share;
            this.progress.hidden = share >= 1;
        });
        this.relief.turned.listen(view => this.showView(view));
        this.relief.lost.listen(() => this.drop());
        stage.append(this.progress);
        const {input} = this.inputs.get('seaLevel');
        input.max = Math.ceil(this.relief.heightRange);
        return true;
    }

    showView(view) {
        this.compass.show(view);
        this.closer.disabled = view.distance <= CLOSEST_VIEW;
        this.farther.disabled = view.distance >= FARTHEST_VIEW;
    }

    /** The graphics processor is gone, and all that it held: a later relief begins anew. */
    drop() {
        const {relief} = this, wasShown = relief.isShown, {x, y, zoom} = relief.viewNow();
        this.relief = null;
        relief.remove();
        this.progress.remove();
        if (!wasShown)
            return;
        this.settings.set({relief: false});
        this.landAt({x, y, zoom});
        notify('The browser has no room for the relief just now; the flat map goes on.');
    }

    /** What lies on the relief is another. */
    redraw() {
        if (this.shown)
            this.relief.changed();
    }

    /** The relief while it is shown, else null. */
    get shown() {
        return this.relief && this.relief.isShown ? this.relief : null;
    }

    get isShown() {
        return this.shown !== null;
    }

    /** `{x, y, distance, heading, tilt, zoom}` while it is shown, else null. */
    view() {
        return this.shown && this.relief.viewNow();
    }

    flyTo({x, y}) {
        this.relief.flyTo({x, y, distance: Math.min(this.relief.viewNow().distance, FOUND_DISTANCE)});
    }

    /** Shows the relief in a `view`, or without one the flat map; `{x, y, zoom}`: the middle, if it is another. */
    restore(middle, view) {
        const isShown = this.settings.get('relief');
        if (view) {
            const distance = middle && ReliefView.distanceOfZoom(middle.zoom, this.stage.clientHeight);
            this.wanted = {...view, ...middle && {x: middle.x, y: middle.y, distance}};
            if (this.isShown)
                this.relief.flyTo(this.wanted);
        } else if (isShown) {
            this.wanted = middle;
        } else if (middle) {
            this.flat.moveTo(middle, middle.zoom);
        }
        this.settings.set({relief: Boolean(view)});
        this.wanted = undefined;
    }

    tilt() {
        ++this.turns;
        this.relief.show({...this.flat.center(), zoom: this.flat.zoom()}, this.wanted);
        this.flat.setInert(true);
    }

    async lay() {
        const {wanted, relief} = this, turn = ++this.turns;
        await relief.descend(settledZoom);
        // Hands that reach in on its way bring it down at once; only the relief, wanted again, calls it back.
        if (turn !== this.turns || relief !== this.relief)
            return;
        relief.setHidden(true);
        this.landAt(wanted || relief.viewNow());
    }

    landAt({x, y, zoom}) {
        this.flat.setInert(false);
        this.flat.moveTo({x, y}, zoom);
    }
}
