// Undoes what web/WQLandPacking.cpp does. Base64 of deflated bytes without a wrapper; with
// n = LAND_SIZE, points row by row from the south, each row from the west:
//
//     n x n bytes   height indexes, each less its prediction (modulo 256)
//     n x n bytes   low bytes of the terrain words
//     n x n bytes   high bytes of the terrain words
//     64 KiB        flags of the land blocks, by number
//
// A height is predicted from its neighbours w to the west, s to the south and d between them: the
// median of w, s and w + s - d. Outside the world all are 0. Where there is an older land:
//
//     n x n bytes   older height index less the newer one (modulo 256)
//     n x n bytes   low bytes of older and newer terrain word, exclusive or
//     n x n bytes   their high bytes
//     64 KiB        flags of the older land blocks
import {LAND_SIZE} from './land.js';

const POINTS = LAND_SIZE * LAND_SIZE;
const BLOCK_NUMBERS = 0x10000;
/** How many deflated bytes are inflated at once. */
const PIECE = 0x10000;

/**
 * Gives `{newer, older}`, each the planes of a Land; `older` is null where the page has none.
 * `checksum`: Adler-32 of the deflated bytes; `report` is called with the share that is done. A text
 * that is not what was written is refused.
 */
export async function unpackLand(base64, {hasOlderLand: hasOlder, landChecksum: checksum}, report) {
    const packed = bytesOfBase64(base64);
    if (adler32(packed) !== checksum)
        throw new Error('the file was cut short or altered');
    report(0.15);
    const length = (3 * POINTS + BLOCK_NUMBERS) * (hasOlder ? 2 : 1);
    const bytes = await inflate(packed, length, share => report(0.15 + 0.55 * share));
    const newer = planesAt(bytes, 0);
    addPredictions(newer.heights);
    report(0.9);
    return {newer, older: hasOlder ? addDifferences(newer, planesAt(bytes, length / 2)) : null};
}

/** What is not base64 gives no bytes, which no checksum suits. */
function bytesOfBase64(text) {
    let binary;
    try {
        if (Uint8Array.fromBase64)
            return Uint8Array.fromBase64(text);
        binary = atob(text);
    } catch {
        return new Uint8Array(0);
    }
    const bytes = new Uint8Array(binary.length);
    for (let index = 0; index < bytes.length; ++index)
        bytes[index] = binary.charCodeAt(index);
    return bytes;
}

/** As the program reckons it, of the deflated bytes. */
export function adler32(bytes) {
    const modulus = 65521, mostSteps = 5552; // before a sum could leave 32 bits
    let a = 1, b = 0;
    for (let start = 0; start < bytes.length; start += mostSteps) {
        for (let index = start, end = Math.min(bytes.length, start + mostSteps); index < end; ++index)
            b += a += bytes[index];
        a %= modulus;
        b %= modulus;
    }
    return b * 0x10000 + a;
}

async function inflate(packed, length, report) {
    const bytes = new Uint8Array(length), inflater = new DecompressionStream('deflate-raw');
    // Not by way of a Blob, whose stream WebKit does not read in a page that is a file.
    const [, filled] = await Promise.all([
        feed(inflater.writable.getWriter(), packed),
        collect(inflater.readable.getReader(), bytes, count => report(count / length)),
    ]);
    if (filled !== length)
        throw new Error(`the land has ${filled} bytes instead of ${length}`);
    return bytes;
}

async function feed(writer, bytes) {
    for (let start = 0; start < bytes.length; start += PIECE)
        await writer.write(bytes.subarray(start, start + PIECE));
    await writer.close();
}

async function collect(reader, bytes, report) {
    let filled = 0;
    for (let part; !(part = await reader.read()).done;) {
        bytes.set(part.value, filled);
        filled += part.value.length;
        report(filled);
    }
    return filled;
}

function planesAt(bytes, start) {
    const plane = index => bytes.slice(start + index * POINTS, start + (index + 1) * POINTS);
    const blocks = start + 3 * POINTS;
    return {heights: plane(0), low: plane(1), high: plane(2), blocks: bytes.slice(blocks, blocks + BLOCK_NUMBERS)};
}

function addPredictions(heights) {
    for (let y = 0, index = 0; y < LAND_SIZE; ++y) {
        let west = 0, between = 0;
        for (let x = 0; x < LAND_SIZE; ++x, ++index) {
            const south = y > 0 ? heights[index - LAND_SIZE] : 0;
            const low = west < south ? west : south, high = west < south ? south : west;
            const prediction = between >= high ? low : between <= low ? high : west + south - between;
            west = heights[index] = heights[index] + prediction & 0xFF;
            between = south;
        }
    }
}

function addDifferences(newer, older) {
    for (let index = 0; index < POINTS; ++index) {
        older.heights[index] += newer.heights[index];
        older.low[index] ^= newer.low[index];
        older.high[index] ^= newer.high[index];
    }
    return older;
}
