// The card of a part: what it is like, what hands can do to it, and the faults of the bus behind it.

import { nameOf } from './board_state.js';
import { button, make, setText } from './elements.js';
import { FaultForm } from './fault_form.js';
import { FaultList } from './faults.js';
import { boardHands, handsFor } from './hands.js';
import { propertyRow } from './property_row.js';

/** What is told of the board while no part is chosen. */
const boardPatterns = [
    'model', 'identity.*', 'cmdline', 'system-clock', 'temperature.*', 'rtc.*', 'watchdog.*', 'reset.*', 'poe.controller',
    'poe.drawn', 'poe.budget', 'flash.timing', 'console.speed', 'mdio.state', 'mdio.busy-polls',
];

/** What drives those parts that hands cannot move. */
const driverHints = {
    lamp: 'Programs drive the lamps: vboard run DIR -- iodbg led --help',
    port: 'This port carries data alone; the board knows nothing else of it.',
    watchdog: 'Programs arm the watchdog: vboard run DIR -- iodbg watchdog --help',
    clock: 'The clock is moved by “Time” at the top.',
};

export class Card {
    /**
     * @param {HTMLElement} place
     * @param {import('./hands.js').Bench & {effects: any, addFault: Function, removeFault: Function,
     *         showTrace: (id: string) => void, close: (isByKey: boolean) => void}} bench
     */
    constructor(place, bench) {
        this.place = place;
        this.bench = bench;
        this.id = '';
        this.refreshers = [];
        bench.state.watch(change => this.take(change));
    }

    take(change) {
        const isOther = change.isWhole && this.id !== '' && !this.bench.state.parts.has(this.id);
        if (isOther)
            this.show('');
        else if (change.isWhole && this.refreshers.length === 0)
            this.show(this.id);
        for (const refresh of this.refreshers)
            refresh();
    }

    /** @param {string} id  of a part; '': the board */
    show(id) {
        this.id = id;
        const part = this.bench.state.parts.get(id);
        const sections = part ? this.ofPart(part) : this.ofBoard();
        this.refreshers = sections.map(section => section.refresh).filter(Boolean);
        this.place.replaceChildren(...sections.map(section => section.element));
        for (const refresh of this.refreshers)
            refresh();
    }

    /** For whoever has come by keyboard. */
    focus() {
        this.place.querySelector('h2')?.focus({ preventScroll: true });
    }

    ofBoard() {
        const title = make('h2', { tabindex: '-1' }, 'The board');
        const hint = make('p', { class: 'hint' },
            'Choose a part of the drawing, with the mouse or with Tab, arrows and Enter: its card shows what it is like, ' +
            'and what hands can do to it.');
        return [{ element: title }, { element: hint }, ...boardHands(this.bench), this.table(boardPatterns)];
    }

    ofPart(part) {
        const hands = handsFor(this.bench, part);
        return [
            this.head(part),
            this.sentence(part),
            ...(hands.length === 0 ? this.hint(part) : hands),
            this.table(part.properties),
            ...(part.bus ? [this.faults(part)] : []),
        ];
    }

    head(part) {
        const title = make('h2', { tabindex: '-1' }, nameOf(part));
        const trace = button('Its trace', () => this.bench.showTrace(part.id), { 'aria-label': `Its trace: ${nameOf(part)}` });
        const close = button('Close', event => this.bench.close(event.detail === 0));
        return { element: make('header', { class: 'row' }, title, trace, close) };
    }

    sentence(part) {
        const element = make('p', { class: 'sentence' });
        return { element, refresh: () => setText(element, this.bench.state.parts.get(part.id)?.label ?? '') };
    }

    hint(part) {
        const text = driverHints[part.id] ?? driverHints[part.kind];
        return text ? [{ element: make('p', { class: 'hint' }, text) }] : [];
    }

    table(patterns) {
        const rows = this.bench.state.namesFor(patterns).map(name => propertyRow(this.bench, name));
        const body = make('tbody', {}, ...rows.map(row => row.element));
        const table = make('table', { class: 'properties' }, make('caption', { class: 'unseen' }, 'Properties'), body);
        return {
            element: rows.length !== 0 ? table : make('div'),
            refresh: () => rows.forEach(row => row.refresh()),
        };
    }

    faults(part) {
        const list = new FaultList(this.bench.state, this.bench.removeFault, fault => fault.device === part.bus);
        const form = new FaultForm(this.bench.effects, part.bus, this.bench.addFault);
        const element = make('details', { class: 'card-faults' },
            make('summary', {}, `Fault of ${part.bus}`), list.element, form.element);
        return {
            element,
            refresh: () => {
                if (list.refresh() !== 0)
                    element.open = true;
            },
        };
    }
}
