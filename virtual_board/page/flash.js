// The flash partitions: the banks with their headers, boot loader and settings.

import { make } from './elements.js';

const names = { 0: 'boot loader', 4: 'boot settings', 12: 'bank 0', 14: 'bank 1' };
const columns = ['Partition', 'Holds', 'Programmed', 'Erases', 'Bad blocks', 'Protected'];

function rowOf(partition) {
    const number = partition.partition;
    return [
        names[number] ? `mtd${number}, ${names[number]}` : `mtd${number}`,
        partition.holds.join(', ') || 'nothing',
        `${partition.programmed_pages} pages`,
        String(partition.erases.total),
        partition.bad_blocks.join(', ') || 'none',
        partition.write_protected ? 'yes' : 'no',
    ];
}

const pauseMs = 1000;

export class Flash {
    /**
     * @param {HTMLElement} place
     * @param {import('./api.js').BoardApi} api
     * @param {import('./board_state.js').BoardState} state
     */
    constructor(place, api, state) {
        this.place = place;
        this.api = api;
        this.timer = 0;
        this.asked = -pauseMs;
        state.watch(change => {
            if (change.isWhole || [...change.properties].some(name => name.startsWith('flash.')))
                this.refresh();
        });
    }

    /** Programs erase, and program pages without that a property changes. */
    takeTrace(requests) {
        if (requests.some(request => request.kind === 'mtd-write' || request.kind === 'mtd-erase'))
            this.refresh();
    }

    /** Not at once each time: to tell what it holds all of the flash is read. */
    refresh() {
        this.timer ||= setTimeout(() => this.ask(), Math.max(this.asked + pauseMs - performance.now(), 0));
    }

    async ask() {
        try {
            this.show(await this.api.flash());
        } catch {
            // The next change asks again; a server that is gone has its banner.
        }
        this.asked = performance.now();
        this.timer = 0;
    }

    show(partitions) {
        const cells = (tag, texts, attributes = {}) => texts.map(text => make(tag, attributes, text));
        this.place.replaceChildren(make('table', { class: 'flash' }, make('caption', { class: 'unseen' }, 'Flash'),
            make('thead', {}, make('tr', {}, ...cells('th', columns, { scope: 'col' }))),
            make('tbody', {}, ...partitions.map(partition => {
                const [first, ...rest] = rowOf(partition);
                return make('tr', {}, make('th', { scope: 'row' }, first), ...cells('td', rest));
            }))));
    }
}
