// What is under the cursor: coordinate, block, land type, height. A click pins it for copying.
import {blockText, isInWorld, textOfPlace} from './coordinates.js';
import {copyText, make} from './dom.js';
import {Signal} from './events.js';
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
        facts.notes = [flags & LAND_FLAG.objects ? 'has objects' : '', flags & LAND_FLAG.passable ? '' : 'not passable'].filter(Boolean);
    }
    return facts;
}

/** What a pinned place copies. */
export const lineOfFacts = ({coordinate, block, type, height}) => `${coordinate}  block ${block}  ${type}  height ${height}`;

const FIELDS = [['coordinate', 'Coordinate'], ['block', 'Block'], ['type', 'Land'], ['height', 'Height']];

export class Readout {
    constructor(world) {
        this.world = world;
        this.actions = [];
        this.details = [];
        this.values = {};
        /** Tells the place that is pinned now, or null. */
        this.pinned = new Signal();
        /** The card is gone, and the focus with it. */
        this.left = new Signal();
        this.bar = make('div', {class: 'readout card', role: 'status', 'aria-live': 'off', 'aria-label': 'Under the cursor'});
        for (const [name, label] of FIELDS) {
            this.values[name] = make('span', {class: `value ${name}`, 'data-field': name}, '–');
            this.bar.append(make('span', {class: 'field'}, make('span', {class: 'label'}, label), this.values[name]));
        }
        this.card = make('section', {class: 'pinned card', hidden: true, 'aria-label': 'Pinned place'});
        /** Tells those who do not see the card what is pinned. */
        this.spoken = make('p', {class: 'off-screen', role: 'status'});
    }

    /** A button for a pinned place; `act` is given the place. */
    addAction(label, act) {
        this.actions.push([label, act]);
    }

    /** What else is told of a pinned place: `tell` is given it and its name, and gives an element or null. */
    addDetail(tell) {
        this.details.push(tell);
    }

    show(place) {
        const facts = place && factsOfPlace(this.world, place);
        for (const [name] of FIELDS)
            this.values[name].textContent = facts ? facts[name] : '–';
    }

    /** `name`: what stands there, if it has a name. No place, or one off the world, ends it. */
    pin(place, name) {
        const facts = place && factsOfPlace(this.world, place);
        if (!facts) {
            this.unpin();
            return;
        }
        this.place = place;
        const rows = FIELDS.map(([field, label]) => [make('dt', {}, label), make('dd', {'data-field': field}, facts[field])]).flat();
        const notes = (facts.notes || []).join(', ');
        this.card.replaceChildren(
            make('button', {class: 'close', 'aria-label': 'Close', onclick: () => this.unpin()}, '×'),
            name ? make('h3', {}, name) : '', make('dl', {}, ...rows), notes ? make('p', {class: 'notes'}, notes) : '',
            ...this.details.map(tell => tell(place, name)).filter(Boolean),
            make('div', {class: 'buttons'},
                make('button', {onclick: () => copyText(lineOfFacts(facts))}, 'Copy'),
                ...this.actions.map(([label, act]) => make('button', {onclick: () => act(this.place)}, label))));
        this.card.hidden = false;
        this.spoken.textContent = [name, lineOfFacts(facts), notes].filter(Boolean).join('. ');
        this.pinned.emit(place);
    }

    /** Whether there was anything pinned. */
    unpin() {
        const {hidden: wasHidden} = this.card, hadFocus = this.card.contains(document.activeElement);
        this.card.hidden = true;
        this.place = null;
        this.spoken.textContent = '';
        this.pinned.emit(null);
        if (hadFocus)
            this.left.emit();
        return !wasHidden;
    }
}
