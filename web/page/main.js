// Puts the page together.
import {Address} from './address.js';
import {ChangePanel, changesHere, Swipe} from './changes.js';
import {textOfPlace} from './coordinates.js';
import {copyText, find, make, notify, textOf} from './dom.js';
import {FlatMap} from './flatmap.js';
import {FullScreen} from './fullscreen.js';
import {Graticule} from './graticule.js';
import {othersHere} from './herelist.js';
import {LayerPanel} from './layers.js';
import {Legend} from './legend.js';
import {MarkLayer} from './marklayer.js';
import {MarkPanel} from './markpanel.js';
import {Marks} from './marks.js';
import {Measure} from './measure.js';
import {PointMenu} from './menu.js';
import {Navigation} from './navigation.js';
import {Overview} from './overview.js';
import {Painter} from './painter.js';
import {PlaceLayer, placesInRelief} from './places.js';
import {Pointing} from './pointing.js';
import {Readout} from './readout.js';
import {ReliefSwitch} from './reliefswitch.js';
import {PicturePanel} from './save.js';
import {ScaleBar} from './scalebar.js';
import {Search} from './search.js';
import {Settings} from './settings.js';
import {aboutPanel, Shell} from './shell.js';
import {listenToShortcuts} from './shortcuts.js';
import {World} from './world.js';

function compose(world, painter) {
    const stage = find('stage'), settings = new Settings({changes: world.older !== null}), marks = new Marks(world, notify);
    painter.busy.listen(isBusy => stage.setAttribute('aria-busy', String(isBusy)));

    const flat = new FlatMap(find('map'), painter, settings, world.colors);
    flat.showWholeWorld();
    const readout = new Readout(world), measure = new Measure(flat, world, settings);
    const relief = new ReliefSwitch({stage, world, painter, settings, flat, contents: {
        labels: () => placesInRelief(world, settings, marks), way: () => measure.way(), pin: () => readout.place,
        covers: () => [...document.querySelectorAll('.card')]}});
    const navigation = new Navigation(world, flat, relief, readout), address = new Address(navigation, settings, readout, measure);
    const markPanel = new MarkPanel(marks, place => navigation.goTo(place));
    const search = new Search(world, marks, entry => navigation.goToFound(entry));

    // What lies on the flat map, from the bottom up.
    const graticule = new Graticule(flat, settings, world);
    const pick = place => measure.isActive ? measure.add(place) : readout.pin(place, place && place.name);
    new PlaceLayer(flat, world, settings, pick);
    new MarkLayer(flat, marks, settings, pick);
    readout.pinned.listen(place => flat.showPin(place));
    // What lies on the relief.
    relief.chosen.listen(place => readout.pin(place, place.name));
    for (const part of [readout.pinned, measure.changed, marks])
        part.listen(() => relief.redraw());

    const pointing = new Pointing(flat, relief);
    pointing.hovered.listen(place => readout.show(place));
    pointing.picked.listen(pick);

    // The tools.
    const shell = new Shell();
    shell.add(relief.button);
    shell.addPanel('layers', 'Layers', 'Layers', new LayerPanel(world, settings).element);
    if (world.older) {
        const changes = new ChangePanel(world, settings, (number, place) => navigation.goToBlock(number, place));
        shell.addPanel('changes', 'Changes', 'What changed', changes.element);
    }
    shell.addPanel('marks', 'Marks', 'My marks', markPanel.element);
    shell.addPanel('measure', 'Measure', 'Distance and profile', measure.element, {onToggle: (isOpen, isReplaced) => measure.activate(isOpen, isReplaced)});
    shell.addPanel('picture', 'Picture', 'Picture of this view', new PicturePanel({flat, relief, graticule, measure, readout, title: world.title}).element, {isRare: true});
    shell.addAction('link', 'Link', 'Copy a link to this view', () => address.copyLink(), {isRare: true});
    shell.addPanel('about', '?', 'About this page', aboutPanel(world.title), {isRare: true});
    shell.addRare();
    measure.called.listen(isOn => isOn ? shell.open('measure') : shell.close());
    const markAt = place => {
        marks.add([{...place, name: textOfPlace(place)}]);
        readout.unpin();
        shell.open('marks');
        markPanel.renameLast();
    };
    readout.addAction('Mark here', markAt);
    readout.addDetail((place, name) => othersHere([world.places, world.entrances, marks.items].flat(), place, name, other => readout.pin(other, other.name)));
    marks.removed.listen(mark => readout.place === mark && readout.unpin());
    addEventListener('storage', event => marks.onStorage(event));
    if (world.older)
        readout.addDetail(place => changesHere(world, place));
    readout.addAction('Link', place => address.copyLink(place));
    readout.left.listen(() => navigation.focus());
    const menu = new PointMenu([
        [place => `Copy ${textOfPlace(place)}`, place => copyText(textOfPlace(place))], [() => 'Measure from here', place => measure.begin([place])],
        [() => 'Mark here', markAt], [() => 'Link to here', place => address.copyLink(place)]]);
    pointing.called.listen((place, pixel) => menu.open(place, pixel));

    const zoom = L.control.zoom().addTo(flat.map).getContainer(), full = new FullScreen();
    zoom.append(full.button);
    stage.append(menu.element, readout.spoken, search.element, shell.bar,
        make('div', {class: 'corner left'}, readout.card, new Legend(flat, world, settings).element, readout.bar),
        make('div', {class: 'corner right'}, relief.panel, new Overview(flat).element,
            make('div', {class: 'hands'}, new ScaleBar(flat).element, make('div', {class: 'steering'}, relief.steering, zoom))));
    if (world.older)
        new Swipe(flat, settings);
    graticule.keepClearOf(document.querySelectorAll('.card, .scale-bar'));

    address.restoreLayers();
    flat.show();
    // The rest needs the land itself.
    world.filled.listen(() => {
        address.restore();
        pointing.showMiddle();
        address.listen();
        listenToShortcuts({
            '/': () => search.focus(), 'r': () => settings.toggle('relief'), 'backspace': () => measure.isActive && measure.takeBack(),
            'escape': () => menu.close() || shell.close() || measure.drop() || readout.unpin()});
    });
}

/** Resolves when the browser has read all of the file. */
function fileRead() {
    return document.readyState === 'loading' ? new Promise(resolve => addEventListener('DOMContentLoaded', resolve, {once: true})) : undefined;
}

async function start() {
    find('loading').querySelector('.late').remove();
    const description = JSON.parse(textOf('description'));
    const painter = new Painter(textOf('worker'), description);
    const world = new World(description);
    compose(world, painter);
    await fileRead();
    const unpacked = await painter.unpack(textOf('land').trim(), share => {
        find('loading-bar').value = share;
    });
    find('land').remove();
    world.fill(unpacked);
    find('loading').remove();
    if (!find('end'))
        notify('This file was cut short: the map is whole, but the relief may be missing.');
}

start().catch(error => {
    find('loading').replaceChildren(make('p', {}, `The map cannot be shown: ${error.message}`));
    throw error;
});
