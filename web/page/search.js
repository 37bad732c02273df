// One field that finds places, dungeons, marks, block numbers and coordinates as they are typed.
import {blockText, placeOfBlock, placeOfText, textOfPlace} from './coordinates.js';
import {make} from './dom.js';
import {isBlockOfMap} from './land.js';

const MOST = 9;
const plain = text => text.normalize('NFD').replace(/\p{M}/gu, '').toLowerCase();

/** What a text finds: `{name, kind, detail, place}`, the best first. */
export function findPlaces(text, world, marks) {
    const found = [], wanted = plain(text.trim());
    if (wanted === '')
        return found;
    const place = placeOfText(text);
    if (place)
        found.push({name: textOfPlace(place), kind: 'coordinate', detail: '', place});
    const block = /^(?:0x)?([0-9a-f]{4})$/i.exec(wanted);
    if (block) {
        const number = parseInt(block[1], 16);
        if (isBlockOfMap(number))
            found.push({name: `Block ${blockText(number)}`, kind: 'block', detail: world.dungeonNames.get(number) || '',
                place: placeOfBlock(number)});
    }
    const named = [
        ...world.places.map(entry => ({name: entry.name, kind: 'place', place: entry})),
        ...marks.map(entry => ({name: entry.name, kind: 'mark', place: entry})),
        ...world.dungeons.map(({name, block: number, entrances}) => (
            {name, kind: 'dungeon', block: number, place: entrances[0] || placeOfBlock(number), isInside: entrances.length === 0}))];
    const rank = name => {
        const at = plain(name).indexOf(wanted);
        return at < 0 ? 3 : at === 0 ? 0 : /[^\p{L}\p{N}]/u.test(plain(name)[at - 1]) ? 1 : 2;
    };
    const ranked = named.map(entry => ({...entry, rank: rank(entry.name)})).filter(entry => entry.rank < 3);
    ranked.sort((a, b) => a.rank - b.rank || a.name.localeCompare(b.name));
    for (const entry of ranked.slice(0, MOST - found.length))
        found.push({...entry, detail: entry.isInside ? `block ${blockText(entry.block)}` : textOfPlace(entry.place)});
    return found;
}

export class Search {
    /** `go` is called with what was chosen. */
    constructor(world, marks, go) {
        Object.assign(this, {world, marks, go});
        this.found = [];
        this.active = -1;
        this.list = make('ul', {class: 'results', role: 'listbox', id: 'results', hidden: true});
        this.field = make('input', {
            type: 'search', id: 'search', placeholder: 'Place, dungeon, block or 24.2S 57.0E', autocomplete: 'off',
            spellcheck: 'false', role: 'combobox', 'aria-label': 'Search', 'aria-expanded': 'false', 'aria-controls': 'results',
            oninput: () => this.update(), onkeydown: event => this.onKey(event), onfocus: () => this.update()});
        this.element = make('div', {class: 'search card', role: 'search'}, this.field, this.list);
        this.element.addEventListener('focusout', event => {
            if (!this.element.contains(event.relatedTarget))
                this.close();
        });
    }

    focus() {
        this.field.focus();
    }

    update() {
        const text = this.field.value;
        this.found = findPlaces(text, this.world, this.marks.items);
        this.list.replaceChildren(...this.found.map((entry, index) => make('li', {
            role: 'option', id: `result-${index}`, onmousedown: event => event.preventDefault(), onclick: () => this.choose(index)},
        make('span', {class: `kind ${entry.kind}`}, entry.kind), make('span', {class: 'name'}, entry.name),
        make('span', {class: 'detail'}, entry.detail))));
        if (this.found.length === 0 && text.trim() !== '')
            this.list.append(make('li', {class: 'none'}, 'Nothing found'));
        this.list.hidden = text.trim() === '';
        this.field.setAttribute('aria-expanded', String(!this.list.hidden));
        this.mark(this.found.length > 0 ? 0 : -1);
    }

    mark(index) {
        this.active = index;
        [...this.list.children].forEach((item, at) => item.setAttribute('aria-selected', String(at === index)));
        if (index >= 0) {
            this.field.setAttribute('aria-activedescendant', `result-${index}`);
            this.list.children[index].scrollIntoView({block: 'nearest'});
        } else {
            this.field.removeAttribute('aria-activedescendant');
        }
    }

    onKey(event) {
        const count = this.found.length;
        if (event.key === 'ArrowDown' && count > 0)
            this.mark((this.active + 1) % count);
        else if (event.key === 'ArrowUp' && count > 0)
            this.mark((this.active + count - 1) % count);
        else if (event.key === 'Enter' && this.active >= 0)
            this.choose(this.active);
        else if (event.key === 'Escape')
            this.close();
        else
            return;
        event.preventDefault();
    }

    choose(index) {
        const entry = this.found[index];
        this.field.value = entry.name;
        this.close();
        this.go(entry);
    }

    close() {
        this.list.hidden = true;
        this.field.setAttribute('aria-expanded', 'false');
    }
}
