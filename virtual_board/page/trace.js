// The trace as it runs: the last requests that have reached the board, in its words, by what filters
// let through.

import { button, choice, fillChoice, make, setAttribute, setText } from './elements.js';
import { nameOf } from './board_state.js';

const mostLines = 2000;

const kindTexts = {
    cpld: 'CPLD', gpio: 'GPIO', i2c: 'I2C', mtd: 'flash', mdio: 'MDIO', open: 'files', sleep: 'sleeps', step: 'steps',
    map: 'mapped memory', console: 'console',
};

/** "i2c" of "i2c-read" */
function familyOf(request) {
    return request.kind.split('-')[0];
}

/** The server knows the names of those that still run; of others their number has to do. */
class Processes {
    constructor() {
        /** @type {Map<number, string>} */
        this.names = new Map();
    }

    /** @param {string} users  "iodbg 4711, sh 4712" */
    learnUsers(users) {
        for (const [, name, pid] of users.matchAll(/(\S[^,]*) (\d+)(?:, |$)/g))
            this.names.set(Number(pid), name);
    }

    learn(request) {
        if (request.process)
            this.names.set(request.pid, request.process);
    }

    of(request) {
        const name = this.names.get(request.pid);
        return name ? `${name} ${request.pid}` : String(request.pid);
    }
}

/** Microseconds are enough for people. */
function secondsOf(request) {
    return request.time.replace(/(\.\d{6})\d+$/, '$1');
}

export class Trace {
    /**
     * @param {HTMLElement} place
     * @param {import('./board_state.js').BoardState} state
     * @param {(id: string) => void} onPart  somebody wants to see a part
     */
    constructor(place, state, onPart) {
        this.state = state;
        this.onPart = onPart;
        /** @type {any[]} oldest first */
        this.lines = [];
        /** Those that have come while the trace pauses. */
        this.held = [];
        this.missed = 0;
        this.isPaused = false;
        this.devices = new Set();
        this.known = new Processes();
        state.watch(() => this.known.learnUsers(state.users));
        this.processes = new Set();
        this.isPainting = false;

        this.device = choice([{ value: '', text: 'all devices' }], '', { 'aria-label': 'Device' });
        this.process = choice([{ value: '', text: 'all processes' }], '', { 'aria-label': 'Process' });
        this.search = make('input', { type: 'search', placeholder: 'Search', 'aria-label': 'Search the trace',
            spellcheck: 'false' });
        this.pause = button('Pause', () => this.setPaused(!this.isPaused), { 'aria-pressed': 'false' });
        const clear = button('Clear', () => this.clear());
        this.status = make('span', { class: 'hint' });
        this.body = make('tbody');
        const columns = ['Time, s', 'Process', 'Request', 'Part'].map(name => make('th', { scope: 'col' }, name));
        this.table = make('table', { class: 'trace' }, make('caption', { class: 'unseen' }, 'Requests, the newest last'),
            make('thead', {}, make('tr', {}, ...columns)), this.body);
        this.empty = make('p', { class: 'hint empty' });
        this.scroll = make('div', { class: 'scroll', tabindex: '0', role: 'region', 'aria-label': 'Trace' },
            this.table, this.empty);
        place.replaceChildren(
            make('div', { class: 'row tools' }, this.device, this.process, this.search, this.pause, clear, this.status),
            this.scroll);
        for (const control of [this.device, this.process, this.search])
            control.addEventListener('input', () => this.repaint());
        this.repaint();
    }

    /** Requests of the past, or new ones. */
    take(data) {
        this.missed += Number(data.lost ?? 0);
        if (this.isPaused) {
            this.held.push(...data.requests);
            this.missed += this.held.splice(0, this.held.length - mostLines).length;
            this.showStatus();
            return;
        }
        this.add(data.requests);
    }

    add(requests) {
        const added = requests.slice(-mostLines);
        for (const request of added)
            this.learn(request);
        this.lines.push(...added);
        this.lines.splice(0, Math.max(this.lines.length - mostLines, 0));
        const first = this.lines[0]?.number ?? 0;
        const isAtEnd = this.isAtEnd();
        this.body.append(...added.filter(request => this.isShown(request)).map(request => this.row(request)));
        while (this.body.firstElementChild?.number < first)
            this.body.firstElementChild.remove();
        this.showStatus();
        if (isAtEnd)
            this.scroll.scrollTop = this.scroll.scrollHeight;
    }

