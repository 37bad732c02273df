// Puts the page together.
import {ChangePanel, Swipe} from './changes.js';
import {isInWorld, textOfPlace} from './coordinates.js';
import {copyText, find, make, notify, textOf} from './dom.js';
import {FlatMap, latLngOfPlace, placeOfLatLng} from './flatmap.js';
import {GridLayer} from './graticule.js';
import {LayerPanel} from './layers.js';
import {fragmentOfState, stateOfFragment} from './link.js';
import {MarkLayer, MarkPanel, Marks} from './marks.js';
import {Measure} from './measure.js';
import {Painter} from './painter.js';
import {PlaceLayer, placesOfWorld} from './places.js';
import {Readout} from './readout.js';
import {ReliefSwitch} from './reliefswitch.js';
import {pictureOfFlatMap, pictureOfRelief, savePicture} from './save.js';
import {Search} from './search.js';
import {DEFAULTS, Settings} from './settings.js';
import {aboutPanel, Shell} from './shell.js';
import {World} from './world.js';

const FOUND_ZOOM = 2;
const FOUND_DISTANCE = 400;
const DUNGEONS_WITHIN = 500;
const LINK_DELAY = 250;

class Page {
    constructor(world, painter) {
        Object.assign(this, {world, painter});
        this.usual = {...DEFAULTS, changes: world.older !== null};
        this.settings = new Settings();
        this.settings.set(this.usual);
        this.marks = new Marks(world.title);
        this.flat = new FlatMap(find('map'), painter, this.settings);
        this.flat.showWholeWorld();
        painter.onbusy = isBusy => find('stage').setAttribute('aria-busy', String(isBusy));
        this.build();
        this.restore();
        this.flat.show();
        this.listen();
    }

    // -- what there is

    build() {
        const {world, flat, settings, marks} = this;
        this.grid = new GridLayer(settings).addTo(flat.map);
        this.places = new PlaceLayer(flat, world, settings, place => this.pin(place, place.name));
        this.markLayer = new MarkLayer(flat, marks, settings, mark => this.pin(mark, mark.name));
        this.readout = new Readout(world, [['Mark here', place => this.markHere(place)], ['Link', place => this.copyLink(place)]]);
        this.spot = L.marker([0, 0], {icon: L.divIcon({className: 'pin', iconSize: [0, 0]}), interactive: false, keyboard: false});
        this.frame = L.rectangle([[0, 0], [0, 0]], {color: '#d1122c', weight: 2, fill: false, interactive: false});
        this.readout.onpin = place => place ? this.spot.setLatLng(latLngOfPlace(place)).addTo(flat.map) : this.spot.remove();
        this.search = new Search(world, marks, entry => this.goToFound(entry));
        this.measure = new Measure(flat, world);
        flat.way = () => this.measure.isActive ? this.measure.places.map(latLngOfPlace) : [];
        L.control.zoom({position: 'bottomright'}).addTo(flat.map);
        this.reliefSwitch = new ReliefSwitch({stage: find('stage'), world, painter: this.painter, settings, flat, readout: this.readout,
            labels: () => this.labels(), moved: () => this.noteLink()});
        this.reliefSwitch.panel.classList.add('card');
        this.buildTools();
        find('stage').append(this.search.element, this.shell.bar, this.readout.bar, this.readout.pinned, this.reliefSwitch.panel);
        if (world.older)
            this.swipe = new Swipe(flat, settings);
        // The grid's labels keep clear of what comes, goes and grows.
        const observer = new ResizeObserver(() => this.grid.draw());
        for (const card of document.querySelectorAll('.card, #panel'))
            observer.observe(card);
    }

    buildTools() {
        const {world, settings, marks} = this, shell = this.shell = new Shell(world.title);
        shell.add(this.reliefSwitch.button);
        shell.addPanel('layers', 'Layers', 'Layers', new LayerPanel(world, settings).element);
        if (world.older)
            shell.addPanel('changes', 'Changes', 'What changed', new ChangePanel(world, settings, (number, place) => this.goToBlock(number, place)).element);
        shell.addPanel('marks', 'Marks', 'My marks', new MarkPanel(marks, place => this.goTo(place)).element);
        shell.addPanel('measure', 'Measure', 'Distance and profile', this.measure.element, isOpen => {
            if (isOpen)
                this.settings.set({relief: false});
            this.measure.activate(isOpen);
        });
        shell.addAction('Picture', 'Save what is in view as PNG', () => this.savePicture());
        shell.addAction('Link', 'Copy a link to this view', () => this.copyLink(null));
        shell.addPanel('about', '?', 'About this page', aboutPanel(world.title));
    }

    listen() {
        const {map} = this.flat;
        map.on('mousemove', event => this.readout.show(placeOfLatLng(event.latlng)));
        map.on('mouseout', () => this.readout.show(null));
        map.on('click', event => this.clicked(placeOfLatLng(event.latlng)));
        map.on('moveend zoomend', () => this.noteLink());
        map.on('move', () => this.showMiddle());
        this.listenToHands();
        this.showMiddle();
        this.settings.listen(() => this.noteLink());
        addEventListener('hashchange', () => {
            if (location.hash !== this.lastFragment)
                this.restore();
        });
        document.addEventListener('keydown', event => {
            if (event.target.matches('input, textarea') || event.ctrlKey || event.metaKey || event.altKey)
                return;
            if (event.key === '/')
                this.search.field.focus();
            else if (event.key === 'r' || event.key === 'R')
                this.settings.set({relief: !this.settings.get('relief')});
            else
                return;
            event.preventDefault();
        });
    }

