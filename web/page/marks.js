// The reader's own marks, kept in the browser for the world that they are in. Several pages may have the
// same ones at once: each change is made to what is kept at that moment. A mark is known by what it says.
import {isInWorld} from './coordinates.js';
import {fileName, saveFile} from './dom.js';
import {Signal} from './events.js';
import {marksOfPlotFile, plotFileOfMarks} from './plotfile.js';

const KEYS = 'plotterra marks ';
const PLACES = 1000; // parts of a point that are kept
export const NOT_KEPT = 'The browser has no room for these marks: save them to a file before you close this page.';

const rounded = value => Math.round(value * PLACES) / PLACES;
const markOf = ({x, y, name}) => ({x: rounded(x), y: rounded(y), name});
const isMark = value => value !== null && typeof value === 'object' && Number.isFinite(value.x) && Number.isFinite(value.y) && isInWorld(value) && typeof value.name === 'string';
const isSame = (one, other) => one.x === other.x && one.y === other.y && one.name === other.name;
const counted = (count, word) => `${count} ${word}${count === 1 ? '' : 's'}`;

/** `{title, marks, lost}` of a text that the browser kept: `lost` counts what are no marks. Null where it is none at all. */
export function marksOfText(text) {
    let kept;
    try {
        kept = JSON.parse(text);
    } catch {
        return null;
    }
    // At first a list alone was kept.
    const {title, marks} = Array.isArray(kept) ? {title: '', marks: kept} : kept || {};
    if (!Array.isArray(marks))
        return null;
    const read = marks.map(each => Array.isArray(each) ? {x: each[0], y: each[1], name: each[2]} : each), sound = read.filter(isMark).map(markOf);
    return {title: String(title), marks: sound, lost: read.length - sound.length};
}

function keptText(key) {
    try {
        return localStorage.getItem(key);
    } catch {
        return null; // The browser keeps nothing for pages from files.
    }
}

const contentOf = ({x, y, name}) => `${x} ${y} ${name}`;

/** Without some of them, each counted as often as it is there. */
function without(items, others) {
    const left = new Map();
    for (const other of others)
        left.set(contentOf(other), (left.get(contentOf(other)) || 0) + 1);
    return items.filter(item => {
        const count = left.get(contentOf(item)) || 0;
        left.set(contentOf(item), count - 1);
        return count <= 0;
    });
}

/** The same marks, as objects of `known` where they are among them. */
function recognized(marks, known) {
    const byContent = new Map(known.map(mark => [contentOf(mark), mark]));
    return marks.map(mark => {
        const content = contentOf(mark), same = byContent.get(content);
        byContent.delete(content);
        return same || mark;
    });
}

export class Marks {
    /** `world`: its title and the digest of its land; `say` is told in a line what the reader should know. */
    constructor({title, landDigest}, say) {
        Object.assign(this, {title, say});
        this.key = KEYS + landDigest;
        /** Whether the browser has all of them. */
        this.isKept = true;
        /** What can be undone: `{label, undo}`, where `undo` makes other items of items. */
        this.done = [];
        this.listeners = new Signal();
        /** Tells the mark that is gone. */
        this.removed = new Signal();
        /** `{x, y, name}` each; the list is never changed itself, but replaced. */
        this.items = [];
        this.items = this.present();
        if (this.text === undefined)
            this.takeOld();
    }

    /** What there is now: what the browser keeps, if it does, as this page or another one left it. */
    present() {
        const text = this.isKept ? keptText(this.key) : null;
        if (text === null || text === this.text)
            return this.items;
        this.text = text;
        return recognized(this.read(text), this.items);
    }

    read(text) {
        const kept = marksOfText(text);
        if (!kept)
            this.say('The kept marks cannot be read');
        else if (kept.lost > 0)
            this.say(`${counted(kept.lost, 'kept mark')} could not be read and ${kept.lost === 1 ? 'is' : 'are'} left out`);
        return kept ? kept.marks : [];
    }

    /** Marks were kept by the world's title at first. */
    takeOld() {
        const old = `${KEYS}of ${this.title}`, text = keptText(old);
        if (text === null)
            return;
        this.items = this.read(text);
        this.write();
        if (this.isKept)
            localStorage.removeItem(old);
    }

    write() {
        const text = JSON.stringify({title: this.title, marks: this.items.map(({x, y, name}) => [x, y, name])}), wasKept = this.isKept;
        try {
            localStorage.setItem(this.key, text);
            Object.assign(this, {text, isKept: true});
        } catch {
            this.isKept = false;
            if (wasKept)
                this.say(NOT_KEPT);
        }
    }

    /** `act` makes the new items of the present ones. */
    change(act) {
        this.items = act(this.present());
        this.write();
        this.listeners.emit();
    }

    /** Another page changed what the browser keeps; `key`: null where all was taken away, which leaves what is here. */
    onStorage({key}) {
        if (key !== this.key)
            return;
        if (this.isKept)
            this.items = this.present();
        else
            this.items = this.items.concat(without(this.read(keptText(this.key) || '[]'), this.items));
        this.listeners.emit();
    }

    listen(listener) {
        return this.listeners.listen(listener);
    }

    add(marks) {
        const added = marks.map(markOf);
        this.change(items => items.concat(added));
        return added;
    }

    remove(mark) {
        const at = this.items.indexOf(mark);
        this.done.push({label: `Bring back ${mark.name}`, undo: items => [...items.slice(0, at), mark, ...items.slice(at)]});
        this.change(items => without(items, [mark]));
        this.removed.emit(mark);
    }

    /** Not to a place off the world. One that another page took away is there again. */
    update(mark, changes) {
        const before = {...mark}, after = markOf({...mark, ...changes});
        if (!isInWorld(after)) {
            this.listeners.emit();
            return;
        }
        this.change(items => {
            const at = items.findIndex(item => isSame(item, before));
            Object.assign(mark, after);
            return at < 0 ? items.concat(mark) : [...items.slice(0, at), mark, ...items.slice(at + 1)];
        });
    }

    undo() {
        const {undo} = this.done.pop();
        this.change(undo);
    }

    save() {
        saveFile(fileName(this.title, '-marks.txt'), new Blob([plotFileOfMarks(this.items)], {type: 'text/plain'}));
    }

    load(text) {
        const {marks, skipped} = marksOfPlotFile(text);
        const left = skipped.length === 0 ? '' : `; ${counted(skipped.length, 'line')} left out that ${skipped.length === 1 ? 'names' : 'name'} no place on the map, first line ${skipped[0]}`;
        if (marks.length > 0) {
            const added = this.add(marks);
            this.done.push({label: `Take back ${counted(added.length, 'mark')} from a file`, undo: items => without(items, added)});
            this.listeners.emit();
        }
        if (this.isKept || marks.length === 0)
            this.say(marks.length === 0 ? `No place was found in that file${left}` : `${counted(marks.length, 'mark')} added${left}`);
    }

    /** Marks that are kept for other worlds of this title, such as an earlier state of this one: `{key, count}`. */
    others() {
        try {
            return Array.from({length: localStorage.length}, (_, index) => localStorage.key(index)).filter(key => key.startsWith(KEYS) && key !== this.key)
                .map(key => ({key, kept: marksOfText(localStorage.getItem(key))})).filter(({kept}) => kept && kept.title === this.title && kept.marks.length > 0)
                .map(({key, kept}) => ({key, count: kept.marks.length}));
        } catch {
            return [];
        }
    }

    takeOver(key) {
        this.add(this.read(keptText(key) || '[]'));
    }
}
