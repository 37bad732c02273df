// What is under the cursor: coordinate, block, land type, height. A click pins it for copying.
import {blockText, isInWorld, textOfPlace} from './coordinates.js';
import {copyText, make} from './dom.js';
import {blockNumberAt, LAND_FLAG, LAND_SIZE} from './land.js';

/** A real height exactly as the archive has it, in as few digits as single precision needs. */
export function heightText(height) {
    for (let digits = 1; digits < 9; ++digits)
        if (Math.fround(Number(height.toPrecision(digits))) === Math.fround(height))
            return String(Number(height.toPrecision(digits)));
    return String(height);
}

/** What the land says of a place: of its nearest point, and of the block that it lies in. */
export function factsOfPlace(world, place) {
    if (!isInWorld(place))
        return null;
    const inside = value => Math.max(0, Math.min(LAND_SIZE - 1, Math.round(value)));
    const x = inside(place.x), y = inside(place.y);
    const block = blockNumberAt(Math.max(0, Math.min(LAND_SIZE - 1, place.x)), Math.max(0, Math.min(LAND_SIZE - 1, place.y)));
    const facts = {coordinate: textOfPlace(place), block: blockText(block), type: 'no land', height: '–'};
    if (world.newer.has(x, y)) {
        const flags = world.newer.blocks[block];
        facts.type = world.typeName(world.newer.typeAt(x, y));
        facts.height = heightText(world.newer.heightAt(x, y));
        facts.notes = [flags & LAND_FLAG.objects ? 'has objects' : '', flags & LAND_FLAG.passable ? '' : 'not passable'];
    }
    return facts;
}

const FIELDS = [['coordinate', 'Coordinate'], ['block', 'Block'], ['type', 'Land'], ['height', 'Height']];

export class Readout {
    /** `actions`: buttons for a pinned place, each `[label, function of the place]`. */
    constructor(world, actions) {
        this.world = world;
        this.actions = actions;
        this.values = {};
        this.bar = make('div', {class: 'readout', role: 'status', 'aria-live': 'off', 'aria-label': 'Under the cursor'});
        for (const [name, label] of FIELDS) {
            this.values[name] = make('span', {class: `value ${name}`, 'data-field': name}, '–');
            this.bar.append(make('span', {class: 'field'}, make('span', {class: 'label'}, label), this.values[name]));
        }
        this.pinned = make('section', {class: 'pinned card', hidden: true, 'aria-label': 'Pinned place'});
    }

    show(place) {
        const facts = place && factsOfPlace(this.world, place);
        for (const [name] of FIELDS)
            this.values[name].textContent = facts ? facts[name] : '–';
    }

    /** `name`: what stands there, if it has a name. */
    pin(place, name) {
        const facts = factsOfPlace(this.world, place);
        if (!facts)
            return this.unpin();
        this.place = place;
        const rows = FIELDS.map(([name, label]) => [make('dt', {}, label), make('dd', {'data-field': name}, facts[name])]).flat();
        const notes = (facts.notes || []).filter(Boolean).join(', ');
        const text = `${facts.coordinate}  block ${facts.block}  ${facts.type}  height ${facts.height}`;
        this.pinned.replaceChildren(
            make('button', {class: 'close', 'aria-label': 'Close', onclick: () => this.unpin()}, '×'),
            name ? make('h3', {}, name) : '', make('dl', {}, ...rows), notes ? make('p', {class: 'notes'}, notes) : '',
            make('div', {class: 'buttons'},
                make('button', {onclick: () => copyText(text)}, 'Copy'),
                ...this.actions.map(([label, act]) => make('button', {onclick: () => act(this.place)}, label))));
        this.pinned.hidden = false;
        if (this.onpin)
            this.onpin(place);
    }

    unpin() {
        this.pinned.hidden = true;
        this.place = null;
        if (this.onpin)
            this.onpin(null);
    }
}
