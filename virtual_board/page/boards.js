// The boards of a folder.

import { make, setText } from './elements.js';
import { server } from './api.js';

const columns = ['Board', 'Model', 'Time', 'In use by'];
const pauseMs = 3000;

/** Where the page of a board is. */
export function addressOf(name) {
    return `#/${encodeURIComponent(name)}`;
}

export class Boards {
    /**
     * @param {HTMLElement} place
     * @param {(error: unknown) => void} onConnection  null: the server answers
     */
    constructor(place, onConnection) {
        this.onConnection = onConnection;
        this.body = make('tbody');
        this.empty = make('p', { class: 'hint' });
        this.table = make('table', { class: 'boards' }, make('caption', { class: 'unseen' }, 'Boards'),
            make('thead', {}, make('tr', {}, ...columns.map(name => make('th', { scope: 'col' }, name)))), this.body);
        place.replaceChildren(this.table, this.empty);
        this.shown = '';
        this.timer = 0;
        this.isShown = false;
    }

    /** Stays up to date while it is seen. */
    open() {
        this.isShown = true;
        return this.refresh();
    }

    close() {
        this.isShown = false;
        clearTimeout(this.timer);
    }

    async refresh() {
        clearTimeout(this.timer);
        try {
            if (!document.hidden)
                this.show(await server.boards());
            this.onConnection(null);
        } catch (error) {
            this.onConnection(error);
        }
        if (this.isShown)
            this.timer = setTimeout(() => this.refresh(), pauseMs);
    }

    show({ folder, canCreate, boards }) {
        const all = JSON.stringify(boards);
        if (all !== this.shown)
            this.body.replaceChildren(...boards.map(rowOf));
        this.shown = all;
        this.table.hidden = boards.length === 0;
        this.empty.hidden = boards.length !== 0;
        setText(this.empty, canCreate
            ? `There is no board in ${folder} yet. Make one with "vboard create --model 0x0709 ${folder}/board", or drop ` +
              'a captured unit below.'
            : `There is no board in ${folder} any more.`);
    }
}

function rowOf(board) {
    if (board.problem)
        return make('tr', {}, make('th', { scope: 'row' }, board.name), make('td', { colspan: 3 }, board.problem));
    return make('tr', {},
        make('th', { scope: 'row' }, make('a', { href: addressOf(board.name) }, board.name)),
        make('td', {}, `${board.model} ${board.description ?? ''}`), make('td', {}, board.time),
        make('td', {}, board.users || 'nobody'));
}
