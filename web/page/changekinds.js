// What can become of a land block: words for its kinds, the first of which decides its colour.
import {LAND_FLAG} from './land.js';

const {data, changed, added, removed} = LAND_FLAG;
const HAS = {
    changed: flags => flags & changed,
    added: flags => flags & added,
    removed: flags => flags & removed,
    gone: (flags, olderFlags) => olderFlags & data && !(flags & data),
    new: (flags, olderFlags) => flags & data && !(olderFlags & data),
};
export const CHANGE_KINDS = Object.keys(HAS);

/** Whether a file of a block came, went or changed. */
export const isChanged = flags => (flags & (changed | added | removed)) !== 0;

/** Of a block with these flags now and then. */
export function kindsOfChange(flags, olderFlags) {
    return isChanged(flags) ? CHANGE_KINDS.filter(kind => HAS[kind](flags, olderFlags)) : [];
}

/** The first of the kinds that are `wanted`; undefined for none. */
export function kindOfChange(flags, olderFlags, wanted) {
    return isChanged(flags) ? wanted.find(kind => HAS[kind](flags, olderFlags)) : undefined;
}
