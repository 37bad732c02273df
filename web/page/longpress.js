// A finger that rests, where browsers have no second button to offer.

const DELAY = 550; // milliseconds
/** Fingers never rest quite, in pixels. */
const SLACK = 10;

/** `call` is given the pixel of the window that a finger rested on, which then does nothing else. */
export function listenToLongPress(element, call) {
    let timer, from = null;
    const end = () => {
        clearTimeout(timer);
        from = null;
    };
    element.addEventListener('pointerdown', event => {
        end();
        if (event.pointerType !== 'touch' || !event.isPrimary)
            return;
        from = {x: event.clientX, y: event.clientY};
        timer = setTimeout(() => {
            const {target, pointerId} = event, pixel = from;
            end();
            // Nobody drags on from here, and to lift the finger is no click.
            target.dispatchEvent(new PointerEvent('pointercancel', {pointerId, pointerType: 'touch', bubbles: true}));
            swallowClick();
            call(pixel);
        }, DELAY);
    }, true);
    element.addEventListener('pointermove', event => {
        if (from && Math.hypot(event.clientX - from.x, event.clientY - from.y) > SLACK)
            end();
    }, true);
    for (const kind of ['pointerup', 'pointercancel'])
        element.addEventListener(kind, end, true);
}

/** What browsers make of the finger that lies there now once it is lifted, as if it were a mouse. */
function swallowClick() {
    const kinds = ['mousedown', 'mouseup', 'click'], take = event => {
        event.preventDefault();
        event.stopPropagation();
    };
    for (const kind of kinds)
        document.addEventListener(kind, take, true);
    document.addEventListener('pointerdown', () => kinds.forEach(kind => document.removeEventListener(kind, take, true)), {capture: true, once: true});
}
