// The panel of layers: what is shown and in which light, and a legend whose land types can be picked.
import {typeColors} from './colors.js';
import {make} from './dom.js';
import {landTypeOfByte} from './land.js';
import {DEFAULTS} from './settings.js';

const BASES = [['land', 'Land as the game colours it'], ['height', 'Heights in grey'], ['slope', 'Steepness']];
const SWITCHES = {
    'Over the land': [
        ['contours', 'Contour lines'], ['roads', 'Roads brought out'], ['snow', 'Snow'], ['water', 'Bright water'],
        ['impassable', 'Not passable'], ['objects', 'Blocks with objects'], ['squares', 'Points as squares']],
    'On the map': [
        ['grid', 'Coordinate grid'], ['blocks', 'Land blocks, near by'], ['places', 'Places'], ['dungeons', 'Dungeons'],
        ['marks', 'My marks']],
};
const LIGHTS = [['azimuth', 'Light from', 0, 355, 5], ['altitude', 'Light height', 5, 90, 5]];

export class LayerPanel {
    constructor(world, settings) {
        this.world = world;
        this.settings = settings;
        this.element = make('div', {class: 'layers'});
        const bases = world.older ? [...BASES, ['difference', 'Difference of heights since']] : BASES;
        this.addGroup('Land', bases.map(([value, label]) => this.radio(value, label)));
        this.addGroup('Light', [...LIGHTS.map(slider => this.slider(...slider)),
            make('button', {class: 'small', onclick: () => this.resetLight()}, 'As in the game')]);
        for (const [title, switches] of Object.entries(SWITCHES))
            this.addGroup(title, switches.map(([name, label]) => this.checkbox(name, label)));
        this.legend = make('div', {class: 'legend'});
        this.addGroup('Land types', [this.legend]);
        this.drawLegend();
        settings.listen(() => this.follow());
        this.follow();
    }

    addGroup(title, controls) {
        this.element.append(make('fieldset', {}, make('legend', {}, title), ...controls));
    }

    radio(value, label) {
        const input = make('input', {type: 'radio', name: 'base', value, onchange: () => this.settings.set({base: value})});
        return make('label', {class: 'choice'}, input, label);
    }

    checkbox(name, label) {
        const input = make('input', {type: 'checkbox', name, onchange: () => this.settings.set({[name]: input.checked})});
        return make('label', {class: 'choice'}, input, label);
    }

    slider(name, label, min, max, step) {
        const value = make('output', {});
        const input = make('input', {type: 'range', name, min, max, step,
            oninput: () => this.settings.set({[name]: Number(input.value)})});
        return make('label', {class: 'slider'}, make('span', {}, label), input, value);
    }

    resetLight() {
        this.settings.set({azimuth: DEFAULTS.azimuth, altitude: DEFAULTS.altitude});
    }

    /** The land types that occur, the most frequent first. */
    drawLegend() {
        const counts = new Map();
        const {low, present} = this.world.newer, byByte = new Uint32Array(256);
        for (let index = 0; index < low.length; ++index)
            byByte[low[index]] += present[index];
        byByte.forEach((count, byte) => {
            const type = landTypeOfByte(byte);
            counts.set(type, (counts.get(type) || 0) + count);
        });
        const types = [...counts].filter(([, count]) => count > 0).sort((a, b) => b[1] - a[1]).map(([type]) => type);
        this.swatches = new Map();
        const pick = () => this.settings.set({types: types.filter(type => this.swatches.get(type).input.checked)});
        for (const type of types) {
            const input = make('input', {type: 'checkbox', name: `type-${type}`, onchange: pick});
            const swatch = make('span', {class: 'swatch'});
            this.swatches.set(type, {input, swatch});
            this.legend.append(make('label', {class: 'choice'}, input, swatch, this.world.typeName(type)));
        }
        this.legend.append(make('button', {class: 'small', onclick: () => this.settings.set({types: []})}, 'All types'));
    }

    /** Shows the settings as they are. */
    follow() {
        const {settings} = this;
        for (const input of this.element.querySelectorAll('input'))
            if (input.type === 'radio')
                input.checked = settings.get('base') === input.value;
            else if (input.type === 'checkbox' && input.name in DEFAULTS)
                input.checked = settings.get(input.name);
            else if (input.type === 'range') {
                input.value = settings.get(input.name);
                input.nextElementSibling.textContent = `${settings.get(input.name)}°`;
            }
        const colors = typeColors(this.world.colors, settings.values);
        for (const [type, {input, swatch}] of this.swatches) {
            input.checked = settings.get('types').includes(type);
            swatch.style.backgroundColor = `rgb(${colors[type] || [255, 0, 0]})`;
        }
    }
}
