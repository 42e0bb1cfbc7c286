// The board's clock: where it is, how it goes, and the steps of one that stands.

import { button, field, make, setAttribute, setText } from './elements.js';
import { clockText } from './numbers.js';

const steps = [['0.001', '+1 ms'], ['0.1', '+100 ms'], ['1', '+1 s'], ['10', '+10 s'], ['60', '+1 min']];

const kinds = {
    real: ['Real', 'as the host’s clock'],
    scaled: ['× N', 'N times as fast as the host’s clock'],
    stepped: ['Stepped', 'stands, and goes on by these buttons alone'],
    virtual: ['Virtual', 'stands, and goes on by the sleeps of programs'],
};

/** "x60" is of the kind "scaled". */
function kindOf(time) {
    return /^x/.test(time) ? 'scaled' : time;
}

export class Time {
    /**
     * @param {HTMLElement} place
     * @param {import('./board_state.js').BoardState} state
     * @param {{change: Function, advance: (seconds: string) => void}} hands
     */
    constructor(place, state, hands) {
        this.state = state;
        this.hands = hands;
        this.clock = make('div', { class: 'board-clock', role: 'timer', 'aria-label': 'Clock of the board' });
        this.buttons = Object.entries(kinds).map(([kind, [text, title]]) =>
            [kind, button(text, () => this.choose(kind), { title })]);
        this.rate = make('input', { type: 'number', min: 0.001, max: 1000, step: 'any', value: 60, class: 'rate' });
        this.rate.addEventListener('change', () => kindOf(this.state.time) === 'scaled' && this.choose('scaled'));
        this.rateField = field('N', this.rate);
        this.steps = make('div', { class: 'row steps', role: 'group', 'aria-label': 'Move the clock' },
            ...steps.map(([seconds, text]) => button(text, () => hands.advance(seconds))));
        place.replaceChildren(this.clock,
            make('div', { class: 'row kinds', role: 'group', 'aria-label': 'Time' },
                ...this.buttons.map(([, each]) => each), this.rateField),
            this.steps);
        state.watch(() => this.refresh());
    }

    choose(kind) {
        const time = kind === 'scaled' ? `x${this.rate.value}` : kind;
        this.hands.change(`Time: ${time}`, { time });
    }

    refresh() {
        setText(this.clock, `${clockText(this.state.clock)} s`);
        const current = kindOf(this.state.time);
        for (const [kind, each] of this.buttons)
            setAttribute(each, 'aria-pressed', String(kind === current));
        if (current === 'scaled' && document.activeElement !== this.rate)
            this.rate.value = this.state.time.slice(1);
        this.steps.hidden = current !== 'stepped' && current !== 'virtual';
    }
}
