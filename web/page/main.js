// Puts the page together.
import {find, make, textOf} from './dom.js';
import {FlatMap, placeOfLatLng} from './flatmap.js';
import {GridLayer} from './graticule.js';
import {LayerPanel} from './layers.js';
import {Painter} from './painter.js';
import {Readout} from './readout.js';
import {ReliefSwitch} from './reliefswitch.js';
import {Settings} from './settings.js';
import {World} from './world.js';

async function start() {
    const description = JSON.parse(textOf('description'));
    const painter = new Painter(textOf('worker'), description);
    const planes = await painter.unpack(textOf('land').trim(), description.hasOlderLand, share => {
        find('loading-bar').value = share;
    });
    find('land').remove();
    const world = new World(description, planes);
    const settings = new Settings();
    const flat = new FlatMap(find('map'), painter, settings);
    flat.showWholeWorld();
    flat.show();
    new GridLayer(settings).addTo(flat.map);
    L.control.zoom({position: 'bottomright'}).addTo(flat.map);
    const readout = new Readout(world, []);
    find('map').after(readout.bar, readout.pinned);
    find('panel').append(new LayerPanel(world, settings).element);
    flat.map.on('mousemove', event => readout.show(placeOfLatLng(event.latlng)));
    flat.map.on('mouseout', () => readout.show(null));
    flat.map.on('click', event => readout.pin(placeOfLatLng(event.latlng)));
    const relief = new ReliefSwitch({stage: find('stage'), world, painter, settings, flat, readout, labels: () => settings.get('places') ? world.places : []});
    find('map').after(relief.button);
    find('panel').append(relief.panel);
    find('loading').remove();
}

start().catch(error => {
    find('loading').replaceChildren(make('p', {}, `The map cannot be shown: ${error.message}`));
});
