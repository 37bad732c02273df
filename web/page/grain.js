// The grain of the land seen from very near: blades, grains, cracks, waves, made here from noise, a
// pattern for each land type. It only makes a colour lighter or darker, and is not there from afar.
const SIZE = 256; // of a pattern, which repeats
const PER_POINT = 64;
/** Pixels a point: from where it is to be seen, and where it is all there. */
const FIRST_SCALE = 10, FULL_SCALE = 40;

/** What each land type is made of, and how strong it shows. */
const BARE = ['rock', 0.16], GRASS = ['blades', 0.15], SOIL = ['specks', 0.14], SAND = ['ripples', 0.07], WATER = ['waves', 0.09];
const GRAINS = [
    BARE, GRASS, ['scratches', 0.07], ['blades', 0.2], ['specks', 0.17], SOIL, ['rock', 0.2], ['specks', 0.09], SOIL, GRASS,
    SAND, SAND, ['pebbles', 0.15], ['strata', 0.1], BARE, ['drifts', 0.05], WATER, ['waves', 0.06], WATER, ['waves', 0.06], WATER,
    ['leaves', 0.2], WATER, ['leaves', 0.1], ['specks', 0.1], BARE, ['specks', 0.16], ['scratches', 0.07], ['leaves', 0.13], ['leaves', 0.16],
    SOIL, ['pebbles', 0.12], ['pebbles', 0.1]];

/** Numbers from 0 to 1 that look random and are always the same. */
function randomNumbers(seed) {
    let state = seed * 2654435761 + 12345 >>> 0;
    return () => {
        state = Math.imul(state ^ state >>> 15, 0x2C1B3C6D) + 0x9E3779B9 >>> 0;
        return (state ^ state >>> 13) / 0x100000000;
    };
}

const wrap = value => value & SIZE - 1;

class Pattern {
    constructor(seed) {
        this.values = new Float32Array(SIZE * SIZE);
        this.random = randomNumbers(seed);
    }

    between(low, high) {
        return low + (high - low) * this.random();
    }

    add(x, y, value) {
        this.values[wrap(Math.round(y)) * SIZE + wrap(Math.round(x))] += value;
    }

    /** Soft spots, darker or lighter than what is around them. */
    spots(count, smallest, largest, strength) {
        for (let spot = 0; spot < count; ++spot) {
            const [x, y, radius, value] = [this.between(0, SIZE), this.between(0, SIZE), this.between(smallest, largest), this.between(-strength, strength)];
            for (let dy = -Math.ceil(radius); dy <= radius; ++dy)
                for (let dx = -Math.ceil(radius); dx <= radius; ++dx)
                    this.add(x + dx, y + dy, value * Math.max(0, 1 - Math.hypot(dx, dy) / radius));
        }
    }

    /** Strokes at about an angle, in radians. */
    strokes(count, length, angle, spread, strength) {
        for (let stroke = 0; stroke < count; ++stroke) {
            const turn = angle + this.between(-spread, spread), [x, y, value] = [this.between(0, SIZE), this.between(0, SIZE), this.between(-strength, strength)];
            const long = this.between(length * 0.6, length * 1.4);
            for (let at = 0; at < long; ++at)
                this.add(x + Math.cos(turn) * at, y - Math.sin(turn) * at, value * (1 - at / long));
        }
    }

    /** Waves of so many to a pattern, which must be whole numbers, pushed about by `swing`. */
    waves(across, down, swing, strength) {
        const phases = [1, 2, 3].map(() => this.between(0, 2 * Math.PI)), turn = 2 * Math.PI / SIZE;
        for (let y = 0; y < SIZE; ++y)
            for (let x = 0; x < SIZE; ++x) {
                const push = swing * (Math.sin(turn * 3 * x + phases[0]) + Math.sin(turn * 2 * (x + y) + phases[1]));
                this.values[y * SIZE + x] += strength * Math.sin(turn * (across * x + down * y) + push + phases[2]);
            }
    }

    /** Stones side by side, dark where they meet. */
    stones(perSide, strength, crack, depth) {
        const step = SIZE / perSide, middles = Array.from({length: perSide * perSide}, () => [this.random(), this.random(), this.between(-1, 1)]);
        for (let y = 0; y < SIZE; ++y)
            for (let x = 0; x < SIZE; ++x) {
                const column = Math.floor(x / step), row = Math.floor(y / step);
                let nearest = Infinity, next = Infinity, shade = 0;
                for (let j = row - 1; j <= row + 1; ++j)
                    for (let i = column - 1; i <= column + 1; ++i) {
                        const [mx, my, own] = middles[(j + perSide) % perSide * perSide + (i + perSide) % perSide];
                        const distance = Math.hypot((i + mx) * step - x, (j + my) * step - y);
                        if (distance < nearest)
                            [next, nearest, shade] = [nearest, distance, own];
                        else
                            next = Math.min(next, distance);
                    }
                this.values[y * SIZE + x] += strength * shade - depth * Math.max(0, 1 - (next - nearest) / crack);
            }
    }
}

const MAKERS = {
    rock: pattern => {
        pattern.stones(7, 0.25, 7, 0.35);
        pattern.spots(1600, 1, 4, 0.6);
        pattern.spots(60, 8, 20, 0.4);
    },
    pebbles: pattern => pattern.stones(18, 0.6, 4, 0.6),
    blades: pattern => pattern.strokes(5200, 11, Math.PI / 2, 0.5, 0.9),
    specks: pattern => {
        pattern.spots(1500, 1, 3.5, 0.8);
        pattern.spots(90, 6, 16, 0.5);
    },
    ripples: pattern => {
        pattern.waves(5, 16, 0.8, 0.6);
        pattern.spots(3000, 1, 1.8, 0.5);
    },
    waves: pattern => {
        pattern.waves(2, 9, 1.2, 0.6);
        pattern.waves(3, -14, 0.9, 0.4);
    },
    strata: pattern => {
        pattern.waves(1, 11, 0.9, 0.7);
        pattern.strokes(500, 18, 0, 0.15, 0.6);
    },
    drifts: pattern => {
        pattern.spots(120, 10, 26, 0.8);
        pattern.waves(3, 4, 0.9, 0.3);
    },
    scratches: pattern => {
        pattern.strokes(260, 40, 0.6, 0.25, 0.9);
        pattern.spots(60, 10, 24, 0.5);
    },
    leaves: pattern => pattern.spots(1500, 2, 6, 0.7),
};

const patterns = new Map();

/** A pattern for a land type, 256 x 256 numbers whose mean is about 0; null where there is none. */
export function grainOfType(type) {
    if (!patterns.has(type)) {
        const [kind, strength] = GRAINS[type] || [], pattern = new Pattern(type + 1);
        if (kind)
            MAKERS[kind](pattern);
        const mean = pattern.values.reduce((sum, value) => sum + value, 0) / pattern.values.length;
        patterns.set(type, kind ? pattern.values.map(value => Math.max(-1, Math.min(1, value - mean)) * strength) : null);
    }
    return patterns.get(type);
}

/** How much of the grain is to be seen at a scale, from 0 to 1. */
export const grainShare = scale => Math.max(0, Math.min(1, Math.log2(scale / FIRST_SCALE) / Math.log2(FULL_SCALE / FIRST_SCALE)));

/** What a place's colour is to be multiplied by. */
export function grainAt(type, x, y, share) {
    const pattern = grainOfType(type);
    return pattern ? 1 + share * pattern[wrap(Math.floor(y * PER_POINT)) * SIZE + wrap(Math.floor(x * PER_POINT))] : 1;
}
