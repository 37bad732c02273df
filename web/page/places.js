// Places and dungeons on the flat map: a dot each, with its name where there is room; far out those
// that would lie on each other are gathered under their number. The tab key comes to one of them,
// the arrow keys go on from there.
import {textOfPlace} from './coordinates.js';
import {make} from './dom.js';
import {latLngOfPlace, placeOfLatLng} from './flatmap.js';

const CELL = 96;
const LAST_GATHERED_ZOOM = 3;
const LETTER = 7.2, LINE = 17, DOT = 7, GATHERED = 11;
/** Where a number may stand instead, in pixels, when something is there already. */
const STEPS_ASIDE = [[0, 0], [0, 22], [0, -22], [24, 0], [-24, 0]];
const DIRECTIONS = {ArrowRight: [1, 0], ArrowLeft: [-1, 0], ArrowDown: [0, 1], ArrowUp: [0, -1]};

/** What stands on the map: `{kind, name, x, y}`, the most important first. */
export function placesOfWorld(world, settings) {
    const places = settings.get('places') ? world.places.map(place => ({kind: 'place', ...place})) : [];
    if (settings.get('dungeons'))
        for (const {name, block, entrances} of world.dungeons)
            places.push(...entrances.map(({x, y}) => ({kind: 'dungeon', name, block, x, y})));
    return places;
}

/** What stands on the relief. */
export function placesInRelief(world, settings, marks) {
    return [...settings.get('marks') ? marks.items : [], ...placesOfWorld(world, settings)];
}

/** Remembers what stands where, and says whether there is room for more. */
class Room {
    constructor() {
        this.boxes = [];
    }

    isFree(box) {
        return !this.boxes.some(other => box[0] < other[2] && box[2] > other[0] && box[1] < other[3] && box[3] > other[1]);
    }

    take(box) {
        this.boxes.push(box);
    }

    takeIfFree(box) {
        const isFree = this.isFree(box);
        if (isFree)
            this.take(box);
        return isFree;
    }
}

const boxAround = ({x, y}, half) => [x - half, y - half, x + half, y + half];

/** Of a name to the right or left of a dot. */
function nameBox({x, y}, side, text) {
    const width = 5 + text.length * LETTER, left = side === 'right' ? x + DOT : x - DOT - width;
    return [left, y - LINE / 2, left + width, y + LINE / 2];
}

export class PlaceLayer {
    constructor(flat, world, settings, pick) {
        Object.assign(this, {flat, world, settings, pick});
        this.markers = new Map();
        flat.map.on('moveend zoomend resize', () => this.update());
        settings.listen(() => this.update());
        this.update();
    }

    update() {
        const {map} = this.flat, area = map.getBounds().pad(0.1), wanted = new Map();
        const inView = placesOfWorld(this.world, this.settings).filter(place => area.contains(latLngOfPlace(place)));
        for (const {group, side} of this.arranged(this.gathered(inView))) {
            const key = [group.kind, group.x, group.y, group.members ? group.members.length : group.name, side].join('|');
            wanted.set(key, this.markers.get(key) || this.marker(group, side));
        }
        const hadFocus = this.stop && this.stop.getElement() === document.activeElement;
        for (const [key, marker] of this.markers)
            if (!wanted.has(key))
                marker.remove();
        for (const [key, marker] of wanted)
            if (!this.markers.has(key))
                this.add(marker);
        this.markers = wanted;
        const isLeft = hadFocus && [...wanted.values()].includes(this.stop);
        this.stopAt(isLeft ? this.stop : this.nearest(map.getCenter()));
        if (hadFocus)
            this.focus();
    }

    /** Gives each group with the side that its name stands on, if there is room; moves numbers aside. */
    arranged(groups) {
        const {map} = this.flat, room = new Room(), singles = groups.filter(group => !group.members);
        const pixel = place => map.latLngToLayerPoint(latLngOfPlace(place));
        for (const single of singles)
            room.take(boxAround(pixel(single), DOT));
        const sides = new Map(), findSide = single => sides.set(single,
            ['right', 'left'].find(side => room.takeIfFree(nameBox(pixel(single), side, single.name))));
        singles.filter(({kind}) => kind === 'place').forEach(findSide);
        for (const group of groups.filter(({members}) => members)) {
            const middle = pixel(group), spots = STEPS_ASIDE.map(([x, y]) => middle.add([x, y]));
            const spot = spots.find(each => room.isFree(boxAround(each, GATHERED))) || middle;
            room.take(boxAround(spot, GATHERED));
            if (spot !== middle)
                Object.assign(group, placeOfLatLng(map.layerPointToLatLng(spot)));
        }
        singles.filter(({kind}) => kind !== 'place').forEach(findSide);
        return groups.map(group => ({group, side: sides.get(group)}));
    }

