// Has workers draw areas of the map, in the order in which they were asked for.

const MOST_WORKERS = 3;

class Hand {
    constructor(url) {
        this.worker = new Worker(url);
        this.worker.onmessage = ({data}) => this.take(data);
        this.worker.onerror = event => this.take({error: event.message});
    }

    /** One message at a time; gives the reply. */
    ask(message, report) {
        this.report = report;
        return new Promise((resolve, reject) => {
            this.take = reply => {
                if (reply.progress !== undefined)
                    this.report && this.report(reply.progress);
                else if (reply.error)
                    reject(new Error(reply.error));
                else
                    resolve(reply);
            };
            this.worker.postMessage(message);
        });
    }
}

export class Painter {
    /** `source`: the worker's script; `description`: what the page knows of the land. */
    constructor(source, description) {
        this.url = URL.createObjectURL(new Blob([source], {type: 'text/javascript'}));
        this.description = {action: 'describe', heights: description.heights, colors: description.colors};
        this.idle = [];
        this.pending = 0;
        this.onbusy = () => {};
        this.waiting = [];
    }

    /** Unpacks the land and gives its planes; from then on the painter draws. */
    async unpack(base64, hasOlder, report) {
        const first = new Hand(this.url);
        await first.ask(this.description);
        const {planes} = await first.ask({action: 'unpack', base64, hasOlder}, report);
        this.employ(first);
        const others = Math.min(MOST_WORKERS, (navigator.hardwareConcurrency || 2) - 1) - 1;
        for (let count = 0; count < others; ++count)
            this.train(new Hand(this.url), planes);
        return planes;
    }

    async train(hand, planes) {
        await hand.ask(this.description);
        await hand.ask({action: 'take', planes});
        this.employ(hand);
    }

    employ(hand) {
        this.idle.push(hand);
        this.work();
    }

    /**
     * Draws `area` (see tile.js) under the settings `view`; gives ImageData, or null when `isWanted`
     * said no before its turn came.
     */
    draw(view, area, isWanted = () => true) {
        this.count(1);
        return new Promise((resolve, reject) => {
            this.waiting.push({view, area, isWanted, resolve, reject});
            this.work();
        }).finally(() => this.count(-1));
    }

    /** Tells whoever wants to know when drawing begins and when all is drawn. */
    count(step) {
        this.pending += step;
        if (this.pending === 0 || this.pending === step)
            this.onbusy(this.pending > 0);
    }

    async work() {
        while (this.idle.length > 0 && this.waiting.length > 0) {
            const job = this.waiting.shift();
            if (!job.isWanted()) {
                job.resolve(null);
                continue;
            }
            const hand = this.idle.pop();
            hand.ask({action: 'draw', view: job.view, area: job.area}).then(({pixels}) => {
                job.resolve(new ImageData(pixels, job.area.width, job.area.height));
            }, job.reject).finally(() => this.employ(hand));
        }
    }
}
