// The land's skin: the flat map's own picture under the same settings, drawn by the same workers. One
// picture of the whole land, and a closer one of what is in the middle of the window.
import {LAND_SIZE} from '../land.js';
import {GROUND_SIZE} from './ground.js';

const SKIN_SIZE = 2048; // a power of two, so that the far land can be averaged
const SKIN_TILE = 512;
/** A closer picture is drawn within so many points of the eye: distance and zoom. */
const DETAILS = [[170, 3], [420, 2], [900, 1]];
/** How far, in shares of its width, the middle may move before the closer picture is drawn anew. */
const SLACK = 0.15;

function newCanvas() {
    const canvas = document.createElement('canvas');
    canvas.width = canvas.height = SKIN_SIZE;
    return canvas;
}

export class ReliefSkin {
    /** `onprogress` is told how much of the whole picture is there, `onchange` when to draw. */
    constructor(painter, settings, onprogress, onchange) {
        Object.assign(this, {painter, settings, onprogress, onchange});
        this.whole = this.newTexture(newCanvas());
        this.detail = this.newTexture(newCanvas());
        this.spare = newCanvas();
        this.window = null; // of the closer picture that is shown
        this.wanted = null; // of the one that is asked for
    }

    newTexture(canvas) {
        const texture = new THREE.CanvasTexture(canvas);
        texture.wrapS = texture.wrapT = THREE.ClampToEdgeWrapping;
        texture.generateMipmaps = true;
        texture.minFilter = THREE.LinearMipmapLinearFilter;
        texture.anisotropy = 8;
        return texture;
    }

    /** Draws everything anew; `x`, `y`: what to begin with; `sea`: red, green, blue of what is beyond the edge. */
    repaint({x, y}, sea) {
        this.wanted = this.window = null;
        const context = this.whole.image.getContext('2d');
        context.fillStyle = `rgb(${sea.map(Math.floor)})`;
        if (!this.round)
            context.fillRect(0, 0, SKIN_SIZE, SKIN_SIZE);
        // Averaged from afar, the margin runs into the land.
        context.fillRect(LAND_SIZE, 0, SKIN_SIZE - LAND_SIZE, SKIN_SIZE);
        context.fillRect(0, LAND_SIZE, SKIN_SIZE, SKIN_SIZE - LAND_SIZE);
        this.paintWhole(x, y);
    }

    async paintWhole(x, y) {
        const round = this.round = {}, isWanted = () => this.round === round;
        const context = this.whole.image.getContext('2d'), view = this.settings.forPainting(0);
        const areas = areasOf(0, 0, 0, LAND_SIZE).sort((a, b) => farFrom(a, x, y) - farFrom(b, x, y));
        let done = 0;
        await Promise.all(areas.map(async area => {
            const image = await this.painter.draw(view, area, isWanted);
            if (!image || !isWanted())
                return;
            context.putImageData(image, area.x, area.y);
            this.onprogress(++done / areas.length);
            // Each time costs a copy to the graphics processor.
            if (done % 8 === 0 || done === areas.length)
                this.show(this.whole);
        }));
    }

    /** Sees to a closer picture for a view whose middle is at `x`, `y`. */
    follow({x, y, distance}) {
        const found = DETAILS.find(([most]) => distance < most);
        if (!found) {
            this.wanted = this.window = null;
            return;
        }
        const zoom = found[1], width = SKIN_SIZE / 2 ** zoom, slack = width * SLACK;
        const middle = value => Math.max(width / 2, Math.min(LAND_SIZE - width / 2, Math.round(value)));
        const [cx, cy] = [middle(x), middle(y)], {wanted} = this;
        if (wanted && wanted.zoom === zoom && Math.abs(wanted.cx - cx) < slack && Math.abs(wanted.cy - cy) < slack)
            return;
        this.wanted = {zoom, cx, cy};
        this.paintDetail(this.wanted, width);
    }

    async paintDetail(window, width) {
        const scale = 2 ** window.zoom;
        const left = Math.round((window.cx - width / 2) * scale), top = Math.round((LAND_SIZE - window.cy - width / 2) * scale);
        const view = this.settings.forPainting(window.zoom), images = [];
        await Promise.all(areasOf(window.zoom, left, top, SKIN_SIZE).map(async area => {
            images.push([area, await this.painter.draw(view, area, () => this.wanted === window)]);
        }));
        if (this.wanted !== window)
            return;
        const context = this.spare.getContext('2d');
        for (const [area, image] of images)
            context.putImageData(image, area.x - left, area.y - top);
        [this.spare, this.detail.image] = [this.detail.image, this.spare];
        this.window = {x: left / scale - 0.5, y: LAND_SIZE - 0.5 - (top + SKIN_SIZE) / scale, width};
        this.show(this.detail);
    }

    show(texture) {
        texture.needsUpdate = true;
        this.onchange();
    }
}

/** What lies in the shade and what is wet: see ground.js. */
export class ReliefGround {
    /** `onchange`: when to draw. */
    constructor(painter, onchange) {
        Object.assign(this, {painter, onchange});
        this.texture = new THREE.DataTexture(new Uint8Array(2), 1, 1, THREE.LuminanceAlphaFormat);
        this.texture.magFilter = THREE.LinearFilter;
        this.texture.minFilter = THREE.LinearMipmapNearestFilter;
        this.texture.generateMipmaps = true;
        this.texture.needsUpdate = true;
    }

    /** Has it made for a light, `{azimuth, altitude, rise, sea}`, unless it is; what was asked for last is shown in the end. */
    async follow(light) {
        const wanted = JSON.stringify(light);
        if (wanted === this.wanted)
            return;
        this.wanted = wanted;
        const reply = await this.painter.ask({action: 'ground', light}, () => this.wanted === wanted);
        if (!reply || this.wanted !== wanted)
            return;
        this.texture.image = {data: reply.pixels, width: GROUND_SIZE, height: GROUND_SIZE};
        this.texture.needsUpdate = true;
        this.onchange();
    }
}

function areasOf(zoom, left, top, size) {
    const areas = [];
    for (let y = top; y < top + size; y += SKIN_TILE)
        for (let x = left; x < left + size; x += SKIN_TILE)
            areas.push({scale: 2 ** zoom, x, y, width: Math.min(SKIN_TILE, left + size - x), height: Math.min(SKIN_TILE, top + size - y), isLevel: true});
    return areas;
}

const farFrom = (area, x, y) => Math.hypot(area.x + area.width / 2 - x, LAND_SIZE - area.y - area.height / 2 - y);
