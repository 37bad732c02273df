// What colours and lines on the land mean, wherever they are not the game's own.
import {CHANGE_KINDS} from './changekinds.js';
import {DIFFERENCE_COLORS, SLOPE_COLORS} from './colors.js';
import {CONTOURS_PER_MAIN} from './contours.js';
import {make} from './dom.js';
import {GREATEST_DIFFERENCE, STEEPEST} from './points.js';
import {TINTS} from './tints.js';

export const CHANGE_LABELS = {changed: 'Changed', added: 'Added', removed: 'Removed', gone: 'Land gone', new: 'New land'};
const STOPS = 17;
/** Where it would hide the land, it is folded at first. */
const SMALL = '(max-width: 760px), (max-height: 500px)';

/** The entries for settings and a zoom: `{title, colors, labels}` for a ramp, `{title, swatches}` or `{title}`. */
export function legendEntries(settings, zoom, heights, hasOlder) {
    const stops = color => Array.from({length: STOPS}, (_, index) => color(Math.round(index / (STOPS - 1) * 255)));
    const ofTable = table => stops(entry => [...table.slice(entry * 3, entry * 3 + 3)].map(Math.round)), entries = [];
    const base = settings.get('base');
    if (base === 'height')
        entries.push({title: 'Height', colors: stops(entry => [entry, entry, entry]),
            labels: [heights[0] || 0, heights[128] || 0, heights[255] || 0].map(height => String(Math.round(height)))});
    if (base === 'slope')
        entries.push({title: 'Steepness', colors: ofTable(SLOPE_COLORS), labels: [0, 0.5, 1].map(share => `${share * STEEPEST}°`)});
    if (base === 'difference')
        entries.push({title: 'Height since then', colors: ofTable(DIFFERENCE_COLORS),
            labels: [`−${GREATEST_DIFFERENCE} sunk`, '0', `+${GREATEST_DIFFERENCE} risen`]});
    if (settings.get('contours')) {
        const interval = settings.contourInterval(zoom);
        entries.push({title: `Contours every ${interval}, bold every ${interval * CONTOURS_PER_MAIN}`});
    }
    if (settings.get('changes') && hasOlder)
        entries.push({title: 'Changed blocks', swatches: CHANGE_KINDS.filter(kind => settings.get('kinds').includes(kind))
            .map(kind => [kind, CHANGE_LABELS[kind]])});
    for (const [name, label] of [['objects', 'Blocks with objects'], ['impassable', 'Not passable']])
        if (settings.get(name))
            entries.push({title: '', swatches: [[name, label]]});
    return entries;
}

/** A small field of the colour that blocks of a kind have on the map. */
export function swatchOf(kind) {
    const swatch = make('span', {class: 'swatch'});
    swatch.style.background = `rgb(${TINTS[kind]})`;
    return swatch;
}

export class Legend {
    constructor(flat, world, settings) {
        Object.assign(this, {flat, world, settings});
        this.entries = make('div', {});
        this.element = make('details', {class: 'map-legend card', hidden: true, open: !matchMedia(SMALL).matches}, make('summary', {}, 'Legend'), this.entries);
        settings.listen(() => this.draw());
        flat.moved.listen(() => this.draw());
        this.draw();
    }

    draw() {
        const entries = legendEntries(this.settings, this.flat.zoom(), this.world.heights, this.world.older !== null), text = JSON.stringify(entries);
        if (text === this.shown)
            return;
        this.shown = text;
        this.element.hidden = entries.length === 0;
        this.entries.replaceChildren(...entries.map(entry => this.entry(entry)));
    }

    entry({title, colors, labels = [], swatches = []}) {
        const ramp = colors && make('div', {class: 'ramp'});
        if (ramp)
            ramp.style.background = `linear-gradient(to right, ${colors.map(color => `rgb(${color})`).join(', ')})`;
        return make('div', {class: 'entry'}, title ? make('div', {}, title) : null, ramp || null,
            labels.length > 0 ? make('div', {class: 'labels'}, ...labels.map(label => make('span', {}, label))) : null,
            ...swatches.map(([kind, label]) => make('span', {class: 'key'}, swatchOf(kind), label)));
    }
}
