// All properties of the board, for whoever knows their names.

import { make, setText } from './elements.js';
import { propertyRow } from './property_row.js';

const mostRows = 100;

export class Properties {
    /**
     * @param {HTMLDetailsElement} place
     * @param {import('./hands.js').Bench} bench
     */
    constructor(place, bench) {
        this.place = place;
        this.bench = bench;
        this.rows = [];
        this.search = make('input', { type: 'search', placeholder: 'cpld.*', 'aria-label': 'Names of properties',
            spellcheck: 'false', autocomplete: 'off' });
        this.status = make('span', { class: 'hint' });
        this.body = make('tbody');
        this.search.addEventListener('input', () => this.list());
        place.replaceChildren(place.querySelector('summary'), make('div', { class: 'row tools' }, this.search, this.status),
            make('div', { class: 'scroll', tabindex: '0', role: 'region', 'aria-label': 'All properties' },
                make('table', { class: 'properties' }, make('caption', { class: 'unseen' }, 'All properties'), this.body)));
        place.addEventListener('toggle', () => this.list());
        bench.state.watch(change => change.isWhole ? this.list() : this.refresh());
    }

    list() {
        this.rows = [];
        if (this.place.open) {
            const text = this.search.value.trim() || '*';
            const names = this.bench.state.namesFor([/[*?]/.test(text) ? text : `*${text}*`]);
            this.rows = names.slice(0, mostRows).map(name => propertyRow(this.bench, name));
            setText(this.status, names.length > mostRows ? `the first ${mostRows} of ${names.length}` : `${names.length}`);
        }
        this.body.replaceChildren(...this.rows.map(row => row.element));
        this.refresh();
    }

    refresh() {
        for (const row of this.rows)
            row.refresh();
    }
}