    /** The map also takes the focus when it is clicked: only with the keyboard its middle is marked. */
    listenToHands() {
        const {container} = this.flat, note = isByKeyboard => container.classList.toggle('by-keyboard', isByKeyboard);
        this.hasCursor = matchMedia('(hover: hover)').matches;
        document.addEventListener('keydown', () => note(true), true);
        document.addEventListener('pointerdown', () => note(false), true);
        document.addEventListener('pointermove', event => this.hasCursor = event.pointerType === 'mouse', true);
        container.addEventListener('focus', () => this.showMiddle());
        container.addEventListener('keydown', event => {
            if (event.key === 'Enter' && event.target === container)
                this.clicked(this.flat.center());
        });
    }

    /** Where there is no cursor, the middle of the window stands for it. */
    showMiddle() {
        if (!this.hasCursor || this.flat.container.matches('.by-keyboard:focus'))
            this.readout.show(this.flat.center());
    }

    // -- going places

    /** Null while the flat map is shown. */
    get relief() {
        const {relief} = this.reliefSwitch;
        return relief && relief.isShown ? relief : null;
    }

    zoom() {
        return this.relief ? this.relief.view.zoomIn(this.relief.height) : this.flat.zoom();
    }

    center() {
        return this.relief ? this.relief.view.values() : this.flat.center();
    }

    goTo(place, zoom = Math.max(this.zoom(), FOUND_ZOOM)) {
        if (this.relief)
            this.relief.flyTo({x: place.x, y: place.y, distance: Math.min(this.relief.view.distance, FOUND_DISTANCE)});
        else
            this.flat.flyTo(place, zoom);
    }

    goToFound({kind, name, place}) {
        this.goTo(place);
        if (kind === 'block')
            this.frameBlock(place);
        this.pin(place, kind === 'coordinate' ? '' : name);
    }

    goToBlock(number, place) {
        this.goTo(place);
        this.frameBlock(place);
        this.pin(place, this.world.dungeonNames.get(number));
    }

    frameBlock({x, y}) {
        this.frame.setBounds([[y - 4, x - 4], [y + 4, x + 4]]).addTo(this.flat.map);
    }

    pin(place, name) {
        this.readout.pin(place, name);
    }

    clicked(place) {
        if (this.measure.isActive)
            this.measure.add(place);
        else
            this.readout.pin(place);
    }

    markHere(place) {
        this.marks.add({...place, name: textOfPlace(place)});
        this.readout.unpin();
        this.shell.open('marks');
        const fields = this.shell.body.querySelectorAll('input[type=text]');
        fields[fields.length - 1].select();
    }

    /** What stands on the relief, the nearest to what is looked at. */
    labels() {
        const marks = this.settings.get('marks') ? this.marks.items : [], {distance, x, y} = this.center();
        // There are dungeons by the hundred: from afar they would hide the land.
        const isNear = place => Math.hypot(place.x - x, place.y - y) < DUNGEONS_WITHIN;
        return [...marks, ...placesOfWorld(this.world, this.settings).filter(
            place => place.kind !== 'dungeon' || distance < DUNGEONS_WITHIN && isNear(place))];
    }

    savePicture() {
        savePicture(this.relief ? pictureOfRelief(this.relief) : pictureOfFlatMap(this.flat, this.grid), this.world.title);
    }

    // -- the address

    state(mark) {
        return {place: this.center(), zoom: this.zoom(), settings: this.settings.values, mark: mark || this.linkedMark,
            relief: this.relief && this.relief.view.values()};
    }

    noteLink() {
        clearTimeout(this.linkTimer);
        this.linkTimer = setTimeout(() => {
            this.lastFragment = fragmentOfState(this.state(), this.usual);
            history.replaceState(null, '', this.lastFragment);
            this.lastFragment = location.hash;
        }, LINK_DELAY);
    }

    copyLink(place) {
        const mark = place && {...place, name: textOfPlace(place)};
        copyText(location.href.replace(/#.*/, '') + fragmentOfState(this.state(mark), this.usual));
    }

    restore() {
        const {place, zoom = FOUND_ZOOM, settings, relief, mark} = stateOfFragment(location.hash, this.usual);
        const view = relief && {...relief, ...place && {x: place.x, y: place.y, distance: this.reliefSwitch.distanceOfZoom(zoom)}};
        this.reliefSwitch.firstView = view;
        this.reliefSwitch.landing = place && {...place, zoom};
        if (this.relief && relief)
            this.relief.flyTo(view);
        else if (place && !this.relief)
            this.flat.moveTo(place, zoom);
        this.settings.set({...settings, relief: relief !== undefined});
        if (relief || !this.relief)
            this.reliefSwitch.landing = undefined;
        this.linkedMark = mark;
        if (mark)
            this.pin(mark, mark.name);
    }
}

async function start() {
    const description = JSON.parse(textOf('description'));
    const painter = new Painter(textOf('worker'), description);
    const planes = await painter.unpack(textOf('land').trim(), description.hasOlderLand, share => {
        find('loading-bar').value = share;
    });
    find('land').remove();
    new Page(new World(description, planes), painter);
    find('loading').remove();
}

start().catch(error => {
    find('loading').replaceChildren(make('p', {}, `The map cannot be shown: ${error.message}`));
    throw error;
});
