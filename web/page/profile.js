// The heights along a way, and their picture with axes.
import {unitOfPoint} from './coordinates.js';
import {make, makeShape} from './dom.js';

const SAMPLES = 400;
const WIDTH = 300, HEIGHT = 150;
/** Around what is drawn, for the axes. */
const LEFT = 42, RIGHT = 10, TOP = 18, BOTTOM = 34;
const MOST_TICKS = {across: 6, up: 5};
/** Of the way, with a key. */
const KEY_STEP = 0.02;

/** How far along a way each of its corners lies, in map units. */
export function distancesOfCorners(places) {
    let whole = 0;
    return places.map((place, index) => {
        whole += index > 0 ? Math.hypot(place.x - places[index - 1].x, place.y - places[index - 1].y) : 0;
        return unitsOfPoints(whole);
    });
}

/** Distance in map units along places, and `count` samples `{place, distance, height}` on the way. */
export function profileOfWay(land, places, count = SAMPLES) {
    const lengths = places.slice(1).map((place, index) => Math.hypot(place.x - places[index].x, place.y - places[index].y));
    const whole = lengths.reduce((sum, length) => sum + length, 0), samples = [];
    for (let index = 0; index <= count && whole > 0; ++index) {
        let left = whole * index / count, leg = 0;
        while (leg < lengths.length - 1 && left > lengths[leg])
            left -= lengths[leg++];
        const share = lengths[leg] > 0 ? Math.min(1, left / lengths[leg]) : 0, from = places[leg], to = places[leg + 1];
        const place = {x: from.x + (to.x - from.x) * share, y: from.y + (to.y - from.y) * share};
        samples.push({place, distance: unitsOfPoints(whole * index / count), height: land.heightBetween(place.x, place.y)});
    }
    return {distance: unitsOfPoints(whole), samples};
}

const unitsOfPoints = points => unitOfPoint(points) - unitOfPoint(0);

/** How far heights go up in all, and down. */
export function climbs(heights) {
    let up = 0, down = 0;
    for (let index = 1; index < heights.length; ++index) {
        up += Math.max(0, heights[index] - heights[index - 1]);
        down += Math.max(0, heights[index - 1] - heights[index]);
    }
    return {up, down};
}

/** The round values from `low` to `high` that an axis names, `most` of them and one more, and how many digits they need. */
export function ticksOfAxis(low, high, most) {
    const least = (high - low) / most, power = 10 ** Math.floor(Math.log10(least));
    const step = [1, 2, 5, 10].map(factor => factor * power).find(each => each >= least * (1 - 1e-9)), ticks = [];
    for (let count = Math.ceil(low / step - 1e-9); count * step <= high + step * 1e-9; ++count)
        ticks.push(count * step);
    return {step, ticks, digits: Math.max(0, -Math.floor(Math.log10(step) + 1e-9))};
}

/** The heights that the picture reaches from and to: round ones around all samples. */
export function rangeOfHeights(heights) {
    const low = Math.min(...heights), high = Math.max(low + 1, ...heights), {step} = ticksOfAxis(low, high, MOST_TICKS.up);
    return {low: Math.floor(low / step) * step, high: Math.ceil(high / step) * step};
}

/**
 * The picture of a profile. `corners`: distances at which the way turns; `point` is called with the sample
 * that the reader points at, by hand or by arrow keys.
 */
export function pictureOfProfile({samples, distance}, corners, point) {
    const {low, high} = rangeOfHeights(samples.map(({height}) => height));
    const acrossOf = at => LEFT + at / distance * (WIDTH - LEFT - RIGHT), downOf = height => HEIGHT - BOTTOM - (height - low) / (high - low) * (HEIGHT - TOP - BOTTOM);
    const picture = makeShape('svg', {viewBox: `0 0 ${WIDTH} ${HEIGHT}`, tabindex: 0, role: 'slider', 'aria-label': 'Place along the way',
        'aria-valuemin': 0, 'aria-valuemax': samples.length - 1});
    const line = (kind, x1, y1, x2, y2) => makeShape('line', {class: kind, x1, y1, x2, y2});
    const text = (x, y, anchor, words) => makeShape('text', {x, y, 'text-anchor': anchor}, words);
    const floor = HEIGHT - BOTTOM, right = WIDTH - RIGHT, up = ticksOfAxis(low, high, MOST_TICKS.up), across = ticksOfAxis(0, distance, MOST_TICKS.across);
    for (const tick of up.ticks)
        picture.append(line('rule', LEFT, downOf(tick), right, downOf(tick)), text(LEFT - 5, downOf(tick) + 4, 'end', tick.toFixed(up.digits)));
    for (const tick of across.ticks)
        picture.append(line('tick', acrossOf(tick), floor, acrossOf(tick), floor + 4), text(acrossOf(tick), floor + 16, 'middle', tick.toFixed(across.digits)));
    const points = samples.map(({distance: at, height}) => `${acrossOf(at).toFixed(1)},${downOf(height).toFixed(1)}`).join(' ');
    picture.append(makeShape('polygon', {points: `${LEFT},${floor} ${points} ${right},${floor}`, class: 'ground'}),
        ...corners.map(at => line('turn', acrossOf(at), TOP, acrossOf(at), floor)),
        makeShape('polyline', {points, class: 'surface'}), line('tick', LEFT, floor, right, floor),
        text(LEFT - 5, 10, 'end', 'height'), text(right, HEIGHT - 3, 'end', 'map units'));
    const cursor = line('cursor', LEFT, TOP, LEFT, floor), caption = make('p', {class: 'detail'}, 'Point at the picture for the height of a place.');
    let at = 0;
    const show = index => {
        at = Math.max(0, Math.min(samples.length - 1, index));
        const sample = samples[at], words = `${sample.distance.toFixed(2)} map units: height ${Math.round(sample.height)}`;
        for (const end of ['x1', 'x2'])
            cursor.setAttribute(end, acrossOf(sample.distance));
        picture.setAttribute('aria-valuenow', at);
        picture.setAttribute('aria-valuetext', words);
        return {sample, words};
    };
    const goTo = index => {
        const {sample, words} = show(index);
        picture.append(cursor);
        caption.textContent = words;
        point(sample);
    };
    show(0);
    for (const kind of ['pointerdown', 'pointermove'])
        picture.addEventListener(kind, event => {
            const box = picture.getBoundingClientRect(), x = (event.clientX - box.left) / box.width * WIDTH;
            goTo(Math.round((x - LEFT) / (right - LEFT) * (samples.length - 1)));
        });
    picture.addEventListener('keydown', event => {
        const step = {ArrowLeft: -KEY_STEP, ArrowRight: KEY_STEP, Home: -1, End: 1}[event.key];
        if (!step)
            return;
        event.preventDefault();
        goTo(at + Math.round(step * (samples.length - 1)));
    });
    return make('figure', {}, picture, caption);
}
