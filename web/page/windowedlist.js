// A list of any length that scrolls: only the rows in view are there.
import {make} from './dom.js';

const SPARE_ROWS = 6; // above and below those in view
const USUAL_ROW = 34; // pixels, until one was measured

/** Which rows of a list are there, `first` to before `end`, when it is scrolled by `top` in a window so high. */
export function rowsInView({top, height, rowHeight, count}) {
    const first = Math.max(0, Math.min(count, Math.floor(top / rowHeight)) - SPARE_ROWS);
    return {first, end: Math.min(count, Math.ceil((top + height) / rowHeight) + SPARE_ROWS)};
}

export class WindowedList {
    /**
     * `makeRow` gives the `li` of an item; all are of one height. It stays while its item, the same object,
     * does; `refreshRow` is given both whenever the list is shown anew.
     */
    constructor(name, makeRow, refreshRow = () => {}) {
        Object.assign(this, {makeRow, refreshRow});
        this.list = make('ul', {class: name});
        this.element = make('div', {class: 'windowed', onscroll: () => this.draw()}, this.list);
        this.items = [];
        this.rows = new Map();
        new ResizeObserver(() => this.draw()).observe(this.element);
    }

    show(items) {
        this.items = items;
        this.draw();
        for (const [item, row] of this.rows)
            this.refreshRow(row, item);
    }

    /** Scrolls to the last row and gives it. */
    last() {
        this.element.scrollTop = this.element.scrollHeight;
        this.draw();
        return this.rows.get(this.items[this.items.length - 1]);
    }

    draw() {
        const {element, items} = this, rowHeight = this.rowHeight(), count = items.length;
        const {first, end} = rowsInView({top: element.scrollTop, height: element.clientHeight, rowHeight, count});
        const shown = items.slice(first, end), kept = new Set(shown);
        for (const [item, row] of this.rows)
            if (!kept.has(item))
                this.take(item, row);
        shown.forEach((item, index) => {
            const row = this.rows.get(item) || this.newRow(item);
            row.setAttribute('aria-setsize', String(count));
            row.setAttribute('aria-posinset', String(first + index + 1));
            if (this.list.children[index] !== row)
                this.list.insertBefore(row, this.list.children[index] || null);
        });
        Object.assign(this.list.style, {paddingTop: `${first * rowHeight}px`, paddingBottom: `${(count - end) * rowHeight}px`});
    }

    newRow(item) {
        const row = this.makeRow(item);
        this.refreshRow(row, item);
        this.rows.set(item, row);
        return row;
    }

    take(item, row) {
        this.rows.delete(item);
        // What was being typed in it counts.
        if (row.contains(document.activeElement))
            document.activeElement.blur();
        row.remove();
    }

    rowHeight() {
        const {firstElementChild: row} = this.list;
        return row && row.offsetHeight || USUAL_ROW;
    }
}
