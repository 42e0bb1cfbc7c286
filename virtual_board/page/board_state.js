// The board as the page knows it: what the server has told, and nothing besides.

/**
 * @typedef {{id: string, kind: string, look: string, text: string, label: string,
 *            properties: string[], bus?: string, rpm?: number}} Part
 * @typedef {{isWhole: boolean, properties: Set<string>, parts: Set<string>, hasFaults: boolean}} Change
 */

/** What a part is called for short: "Port 3" of "Port 3: delivers 15.4 W". */
export function nameOf(part) {
    return part.label.split(':')[0];
}

const byNumber = new Intl.Collator('en', { numeric: true }).compare;

export class BoardState {
    constructor() {
        this.clock = '';
        this.time = '';
        this.users = '';
        /** @type {Map<string, string>} */
        this.properties = new Map();
        /** @type {Map<string, Part>} */
        this.parts = new Map();
        this.faults = [];
        this.watchers = [];
    }

    /** @param {(change: Change) => void} watcher  is called after each change */
    watch(watcher) {
        this.watchers.push(watcher);
    }

    /** Takes a whole state, or what has changed of it. */
    take(isWhole, data) {
        const change = {
            isWhole,
            properties: new Set(Object.keys(data.properties ?? {})),
            parts: new Set((data.parts ?? []).map(part => part.id)),
            hasFaults: data.faults !== undefined,
        };
        if (isWhole) {
            this.properties.clear();
            this.parts.clear();
        }
        for (const member of ['clock', 'time', 'users', 'faults'])
            this[member] = data[member] ?? this[member];
        for (const [name, value] of Object.entries(data.properties ?? {})) {
            if (value === null)
                this.properties.delete(name);
            else
                this.properties.set(name, value);
        }
        for (const part of data.parts ?? [])
            this.parts.set(part.id, part);
        for (const watcher of this.watchers)
            watcher(change);
    }

    /** @returns {string|undefined} */
    value(name) {
        return this.properties.get(name);
    }

    /** A number, or NaN: "24.5", "0x0709", and words such as "none". */
    number(name) {
        return Number(this.properties.get(name) ?? NaN);
    }

    clockSeconds() {
        return Number(this.clock);
    }

    /** Names that one of some patterns fits, in the order of their numbers; '*' is anything. */
    namesFor(patterns) {
        const tests = patterns.map(pattern => new RegExp(
            `^${pattern.replace(/[.+^${}()|[\]\\]/g, '\\$&').replace(/\*/g, '.*').replace(/\?/g, '.')}$`));
        return [...this.properties.keys()].filter(name => tests.some(test => test.test(name))).sort(byNumber);
    }
}
