// The reader's own marks: kept in the browser, saved and loaded as plot files.
import {isInWorld, textOfPlace} from './coordinates.js';
import {fileName, make, notify, saveFile} from './dom.js';
import {Signal} from './events.js';
import {latLngOfPlace, placeOfLatLng} from './flatmap.js';
import {marksOfPlotFile, plotFileOfMarks} from './plotfile.js';

export class Marks {
    constructor(title) {
        this.title = title;
        this.key = `plotterra marks of ${title}`;
        this.listeners = new Signal();
        this.items = this.stored();
    }

    stored() {
        try {
            const items = JSON.parse(localStorage.getItem(this.key)) || [];
            return items.filter(({x, y, name}) => Number.isFinite(x + y) && typeof name === 'string');
        } catch {
            return []; // The browser keeps nothing for pages from files, or something else wrote it.
        }
    }

    changed() {
        try {
            localStorage.setItem(this.key, JSON.stringify(this.items));
        } catch {
            notify('The browser does not keep marks for this page; save them to a file.');
        }
        this.listeners.emit();
    }

    listen(listener) {
        return this.listeners.listen(listener);
    }

    add(...marks) {
        this.items.push(...marks.map(({x, y, name}) => ({x, y, name})));
        this.changed();
    }

    remove(mark) {
        this.items = this.items.filter(item => item !== mark);
        this.changed();
    }

    update(mark, changes) {
        Object.assign(mark, changes);
        this.changed();
    }

    save() {
        saveFile(fileName(this.title, '-marks.txt'), new Blob([plotFileOfMarks(this.items)], {type: 'text/plain'}));
    }

    load(text) {
        const marks = marksOfPlotFile(text).filter(isInWorld);
        if (marks.length > 0)
            this.add(...marks);
        notify(marks.length === 0 ? 'No place was found in that file' : `${marks.length} marks were added`);
    }
}

/** Marks on the flat map: they can be dragged. */
export class MarkLayer {
    constructor(flat, marks, settings, pick) {
        Object.assign(this, {flat, marks, settings, pick});
        this.group = L.layerGroup().addTo(flat.map);
        marks.listen(() => this.draw());
        settings.listen(names => names.has('marks') && this.draw());
        this.draw();
    }

    draw() {
        this.group.clearLayers();
        if (!this.settings.get('marks'))
            return;
        for (const mark of this.marks.items) {
            const element = make('div', {class: 'spot mark'}, make('span', {class: 'name'}, mark.name));
            const icon = L.divIcon({html: element, className: 'spot-icon', iconSize: [0, 0]});
            L.marker(latLngOfPlace(mark), {icon, draggable: true, keyboard: false, title: mark.name, zIndexOffset: 2000})
                .on('click', () => this.pick(mark))
                .on('dragend', event => this.marks.update(mark, placeOfLatLng(event.target.getLatLng())))
                .addTo(this.group);
        }
    }
}

export class MarkPanel {
    constructor(marks, go) {
        Object.assign(this, {marks, go});
        this.list = make('ul', {class: 'marks'});
        const file = make('input', {type: 'file', class: 'off-screen', tabindex: '-1', 'aria-label': 'Plot file', onchange: async () => {
            for (const each of file.files)
                marks.load(await each.text());
            file.value = '';
        }});
        this.element = make('div', {},
            make('p', {class: 'hint'}, 'Click the map and choose Mark here. Marks can be dragged. A plot file dropped on the page is added.'),
            this.list,
            make('div', {class: 'buttons'}, make('button', {onclick: () => marks.save()}, 'Save as plot file'),
                make('button', {onclick: () => file.click()}, 'Load…'), file));
        marks.listen(() => this.draw());
        this.draw();
        this.takeDrops();
    }

    draw() {
        if (this.list.contains(document.activeElement) && document.activeElement.tagName === 'INPUT')
            return;
        this.list.replaceChildren(...this.marks.items.map(mark => {
            const field = make('input', {type: 'text', 'aria-label': 'Name of the mark',
                onchange: () => this.marks.update(mark, {name: field.value || textOfPlace(mark)})});
            field.value = mark.name;
            return make('li', {}, field, make('button', {class: 'small', onclick: () => this.go(mark)}, textOfPlace(mark)),
                make('button', {class: 'small', 'aria-label': `Delete ${mark.name}`, onclick: () => this.marks.remove(mark)}, '×'));
        }));
        if (this.marks.items.length === 0)
            this.list.append(make('li', {class: 'none'}, 'No marks yet'));
    }

    /** Begins to change the newest mark's name. */
    renameLast() {
        const field = this.list.querySelector('li:last-child input');
        if (field)
            field.select();
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
