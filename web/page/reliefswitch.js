// The switch between the flat map and the relief, and what is set for the relief alone.
import {make, notify} from './dom.js';
import {Relief} from './relief.js';
import {ReliefView} from './relief/camera.js';

const SLIDERS = [
    ['exaggeration', 'Heights', 0.25, 8, 0.25, value => `× ${value}`],
    ['seaLevel', 'Sea level', 0, 100, 1, value => value > 0 ? `+${value}` : 'as it is'],
    ['haze', 'Haze', 0, 3, 0.1, value => value > 0 ? `${Math.round(value * 100)} %` : 'none']];

export class ReliefSwitch {
    /** `parts`: `stage`, `world`, `painter`, `settings`, `flat`, `readout`, and `labels`, which gives places with names. */
    constructor(parts) {
        Object.assign(this, parts);
        this.button = make('button', {class: 'relief-switch', 'aria-pressed': 'false', title: 'Relief or flat map (R)',
            onclick: () => this.settings.set({relief: !this.settings.get('relief')})}, 'Relief');
        this.panel = make('section', {class: 'relief-settings', hidden: true, 'aria-label': 'Relief'}, make('h2', {}, 'Relief'));
        this.progress = make('progress', {max: '1', value: '0', class: 'relief-progress', hidden: true, 'aria-label': 'Land drawn so far'});
        this.outputs = new Map();
        for (const [name, label, min, max, step, textOf] of SLIDERS)
            this.panel.append(this.slider(name, label, min, max, step, textOf));
        this.settings.listen(names => {
            if (names.has('relief'))
                this.toggle(this.settings.get('relief'));
            this.showValues();
        });
        this.showValues();
    }

    slider(name, label, min, max, step, textOf) {
        const output = make('output', {});
        const input = make('input', {type: 'range', name, min, max, step,
            oninput: () => this.settings.set({[name]: Number(input.value)})});
        this.outputs.set(name, {input, output, textOf});
        return make('label', {class: 'slider'}, make('span', {}, label), input, output);
    }

    showValues() {
        for (const [name, {input, output, textOf}] of this.outputs) {
            input.value = this.settings.get(name);
            output.textContent = textOf(this.settings.get(name));
        }
    }

    toggle(isOn) {
        if (isOn && !this.relief && !this.make()) {
            this.settings.set({relief: false});
            return;
        }
        this.button.setAttribute('aria-pressed', String(isOn));
        this.panel.hidden = !isOn;
        if (isOn)
            this.tilt();
        else
            this.lay();
    }

    /** False, and said, where the relief cannot be had; the flat map goes on. */
    make() {
        const {stage, world, painter, settings} = this;
        try {
            this.relief = new Relief(stage, world, painter, settings, {
                hover: place => this.readout.show(place),
                click: place => place ? this.readout.pin(place) : this.readout.unpin(),
                progress: share => {
                    this.progress.value = share;
                    this.progress.hidden = share >= 1;
                },
                labels: () => this.labels(),
                moved: () => this.moved && this.moved()});
        } catch (error) {
            notify(`This browser shows no relief (${error.message}); the flat map works all the same.`);
            this.button.disabled = true;
            return false;
        }
        stage.append(this.progress);
        const {input} = this.outputs.get('seaLevel');
        input.max = Math.ceil(this.relief.heightRange);
        return true;
    }

    tilt() {
        this.relief.show({...this.flat.center(), zoom: this.flat.zoom()}, this.firstView);
        this.firstView = undefined;
        this.flat.container.inert = true;
    }

    /** How far off the eye is where a point is as wide as on the flat map at a zoom. */
    distanceOfZoom(zoom) {
        return ReliefView.distanceOfZoom(zoom, this.stage.clientHeight);
    }

    async lay() {
        const seen = await this.relief.hide(), {x, y, zoom} = this.landing || seen;
        this.landing = undefined;
        this.flat.container.inert = false;
        this.flat.moveTo({x, y}, Math.round(zoom));
    }
}
