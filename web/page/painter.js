// Has workers draw areas of the map, in the order in which they were asked for.
import {Signal} from './events.js';

const MOST_WORKERS = 4;

/** What a worker is given ahead, so that it never waits for the page. */
const AHEAD = 2;

/** A worker; it replies in the order in which it was asked. */
class Hand {
    constructor(url) {
        this.asked = [];
        this.worker = new Worker(url);
        this.worker.onmessage = ({data}) => this.take(data);
        this.worker.onerror = event => this.take({error: event.message});
    }

    /** Gives the reply; `report` is told how much of it is done. */
    ask(message, {report = () => {}, transfer = []} = {}) {
        return new Promise((resolve, reject) => {
            this.asked.push({report, resolve, reject});
            this.worker.postMessage(message, transfer);
        });
    }

    take(reply) {
        if (reply.progress !== undefined) {
            this.asked[0].report(reply.progress);
            return;
        }
        const {resolve, reject} = this.asked.shift();
        if (reply.error)
            reject(new Error(reply.error));
        else
            resolve(reply);
    }
}

export class Painter {
    /** `source`: the worker's script; `description`: what the page knows of the land. */
    constructor(source, description) {
        this.url = URL.createObjectURL(new Blob([source], {type: 'text/javascript'}));
        const {heights, colors, hasOlderLand, landChecksum} = description;
        this.description = {action: 'describe', description: {heights, colors, hasOlderLand, landChecksum}};
        this.hands = []; // that know the land
        this.pending = 0;
        this.waiting = [];
        /** Tells whether there is something to draw, when that changes. */
        this.busy = new Signal();
    }

    /**
     * Unpacks the land and gives its planes and how often each type occurs; from then on the painter
     * draws, first of all what was asked for before. Throws where the land is not whole.
     */
    async unpack(base64, report) {
        const first = new Hand(this.url);
        await first.ask(this.description);
        const unpacked = await first.ask({action: 'unpack', base64}, {report});
        this.employ(first);
        const end = this.busy.listen(isBusy => {
            if (isBusy)
                return;
            end();
            this.trainOthers();
        });
        return unpacked;
    }

    /** When the first view is drawn: one who knows the land gives it to the others. */
    async trainOthers() {
        const most = Math.min(MOST_WORKERS, navigator.hardwareConcurrency || 2);
        for (let count = 1; count < most; ++count) {
            const hand = new Hand(this.url);
            await hand.ask(this.description);
            const {planes} = await this.hands[0].ask({action: 'copy'});
            const transfer = [planes.newer, planes.older].filter(Boolean).flatMap(Object.values).map(({buffer}) => buffer);
            await hand.ask({action: 'take', planes}, {transfer});
            this.employ(hand);
        }
    }

    employ(hand) {
        this.hands.push(hand);
        this.work();
    }

    /**
     * Draws `area` (see tile.js) under the settings `view`; gives ImageData, or null when `isWanted`
     * said no before its turn came.
     */
    async draw(view, area, isWanted) {
        const reply = await this.ask({action: 'draw', view, area}, isWanted);
        return reply && new ImageData(reply.pixels, area.width, area.height);
    }

    /** Has a worker do what `message` says (see worker.js); gives its reply, or null when `isWanted` said no. */
    ask(message, isWanted = () => true) {
        this.count(1);
        return new Promise((resolve, reject) => {
            this.waiting.push({message, isWanted, resolve, reject});
            this.work();
        }).finally(() => this.count(-1));
    }

    count(step) {
        this.pending += step;
        if (this.pending === 0 || this.pending === step)
            this.busy.emit(this.pending > 0);
    }

    work() {
        while (this.waiting.length > 0) {
            const hand = this.hands.filter(({asked}) => asked.length < AHEAD).sort((a, b) => a.asked.length - b.asked.length)[0];
            if (!hand)
                return;
            const {message, isWanted, resolve, reject} = this.waiting.shift();
            if (isWanted())
                hand.ask(message).then(resolve, reject).finally(() => this.work());
            else
                resolve(null);
        }
    }
}
