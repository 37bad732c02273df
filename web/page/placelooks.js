// What kinds of places there are, by the types of plot files: each has a look of its own on the map.

const TYPES = {
    town: ['town', 'city', 'village', 'hamlet', 'settlement', 'outpost'],
    port: ['port', 'harbour', 'harbor', 'haven', 'dock'],
    entrance: ['entrance', 'dungeon', 'portal', 'cave'],
};
const LOOKS = new Map(Object.entries(TYPES).flatMap(([look, types]) => types.map(type => [type, look])));

/** `town`, `port`, `entrance`, or `place` for any other type. */
export const lookOfType = type => LOOKS.get(String(type).trim().toLowerCase()) || 'place';

/** How it is spoken of, in one word. */
export const wordOfPlace = ({kind, look}) => kind === 'place' ? look : kind || 'mark';

/** Fills of spots and of names' feet in the relief; style.css has the shapes. */
export const LOOK_COLORS = {town: '#b4232e', port: '#00687a', entrance: '#6b4a8a', place: '#ffffff', dungeon: '#3b3b46', mark: '#0b62c4'};
