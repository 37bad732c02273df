// What changed since the older land: a list of blocks by kind, and a swipe between then and now.
import {blockText, textOfPlace} from './coordinates.js';
import {make} from './dom.js';
import {CELLS, isBlockOfMap, LAND_FLAG} from './land.js';
import {placeOfBlock} from './search.js';

export const CHANGE_KINDS = [
    ['changed', 'Changed', block => block.flags & LAND_FLAG.changed],
    ['added', 'Added', block => block.flags & LAND_FLAG.added],
    ['removed', 'Removed', block => block.flags & LAND_FLAG.removed],
    ['gone', 'Land gone', block => block.isGone],
    ['new', 'New land', block => block.isNew],
];
const ROWS_AT_ONCE = 300;

/**
 * Every block of which a file came, went or changed, by number; also those that a file is named
 * after but that are not on the map, so that there are as many as in Plotterra's list.
 */
export function changedBlocks(world) {
    const blocks = [];
    world.newer.blocks.forEach((flags, number) => {
        const hasLand = (flags & LAND_FLAG.data) !== 0, hadLand = (world.older.blocks[number] & LAND_FLAG.data) !== 0;
        if (flags & (LAND_FLAG.added | LAND_FLAG.removed | LAND_FLAG.changed))
            blocks.push({number, flags, isGone: hadLand && !hasLand, isNew: hasLand && !hadLand});
    });
    return blocks;
}

export class ChangePanel {
    /** `go` is called with the number of a block and its middle. */
    constructor(world, settings, go) {
        Object.assign(this, {world, settings, go});
        this.blocks = changedBlocks(world);
        this.kinds = new Set(CHANGE_KINDS.map(([kind]) => kind));
        this.rows = ROWS_AT_ONCE;
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
        settings.listen(() => this.follow());
        this.follow();
        this.draw();
    }

    filter([kind, label, test]) {
        const count = this.blocks.filter(test).length;
        const input = make('input', {type: 'checkbox', name: `kind-${kind}`, checked: true, onchange: () => {
            this.kinds[input.checked ? 'add' : 'delete'](kind);
            this.draw();
        }});
        return make('label', {class: 'choice'}, input, make('span', {class: `swatch ${kind}`}), `${label}: ${count}`);
    }

    follow() {
        for (const input of this.element.querySelectorAll('input'))
            if (input.name === 'difference')
                input.checked = this.settings.get('base') === 'difference';
            else if (input.name === 'changes' || input.name === 'swipe')
                input.checked = this.settings.get(input.name);
    }

    draw() {
        const tests = CHANGE_KINDS.filter(([kind]) => this.kinds.has(kind));
        const shown = this.blocks.filter(block => tests.some(([, , test]) => test(block)));
        this.count.textContent = `${shown.length} of ${this.blocks.length} blocks`;
        this.list.replaceChildren(...shown.slice(0, this.rows).map(block => this.row(block)));
        if (shown.length > this.rows)
            this.list.append(make('li', {}, make('button', {class: 'small', onclick: () => {
                this.rows += ROWS_AT_ONCE;
                this.draw();
            }}, `${shown.length - this.rows} more`)));
    }

    row(block) {
        const kinds = CHANGE_KINDS.filter(([, , test]) => test(block));
        const corner = {x: (block.number >> 8) * CELLS, y: (block.number & 0xFF) * CELLS};
        const name = this.world.dungeonNames.get(block.number), hasPlace = isBlockOfMap(block.number);
        return make('li', {}, make('button', {class: 'row', disabled: !hasPlace, onclick: () => this.go(block.number, placeOfBlock(block.number))},
            make('span', {class: `swatch ${kinds[0][0]}`}), make('code', {}, blockText(block.number)),
            hasPlace ? ` ${textOfPlace(corner)} ` : ' not on the map ',
            make('span', {class: 'detail'}, kinds.map(([, label]) => label.toLowerCase()).join(', ') + (name ? ` – ${name}` : ''))));
    }
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
        const isShown = this.settings.get('swipe');
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
