// What stands around the map: the tools, and the panel that some of them open.
import {find, make, textOf} from './dom.js';

export class Shell {
    constructor(title) {
        this.title = title;
        this.panels = new Map();
        this.bar = make('div', {class: 'tools card', role: 'toolbar', 'aria-label': 'Tools'});
        this.panel = find('panel');
        this.heading = make('h2', {id: 'panel-title'});
        this.body = make('div', {class: 'body'});
        this.panel.append(make('button', {class: 'close', 'aria-label': 'Close', onclick: () => this.open(null)}, '×'), this.heading, this.body);
        this.panel.addEventListener('keydown', event => {
            if (event.key === 'Escape')
                this.open(null);
        });
        this.panel.hidden = true;
    }

    /** A tool that does something at once; gives its button. */
    addAction(label, hint, act) {
        return this.add(make('button', {title: hint, onclick: act}, label));
    }

    add(button) {
        this.bar.append(button);
        return button;
    }

    /** A tool that opens a panel; `onToggle` learns whether it is open. */
    addPanel(name, label, hint, element, onToggle = () => {}) {
        const button = this.addAction(label, hint, () => this.open(this.current === name ? null : name));
        button.setAttribute('aria-expanded', 'false');
        button.setAttribute('aria-controls', 'panel');
        this.panels.set(name, {button, element, label: hint, onToggle});
    }

    open(name) {
        const last = this.panels.get(this.current);
        if (last) {
            last.button.setAttribute('aria-expanded', 'false');
            last.onToggle(false);
        }
        this.current = name;
        const next = this.panels.get(name);
        this.panel.hidden = !next;
        if (!next && last)
            last.button.focus();
        if (!next)
            return;
        next.button.setAttribute('aria-expanded', 'true');
        this.heading.textContent = next.label;
        this.body.replaceChildren(next.element);
        this.body.scrollTop = 0;
        next.onToggle(true);
    }
}

/** How the page is used, and the licences of what is in it. */
export function aboutPanel(title) {
    const keys = [
        ['Arrow keys, drag', 'move'], ['+ and −, wheel, pinch, double click', 'zoom'], ['/', 'search'], ['Tab, then arrow keys, Enter', 'go through the places in view'], ['R', 'relief or flat map'],
        ['Right or Ctrl drag, two fingers, Q E, Page up and down', 'in the relief: turn and tilt'], ['Click, Enter', 'pin what is under the cursor']];
    return make('div', {}, make('p', {}, `${title}, drawn by this page from the land's own data. Nothing is loaded from anywhere.`),
        make('dl', {class: 'keys'}, ...keys.map(([key, use]) => [make('dt', {}, key), make('dd', {}, use)]).flat()),
        make('details', {}, make('summary', {}, 'Licences'), make('pre', {class: 'licences'}, textOf('licences'))));
}
