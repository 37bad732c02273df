// The page on the whole screen.
import {make} from './dom.js';
import {icon} from './icons.js';

export class FullScreen {
    constructor() {
        this.button = make('a', {href: '#', role: 'button', class: 'full-screen', title: 'Full screen', 'aria-label': 'Full screen', 'aria-pressed': 'false',
            hidden: !document.fullscreenEnabled, onclick: event => this.toggle(event)}, icon('full'));
        document.addEventListener('fullscreenchange', () =>
            this.button.setAttribute('aria-pressed', String(document.fullscreenElement !== null)));
    }

    toggle(event) {
        event.preventDefault();
        event.stopPropagation();
        if (document.fullscreenElement)
            document.exitFullscreen();
        else
            // The browser may refuse it, and says so itself.
            document.documentElement.requestFullscreen().catch(() => {});
    }
}