    /** Places as they are, or several at once as `{kind, x, y, members}`. */
    gathered(places) {
        const {map} = this.flat, cells = new Map();
        if (map.getZoom() > LAST_GATHERED_ZOOM)
            return places;
        for (const place of places) {
            const {x, y} = map.project(latLngOfPlace(place));
            const cell = `${place.kind} ${Math.floor(x / CELL)} ${Math.floor(y / CELL)}`;
            cells.set(cell, [...cells.get(cell) || [], place]);
        }
        const mean = (members, axis) => members.reduce((sum, place) => sum + place[axis], 0) / members.length;
        return [...cells.values()].map(members => members.length === 1 ? members[0] :
            {kind: members[0].kind, x: mean(members, 'x'), y: mean(members, 'y'), members});
    }

    /** `side`: where its name stands; undefined for none. */
    marker(group, side) {
        const {kind, name, members} = group;
        const element = members ? make('div', {class: `gathered ${kind}`}, String(members.length)) :
            make('div', {class: `spot ${kind}`}, side ? make('span', {class: `name ${side}`}, name) : '');
        const title = members ? members.slice(0, 12).map(each => each.name).join(', ') : name;
        const marker = L.marker(latLngOfPlace(group), {
            icon: L.divIcon({html: element, className: 'spot-icon', iconSize: [0, 0]}), keyboard: false,
            title, zIndexOffset: kind === 'place' ? 1000 : 0});
        marker.spoken = members ? `${members.length} ${kind}s: ${title}` : `${kind} ${name}, ${textOfPlace(group)}`;
        return marker.on('click', () => this.choose(group));
    }

    add(marker) {
        const element = marker.addTo(this.flat.map).getElement();
        for (const [name, value] of [['role', 'button'], ['tabindex', '-1'], ['aria-label', marker.spoken]])
            element.setAttribute(name, value);
        element.addEventListener('keydown', event => this.onKey(event, marker));
    }

    choose(group) {
        if (!group.members)
            this.pick(group);
        else
            this.flat.flyTo(group, Math.min(this.flat.zoom() + 2, LAST_GATHERED_ZOOM + 1));
    }

    // -- by keyboard

    /** The one that the tab key comes to. */
    stopAt(marker) {
        if (this.stop && this.stop.getElement())
            this.stop.getElement().tabIndex = -1;
        this.stop = marker;
        if (marker)
            marker.getElement().tabIndex = 0;
    }

    focus() {
        (this.stop ? this.stop.getElement() : this.flat.container).focus({preventScroll: true});
    }

    nearest(latLng) {
        let best, least = Infinity;
        for (const marker of this.markers.values()) {
            const distance = this.flat.map.distance(marker.getLatLng(), latLng);
            if (distance < least)
                [best, least] = [marker, distance];
        }
        return best;
    }

    /** The nearest in a direction of the window; what lies aside of it counts as farther off. */
    next(from, [right, down]) {
        const {map} = this.flat, start = map.latLngToContainerPoint(from.getLatLng()), size = map.getSize();
        let best, least = Infinity;
        for (const marker of this.markers.values()) {
            const there = map.latLngToContainerPoint(marker.getLatLng()), way = there.subtract(start);
            const ahead = way.x * right + way.y * down, aside = Math.abs(way.x * down) + Math.abs(way.y * right);
            const isSeen = there.x >= 0 && there.y >= 0 && there.x <= size.x && there.y <= size.y;
            if (isSeen && ahead > 0 && ahead + 2 * aside < least)
                [best, least] = [marker, ahead + 2 * aside];
        }
        return best;
    }

    onKey(event, marker) {
        const direction = DIRECTIONS[event.key], next = direction && this.next(marker, direction);
        if (event.key === 'Enter' || event.key === ' ')
            marker.fire('click');
        else if (!direction)
            return;
        event.preventDefault();
        if (next) {
            this.stopAt(next);
            this.focus();
        }
    }
}
