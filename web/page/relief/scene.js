// The relief as the graphics library has it: squares of the land, the sea around it, the sky.
import {LAND_SIZE, UNITS_PER_CELL} from '../land.js';
import {FIELD_OF_VIEW} from './camera.js';
import {LAND_FRAGMENT, LAND_VERTEX, OUTER_SEA_FRAGMENT, OUTER_SEA_VERTEX, SKY_FRAGMENT, SKY_VERTEX} from './shaders.js';
import {NODE_CELLS} from './tree.js';
import {WAVES_SIZE, waveBytes} from './waves.js';

const WATER_COLOR = [0.25, 0.42, 0.55];
/** The air by day and by the last light: at the horizon, and above. */
const DAY = [[0.79, 0.85, 0.9], [0.36, 0.55, 0.76]], DUSK = [[0.72, 0.68, 0.66], [0.36, 0.43, 0.56]];
const DAY_ALTITUDE = 0.5; // the sine of how high the light stands
/** The farther off the eye, the clearer the air: the land in the middle is always to be seen. */
const hazeDensity = (haze, distance) => 0.9 * haze / (1500 + 2 * distance);
const OUTER_SEA = 30000;
const SKIRT = 2, SKIRT_DROP = 0.3;

export class ReliefScene {
    /**
     * `shape`: see pick.js; `skin`: pictures of the land, see skin.js; `ground`: what is dark and wet,
     * see ground.js. Throws where the graphics processor cannot be had or cannot do what is needed.
     */
    constructor(canvas, context, shape, tree, skin, ground) {
        this.renderer = new THREE.WebGLRenderer({canvas, context});
        if (!this.renderer.capabilities.vertexTextures)
            throw new Error('its graphics cannot read heights');
        this.renderer.autoClearColor = false; // The sky covers what nothing else does.
        this.tree = tree;
        this.skin = skin;
        this.camera = new THREE.PerspectiveCamera(FIELD_OF_VIEW, 1, 1, 40000);
        this.scene = new THREE.Scene();
        this.scene.autoUpdate = false;
        this.squares = [];
        this.geometry = squareGeometry();
        const vector = (...values) => ({value: new THREE.Vector3(...values)});
        this.common = {
            rise: {value: 1}, sea: {value: -1e9}, hazeDensity: {value: 0}, haze: vector(), zenith: vector(), light: vector(0, 0, 1),
            water: vector(...WATER_COLOR), waves: {value: waveTexture()}, wetness: {value: 1},
            floorElevation: {value: shape.floor}, floorColor: vector()};
        this.shared = {
            ...this.common, heights: {value: heightTexture(shape.land, tree)},
            range: {value: new THREE.Vector2(tree.lowest, tree.highest - tree.lowest)},
            skin: {value: skin.whole}, detail: {value: skin.detail}, detailWindow: vector(),
            ground: {value: ground.texture}, shadow: {value: 1}};
        this.add(frameGeometry(), this.common, OUTER_SEA_VERTEX, OUTER_SEA_FRAGMENT);
        this.addSky();
    }

    addSky() {
        const geometry = new THREE.BufferGeometry();
        geometry.setAttribute('position', new THREE.Float32BufferAttribute([-1, -1, 0, 3, -1, 0, -1, 3, 0], 3));
        this.skyUniforms = {...this.common,
            ahead: {value: new THREE.Vector3()}, toRight: {value: new THREE.Vector3()}, toTop: {value: new THREE.Vector3()}};
        // Last, where nothing else is.
        this.add(geometry, this.skyUniforms, SKY_VERTEX, SKY_FRAGMENT).renderOrder = 1;
    }

    add(geometry, uniforms, vertexShader, fragmentShader) {
        const mesh = new THREE.Mesh(geometry, new THREE.ShaderMaterial({uniforms, vertexShader, fragmentShader}));
        // The shaders place everything; the library knows nothing of where it is.
        mesh.frustumCulled = false;
        mesh.matrixAutoUpdate = false;
        this.scene.add(mesh);
        return mesh;
    }

    resize(width, height) {
        this.renderer.setPixelRatio(Math.min(2, window.devicePixelRatio || 1));
        this.renderer.setSize(width, height, false);
        this.camera.aspect = width / height;
        this.camera.updateProjectionMatrix();
    }

    /**
     * `light`: towards it; `sea`: the sea around the world, red, green and blue from 0 to 255;
     * `isNatural`: whether colours are the land's own, so that water may shine and shadows fall.
     */
    setLight(light, sea, isNatural, hasShadows) {
        const {common} = this, share = Math.max(0, Math.min(1, light[2] / DAY_ALTITUDE));
        const between = index => DAY[index].map((day, at) => DUSK[index][at] + (day - DUSK[index][at]) * share);
        common.light.value.set(...light);
        common.haze.value.set(...between(0));
        common.zenith.value.set(...between(1));
        common.floorColor.value.set(...sea.map(component => component / 255));
        common.wetness.value = isNatural ? 1 : 0;
        this.shared.shadow.value = isNatural && hasShadows ? 1 : 0;
    }

    /** Draws what a shape looks like in a view; `haze`: 1 as usual, 0 none. */
    draw(view, shape, haze) {
        view.aim(this.camera);
        this.common.rise.value = shape.rise;
        this.common.sea.value = Math.max(-1e9, shape.sea);
        this.common.hazeDensity.value = hazeDensity(haze, view.distance);
        const {window} = this.skin;
        this.shared.detailWindow.value.set(window ? window.x : 0, window ? window.y : 0, window ? window.width : 0);
        this.aimSky();
        this.placeSquares(shape);
        this.renderer.render(this.scene, this.camera);
    }

