// What the server answers. Addresses are relative to the page's, which carries the token.

/** The server does not want to: its text says what is wrong, and what to do. */
export class Refused extends Error {
    /** @param {string} text  @param {number} code  @param {string} status */
    constructor(text, code, status) {
        super(text);
        this.code = code;
        this.status = status;
    }
}

/** Nobody answers. */
export class NoAnswer extends Error {
    constructor() {
        super('The server does not answer.');
    }
}

/** @param {string} name  @param {Record<string, any>} [query]  undefined: left out; arrays: each */
export function address(name, query = {}) {
    const url = new URL(`api/${name}`, document.baseURI);
    url.hash = '';
    for (const [key, value] of Object.entries(query)) {
        for (const one of Array.isArray(value) ? value : [value]) {
            if (one !== undefined && one !== '')
                url.searchParams.append(key, String(one));
        }
    }
    return url;
}

async function answerOf(url, options) {
    try {
        return await fetch(url, options);
    } catch {
        throw new NoAnswer();
    }
}

async function call(method, name, query, body) {
    const options = { method };
    if (body !== undefined) {
        options.headers = { 'Content-Type': 'application/json' };
        options.body = body instanceof Blob ? body : JSON.stringify(body);
    }
    const answer = await answerOf(address(name, query), options);
    const text = await answer.text();
    if (answer.ok)
        return name === 'panel.svg' ? text : JSON.parse(text || '{}');
    let told = {};
    try {
        told = JSON.parse(text);
    } catch {
        // Not from the server itself; its number has to do.
    }
    throw new Refused(told.error || `The server answers ${answer.status}.`, answer.status, told.status || '');
}

export const server = {
    boards: () => call('GET', 'boards'),
    createTwin: (name, time, file) => call('POST', 'boards', { name, time }, file),
    names: () => call('GET', 'names'),
    effects: () => call('GET', 'effects'),
};

/** One of the server's boards. */
export class BoardApi {
    /** @param {string} name  as the list of boards has it */
    constructor(name) {
        this.name = name;
    }

    call(method, name, query = {}, body = undefined) {
        return call(method, name, { board: this.name, ...query }, body);
    }

    eventsAddress() {
        return address('events', { board: this.name });
    }

    /** @param {string[]} names  or patterns */
    async properties(names) {
        return (await this.call('GET', 'properties', { name: names })).properties;
    }

    change(changes) {
        return this.call('PATCH', 'properties', {}, changes);
    }

    drawing() {
        return this.call('GET', 'panel.svg', { style: 'no' });
    }

    panel() {
        return this.call('GET', 'panel');
    }

    async addFault(rule) {
        return (await this.call('POST', 'faults', {}, rule)).id;
    }

    removeFault(id) {
        return this.call('DELETE', 'faults', { id });
    }

    lastRequests(most) {
        return this.call('GET', 'trace', { last: most });
    }

    async flash() {
        return (await this.call('GET', 'flash')).partitions;
    }

    advance(seconds) {
        return this.call('POST', 'advance', {}, { seconds });
    }

    async scenarios() {
        return (await this.call('GET', 'scenarios')).scenarios;
    }

    play(action, scenario = undefined) {
        return this.call('POST', 'play', {}, { action, scenario });
    }
}
