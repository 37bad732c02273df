// Small waves: how water slopes to the east and north, as a picture that can be laid side by side.

export const WAVES_SIZE = 256; // a power of two, so that far waves can be averaged to a smooth sea
/** Crests across the picture to the east and north, where they begin, and how steep they are. */
const TRAINS = [
    [2, 3, 0.3, 0.5], [-3, 5, 2.1, 0.5], [7, 4, 4.4, 0.6], [9, -5, 1.2, 0.6], [-8, 11, 5.3, 0.7], [15, 8, 0.9, 0.7], [-17, 12, 3.7, 0.6],
    [10, 23, 2.9, 0.6], [29, -9, 1.7, 0.5], [-21, -28, 4.9, 0.5], [38, 17, 0.2, 0.4], [-13, 45, 3.1, 0.4], [51, -30, 5.9, 0.3]];

/** Red and green are slopes from -1 to 1, as bytes about 127.5. */
export function waveBytes() {
    const bytes = new Uint8Array(WAVES_SIZE * WAVES_SIZE * 4), steepest = TRAINS.reduce((sum, [, , , steep]) => sum + steep, 0) / 2;
    const trains = TRAINS.map(([across, up, start, steep]) => ({across, up, length: Math.hypot(across, up) / 127.5 * steepest,
        slopes: Float32Array.from({length: WAVES_SIZE}, (_, step) => steep * Math.cos(2 * Math.PI * step / WAVES_SIZE + start))}));
    const clamped = slope => Math.max(0, Math.min(255, Math.round(127.5 + slope)));
    for (let y = 0, at = 0; y < WAVES_SIZE; ++y)
        for (let x = 0; x < WAVES_SIZE; ++x, at += 4) {
            let east = 0, north = 0;
            for (const {across, up, length, slopes} of trains) {
                const slope = slopes[across * x + up * y & WAVES_SIZE - 1] / length;
                east += slope * across;
                north += slope * up;
            }
            bytes[at] = clamped(east);
            bytes[at + 1] = clamped(north);
        }
    return bytes;
}
