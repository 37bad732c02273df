// Land blocks tinted by what is in them, and by what became of them since the older land: filled
// where they stand alone, only outlined where they would hide what they mark.
import {kindOfChange} from './changekinds.js';
import {BLOCKS, CELLS, LAND_FLAG} from './land.js';

/** They differ for the colour-blind as well. */
export const TINTS = {
    impassable: [120, 60, 150], objects: [255, 255, 190],
    changed: [232, 168, 0], added: [20, 90, 235], removed: [225, 60, 130], gone: [30, 0, 20], new: [60, 215, 225]};
const STRENGTH = 0.5;
/** Where more of the land's blocks changed than this, tints would be all there is. */
const MOST_FILLED = 0.15;
const OUTLINE = 1.75; // pixels of the page

/** `land`: what is drawn, of the `lands` that are compared. */
export function drawTints(picture, land, {newer, older}, view) {
    if (view.objects || view.impassable)
        fill(picture, number => contentOfBlock(land.blocks[number], view));
    if (!view.changes || !older)
        return;
    const kindOf = number => kindOfChange(newer.blocks[number], older.blocks[number], view.kinds);
    const hidesMuch = view.base === 'difference' || view.swipe || shareOfChanged(newer) > MOST_FILLED;
    if (hidesMuch)
        outline(picture, kindOf, Math.max(1, Math.round(OUTLINE * view.density)));
    else
        fill(picture, kindOf);
}

function contentOfBlock(flags, view) {
    if (view.objects && flags & LAND_FLAG.objects)
        return 'objects';
    return view.impassable && flags & LAND_FLAG.data && !(flags & LAND_FLAG.passable) ? 'impassable' : null;
}

const shares = new WeakMap();

function shareOfChanged({blocks}) {
    if (!shares.has(blocks)) {
        let changed = 0, all = 0;
        for (const flags of blocks) {
            all += flags & LAND_FLAG.data ? 1 : 0;
            changed += flags & (LAND_FLAG.changed | LAND_FLAG.added | LAND_FLAG.removed) ? 1 : 0;
        }
        shares.set(blocks, changed / Math.max(1, all));
    }
    return shares.get(blocks);
}

/** `column`, `row`: of a block; calls back with its pixels. */
function eachBlock(picture, draw) {
    const inside = value => Math.max(0, Math.min(BLOCKS - 1, Math.floor(value / CELLS)));
    const west = inside(picture.placeOfColumn(picture.left)), east = inside(picture.placeOfColumn(picture.right - 1));
    const north = inside(picture.placeOfRow(picture.top)), south = inside(picture.placeOfRow(picture.bottom - 1));
    for (let row = south; row <= north; ++row)
        for (let column = west; column <= east; ++column)
            draw(column, row);
}

/** The pixels of a block within a picture. The world's edge belongs to its outermost blocks. */
function pixelsOf(picture, column, row) {
    const left = column === 0 ? picture.left : Math.ceil(picture.columnOfPlace(column * CELLS) - 0.5);
    const right = column === BLOCKS - 1 ? picture.right : Math.ceil(picture.columnOfPlace((column + 1) * CELLS) - 0.5);
    const top = row === BLOCKS - 1 ? picture.top : Math.floor(picture.rowOfPlace((row + 1) * CELLS) + 0.5);
    const bottom = row === 0 ? picture.bottom : Math.floor(picture.rowOfPlace(row * CELLS) + 0.5);
    return {left: Math.max(picture.left, left), right: Math.min(picture.right, right),
        top: Math.max(picture.top, top), bottom: Math.min(picture.bottom, bottom)};
}

function blendBox(picture, {left, right, top, bottom}, color, share) {
    for (let row = top; row < bottom; ++row)
        for (let column = left; column < right; ++column)
            picture.blend(column, row, color, share);
}

function fill(picture, tintOf) {
    eachBlock(picture, (column, row) => {
        const tint = tintOf(column << 8 | row);
        if (tint)
            blendBox(picture, pixelsOf(picture, column, row), TINTS[tint], STRENGTH);
    });
}

/** A line within each block along the sides beyond which blocks are of another kind. */
function outline(picture, tintOf, width) {
    const kindAt = (column, row) => column < 0 || row < 0 || column >= BLOCKS || row >= BLOCKS ? null : tintOf(column << 8 | row);
    eachBlock(picture, (column, row) => {
        const tint = kindAt(column, row);
        if (!tint)
            return;
        const box = pixelsOf(picture, column, row), whole = unclipped(picture, column, row);
        const differs = (right, up) => kindAt(column + right, row + up) !== tint;
        const line = side => blendBox(picture, {...box, ...side}, TINTS[tint], 0.9);
        const top = Math.max(box.top, Math.min(box.bottom, whole.top + width)), bottom = Math.min(box.bottom, Math.max(box.top, whole.bottom - width));
        if (differs(0, 1))
            line({bottom: top});
        if (differs(0, -1))
            line({top: Math.max(bottom, top)});
        const between = {top: differs(0, 1) ? top : box.top, bottom: differs(0, -1) ? bottom : box.bottom};
        const left = Math.max(box.left, Math.min(box.right, whole.left + width));
        if (differs(-1, 0))
            line({...between, right: left});
        if (differs(1, 0))
            line({...between, left: Math.max(left, Math.min(box.right, whole.right - width))});
    });
}

function unclipped(picture, column, row) {
    return {left: Math.ceil(picture.columnOfPlace(column * CELLS) - 0.5), right: Math.ceil(picture.columnOfPlace((column + 1) * CELLS) - 0.5),
        top: Math.floor(picture.rowOfPlace((row + 1) * CELLS) + 0.5), bottom: Math.floor(picture.rowOfPlace(row * CELLS) + 0.5)};
}
