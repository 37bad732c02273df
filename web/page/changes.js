// What changed since the older land: a list of blocks by kind, and a swipe between then and now.
import {changesOfBlock} from './blockchanges.js';
import {CHANGE_KINDS, kindsOfChange} from './changekinds.js';
import {blockText, placeOfBlock, textOfPlace} from './coordinates.js';
import {make} from './dom.js';
import {blockNumberAt, CELLS, isBlockOfMap} from './land.js';
import {CHANGE_LABELS, swatchOf} from './legend.js';

const ROWS_AT_ONCE = 100;

/**
 * Every block of which a file came, went or changed: its number and what became of it; also those that a
 * file is named after but that are not on the map, so that there are as many as in Plotterra's list.
 */
export function changedBlocks(world) {
    const blocks = [];
    world.newer.blocks.forEach((flags, number) => {
        const kinds = kindsOfChange(flags, world.older.blocks[number]);
        if (kinds.length > 0)
            blocks.push({number, kinds});
    });
    return blocks;
}

export class ChangePanel {
    /** `go` is called with the number of a block and its middle. */
    constructor(world, settings, go) {
        Object.assign(this, {world, settings, go});
        this.rows = ROWS_AT_ONCE;
        this.filters = new Map();
        this.counts = new Map();
        this.list = make('ol', {class: 'changes'});
        this.count = make('p', {class: 'count', role: 'status'});
        this.switches = [['changes', 'Mark changed blocks'], ['swipe', 'Swipe between then and now']].map(([name, label]) => {
            const input = make('input', {type: 'checkbox', name, onchange: () => settings.set({[name]: input.checked})});
            return make('label', {class: 'choice'}, input, label);
        });
        const difference = make('input', {type: 'checkbox', name: 'difference',
            onchange: () => settings.set({base: difference.checked ? 'difference' : 'land'})});
        this.switches.push(make('label', {class: 'choice'}, difference, 'Difference of heights (blue sunk, red risen)'));
        this.element = make('div', {}, make('fieldset', {}, make('legend', {}, 'On the map'), ...this.switches),
            make('fieldset', {}, make('legend', {}, 'Kinds'), ...CHANGE_KINDS.map(kind => this.filter(kind))), this.count, this.list);
        settings.listen(names => {
            this.follow();
            if (names.has('kinds'))
                this.draw();
        });
        world.filled.listen(() => this.fill());
        this.fill();
        this.follow();
    }

    fill() {
        this.blocks = changedBlocks(this.world);
        for (const [kind, element] of this.counts)
            element.textContent = `${CHANGE_LABELS[kind]}: ${this.blocks.filter(({kinds}) => kinds.includes(kind)).length}`;
        this.draw();
    }

    /** A switch for a kind, in the list and on the map. */
    filter(kind) {
        this.counts.set(kind, make('span', {}));
        const input = make('input', {type: 'checkbox', name: `kind-${kind}`, onchange: () => this.settings.set({
            kinds: CHANGE_KINDS.filter(each => each === kind ? input.checked : this.settings.get('kinds').includes(each))})});
        this.filters.set(kind, input);
        return make('label', {class: 'choice'}, input, swatchOf(kind), this.counts.get(kind));
    }

    follow() {
        for (const input of this.element.querySelectorAll('input'))
            if (input.name === 'difference')
                input.checked = this.settings.get('base') === 'difference';
            else if (input.name === 'changes' || input.name === 'swipe')
                input.checked = this.settings.get(input.name);
        // There is no line to be drawn over the relief.
        this.element.querySelector('[name=swipe]').disabled = this.settings.get('relief');
        for (const [kind, input] of this.filters)
            input.checked = this.settings.get('kinds').includes(kind);
    }

    draw() {
        const wanted = this.settings.get('kinds'), shown = this.blocks.filter(({kinds}) => kinds.some(kind => wanted.includes(kind)));
        this.count.textContent = `${shown.length} of ${this.blocks.length} blocks`;
        this.list.replaceChildren(...shown.slice(0, this.rows).map(block => this.row(block)));
        if (shown.length > this.rows)
            this.list.append(make('li', {}, make('button', {class: 'small', onclick: () => {
                this.rows += ROWS_AT_ONCE;
                this.draw();
            }}, `${shown.length - this.rows} more`)));
    }

    row(block) {
        const first = block.kinds.find(kind => this.settings.get('kinds').includes(kind));
        const corner = {x: (block.number >> 8) * CELLS, y: (block.number & 0xFF) * CELLS};
        const name = this.world.dungeonNames.get(block.number), hasPlace = isBlockOfMap(block.number);
        return make('li', {}, make('button', {class: 'row', disabled: !hasPlace, onclick: () => this.go(block.number, placeOfBlock(block.number))},
            swatchOf(first), make('code', {}, blockText(block.number)),
            hasPlace ? ` ${textOfPlace(corner)} ` : ' not on the map ',
            make('span', {class: 'detail'}, block.kinds.map(kind => CHANGE_LABELS[kind].toLowerCase()).join(', ') + (name ? ` – ${name}` : ''))));
    }
}

/** What changed in the block under a place; null where nothing did. */
export function changesHere(world, {x, y}) {
    const changes = changesOfBlock(world, blockNumberAt(x, y));
    return changes && make('div', {class: 'changes-here'}, ...changes.kinds.map(kind =>
        make('span', {class: 'key'}, swatchOf(kind), CHANGE_LABELS[kind])),
    make('ul', {}, ...changes.lines.map(line => make('li', {}, line))));
}

/** The line between then (to its left) and now, which can be dragged. */
export class Swipe {
    constructor(flat, settings) {
        Object.assign(this, {flat, settings});
        this.share = 0.5;
        this.handle = make('div', {class: 'swipe', role: 'slider', tabindex: '0', 'aria-label': 'Line between then and now',
            'aria-valuemin': '0', 'aria-valuemax': '100', hidden: true, onkeydown: event => this.onKey(event),
            onpointerdown: event => this.onDown(event), onpointermove: event => this.onMove(event)},
        make('span', {class: 'then'}, 'Then'), make('span', {class: 'grip', 'aria-hidden': 'true'}, '⇔'), make('span', {class: 'now'}, 'Now'));
        flat.container.parentElement.append(this.handle);
        flat.map.on('move zoom zoomend resize', () => this.cut());
        settings.listen(() => this.follow());
        this.follow();
    }

    follow() {
        // The relief has no line to be drawn over it.
        const isShown = this.settings.get('swipe') && !this.settings.get('relief');
        this.handle.hidden = !isShown;
        this.flat.showOlder(isShown);
        this.cut();
    }

    cut() {
        if (this.handle.hidden)
            return;
        const x = this.flat.map.getSize().x * this.share;
        this.handle.style.left = `${x}px`;
        this.handle.setAttribute('aria-valuenow', String(Math.round(this.share * 100)));
        this.flat.cutOlder(x);
    }

    move(share) {
        this.share = Math.max(0, Math.min(1, share));
        this.cut();
    }

    onDown(event) {
        this.handle.setPointerCapture(event.pointerId);
        event.preventDefault();
        this.handle.focus();
    }

    onMove(event) {
        if (this.handle.hasPointerCapture(event.pointerId))
            this.move(event.clientX / this.flat.map.getSize().x);
    }

    onKey(event) {
        const step = {ArrowLeft: -0.02, ArrowRight: 0.02}[event.key];
        if (step) {
            this.move(this.share + step);
            event.preventDefault();
        }
    }
}
