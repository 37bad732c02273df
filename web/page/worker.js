// What runs in a worker: unpacks the land, or is given it, and draws areas of the map.
import {countTypes, Land} from './land.js';
import {groundBytes} from './relief/ground.js';
import {landWithLevelSea} from './relief/sea.js';
import {drawArea} from './tile.js';
import {unpackLand} from './unpack.js';

let worlds, description;

/** The newer land as the relief has it, made when it is first wanted. */
function landOfRelief() {
    worlds.level = worlds.level || landWithLevelSea(worlds.newer).land;
    return worlds.level;
}

const actions = {
    async unpack({base64}) {
        actions.take({planes: await unpackLand(base64, description, share => postMessage({progress: share}))});
        return {...actions.copy(), typeCounts: countTypes(worlds.newer)};
    },

    /** The planes of the lands, for others to keep. */
    copy() {
        return {planes: {newer: worlds.newer.copyPlanes(), older: worlds.older && worlds.older.copyPlanes()}};
    },

    describe(message) {
        ({description} = message);
        return {};
    },

    take({planes}) {
        const land = part => part && new Land(description.heights, part);
        worlds = {newer: land(planes.newer), older: land(planes.older)};
        return {};
    },

    /** With `area.isLevel` the sea is level; not where colours tell heights. */
    draw({view, area}) {
        const isLevel = area.isLevel && view.base === 'land';
        return {pixels: drawArea(isLevel ? {...worlds, newer: landOfRelief()} : worlds, description.colors, view, area)};
    },

    /** What the light leaves in the shade, and what is wet. */
    ground({light}) {
        return {pixels: groundBytes(landOfRelief(), light)};
    },
};

onmessage = async ({data}) => {
    try {
        const reply = await actions[data.action](data);
        postMessage(reply, buffersOf(reply));
    } catch (error) {
        postMessage({error: String(error.message || error)});
    }
};

/** What is handed over instead of copied. */
function buffersOf({pixels, planes}) {
    const arrays = planes ? [planes.newer, planes.older].filter(Boolean).flatMap(Object.values) : pixels ? [pixels] : [];
    return arrays.map(({buffer}) => buffer);
}
