// The relief as the graphics library has it: squares of the land, the sea around it, the sky.
import {DEEP_SEA, LAND_SIZE, UNITS_PER_CELL} from '../land.js';
import {lightOfSlope} from '../light.js';
import {FIELD_OF_VIEW} from './camera.js';
import {LAND_FRAGMENT, LAND_VERTEX, OUTER_SEA_FRAGMENT, OUTER_SEA_VERTEX, SKY_FRAGMENT, SKY_VERTEX} from './shaders.js';
import {NODE_CELLS} from './tree.js';

const HAZE = [0.79, 0.85, 0.9], ZENITH = [0.36, 0.55, 0.76], WATER_COLOR = [0.25, 0.42, 0.55];
/** The farther off the eye, the clearer the air: the land in the middle is always to be seen. */
const hazeDensity = (haze, distance) => 0.9 * haze / (1500 + 2 * distance);
const OUTER_SEA = 30000;
const SKIRT = 2, SKIRT_DROP = 0.3;

export class ReliefScene {
    /** Throws where the graphics processor cannot be had or cannot do what is needed. */
    constructor(canvas, land, tree, skin) {
        this.renderer = new THREE.WebGLRenderer({canvas, antialias: true, alpha: false});
        if (!this.renderer.capabilities.vertexTextures)
            throw new Error('its graphics cannot read heights');
        this.renderer.autoClear = false;
        this.tree = tree;
        this.skin = skin;
        this.camera = new THREE.PerspectiveCamera(FIELD_OF_VIEW, 1, 1, 40000);
        this.scene = new THREE.Scene();
        this.scene.autoUpdate = false;
        this.squares = [];
        this.geometry = squareGeometry();
        this.common = {
            rise: {value: 1}, sea: {value: -1e9}, haze: {value: new THREE.Vector3(...HAZE)},
            hazeDensity: {value: 0}, water: {value: new THREE.Vector3(...WATER_COLOR)}};
        this.shared = {
            ...this.common, heights: {value: heightTexture(land, tree)},
            range: {value: new THREE.Vector2(tree.lowest, tree.highest - tree.lowest)},
            skin: {value: skin.whole}, detail: {value: skin.detail}, detailWindow: {value: new THREE.Vector3()}};
        this.addOuterSea(land);
        this.addSky();
    }

    addOuterSea(land) {
        this.floorColor = new THREE.Vector3();
        this.outerSea = new THREE.Mesh(frameGeometry(), new THREE.ShaderMaterial({
            uniforms: {...this.common, floorElevation: {value: land.table[0] / UNITS_PER_CELL}, floorColor: {value: this.floorColor}},
            vertexShader: OUTER_SEA_VERTEX, fragmentShader: OUTER_SEA_FRAGMENT}));
        this.add(this.outerSea);
    }

    addSky() {
        const geometry = new THREE.BufferGeometry();
        geometry.setAttribute('position', new THREE.Float32BufferAttribute([-1, -1, 0, 3, -1, 0, -1, 3, 0], 3));
        this.skyUniforms = {
            haze: this.common.haze, zenith: {value: new THREE.Vector3(...ZENITH)}, ahead: {value: new THREE.Vector3()},
            toRight: {value: new THREE.Vector3()}, toTop: {value: new THREE.Vector3()}};
        const sky = new THREE.Mesh(geometry, new THREE.ShaderMaterial({
            uniforms: this.skyUniforms, vertexShader: SKY_VERTEX, fragmentShader: SKY_FRAGMENT, depthTest: false, depthWrite: false}));
        sky.renderOrder = -1;
        this.add(sky);
    }

    add(mesh) {
        // The shaders place everything; the library knows nothing of where it is.
        mesh.frustumCulled = false;
        mesh.matrixAutoUpdate = false;
        this.scene.add(mesh);
    }

    resize(width, height) {
        this.renderer.setPixelRatio(Math.min(2, window.devicePixelRatio || 1));
        this.renderer.setSize(width, height, false);
        this.camera.aspect = width / height;
        this.camera.updateProjectionMatrix();
    }

    /** `light`: towards it. The sea around the world is as the flat map has it; gives its colour. */
    setSeaColor(color, light) {
        const share = lightOfSlope(0, 0, light) / 255;
        this.floorColor.set(...[0, 1, 2].map(index => color[DEEP_SEA * 12 + index] * share));
        return `rgb(${this.floorColor.toArray().map(component => Math.floor(component * 255))})`;
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
        const mesh = new THREE.Mesh(this.geometry, new THREE.ShaderMaterial({
            uniforms: {...this.shared, square: {value: new THREE.Vector3()}, morph: {value: new THREE.Vector2()}},
            vertexShader: LAND_VERTEX, fragmentShader: LAND_FRAGMENT}));
        this.add(mesh);
        return mesh;
    }

    /** The direction in which a place of the window lies, in a vector of length 1; window from -1 to 1. */
    directionAt(right, top) {
        return new THREE.Vector3(right, top, 0.5).unproject(this.camera).sub(this.camera.position).normalize();
    }

    /** Where a point in space is seen, from -1 to 1; null behind the eye. */
    project(x, y, z) {
        const point = new THREE.Vector3(x, y, z).project(this.camera);
        return point.z < 1 ? point : null;
    }
}

/** 33 by 33 points; cells are halved alike, so that coarser squares fit. */
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
    const geometry = new THREE.BufferGeometry();
    geometry.setAttribute('position', new THREE.Float32BufferAttribute(points, 3));
    geometry.setIndex(corners);
    return geometry;
}

/** Elevations in 16 bits of their range, high byte first, row by row from the south. */
function heightTexture(land, tree) {
    const range = tree.highest - tree.lowest || 1, words = land.table.map(
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