    aimSky() {
        const {camera} = this, {x, y, z} = {x: new THREE.Vector3(), y: new THREE.Vector3(), z: new THREE.Vector3()};
        camera.matrixWorld.extractBasis(x, y, z);
        const top = Math.tan(FIELD_OF_VIEW * Math.PI / 360);
        this.skyUniforms.ahead.value.copy(z).negate();
        this.skyUniforms.toTop.value.copy(y).multiplyScalar(top);
        this.skyUniforms.toRight.value.copy(x).multiplyScalar(top * camera.aspect);
    }

    placeSquares(shape) {
        const frustum = new THREE.Frustum(), box = new THREE.Box3();
        frustum.setFromMatrix(new THREE.Matrix4().multiplyMatrices(this.camera.projectionMatrix, this.camera.matrixWorldInverse));
        const chosen = this.tree.choose(this.camera.position, elevation => shape.heightOfElevation(elevation),
            (west, south, low, east, north, high) => {
                box.min.set(west, south, low);
                box.max.set(east, north, high);
                return frustum.intersectsBox(box);
            });
        while (this.squares.length < chosen.length)
            this.squares.push(this.newSquare());
        this.squares.forEach((mesh, index) => {
            mesh.visible = index < chosen.length;
            if (!mesh.visible)
                return;
            const {x, y, cell, morph} = chosen[index], {uniforms} = mesh.material;
            uniforms.square.value.set(x, y, cell);
            uniforms.morph.value.set(Math.min(1e8, morph[0]), Math.min(2e8, morph[1]));
        });
    }

    newSquare() {
        return this.add(this.geometry, {...this.shared, square: {value: new THREE.Vector3()}, morph: {value: new THREE.Vector2()}},
            LAND_VERTEX, LAND_FRAGMENT);
    }
}

/** 33 by 33 points, and those of the rim once more with z = 1; cells are halved alike, so that coarser squares fit. */
function squareGeometry() {
    const side = NODE_CELLS + 1, points = [], corners = [];
    for (let y = 0; y < side; ++y)
        for (let x = 0; x < side; ++x)
            points.push(x, y, 0);
    for (let y = 0; y < NODE_CELLS; ++y)
        for (let x = 0; x < NODE_CELLS; ++x) {
            const at = y * side + x;
            corners.push(at, at + 1, at + side + 1, at, at + side + 1, at + side);
        }
    const first = points.length / 3, steps = 4 * NODE_CELLS;
    for (let step = 0; step < steps; ++step) {
        const [x, y] = pointOfRim(step), [nextX, nextY] = pointOfRim(step + 1), next = first + (step + 1) % steps;
        points.push(x, y, 1);
        corners.push(first + step, next, nextY * side + nextX, first + step, nextY * side + nextX, y * side + x);
    }
    return geometryOf(points, corners);
}

/** Counter-clockwise from the south-west. */
function pointOfRim(step) {
    const along = step % NODE_CELLS, back = NODE_CELLS - along;
    return [[along, 0], [NODE_CELLS, along], [back, NODE_CELLS], [0, back]][Math.floor(step / NODE_CELLS) % 4];
}

function geometryOf(points, corners) {
    const geometry = new THREE.BufferGeometry();
    geometry.setAttribute('position', new THREE.Float32BufferAttribute(points, 3));
    geometry.setIndex(corners);
    return geometry;
}

/**
 * A wide square with a hole where the world is. It goes on a little below the land's edge, whose many
 * points would else leave cracks along the hole's few.
 */
function frameGeometry() {
    const ring = (low, high, z) => [low, low, z, high, low, z, high, high, z, low, high, z], edge = LAND_SIZE - 1;
    const points = [...ring(-OUTER_SEA, edge + OUTER_SEA, 0), ...ring(0, edge, 0), ...ring(SKIRT, edge - SKIRT, -SKIRT_DROP)];
    const corners = [];
    for (const start of [0, 4])
        for (let side = 0; side < 4; ++side) {
            const one = start + side, two = start + (side + 1) % 4;
            corners.push(one, two, two + 4, one, two + 4, one + 4);
        }
    return geometryOf(points, corners);
}

/** Elevations in 16 bits of their range, high byte first, row by row from the south. */
function heightTexture(land, tree) {
    const range = tree.highest - tree.lowest || 1, words = Uint16Array.from(land.table,
        height => Math.round((height / UNITS_PER_CELL - tree.lowest) / range * 0xFFFF));
    const bytes = new Uint8Array(LAND_SIZE * LAND_SIZE * 2), {heights} = land;
    for (let at = 0; at < heights.length; ++at) {
        const word = words[heights[at]];
        bytes[at * 2] = word >> 8;
        bytes[at * 2 + 1] = word & 0xFF;
    }
    const texture = new THREE.DataTexture(bytes, LAND_SIZE, LAND_SIZE, THREE.LuminanceAlphaFormat);
    texture.needsUpdate = true;
    return texture;
}

function waveTexture() {
    const texture = new THREE.DataTexture(waveBytes(), WAVES_SIZE, WAVES_SIZE, THREE.RGBAFormat);
    texture.wrapS = texture.wrapT = THREE.RepeatWrapping;
    texture.magFilter = THREE.LinearFilter;
    texture.minFilter = THREE.LinearMipmapLinearFilter;
    texture.generateMipmaps = true;
    texture.needsUpdate = true;
    return texture;
}
