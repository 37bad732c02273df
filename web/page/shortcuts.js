// Keys that work anywhere on the page, but not while something is written or another key is held.

/** `actions`: what to do by key, in lower case. */
export function listenToShortcuts(actions) {
    document.addEventListener('keydown', event => {
        const act = actions[event.key.toLowerCase()];
        if (!act || event.target.matches('input, textarea') || event.ctrlKey || event.metaKey || event.altKey)
            return;
        act();
        event.preventDefault();
    });
}
