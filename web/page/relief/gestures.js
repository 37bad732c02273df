// Moving about in the relief: with the mouse, with fingers, with keys.
import {listenToLongPress} from '../longpress.js';
import {isMenuKey} from '../shortcuts.js';

const DEGREES_PER_PIXEL = 0.3;
const WHEEL_SPEED = 0.0015;
const KEY_STEP = 0.9; // of the distance, a second
const KEY_TURN = 60; // degrees a second

/** Keys and what they do, by `event.code` or `event.key`: right, ahead, closer, turn, tilt. */
const KEYS = {
    ArrowLeft: {right: -1}, ArrowRight: {right: 1}, ArrowUp: {ahead: 1}, ArrowDown: {ahead: -1},
    KeyA: {right: -1}, KeyD: {right: 1}, KeyW: {ahead: 1}, KeyS: {ahead: -1},
    KeyQ: {turn: -1}, KeyE: {turn: 1},
    '+': {closer: 1}, '=': {closer: 1}, '-': {closer: -1}, PageUp: {tilt: 1}, PageDown: {tilt: -1}};
/** Keys that do something once, by `event.key` in lower case. */
const AT_ONCE = {home: relief => relief.showWholeWorld(), n: relief => relief.turnNorth(), enter: relief => relief.clickMiddle()};
const SHIFTED_KEYS = {ArrowLeft: {turn: -1}, ArrowRight: {turn: 1}, ArrowUp: {tilt: 1}, ArrowDown: {tilt: -1}};

export class ReliefGestures {
    /** `relief`: see relief.js; takes the gestures on its canvas. */
    constructor(relief) {
        this.relief = relief;
        this.canvas = relief.canvas;
        this.pointers = new Map();
        this.held = new Map();
        this.hasCursor = matchMedia('(hover: hover)').matches;
        this.isByKeyboard = false;
        const on = (name, take) => this.canvas.addEventListener(name, take, {passive: false});
        on('pointerdown', event => this.press(event));
        on('pointermove', event => this.move(event));
        on('pointerup', event => this.release(event));
        on('pointercancel', event => this.release(event));
        on('pointerleave', () => this.relief.hover(null));
        on('wheel', event => this.wheel(event));
        on('dblclick', event => this.relief.approach(event.offsetX, event.offsetY, 0.5, 300));
        // It may come before the button is let go, which tells whether it was to turn.
        on('contextmenu', event => event.preventDefault());
        listenToLongPress(this.canvas, pixel => relief.callAt(pixel));
        on('keydown', event => this.key(event));
        on('keyup', event => this.held.delete(event.code));
        on('blur', () => this.held.clear());
    }

    press(event) {
        this.isByKeyboard = false;
        this.hasCursor = event.pointerType === 'mouse';
        this.canvas.setPointerCapture(event.pointerId);
        this.canvas.focus({preventScroll: true, focusVisible: false});
        this.relief.stopFlight();
        this.pointers.set(event.pointerId, {x: event.offsetX, y: event.offsetY});
        this.wasMoved = this.pointers.size > 1;
        this.turns = event.button === 2 || event.ctrlKey || event.shiftKey;
        this.grabbed = this.turns ? null : this.relief.grab(event.offsetX, event.offsetY);
        this.pressed = {x: event.offsetX, y: event.offsetY};
    }

    move(event) {
        const pointer = this.pointers.get(event.pointerId), x = event.offsetX, y = event.offsetY;
        if (!pointer) {
            this.hasCursor = event.pointerType === 'mouse';
            this.isByKeyboard = false;
            this.relief.hover({x, y});
            return;
        }
        if (this.pointers.size === 2)
            this.pinch(event.pointerId, x, y);
        else if (this.turns)
            this.turn(x - pointer.x, pointer.y - y);
        else if (this.grabbed)
            this.relief.drag(this.grabbed, x, y);
        this.wasMoved = this.wasMoved || Math.hypot(x - this.pressed.x, y - this.pressed.y) > 4;
        Object.assign(pointer, {x, y});
    }

    release(event) {
        if (!this.pointers.delete(event.pointerId))
            return;
        const pixel = {x: event.offsetX, y: event.offsetY};
        if (event.type === 'pointerup' && !this.wasMoved && event.button === 0)
            this.relief.click(pixel);
        if (event.type === 'pointerup' && !this.wasMoved && event.button === 2)
            this.relief.callAt(pixel);
        // The finger that is left goes on dragging from where it is.
        const [left] = this.pointers.values();
        this.grabbed = left ? this.relief.grab(left.x, left.y) : null;
    }

    turn(right, up) {
        const {view} = this.relief;
        view.set({heading: view.heading + right * DEGREES_PER_PIXEL, tilt: view.tilt + up * DEGREES_PER_PIXEL});
        this.relief.changed();
    }

    /** Two fingers: apart to come closer, around each other to turn, both up or down to tilt. */
    pinch(id, x, y) {
        const moved = this.pointers.get(id), [, other] = [...this.pointers].find(([key]) => key !== id);
        const before = {x: moved.x - other.x, y: moved.y - other.y}, after = {x: x - other.x, y: y - other.y};
        const closer = Math.hypot(before.x, before.y) / Math.max(1, Math.hypot(after.x, after.y));
        const angle = (Math.atan2(after.y, after.x) - Math.atan2(before.y, before.x)) * 180 / Math.PI;
        const {view} = this.relief, isSideBySide = Math.abs(after.x) > Math.abs(after.y);
        view.set({
            distance: view.distance * closer, heading: view.heading - ((angle + 540) % 360 - 180),
            tilt: view.tilt + (isSideBySide ? (moved.y - y) * DEGREES_PER_PIXEL / 2 : 0)});
        this.relief.changed();
    }

    wheel(event) {
        event.preventDefault();
        const pixels = event.deltaY * (event.deltaMode === 1 ? 30 : event.deltaMode === 2 ? 400 : 1);
        this.relief.approach(event.offsetX, event.offsetY, Math.exp(Math.max(-400, Math.min(400, pixels)) * WHEEL_SPEED), 0);
    }

    key(event) {
        if (event.ctrlKey || event.metaKey || event.altKey)
            return;
        const action = event.shiftKey && SHIFTED_KEYS[event.code] || KEYS[event.code] || KEYS[event.key];
        const atOnce = isMenuKey(event) ? () => this.relief.callAtMiddle() : AT_ONCE[event.key.toLowerCase()];
        if (!action && !atOnce)
            return;
        event.preventDefault();
        this.isByKeyboard = true;
        if (atOnce) {
            atOnce(this.relief);
            return;
        }
        this.relief.stopFlight();
        if (!this.held.has(event.code)) {
            this.held.set(event.code, action);
            // A short press moves, too.
            this.act(action, 0.08);
        }
    }

    act({right = 0, ahead = 0, closer = 0, turn = 0, tilt = 0}, seconds) {
        const {view} = this.relief, step = view.distance * KEY_STEP * seconds;
        view.moveBy(right * step, ahead * step);
        view.set({
            distance: view.distance * Math.exp(-closer * 1.5 * seconds), heading: view.heading + turn * KEY_TURN * seconds,
            tilt: view.tilt + tilt * KEY_TURN * seconds});
        this.relief.changed();
    }

    /** Goes on with the keys that are held down; whether there are any. */
    step(seconds) {
        for (const action of this.held.values())
            this.act(action, seconds);
        return this.held.size > 0;
    }
}
