// The drawing of the front panel. The server draws; the page puts it in, lets hands at its parts, and
// gives them the looks that the board has meanwhile.

import { nameOf } from './board_state.js';
import { fillChoice, setAttribute, setText } from './elements.js';
import { directionOf, nearest } from './keyboard.js';
import { Rotors } from './rotors.js';

const groupNames = { port: 'Ports', sfp: 'Cages', fan: 'Fans', supply: 'Supplies', lamp: 'Lamps' };

/** What a part is called by screen readers, and by who speaks to the page: all that is written on it belongs to that. */
function spokenNameOf(part, element) {
    const written = [...element.querySelectorAll('text')].map(text => text.textContent)
        .filter(text => /[A-Za-z0-9]/.test(text) && !part.label.toLowerCase().includes(text.toLowerCase()));
    return [part.label, ...written].join(', ');
}

export class Panel {
    /**
     * @param {{drawing: HTMLElement, parts: HTMLSelectElement}} places
     * @param {import('./board_state.js').BoardState} state
     * @param {(id: string, isByKey: boolean) => void} onChoose
     */
    constructor(places, state, onChoose) {
        this.places = places;
        this.state = state;
        this.onChoose = onChoose;
        this.svg = null;
        /** @type {Map<string, SVGGElement>} */
        this.elements = new Map();
        this.chosen = '';
        this.rotors = new Rotors();
        state.watch(change => {
            for (const id of change.parts)
                this.apply(id);
        });
        places.drawing.addEventListener('click', event => {
            const element = event.target.closest('[data-part]');
            if (element)
                this.onChoose(element.dataset.part, false);
        });
        places.drawing.addEventListener('keydown', event => this.onKey(event));
        places.parts.addEventListener('change', () => this.onChoose(places.parts.value, false));
    }

    /** Puts a drawing in, of the parts that the board has. */
    show(text) {
        const parsed = new DOMParser().parseFromString(text, 'image/svg+xml').documentElement;
        this.svg = document.importNode(parsed, true);
        this.svg.setAttribute('role', 'group');
        this.rotors.clear();
        this.places.drawing.replaceChildren(this.svg);
        this.elements = new Map(
            [...this.svg.querySelectorAll('[data-part]')].map(element => [element.dataset.part, element]));
        for (const [id, element] of this.elements) {
            element.setAttribute('role', 'button');
            element.setAttribute('tabindex', '-1');
            element.setAttribute('aria-pressed', String(id === this.chosen));
            this.apply(id);
        }
        this.holdFocusAt(this.elements.has(this.chosen) ? this.chosen : this.elements.keys().next().value);
        this.listParts();
    }

    listParts() {
        const { parts } = this.places;
        fillChoice(parts, [{ value: '', text: 'the whole board' }], '');
        const groups = new Map();
        for (const part of this.state.parts.values()) {
            const name = groupNames[part.kind] ?? 'Others';
            if (!groups.has(name)) {
                const group = document.createElement('optgroup');
                group.label = name;
                groups.set(name, group);
            }
            groups.get(name).append(new Option(nameOf(part), part.id));
        }
        parts.append(...groups.values());
        parts.value = this.chosen;
    }

    /** One part as the board has it now. */
    apply(id) {
        const part = this.state.parts.get(id);
        const element = this.elements.get(id);
        if (!part || !element)
            return;
        setAttribute(element, 'class', `part ${part.kind} ${part.look}`);
        const title = element.querySelector(':scope > title');
        if (title)
            setText(title, part.label);
        const value = element.querySelector('.value');
        if (value)
            setText(value, part.text);
        setAttribute(element, 'aria-label', spokenNameOf(part, element));
        const rotor = element.querySelector('.rotor');
        if (rotor)
            this.rotors.turn(id, rotor, part.rpm ?? 0);
    }

    /** Marks a part as the chosen one; none: ''. */
    choose(id) {
        this.elements.get(this.chosen)?.setAttribute('aria-pressed', 'false');
        this.chosen = id;
        this.elements.get(id)?.setAttribute('aria-pressed', 'true');
        if (this.elements.has(id))
            this.holdFocusAt(id);
        this.places.parts.value = id;
    }

    /** Brings a part into view and lets it flash, for whoever comes from somewhere else on the page. */
    point(id) {
        const element = this.elements.get(id);
        if (!element)
            return;
        const isCalm = matchMedia('(prefers-reduced-motion: reduce)').matches;
        element.scrollIntoView({ block: 'center', inline: 'center', behavior: isCalm ? 'auto' : 'smooth' });
        element.classList.add('pointed');
        setTimeout(() => element.classList.remove('pointed'), 1500);
    }

    focus(id) {
        this.elements.get(id)?.focus();
    }

    /** The drawing is one stop of the Tab key; arrows lead from part to part. */
    holdFocusAt(id) {
        for (const [each, element] of this.elements)
            setAttribute(element, 'tabindex', each === id ? '0' : '-1');
    }

    onKey(event) {
        const element = event.target.closest('[data-part]');
        if (!element)
            return;
        if (event.key === 'Enter' || event.key === ' ') {
            event.preventDefault();
            this.onChoose(element.dataset.part, true);
            return;
        }
        const next = this.neighbour(element, event.key);
        if (!next)
            return;
        event.preventDefault();
        this.holdFocusAt(next.dataset.part);
        next.focus();
    }

    neighbour(element, key) {
        const all = [...this.elements.values()];
        if (key === 'Home')
            return all[0];
        if (key === 'End')
            return all.at(-1);
        const direction = directionOf(key);
        return direction && nearest(element, all, direction);
    }
}