    isAtEnd() {
        return this.scroll.scrollHeight - this.scroll.scrollTop - this.scroll.clientHeight < 30;
    }

    /** Offers the device and the process of a request as filters. */
    learn(request) {
        if (!this.devices.has(familyOf(request)) || (request.part && !this.devices.has(request.part))) {
            this.devices.add(familyOf(request));
            if (request.part)
                this.devices.add(request.part);
            this.offerDevices();
        }
        this.known.learn(request);
        if (!this.processes.has(this.known.of(request))) {
            this.processes.add(this.known.of(request));
            fillChoice(this.process, [{ value: '', text: 'all processes' }, ...[...this.processes].slice(-100).reverse()]);
        }
    }

    offerDevices() {
        const nameOfDevice = id => {
            const part = this.state.parts.get(id);
            return part ? nameOf(part) : kindTexts[id] ?? id;
        };
        const options = [...this.devices].map(value => ({ value, text: nameOfDevice(value) }));
        options.sort((one, other) => one.text.localeCompare(other.text, 'en', { numeric: true }));
        fillChoice(this.device, [{ value: '', text: 'all devices' }, ...options]);
    }

    isShown(request) {
        const device = this.device.value;
        const searched = this.search.value.trim().toLowerCase();
        return (device === '' || request.part === device || familyOf(request) === device) &&
            (this.process.value === '' || this.known.of(request) === this.process.value) &&
            (searched === '' || `${this.known.of(request)} ${request.text}`.toLowerCase().includes(searched));
    }

    row(request) {
        const part = this.state.parts.get(request.part);
        const link = part ? button(nameOf(part), () => this.onPart(part.id), { class: 'link' }) : null;
        const isFailed = Boolean(request.errno) || (request.result ?? 0) !== 0;
        const row = make('tr', { class: isFailed ? 'failed' : null },
            make('td', {}, secondsOf(request)), make('td', {}, this.known.of(request)), make('td', {}, request.text),
            make('td', {}, link));
        row.number = request.number;
        return row;
    }

    repaint() {
        this.body.replaceChildren(...this.lines.filter(request => this.isShown(request)).map(request => this.row(request)));
        this.showStatus();
        this.scroll.scrollTop = this.scroll.scrollHeight;
    }

    showStatus() {
        const shown = this.body.childElementCount;
        const texts = [shown === this.lines.length ? `${shown} requests` : `${shown} of ${this.lines.length} requests`];
        if (this.held.length !== 0)
            texts.push(`${this.held.length} more since the pause`);
        if (this.missed !== 0)
            texts.push(`${this.missed} left out`);
        setText(this.status, texts.join(', '));
        this.table.hidden = shown === 0;
        this.empty.hidden = shown !== 0;
        setText(this.empty, this.lines.length !== 0
            ? 'No request of these is what the filters let through.'
            : 'No program has sent anything yet. Run one on the board: vboard run DIR -- iodbg show');
    }

    setPaused(isPaused) {
        this.isPaused = isPaused;
        setAttribute(this.pause, 'aria-pressed', String(isPaused));
        setText(this.pause, isPaused ? 'Go on' : 'Pause');
        const held = this.held.splice(0);
        if (!isPaused)
            this.add(held);
    }

    /** Forgets the lines of this page; the board keeps them. */
    clear() {
        this.lines = [];
        this.held = [];
        this.missed = 0;
        this.repaint();
    }

    /** Shows the lines of a part alone. */
    showPart(id) {
        if (![...this.device.options].some(option => option.value === id)) {
            this.devices.add(id);
            this.offerDevices();
        }
        this.device.value = id;
        this.process.value = '';
        this.search.value = '';
        this.repaint();
        this.scroll.focus();
    }

    /** Shows another board's, or the same after it was lost. */
    restart(data) {
        this.lines = [];
        this.held = [];
        this.missed = 0;
        this.take(data);
        this.repaint();
    }
}
