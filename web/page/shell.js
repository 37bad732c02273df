// What stands around the map: the tools, and the panel that some of them open. In small windows
// tools are pictures, and those that are seldom wanted are gathered under one; the panel is a sheet
// that can be drawn up and down.
import {find, make, textOf} from './dom.js';
import {icon} from './icons.js';

/** Of the window's height: where a sheet comes to rest, and below what it closes. */
const SHEET_RESTS = [0.42, 0.85], SHEET_CLOSES = 0.2;

export class Shell {
    constructor() {
        this.panels = new Map();
        this.bar = make('div', {class: 'tools card', role: 'toolbar', 'aria-label': 'Tools'});
        this.panel = find('panel');
        this.panel.classList.add('card');
        this.heading = make('h2', {id: 'panel-title'});
        this.body = make('div', {class: 'body'});
        this.rare = make('div', {class: 'rare-tools'});
        this.panel.append(make('button', {class: 'close', 'aria-label': 'Close', onclick: () => this.close()}, '×'),
            this.grip(), this.heading, this.body);
        this.panel.hidden = true;
    }

    /** Draws a sheet up and down; by key or click it goes from one rest to the other. */
    grip() {
        const grip = make('button', {class: 'grip', 'aria-label': 'Larger or smaller panel'}), height = () => this.panel.offsetHeight / innerHeight;
        const set = share => document.documentElement.style.setProperty('--sheet', `${Math.max(0, share) * 100}vh`);
        grip.addEventListener('pointerdown', event => {
            grip.setPointerCapture(event.pointerId);
            Object.assign(this, {from: event.clientY - this.panel.getBoundingClientRect().top, wasDragged: false});
        });
        grip.addEventListener('pointermove', event => {
            if (!grip.hasPointerCapture(event.pointerId))
                return;
            this.wasDragged = true;
            set((this.panel.getBoundingClientRect().bottom - event.clientY + this.from) / innerHeight);
        });
        grip.addEventListener('pointerup', () => {
            if (this.wasDragged && height() < SHEET_CLOSES)
                this.close();
            else if (this.wasDragged)
                set(SHEET_RESTS.reduce((best, rest) => Math.abs(rest - height()) < Math.abs(best - height()) ? rest : best));
        });
        grip.addEventListener('click', () => {
            if (!this.wasDragged)
                set(height() < (SHEET_RESTS[0] + SHEET_RESTS[1]) / 2 ? SHEET_RESTS[1] : SHEET_RESTS[0]);
            this.wasDragged = false;
        });
        return grip;
    }

    /** A tool that does something at once; gives its button. `isRare`: gathered with others in small windows. */
    addAction(name, label, hint, act, {isRare = false} = {}) {
        const button = make('button', {title: hint, class: isRare ? 'rare' : '', onclick: act}, icon(name), make('span', {}, label));
        if (isRare)
            this.rare.append(make('button', {class: 'row', onclick: () => button.click()}, icon(name), hint));
        return this.add(button);
    }

    add(button) {
        this.bar.append(button);
        return button;
    }

    /** A tool that opens a panel; `onToggle` learns whether it is open, and if not whether another is. */
    addPanel(name, label, hint, element, {onToggle = () => {}, isRare = false} = {}) {
        const button = this.addAction(name, label, hint, () => this.current === name ? this.close() : this.open(name), {isRare});
        button.setAttribute('aria-expanded', 'false');
        button.setAttribute('aria-controls', 'panel');
        this.panels.set(name, {button, element, label: hint, onToggle});
    }

    /** The last tool, which small windows have instead of the rare ones. */
    addRare() {
        this.addPanel('more', 'More', 'More tools', this.rare);
        this.panels.get('more').button.classList.add('more');
    }

    /** Whether there was a panel; its tool has the focus again, if the panel had it. */
    close(isReplaced = false) {
        const last = this.panels.get(this.current), hadFocus = this.panel.contains(document.activeElement);
        if (!last)
            return false;
        this.current = null;
        this.panel.hidden = true;
        last.button.setAttribute('aria-expanded', 'false');
        last.onToggle(false, isReplaced);
        if (hadFocus && !isReplaced)
            last.button.focus();
        return true;
    }

    open(name) {
        this.close(this.current !== name);
        const next = this.panels.get(name);
        this.current = name;
        this.panel.hidden = false;
        document.documentElement.style.removeProperty('--sheet');
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
        ['Arrow keys, drag', 'move'], ['+ and −, wheel, pinch, double click', 'zoom'], ['/', 'search'], ['Tab, then arrow keys, Enter', 'go through the places in view'], ['R', 'relief or flat map'], ['Right click, long press, Shift F10', 'what can be done at a place'],
        ['Right or Ctrl drag, two fingers, Q E, Page up and down', 'in the relief: turn and tilt'], ['N', 'in the relief: turn to the north'], ['Click, Enter', 'pin what is under the cursor'], ['Backspace', 'while measuring: take the last corner back'], ['Escape', 'close what is open']];
    return make('div', {}, make('p', {}, `${title}, drawn by this page from the land's own data. Nothing is loaded from anywhere.`),
        make('dl', {class: 'keys'}, ...keys.map(([key, use]) => [make('dt', {}, key), make('dd', {}, use)]).flat()),
        make('details', {}, make('summary', {}, 'Licences'), make('pre', {class: 'licences'}, textOf('licences'))));
}
