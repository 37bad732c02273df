// Saves what is in view as a picture.
import {fileName, saveFile} from './dom.js';
import {paintLabel} from './graticule.js';

/** The flat map as it is in view on a canvas of its own. */
export function pictureOfFlatMap(flat, grid) {
    const box = flat.container.getBoundingClientRect(), density = window.devicePixelRatio || 1;
    const canvas = document.createElement('canvas');
    canvas.width = Math.round(box.width * density);
    canvas.height = Math.round(box.height * density);
    const context = canvas.getContext('2d');
    context.fillStyle = getComputedStyle(flat.container).backgroundColor;
    context.fillRect(0, 0, canvas.width, canvas.height);
    context.save();
    context.scale(density, density);
    context.imageSmoothingEnabled = false;
    const place = element => {
        const {left, top, width, height} = element.getBoundingClientRect();
        return [left - box.left, top - box.top, width, height];
    };
    for (const pane of flat.panes()) {
        context.save();
        if (pane.right !== undefined) {
            context.beginPath();
            context.rect(0, 0, pane.right, box.height);
            context.clip();
        }
        for (const tile of pane.element.querySelectorAll('canvas.land-tile'))
            context.drawImage(tile, ...place(tile));
        context.restore();
    }
    context.restore();
    grid.paint(context, box.width, box.height, density);
    context.scale(density, density);
    paintWay(context, flat);
    paintSpots(context, flat.container, place);
    return canvas;
}

function paintWay(context, flat) {
    const points = flat.way().map(latLng => flat.map.latLngToContainerPoint(latLng));
    context.strokeStyle = '#d1122c';
    context.lineWidth = 3;
    context.beginPath();
    for (const {x, y} of points)
        context.lineTo(x, y);
    context.stroke();
}

function paintSpots(context, container, place) {
    context.textBaseline = 'middle';
    for (const spot of container.querySelectorAll('.spot, .gathered')) {
        const [left, top, width, height] = place(spot), style = getComputedStyle(spot), x = left + width / 2, y = top + height / 2;
        context.beginPath();
        context.arc(x, y, width / 2, 0, 7);
        context.fillStyle = style.backgroundColor;
        context.fill();
        context.strokeStyle = style.borderTopColor;
        context.lineWidth = 1.5;
        context.stroke();
        context.font = `${style.fontWeight} ${style.fontSize} system-ui, sans-serif`;
        if (spot.classList.contains('gathered')) {
            context.fillStyle = style.color;
            context.textAlign = 'center';
            context.fillText(spot.textContent, x, y);
        } else if (spot.textContent) {
            const isLeft = spot.querySelector('.name.left') !== null;
            paintLabel(context, spot.textContent, isLeft ? left - 4 : left + width + 4, y, isLeft ? 'right' : 'left');
        }
    }
}

/** The relief as it is in view. */
export function pictureOfRelief(relief) {
    const canvas = document.createElement('canvas'), density = window.devicePixelRatio || 1;
    canvas.width = Math.round(relief.width * density);
    canvas.height = Math.round(relief.height * density);
    relief.paint(canvas.getContext('2d'), canvas.width, canvas.height);
    return canvas;
}

export function savePicture(canvas, title) {
    canvas.toBlob(blob => saveFile(fileName(title, '.png'), blob), 'image/png');
}
