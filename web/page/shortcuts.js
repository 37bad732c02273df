// Keys that work anywhere on the page, but not while something is written or another key is held.

const NOT_WRITTEN_IN = ['checkbox', 'radio', 'range', 'file', 'button'];
const isWrittenIn = ({tagName, type}) => tagName === 'TEXTAREA' || tagName === 'INPUT' && !NOT_WRITTEN_IN.includes(type);

/** What opens a menu where there is no second button. */
export const isMenuKey = ({key, shiftKey}) => key === 'ContextMenu' || key === 'F10' && shiftKey;

/** Whether a key pressed is one of the page's; a key held down counts once. */
export function isForShortcuts({key, target, repeat, ctrlKey, metaKey, altKey, defaultPrevented}) {
    return !repeat && !ctrlKey && !metaKey && !altKey && !defaultPrevented && (key === 'Escape' || !isWrittenIn(target));
}

/** `actions`: what to do by key, in lower case; one that gives false has nothing to do, and the key stays the browser's. */
export function listenToShortcuts(actions) {
    document.addEventListener('keydown', event => {
        const act = actions[event.key.toLowerCase()];
        if (act && isForShortcuts(event) && act() !== false)
            event.preventDefault();
    });
}
