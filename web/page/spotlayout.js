// Which spots on the map have their names beside them, and on which side: as many as there is room for.

const LETTER = 7.2, LINE = 17, DOT = 7, GATHERED = 11; // pixels
/** Where a number may stand instead, in pixels, when something is there already. */
const STEPS_ASIDE = [[0, 0], [0, 22], [0, -22], [24, 0], [-24, 0]];
const MOST_LINES = 4;

/** Remembers what stands where, and says whether there is room for more. */
class Room {
    constructor() {
        this.boxes = [];
    }

    isFree(box) {
        return !this.boxes.some(other => box[0] < other[2] && box[2] > other[0] && box[1] < other[3] && box[3] > other[1]);
    }

    takeIfFree(box) {
        const isFree = this.isFree(box);
        if (isFree)
            this.boxes.push(box);
        return isFree;
    }
}

const boxAround = ({x, y}, half) => [x - half, y - half, x + half, y + half];

/** Of lines to the right or left of a dot. */
function nameBox({x, y}, side, lines) {
    const width = 5 + Math.max(...lines.map(({length}) => length)) * LETTER, left = side === 'right' ? x + DOT : x - DOT - width;
    return [left, y - lines.length * LINE / 2, left + width, y + lines.length * LINE / 2];
}

/** The lines that a spot may be named with, the fullest first: those who share one are named one below the other. */
export function linesOfSpot({name, members}) {
    if (!members)
        return [[name]];
    const more = members.length - MOST_LINES, names = members.slice(0, more > 0 ? MOST_LINES - 1 : MOST_LINES).map(member => member.name);
    return [more > 0 ? [...names, `and ${members.length - names.length} more`] : names, [`${names[0]} +${members.length - 1}`]];
}

/**
 * `spots`: `{pixel, rank, name}` each, `members` where several share it, and `isCounter` where those are
 * told by their number alone. Gives for each `{side, lines, pixel}`: what stands beside it, if there is
 * room, and where it stands itself, since counters step aside. The least rank comes first.
 */
export function layOut(spots) {
    const room = new Room(), inOrder = spots.map((spot, index) => ({spot, index})).sort((a, b) => a.spot.rank - b.spot.rank), places = [];
    for (const {pixel, isCounter} of spots)
        if (!isCounter)
            room.boxes.push(boxAround(pixel, DOT));
    for (const {spot, index} of inOrder)
        places[index] = spot.isCounter ? placeOfCounter(spot.pixel, room) : {pixel: spot.pixel, ...nameOfSpot(spot, room)};
    return places;
}

function nameOfSpot(spot, room) {
    for (const lines of linesOfSpot(spot)) {
        const side = ['right', 'left'].find(each => room.takeIfFree(nameBox(spot.pixel, each, lines)));
        if (side)
            return {side, lines};
    }
    return {};
}

function placeOfCounter(middle, room) {
    const spots = STEPS_ASIDE.map(([x, y]) => ({x: middle.x + x, y: middle.y + y}));
    const pixel = spots.find(each => room.isFree(boxAround(each, GATHERED))) || middle;
    room.boxes.push(boxAround(pixel, GATHERED));
    return {pixel};
}
