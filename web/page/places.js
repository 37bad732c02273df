// Places and dungeons on the flat map: a dot each, with its name where there is room; those that would
// lie on each other are gathered under their number, those at one spot share a dot and stand in the card
// of what is pinned. The tab key comes to one of them, the arrow keys go on from there.
import {textOfPlace} from './coordinates.js';
import {make} from './dom.js';
import {latLngOfPlace, MAX_ZOOM, placeOfLatLng} from './flatmap.js';
import {Gathering, groupsInView, isOneSpot} from './gathering.js';
import {wordOfPlace} from './placelooks.js';
import {layOut} from './spotlayout.js';

/** How many spots a window holds: places are why the map is looked at, dungeons are there by the hundred. */
const MOST_PLACES = 60, MOST_DUNGEONS = 24;
const ZOOM_INTO = 2;
const NAMES_TOLD = 12;
/** Whose names come first: those of places, then numbers, then names of dungeons. */
const PLACE = 0, COUNTER = 1, DUNGEON = 2;
const DIRECTIONS = {ArrowRight: [1, 0], ArrowLeft: [-1, 0], ArrowDown: [0, 1], ArrowUp: [0, -1]};

/** What stands on the relief. */
export function placesInRelief(world, settings, marks) {
    return [settings.get('marks') ? marks.items : [], settings.get('places') ? world.places : [], settings.get('dungeons') ? world.entrances : []].flat();
}

/** What a map shows of some gatherings: single places as they are, several as `{kind, x, y, members, isCounter}`. */
export function spotsInView(flat, gatherings) {
    const {x: width, y: height} = flat.map.getSize(), bounds = flat.map.getBounds().pad(0.1), zoom = flat.zoom();
    const area = {west: bounds.getWest(), south: bounds.getSouth(), east: bounds.getEast(), north: bounds.getNorth()};
    return gatherings.flatMap(gathering => groupsInView(gathering.groupsAt(zoom, width, height), area, zoom)).map(group => {
        const [first] = group.members;
        return group.members.length === 1 ? first : {...group, kind: first.kind, isCounter: !isOneSpot(group.members, MAX_ZOOM)};
    });
}

/** The spots with what `layOut` says of each. */
export function laidOut(flat, spots, rankOf) {
    const pixelOf = place => flat.map.latLngToLayerPoint(latLngOfPlace(place));
    const laid = layOut(spots.map(spot => ({...spot, pixel: pixelOf(spot), rank: rankOf(spot)})));
    return spots.map((spot, index) => {
        const {pixel, ...name} = laid[index];
        return {spot, ...name, at: spot.isCounter ? placeOfLatLng(flat.map.layerPointToLatLng([pixel.x, pixel.y])) : spot};
    });
}

/** The dot of a place or of several, or their number, with `lines` on one `side` of it. */
export function spotElement({kind, look, members, isCounter}, side, lines) {
    if (isCounter)
        return make('div', {class: `gathered ${kind || 'mark'}`}, String(members.length));
    const name = lines ? make('span', {class: `name ${side}`}, ...lines.flatMap((line, index) => [index > 0 ? ' ' : '', make('span', {class: 'line'}, line)])) : '';
    const first = members ? members[0] : {kind, look};
    return make('div', {class: `spot ${first.kind || 'mark'} ${wordOfPlace(first)} ${members ? 'shared' : ''}`}, name);
}

/** Goes to where some of what a number stands for can be told apart. */
export const zoomInto = (flat, spot) => flat.flyTo(spot, Math.min(flat.zoom() + ZOOM_INTO, MAX_ZOOM));

const rankOf = ({kind, isCounter}) => isCounter ? COUNTER : kind === 'place' ? PLACE : DUNGEON;

export class PlaceLayer {
    constructor(flat, world, settings, pick) {
        Object.assign(this, {flat, settings, pick});
        this.gatherings = {places: new Gathering(world.places, MOST_PLACES), dungeons: new Gathering(world.entrances, MOST_DUNGEONS)};
        this.markers = new Map();
        flat.map.on('moveend zoomend resize', () => this.update());
        settings.listen(() => this.update());
        this.update();
    }

    update() {
        const {flat} = this, shown = Object.keys(this.gatherings).filter(name => this.settings.get(name)).map(name => this.gatherings[name]), wanted = new Map();
        for (const {spot, side, lines, at} of laidOut(flat, spotsInView(flat, shown), rankOf)) {
            const key = [spot.kind, at.x, at.y, spot.members ? spot.members.length : spot.name, side, lines].join('|');
            wanted.set(key, this.markers.get(key) || this.marker(spot, at, side, lines));
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
        this.stopAt(isLeft ? this.stop : this.nearest(flat.map.getCenter()));
        if (hadFocus)
            this.focus();
    }

    marker(spot, at, side, lines) {
        const {kind, name, members, isCounter} = spot, first = members ? members[0] : spot, word = wordOfPlace(first);
        const title = members ? members.slice(0, NAMES_TOLD).map(each => each.name).join(', ') : name;
        const marker = L.marker(latLngOfPlace(at), {
            icon: L.divIcon({html: spotElement(spot, side, lines), className: 'spot-icon', iconSize: [0, 0]}), keyboard: false,
            title: isCounter ? title : `${title} (${word})`, zIndexOffset: kind === 'place' ? 1000 : 0});
        marker.spoken = isCounter ? `${members.length} ${kind}s: ${title}` :
            members ? `${word} ${(lines || [`${first.name} and ${members.length - 1} more`]).join(', ')}, ${textOfPlace(first)}` : `${word} ${name}, ${textOfPlace(spot)}`;
        return marker.on('click', () => this.choose(spot));
    }

    add(marker) {
        const element = marker.addTo(this.flat.map).getElement();
        for (const [name, value] of [['role', 'button'], ['tabindex', '-1'], ['aria-label', marker.spoken]])
            element.setAttribute(name, value);
        element.addEventListener('keydown', event => this.onKey(event, marker));
    }

    choose(spot) {
        if (spot.isCounter)
            zoomInto(this.flat, spot);
        else
            this.pick(spot.members ? spot.members[0] : spot);
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
