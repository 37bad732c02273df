// The address's fragment holds what is in view, and restores it:
//
//     at=24.21S,57.03E   the place in the middle      zoom=3
//     relief=320,52      heading and tilt, in the relief only; rise=2, sea=10, haze=0.5 belong to it
//     base=slope         and other settings that differ from what is usual: light=300,40
//     show=contours,-grid  layers on and off           types=3,16
//     mark=24.2S,57.0E,Camp   one mark
//     way=24.2S,57.0E,20.1S,50.3E   a way that is measured, corner by corner
import {isInWorld, placeOfText, textOfPlace} from './coordinates.js';
import {SETTINGS} from './settings.js';

/** Of a way that is measured. */
export const MOST_CORNERS = 200;

const FLAGS = Object.keys(SETTINGS).filter(name => typeof SETTINGS[name].usual === 'boolean' && SETTINGS[name].isInAddress !== false);

/** Other settings by what links call them; those of one name stand there one after the other. */
const VALUES = new Map();
for (const [name, {link}] of Object.entries(SETTINGS))
    if (link)
        VALUES.set(link, [...VALUES.get(link) || [], name]);

/** `state`: `{place, zoom, settings, relief, mark, way}`; `usual`: settings that need not be said. */
export function fragmentOfState({place, zoom, settings, relief, mark, way = []}, usual) {
    const parts = [`at=${textInAddress(place)}`, `zoom=${Math.round(zoom * 100) / 100}`];
    if (relief)
        parts.push(`relief=${Math.round(relief.heading)},${Math.round(relief.tilt)}`);
    parts.push(...partsOfSettings(settings, usual));
    if (mark)
        parts.push(`mark=${textInAddress(mark)},${encodeURIComponent(mark.name)}`);
    if (way.length > 0)
        parts.push(`way=${way.map(textInAddress).join()}`);
    return `#${parts.join('&')}`;
}

/** Settings that differ from what is usual. */
function partsOfSettings(settings, usual) {
    const differs = name => String(settings[name]) !== String(usual[name]), shown = FLAGS.filter(differs), parts = [];
    for (const [link, names] of VALUES)
        if (names.some(differs))
            parts.push(`${link}=${names.map(name => settings[name]).join(',')}`);
    if (shown.length > 0)
        parts.push(`show=${shown.map(name => settings[name] ? name : `-${name}`).join(',')}`);
    return parts;
}

/** What is remembered of settings from visit to visit, as a fragment without a view. */
export function fragmentToRemember(settings, usual) {
    const isRemembered = name => SETTINGS[name].isRemembered !== false;
    return `#${partsOfSettings(Object.fromEntries(Object.keys(SETTINGS).map(name => [name, isRemembered(name) ? settings[name] : usual[name]])), usual).join('&')}`;
}

/** The other way round; what a fragment does not say, or says wrongly, is left out. */
export function stateOfFragment(fragment, usual) {
    const said = new Map(fragment.replace(/^#/, '').split('&').map(part => {
        const at = part.indexOf('=');
        return [part.slice(0, at), part.slice(at + 1)];
    }));
    const state = {settings: {...usual}};
    const place = placeOfText(decoded(said.get('at') || ''));
    if (place && isInWorld(place))
        state.place = place;
    const zoom = numberOfText(said.get('zoom'));
    if (Number.isFinite(zoom))
        state.zoom = zoom;
    const [heading, tilt] = (said.get('relief') || '').split(',').map(numberOfText);
    if (Number.isFinite(heading + tilt))
        state.relief = {heading, tilt};
    for (const [link, names] of VALUES)
        if (said.has(link))
            Object.assign(state.settings, valuesOfText(said.get(link), names));
    for (const name of (said.get('show') || '').split(',')) {
        const plain = name.replace(/^-/, '');
        if (FLAGS.includes(plain))
            state.settings[plain] = plain === name;
    }
    const mark = /^([^,]+,[^,]+),(.*)$/.exec(said.get('mark') || '');
    const spot = mark && placeOfText(mark[1]);
    if (spot && isInWorld(spot))
        state.mark = {...spot, name: decoded(mark[2])};
    const way = wayOfText(said.get('way') || '');
    if (way.length > 0)
        state.way = way;
    return state;
}

/** The corners that lie in the world. */
function wayOfText(text) {
    const words = text.split(',', 2 * MOST_CORNERS), places = [];
    for (let index = 0; index + 1 < words.length; index += 2)
        places.push(placeOfText(`${words[index]},${words[index + 1]}`));
    return places.filter(place => place && isInWorld(place));
}

/** The settings that a text holds; none where it holds one of them wrongly. */
function valuesOfText(text, names) {
    const words = text.split(','), {words: choices, end, usual} = SETTINGS[names[0]];
    if (choices && Array.isArray(usual))
        return {[names[0]]: choices.filter(word => words.includes(word))};
    if (choices)
        return choices.includes(text) ? {[names[0]]: text} : {};
    if (end !== undefined)
        return {[names[0]]: [...new Set(words.map(numberOfText).filter(value => Number.isInteger(value) && value >= 0 && value < end))]};
    const values = words.map(numberOfText);
    const isRight = (name, index) => values[index] >= SETTINGS[name].least && values[index] <= SETTINGS[name].most;
    return names.every(isRight) ? Object.fromEntries(names.map((name, index) => [name, values[index]])) : {};
}

const textInAddress = place => textOfPlace(place, 2).replace(' ', ',');
const numberOfText = text => text ? Number(text) : NaN;

function decoded(text) {
    try {
        return decodeURIComponent(text);
    } catch {
        return text;
    }
}
