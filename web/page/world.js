// All that the page knows of the world: its lands, the names of land types, places and dungeons.
import {isInWorld, pointOfUnit} from './coordinates.js';
import {Signal} from './events.js';
import {Land, ROAD} from './land.js';
import {lookOfType} from './placelooks.js';

export class World {
    /** `description` as WQWebPage writes it. Its lands are empty until they are unpacked. */
    constructor(description) {
        Object.assign(this, description);
        this.newer = new Land(description.heights);
        this.older = description.hasOlderLand ? new Land(description.heights) : null;
        this.typeCounts = [];
        this.filled = new Signal();
        /** What stands on the map: `{kind, name, x, y}`; a place also has its `look`, an entrance the `block` of its dungeon. */
        this.places = onMap(description.places).map(([x, y, name, type]) => ({kind: 'place', look: lookOfType(type), name, ...placeOfUnits(x, y)}));
        this.dungeons = description.dungeons.map(([block, name, entrances]) => (
            {block, name, entrances: onMap(entrances).map(([x, y]) => ({kind: 'dungeon', name, block, ...placeOfUnits(x, y)}))}));
        this.entrances = this.dungeons.flatMap(({entrances}) => entrances);
        this.dungeonNames = new Map(this.dungeons.map(({block, name}) => [block, name]));
    }

    /** `planes` and `typeCounts`: as the painter gives them. */
    fill({planes, typeCounts}) {
        this.newer.fill(planes.newer);
        if (this.older)
            this.older.fill(planes.older);
        this.typeCounts = typeCounts;
        this.filled.emit();
    }

    /** As the region record calls it; else after its colour. */
    typeName(type) {
        if (type !== ROAD && this.landTypes[type])
            return spaced(this.landTypes[type]);
        const name = this.colorNames[type];
        return name ? spaced(name.replace(/Color$/, '')) : `type ${type}`;
    }
}

const placeOfUnits = (x, y) => ({x: pointOfUnit(x), y: pointOfUnit(y)});

/** Of `[x, y, …]` those that lie in the world. */
const onMap = rows => rows.filter(([x, y]) => Number.isFinite(x) && Number.isFinite(y) && isInWorld(placeOfUnits(x, y)));

/** `mudRichDirt` and `MudRichDirt` as `Mud rich dirt`. */
function spaced(name) {
    const words = name.replace(/([a-z\d])([A-Z])/g, '$1 $2').toLowerCase();
    return words.charAt(0).toUpperCase() + words.slice(1);
}
