// The address's fragment holds what is in view, and restores it:
//
//     at=24.21S,57.03E   the place in the middle      zoom=3
//     relief=320,52      heading and tilt, in the relief only; rise=2, sea=10, haze=0.5 belong to it
//     base=slope         and other settings that differ from what is usual: light=300,40
//     show=contours,-grid  layers on and off           types=3,16
//     mark=24.2S,57.0E,Camp   one mark
import {isInWorld, placeOfText, textOfPlace} from './coordinates.js';

const RELIEF_SETTINGS = [['rise', 'exaggeration'], ['sea', 'seaLevel'], ['haze', 'haze']];

const number = (text, fallback) => Number.isFinite(Number(text)) && text !== '' ? Number(text) : fallback;

/** `state`: `{place, zoom, settings, relief, mark}`; `usual`: settings that need not be said. */
export function fragmentOfState({place, zoom, settings, relief, mark}, usual) {
    const parts = [`at=${textOfPlace(place, 2).replace(' ', ',')}`, `zoom=${Math.round(zoom * 100) / 100}`];
    if (relief)
        parts.push(`relief=${Math.round(relief.heading)},${Math.round(relief.tilt)}`);
    for (const [name, setting] of RELIEF_SETTINGS)
        if (settings[setting] !== usual[setting])
            parts.push(`${name}=${settings[setting]}`);
    if (settings.base !== usual.base)
        parts.push(`base=${settings.base}`);
    if (settings.azimuth !== usual.azimuth || settings.altitude !== usual.altitude)
        parts.push(`light=${settings.azimuth},${settings.altitude}`);
    const shown = Object.keys(usual).filter(name => typeof usual[name] === 'boolean' && name !== 'relief' && settings[name] !== usual[name]);
    if (shown.length > 0)
        parts.push(`show=${shown.map(name => settings[name] ? name : `-${name}`).join(',')}`);
    if (settings.types.length > 0)
        parts.push(`types=${settings.types.join(',')}`);
    if (mark)
        parts.push(`mark=${textOfPlace(mark, 2).replace(' ', ',')},${encodeURIComponent(mark.name)}`);
    return `#${parts.join('&')}`;
}

/** The other way round; what a fragment does not say, or says wrongly, is left out. */
export function stateOfFragment(fragment, usual) {
    const said = new Map(fragment.replace(/^#/, '').split('&').map(part => {
        const at = part.indexOf('=');
        return [part.slice(0, at), part.slice(at + 1)];
    }));
    const numbers = name => (said.get(name) || '').split(',').map(text => number(text, NaN));
    const state = {settings: {...usual}};
    const place = placeOfText(decoded(said.get('at') || ''));
    if (place && isInWorld(place))
        state.place = place;
    const zoom = number(said.get('zoom') || '', NaN);
    if (Number.isFinite(zoom))
        state.zoom = zoom;
    const [heading, tilt] = numbers('relief');
    if (Number.isFinite(heading + tilt))
        state.relief = {heading, tilt};
    for (const [name, setting] of RELIEF_SETTINGS)
        if (said.has(name))
            state.settings[setting] = Math.max(0, number(said.get(name), usual[setting]));
    const bases = ['land', 'height', 'slope', 'difference'];
    if (bases.includes(said.get('base')))
        state.settings.base = said.get('base');
    const [azimuth, altitude] = numbers('light');
    if (azimuth >= 0 && azimuth <= 360 && altitude >= 0 && altitude <= 90)
        Object.assign(state.settings, {azimuth, altitude});
    for (const name of (said.get('show') || '').split(',')) {
        const plain = name.replace(/^-/, '');
        if (typeof usual[plain] === 'boolean' && plain !== 'relief')
            state.settings[plain] = plain === name;
    }
    if (said.has('types'))
        state.settings.types = numbers('types').filter(type => Number.isInteger(type) && type >= 0 && type < 64);
    const mark = /^([^,]+,[^,]+),(.*)$/.exec(said.get('mark') || '');
    const spot = mark && placeOfText(mark[1]);
    if (spot && isInWorld(spot))
        state.mark = {...spot, name: decoded(mark[2])};
    return state;
}

function decoded(text) {
    try {
        return decodeURIComponent(text);
    } catch {
        return text;
    }
}
