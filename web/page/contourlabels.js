// Heights written along the main contour lines, one here and there.
import {CONTOURS_PER_MAIN} from './contours.js';
import {LAND_SIZE} from './land.js';

const DISTANCE = 260; // pixels from label to label
const STEP = 4; // pixels
const GRADIENT_REACH = 1.5; // points
/** Nearly level land has no line to write along: real height a point. */
const LEAST_GRADIENT = 0.8;
const BLANK = 22; // pixels to the window's edge

/**
 * For contours every `interval`: `{x, y, angle, text}` in pixels of the world at a zoom, for its part from `left`, `top` to `right`,
 * `bottom`; the angle, in radians, is that of the line. The same labels whatever part is asked for.
 */
export function contourLabels(land, zoom, interval, {left, top, right, bottom}) {
    const labels = [], scale = 2 ** zoom, main = interval * CONTOURS_PER_MAIN;
    const heightAt = (x, y) => land.heightBetween(x / scale - 0.5, LAND_SIZE - 0.5 - y / scale);
    for (let row = Math.floor(top / DISTANCE); row <= bottom / DISTANCE; ++row)
        for (let column = Math.floor(left / DISTANCE); column <= right / DISTANCE; ++column) {
            // Every other row is shifted, so that they do not stand in columns.
            const y = (row + 0.5) * DISTANCE, start = (column + (row & 1 ? 0.5 : 0)) * DISTANCE;
            let last = Math.floor(heightAt(start, y) / main);
            for (let x = start + STEP; x < start + DISTANCE; x += STEP) {
                const level = Math.floor(heightAt(x, y) / main);
                const angle = level !== last ? angleAt(heightAt, x - STEP / 2, y, GRADIENT_REACH * scale) : null;
                if (angle !== null) {
                    labels.push({x: x - STEP / 2, y, angle, text: String(Math.max(level, last) * main)});
                    break;
                }
                last = level;
            }
        }
    return labels.filter(({x, y}) => x > 0 && y > 0 && x < LAND_SIZE * scale && y < LAND_SIZE * scale);
}

/** Of the contour line, so that letters along it stand upright; null on level land. */
function angleAt(heightAt, x, y, reach) {
    const right = heightAt(x + reach, y) - heightAt(x - reach, y), down = heightAt(x, y + reach) - heightAt(x, y - reach);
    if (Math.hypot(right, down) < LEAST_GRADIENT * 2 * GRADIENT_REACH)
        return null;
    return Math.atan(-right / (down || 1e-9));
}

/** On the canvas over a map. */
export function paintContourLabels(context, map, land, interval, {width, height}) {
    const shift = map.getPixelBounds().min;
    context.save();
    context.font = '600 11px system-ui, sans-serif';
    context.textBaseline = 'middle';
    context.textAlign = 'center';
    context.lineJoin = 'round';
    for (const {x, y, angle, text} of contourLabels(land, map.getZoom(), interval, {
        left: shift.x, top: shift.y, right: shift.x + width, bottom: shift.y + height})) {
        const [atX, atY] = [x - shift.x, y - shift.y];
        if (atX < BLANK || atY < BLANK || atX > width - BLANK || atY > height - BLANK)
            continue;
        context.save();
        context.translate(atX, atY);
        context.rotate(angle);
        context.lineWidth = 3;
        context.strokeStyle = 'rgba(250, 244, 232, 0.85)';
        context.strokeText(text, 0, 0);
        context.fillStyle = '#4a2c08';
        context.fillText(text, 0, 0);
        context.restore();
    }
    context.restore();
}

