// Marks on the flat map: they can be dragged; far out they are gathered as places are.
import {latLngOfPlace, placeOfLatLng} from './flatmap.js';
import {Gathering} from './gathering.js';
import {laidOut, spotElement, spotsInView, zoomInto} from './places.js';

const MOST = 60;

export class MarkLayer {
    constructor(flat, marks, settings, pick) {
        Object.assign(this, {flat, marks, settings, pick});
        this.group = L.layerGroup().addTo(flat.map);
        flat.map.on('moveend zoomend resize', () => this.draw());
        marks.listen(() => this.draw());
        settings.listen(names => names.has('marks') && this.draw());
        this.draw();
    }

    draw() {
        this.group.clearLayers();
        if (!this.settings.get('marks'))
            return;
        const {items} = this.marks;
        if (this.gathered !== items)
            Object.assign(this, {gathered: items, gathering: new Gathering(items, MOST)});
        for (const {spot, side, lines, at} of laidOut(this.flat, spotsInView(this.flat, [this.gathering]), ({isCounter}) => isCounter ? 0 : 1))
            this.marker(spot, at, side, lines).addTo(this.group);
    }

    marker(spot, at, side, lines) {
        const {members, isCounter} = spot, [first] = members || [spot];
        const icon = L.divIcon({html: spotElement(spot, side, lines), className: 'spot-icon', iconSize: [0, 0]});
        return L.marker(latLngOfPlace(at), {icon, draggable: !members, keyboard: false, title: members ? `${members.length} marks` : first.name, zIndexOffset: 2000})
            .on('click', () => isCounter ? zoomInto(this.flat, spot) : this.pick(first))
            .on('dragend', event => this.marks.update(first, placeOfLatLng(event.target.getLatLng())));
    }
}
