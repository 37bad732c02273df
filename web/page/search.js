// One field that finds places, dungeons, marks, block numbers and coordinates as they are typed.
import {blockText, isInWorld, placeOfBlock, placeOfText, textOfPlace} from './coordinates.js';
import {make} from './dom.js';
import {isBlockOfMap} from './land.js';
import {wordOfPlace} from './placelooks.js';

/** How many rows are shown of what is found. */
const MOST = 30;
/** Shorter texts have too much that differs from them by a letter. */
const LEAST_FOR_SLIPS = 4;
const plain = text => text.normalize('NFD').replace(/\p{M}/gu, '').toLowerCase();
const isLetter = character => /[\p{L}\p{N}]/u.test(character);

/** Whether a text goes on from a place of it as `wanted`, or as that with one letter wrong, missing, too many, or changed with the next. */
function goesOnNearly(text, wanted, from) {
    let at = 0;
    while (at < wanted.length && text[from + at] === wanted[at])
        ++at;
    const has = (restOfWanted, place) => text.startsWith(wanted.slice(restOfWanted), from + place);
    return has(at + 1, at + 1) || has(at, at + 1) || has(at + 1, at) ||
        wanted[at] === text[from + at + 1] && wanted[at + 1] === text[from + at] && has(at + 2, at + 2);
}

/** How well a name suits what is wanted: 0 begins with it, 1 has a word that does, 2 has it within, 3 not at all. */
function rankOfName(name, wanted) {
    const at = name.indexOf(wanted);
    return at < 0 ? 3 : at === 0 ? 0 : isLetter(name[at - 1]) ? 2 : 1;
}

function hasWordNearly(name, wanted) {
    for (let at = 0; at < name.length; ++at)
        if ((at === 0 || !isLetter(name[at - 1])) && goesOnNearly(name, wanted, at))
            return true;
    return false;
}

/** All that has a name, in the order of the names. */
export class NameIndex {
    constructor(world, marks) {
        const entry = place => ({name: place.name, kind: wordOfPlace(place), place, plain: plain(place.name)});
        const entrance = ({name, block, entrances}) => entrances.length === 0 ? [{...entry({name, kind: 'dungeon', ...placeOfBlock(block)}), detail: `block ${blockText(block)}`}] :
            entrances.map((place, index) => ({...entry(place), detail: entrances.length === 1 ? textOfPlace(place) : `${textOfPlace(place)}, ${index + 1} of ${entrances.length}`}));
        this.entries = [world.places.map(entry), marks.map(entry), world.dungeons.flatMap(entrance)].flat();
        this.entries.sort((a, b) => a.plain < b.plain ? -1 : a.plain > b.plain ? 1 : 0);
    }

    /** The best first; where there is none, if that is of use, names that are nearly what is wanted. */
    find(wanted, withSlips) {
        const ranks = [[], [], []];
        for (const entry of this.entries) {
            const rank = rankOfName(entry.plain, wanted);
            if (rank < ranks.length)
                ranks[rank].push(entry);
        }
        const found = ranks.flat();
        return found.length > 0 || !withSlips || wanted.length < LEAST_FOR_SLIPS ? found : this.entries.filter(entry => hasWordNearly(entry.plain, wanted));
    }
}

/** What a text finds: `{name, kind, detail, place}`, the best first. `names`: a NameIndex. */
export function findPlaces(text, world, names) {
    const found = [], wanted = plain(text.trim());
    if (wanted === '')
        return found;
    const place = placeOfText(text);
    if (place && isInWorld(place))
        found.push({name: textOfPlace(place), kind: 'coordinate', detail: '', place});
    const block = /^(?:0x)?([0-9a-f]{4})$/i.exec(wanted);
    if (block) {
        const number = parseInt(block[1], 16);
        if (isBlockOfMap(number))
            found.push({name: `Block ${blockText(number)}`, kind: 'block', detail: world.dungeonNames.get(number) || '',
                place: placeOfBlock(number)});
    }
    return found.concat(names.find(wanted, found.length === 0));
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

    /** Made when it is first wanted, and again when there are other marks. */
    names() {
        const {items} = this.marks;
        if (this.indexed !== items)
            Object.assign(this, {indexed: items, index: new NameIndex(this.world, items)});
        return this.index;
    }

    update() {
        const text = this.field.value;
        const found = findPlaces(text, this.world, this.names());
        this.found = found.slice(0, MOST);
        this.list.replaceChildren(...this.found.map((entry, index) => make('li', {
            role: 'option', id: `result-${index}`, onmousedown: event => event.preventDefault(), onclick: () => this.choose(index)},
        make('span', {class: `kind ${entry.kind}`}, entry.kind), make('span', {class: 'name'}, entry.name),
        make('span', {class: 'detail'}, entry.detail === undefined ? textOfPlace(entry.place) : entry.detail))));
        if (found.length > MOST)
            this.list.append(make('li', {class: 'none', role: 'option', 'aria-disabled': 'true'}, `and ${found.length - MOST} more`));
        if (this.found.length === 0 && text.trim() !== '')
            this.list.append(make('li', {class: 'none', role: 'option', 'aria-disabled': 'true'}, 'Nothing found'));
        this.list.hidden = text.trim() === '';
        this.field.setAttribute('aria-expanded', String(!this.list.hidden));
        this.mark(this.found.length > 0 ? 0 : -1);
    }

    mark(index) {
        this.active = index;
        [...this.list.querySelectorAll('[role=option]')].forEach((item, at) => item.setAttribute('aria-selected', String(at === index)));
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
        else if (event.key === 'Escape' && !this.list.hidden)
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
