import assert from 'node:assert/strict';
import test from 'node:test';
import {fragmentOfState, fragmentToRemember, MOST_CORNERS, stateOfFragment} from '../../../web/page/link.js';
import {DEFAULTS, Settings, SETTINGS} from '../../../web/page/settings.js';

const PLACE = {x: 1589, y: 777};
const there = (settings = {}, more = {}) => fragmentOfState({place: PLACE, zoom: 3, settings: {...DEFAULTS, ...settings}, ...more}, DEFAULTS);
const back = fragment => stateOfFragment(fragment, DEFAULTS);

test('a link says what is not usual, and nothing else', () => {
    assert.equal(there(), '#at=24.20S,57.00E&zoom=3');
    assert.equal(there({base: 'slope', azimuth: 90, contours: true, grid: false, types: [3, 16], seaLevel: 12, relief: true},
        {zoom: 2.346, relief: {heading: 359.7, tilt: 52}}),
    '#at=24.20S,57.00E&zoom=2.35&relief=360,52&base=slope&light=90,45&sea=12&types=3,16&show=contours,-grid');
});

test('every setting comes back from a link', () => {
    for (const [name, {usual, words, least, most, end}] of Object.entries(SETTINGS)) {
        const others = typeof usual === 'boolean' ? [!usual] : Array.isArray(usual) && words ? [[], [words[1]]] :
            words ? words.filter(word => word !== usual) : end ? [[0, end - 1]] : [least, most];
        for (const other of others.filter(value => value !== usual && name !== 'relief'))
            assert.deepEqual(back(there({[name]: other})).settings, {...DEFAULTS, [name]: other}, name);
    }
    const {place, zoom, relief} = back(there({}, {zoom: -2.5, relief: {heading: 90, tilt: 10}}));
    assert.deepEqual([Math.round(place.x), Math.round(place.y), zoom, relief], [1589, 777, -2.5, {heading: 90, tilt: 10}]);
});

test('marks come back with whatever name they have', () => {
    for (const name of ['Camp', 'A & B', 'at=1;2,3#x', '100 %', 'a=b', '<b>"é\n']) {
        const {mark} = back(there({}, {mark: {...PLACE, name}}));
        assert.deepEqual([mark.name, Math.round(mark.x)], [name, 1589]);
    }
    assert.equal(back('#mark=1N,2E,50%').mark.name, '50%');
});

test('a way comes back corner by corner, no longer than one can be', () => {
    const way = [PLACE, {x: 0, y: 2040}, {x: 1020.5, y: 3}], text = there({}, {way}), corners = places => places.map(({x, y}) => [Math.round(x * 10) / 10, Math.round(y * 10) / 10]);
    assert.equal(text, '#at=24.20S,57.00E&zoom=3&way=24.20S,57.00E,102.10N,101.90W,101.60S,0.15E');
    assert.deepEqual(corners(back(text).way), corners(way));
    assert.deepEqual(corners(back('#way=1N,2E,300N,2E,x,2E,3N,4E,5N').way), [[1039, 1029], [1059, 1049]]);
    assert.equal(back(`#way=${'1N,2E,'.repeat(5000)}`).way.length, MOST_CORNERS);
    assert.deepEqual(['#way=', '#way=1N', there({}, {way: []})].map(each => 'way' in back(each)), [false, false, false]);
});

test('nonsense is left out, and what is beside it kept', () => {
    for (const text of ['#', '', '#at=1N,x', '#zoom=oops', '#zoom=', '#light=1', '#light=1,91', '#light=-1,9', '#light=361,9', '#light=,',
        '#show=nothing,relief,types', '#base=sea', '#mark=,,', '#mark=1N,2E', '#mark=300N,2E,x', '#relief=a,b', '#relief=', '#sea=-1',
        '#rise=99', '#haze=', '#at=300N,2E', '#__proto__=1', '#types'])
        assert.deepEqual(back(text), {settings: {...DEFAULTS}}, text);
    assert.deepEqual(back('#types=a,-1,3,1.5,64,63,3&show=x,snow').settings, {...DEFAULTS, types: [3, 63], snow: true});
    assert.deepEqual(back('#kinds=new,x,changed').settings.kinds, ['changed', 'new']);
});

test('layers are remembered, but not what was of the moment', () => {
    const text = fragmentToRemember({...DEFAULTS, base: 'slope', contours: true, interval: 25, grid: false, altitude: 20, types: [3], swipe: true, relief: true, seaLevel: 9}, DEFAULTS);
    assert.deepEqual(back(text), {settings: {...DEFAULTS, base: 'slope', contours: true, interval: 25, grid: false, altitude: 20}});
    assert.equal(fragmentToRemember(DEFAULTS, DEFAULTS), '#');
});

test('listeners hear once what changed, and a reset is whole', () => {
    const settings = new Settings({changes: true}), heard = [];
    const end = settings.listen(names => heard.push([...names].sort().join()));
    settings.set({azimuth: 10, altitude: 20, grid: true, types: [], nothing: 1});
    settings.reset('azimuth', 'altitude');
    settings.toggle('changes');
    assert.deepEqual(settings.values, {...DEFAULTS, changes: false});
    settings.reset('changes');
    assert.equal(settings.get('changes'), true); // as is usual on this page
    settings.toggle('changes');
    end();
    settings.set({snow: true});
    assert.deepEqual(heard, ['altitude,azimuth', 'altitude,azimuth', 'changes', 'changes', 'changes']);
    assert.deepEqual([['snow'], ['grid', 'seaLevel'], ['types']].map(names => Settings.affectsPaint(new Set(names))), [true, false, true]);
});
