// Places and dungeons on the flat map: a dot each, with its name where there is room; far out those
// that would lie on each other are gathered under their number.
import {make} from './dom.js';
import {latLngOfPlace} from './flatmap.js';

const CELL = 96;
const LAST_GATHERED_ZOOM = 3;
const LETTER = 7.2, LINE = 17;

/** What stands on the map: `{kind, name, x, y}`, the most important first. */
export function placesOfWorld(world, settings) {
    const places = settings.get('places') ? world.places.map(place => ({kind: 'place', ...place})) : [];
    if (settings.get('dungeons'))
        for (const {name, block, entrances} of world.dungeons)
            places.push(...entrances.map(({x, y}) => ({kind: 'dungeon', name, block, x, y})));
    return places;
}

/** Remembers where labels are, and says where there is room for another. */
export class LabelRoom {
    constructor() {
        this.boxes = [];
    }

    take(x, y, text) {
        const box = [x - 7, y - LINE / 2, x + 12 + text.length * LETTER, y + LINE / 2];
        if (this.boxes.some(other => box[0] < other[2] && box[2] > other[0] && box[1] < other[3] && box[3] > other[1]))
            return false;
        this.boxes.push(box);
        return true;
    }
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
        const {map} = this.flat, area = map.getBounds().pad(0.1), wanted = new Map(), room = new LabelRoom();
        const inView = placesOfWorld(this.world, this.settings).filter(place => area.contains(latLngOfPlace(place)));
        for (const group of this.gathered(inView)) {
            const {x, y} = map.latLngToLayerPoint(latLngOfPlace(group));
            const text = group.members ? '' : group.name;
            const isNamed = text !== '' && room.take(x, y, text);
            const key = [group.kind, group.x, group.y, group.members ? group.members.length : group.name, isNamed].join('|');
            wanted.set(key, this.markers.get(key) || this.marker(group, isNamed));
        }
        for (const [key, marker] of this.markers)
            if (!wanted.has(key))
                marker.remove();
        for (const [key, marker] of wanted)
            if (!this.markers.has(key))
                marker.addTo(map);
        this.markers = wanted;
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

    marker(group, isNamed) {
        const element = group.members ? make('div', {class: `gathered ${group.kind}`}, String(group.members.length)) :
            make('div', {class: `spot ${group.kind}`}, isNamed ? make('span', {class: 'name'}, group.name) : '');
        const marker = L.marker(latLngOfPlace(group), {
            icon: L.divIcon({html: element, className: 'spot-icon', iconSize: [0, 0]}), keyboard: false,
            title: group.members ? group.members.slice(0, 12).map(({name}) => name).join(', ') : group.name,
            zIndexOffset: group.kind === 'place' ? 1000 : 0});
        return marker.on('click', () => this.choose(group));
    }

    choose(group) {
        if (!group.members)
            this.pick(group);
        else
            this.flat.flyTo(group, Math.min(this.flat.zoom() + 2, LAST_GATHERED_ZOOM + 1));
    }
}
