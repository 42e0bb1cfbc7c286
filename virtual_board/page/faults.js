// Fault rules of the board: which there are, how often they have fired, and new ones.

import { button, make, setText } from './elements.js';
import { FaultForm } from './fault_form.js';

function textOf(fault) {
    const offset = fault.offset === null || fault.offset === undefined ? '' : ` at ${fault.offset}`;
    return `${fault.device} ${fault.op}${offset}: ${fault.effect}, ${fault.when} ${fault.nth}`;
}

/** A list of rules that stays in step with the board. */
export class FaultList {
    /**
     * @param {import('./board_state.js').BoardState} state
     * @param {(fault: any) => void} onRemove
     * @param {(fault: any) => boolean} [concerns]  which rules are listed
     */
    constructor(state, onRemove, concerns = () => true) {
        this.state = state;
        this.onRemove = onRemove;
        this.concerns = concerns;
        this.element = make('ul', { class: 'faults' });
        /** @type {Map<number, {element: HTMLElement, counts: HTMLElement}>} */
        this.rows = new Map();
    }

    /** How many are listed. */
    refresh() {
        const faults = this.state.faults.filter(this.concerns);
        for (const [id, row] of this.rows) {
            if (!faults.some(fault => fault.id === id)) {
                row.element.remove();
                this.rows.delete(id);
            }
        }
        for (const fault of faults) {
            if (!this.rows.has(fault.id))
                this.addRow(fault);
            setText(this.rows.get(fault.id).counts, `matched ${fault.matched}, fired ${fault.fired}`);
        }
        this.element.hidden = faults.length === 0;
        return faults.length;
    }

    addRow(fault) {
        const counts = make('span', { class: 'hint' });
        const remove = button('Remove', () => this.onRemove(fault), { 'aria-label': `Remove fault ${fault.id}` });
        const element = make('li', {}, make('code', {}, textOf(fault)), counts, remove);
        this.rows.set(fault.id, { element, counts });
        this.element.append(element);
    }
}

/** The section of all rules. */
export class Faults {
    /**
     * @param {HTMLElement} place
     * @param {import('./board_state.js').BoardState} state
     * @param {any} effects
     * @param {{add: (rule: any) => Promise<boolean>, remove: (fault: any) => void}} hands
     */
    constructor(place, state, effects, hands) {
        this.list = new FaultList(state, hands.remove);
        this.empty = make('p', { class: 'hint' },
            'No fault is injected. Name a device and what shall go wrong with requests to it; a part of the drawing ' +
            'offers those of its own bus.');
        const devices = make('datalist', { id: 'fault-devices' }, ...effects.devices
            .flatMap(each => each.device === 'mtdN' ? ['mtd0', 'mtd4', 'mtd12', 'mtd14'] : [each.device])
            .filter(name => !/N$|^PATH$/.test(name)).map(value => make('option', { value })));
        place.replaceChildren(this.list.element, this.empty, devices, new FaultForm(effects, '', hands.add).element);
        state.watch(change => change.hasFaults && this.refresh());
        this.refresh();
    }

    refresh() {
        this.empty.hidden = this.list.refresh() !== 0;
    }
}
