// The panel of layers: what is shown and in which light, and a legend whose land types can be picked.
import {typeColors} from './colors.js';
import {make} from './dom.js';
import {SETTINGS} from './settings.js';

const BASES = [['land', 'Land as the game colours it'], ['height', 'Heights in grey'], ['slope', 'Steepness']];
const SWITCHES = {
    'Over the land': [
        ['contours', 'Contour lines'], ['roads', 'Roads brought out'], ['snow', 'Snow'], ['water', 'Bright water'],
        ['impassable', 'Not passable'], ['objects', 'Blocks with objects'], ['squares', 'Points as squares'], ['grain', 'Grain of the land, very near']],
    'On the map': [
        ['grid', 'Coordinate grid'], ['blocks', 'Land blocks, near by'], ['places', 'Places'], ['dungeons', 'Dungeons'],
        ['marks', 'My marks']],
};
/** What means nothing while another base is shown, or the relief. */
const OF_LAND_ALONE = ['squares', 'grain', 'snow', 'water'], OF_LIT_LAND = ['azimuth', 'altitude'], OF_FLAT_MAP = ['grid', 'blocks'];
const degrees = value => `${value}°`;
/** Values and how they are told, by the group that they stand in. */
const VALUES = {
    'Light': [['azimuth', 'Light from', degrees], ['altitude', 'Light height', degrees]],
    'Over the land': [['interval', 'Contours every', value => value > 0 ? String(value) : 'by zoom']]};

export class LayerPanel {
    constructor(world, settings) {
        this.world = world;
        this.settings = settings;
        this.outputs = new Map();
        this.element = make('div', {class: 'layers'});
        this.reset = make('button', {class: 'small', onclick: () => this.resetLight()}, 'As in the game');
        const bases = world.older ? [...BASES, ['difference', 'Difference of heights since']] : BASES;
        this.addGroup('Land', bases.map(([value, label]) => this.radio(value, label)));
        this.addGroup('Light', [...this.sliders('Light'), this.reset]);
        for (const [title, switches] of Object.entries(SWITCHES))
            this.addGroup(title, [...switches.map(([name, label]) => this.checkbox(name, label)), ...this.sliders(title)]);
        this.legend = make('div', {class: 'legend'});
        this.addGroup('Land types', [this.legend]);
        this.drawLegend();
        world.filled.listen(() => {
            this.drawLegend();
            this.follow();
        });
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

    sliders(group) {
        return (VALUES[group] || []).map(value => this.slider(...value));
    }

    slider(name, label, textOf) {
        const {least: min, most: max, step} = SETTINGS[name], output = make('output', {});
        const input = make('input', {type: 'range', name, min, max, step,
            oninput: () => this.settings.set({[name]: Number(input.value)})});
        this.outputs.set(name, () => output.textContent = textOf(this.settings.get(name)));
        return make('label', {class: 'slider'}, make('span', {}, label), input, output);
    }

    enable() {
        const base = this.settings.get('base'), isLit = base === 'land' || base === 'difference', isFlat = !this.settings.get('relief');
        const isOfUse = ({name}) => name === 'interval' ? this.settings.get('contours') : OF_LIT_LAND.includes(name) ? isLit : OF_FLAT_MAP.includes(name) ? isFlat :
            base === 'land' || !(OF_LAND_ALONE.includes(name) || name.startsWith('type-'));
        for (const input of this.element.querySelectorAll('input'))
            input.disabled = !isOfUse(input);
        this.reset.disabled = !isLit;
    }

    resetLight() {
        this.settings.reset('azimuth', 'altitude');
    }

    /** The land types that occur, the most frequent first. */
    drawLegend() {
        const types = this.world.typeCounts.map(([type]) => type);
        this.swatches = new Map();
        this.legend.replaceChildren();
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
            else if (input.type === 'checkbox' && input.name in SETTINGS)
                input.checked = settings.get(input.name);
            else if (input.type === 'range') {
                input.value = settings.get(input.name);
                this.outputs.get(input.name)();
            }
        this.enable();
        const colors = typeColors(this.world.colors, settings.values);
        for (const [type, {input, swatch}] of this.swatches) {
            input.checked = settings.get('types').includes(type);
            swatch.style.backgroundColor = `rgb(${colors[type] || [255, 0, 0]})`;
        }
    }
}
