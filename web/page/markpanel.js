// The panel of the reader's own marks: a list, files, and what can be undone.
import {textOfPlace} from './coordinates.js';
import {make} from './dom.js';
import {NOT_KEPT} from './marks.js';
import {WindowedList} from './windowedlist.js';

export class MarkPanel {
    constructor(marks, go) {
        Object.assign(this, {marks, go});
        this.list = new WindowedList('marks', mark => this.row(mark), refreshRow);
        this.undo = make('button', {hidden: true, class: 'undo', onclick: () => marks.undo()});
        this.notes = make('div', {class: 'none'});
        const file = make('input', {type: 'file', class: 'off-screen', tabindex: '-1', 'aria-label': 'Plot file', onchange: async () => {
            for (const each of file.files)
                marks.load(await each.text());
            file.value = '';
        }});
        this.element = make('div', {},
            make('p', {class: 'hint'}, 'Click the map and choose Mark here. Marks can be dragged. A plot file dropped on the page is added.'),
            this.list.element, this.notes,
            make('div', {class: 'buttons'}, make('button', {onclick: () => marks.save()}, 'Save as plot file'),
                make('button', {onclick: () => file.click()}, 'Load…'), file, this.undo));
        marks.listen(() => this.draw());
        this.draw();
        this.takeDrops();
    }

    draw() {
        const {marks} = this, last = marks.done[marks.done.length - 1];
        this.list.show(marks.items);
        this.undo.hidden = !last;
        this.undo.textContent = last ? last.label : '';
        const others = marks.items.length > 0 ? [] : marks.others();
        this.notes.replaceChildren(...marks.isKept ? [] : [NOT_KEPT],
            ...marks.items.length === 0 ? ['No marks yet'] : [],
            ...others.map(({key, count}) => make('button', {class: 'row', onclick: () => marks.takeOver(key)},
                `Take over ${count} of another ${marks.title}, perhaps this one before it changed`)));
    }

    row(mark) {
        const field = make('input', {type: 'text', 'aria-label': 'Name of the mark',
            onchange: () => this.marks.update(mark, {name: field.value || textOfPlace(mark)})});
        field.value = mark.name;
        return make('li', {}, field, make('button', {class: 'small', onclick: () => this.go(mark)}),
            make('button', {class: 'small', onclick: () => this.remove(mark)}, '×'));
    }

    /** The way back has the focus, which would be lost with the row. */
    remove(mark) {
        this.marks.remove(mark);
        this.undo.focus();
    }

    /** Begins to change the newest mark's name. */
    renameLast() {
        const row = this.list.last();
        if (row)
            row.querySelector('input').select();
    }

    takeDrops() {
        document.addEventListener('dragover', event => event.preventDefault());
        document.addEventListener('drop', async event => {
            event.preventDefault();
            for (const file of event.dataTransfer.files)
                this.marks.load(await file.text());
        });
    }
}

/** What is just being typed stays. */
function refreshRow(row, mark) {
    const [field, go, remove] = row.children;
    if (field !== document.activeElement)
        field.value = mark.name;
    go.textContent = textOfPlace(mark);
    remove.setAttribute('aria-label', `Delete ${mark.name}`);
}
