// Something happens in one part of the page, and others hear of it.

export class Signal {
    constructor() {
        this.listeners = new Set();
    }

    /** Gives a function that ends the listening. */
    listen(listener) {
        this.listeners.add(listener);
        return () => this.listeners.delete(listener);
    }

    /** Tells all who listen, in the order in which they began to. */
    emit(...details) {
        for (const listener of [...this.listeners])
            listener(...details);
    }
}
