// What runs in a worker: unpacks the land, or is given it, and draws areas of the map.
import {Land} from './land.js';
import {drawArea} from './tile.js';
import {unpackLand} from './unpack.js';

let worlds, heights, colors;

const actions = {
    /** Gives the planes of the lands. */
    async unpack({base64, hasOlder}) {
        const planes = await unpackLand(base64, hasOlder, share => postMessage({progress: share}));
        actions.take({planes});
        return {planes};
    },

    describe(message) {
        ({heights, colors} = message);
        return {};
    },

    take({planes}) {
        const land = part => part && new Land(part, heights);
        worlds = {newer: land(planes.newer), older: land(planes.older)};
        return {};
    },

    draw({view, area}) {
        const [land, other] = area.older ? [worlds.older, null] : [worlds.newer, worlds.older];
        return {pixels: drawArea(land, other, colors, view, area)};
    },
};

onmessage = async ({data}) => {
    try {
        const reply = await actions[data.action](data);
        postMessage({id: data.id, ...reply}, reply.pixels ? [reply.pixels.buffer] : []);
    } catch (error) {
        postMessage({id: data.id, error: String(error)});
    }
};
