// A form for a fault rule. Its words are the server's; it offers what goes together.

import { choice, field, fillChoice, make } from './elements.js';

/** A value that makes sense, for whoever has no other in mind. */
const usualValues = {
    RESULT: '-5', ERRNO: 'EIO', BYTES: '1', 'INDEX:MASK': '0:0x01', READ: '3', PORT: '0',
};

const whenTexts = { once: 'the N-th', every: 'each N-th', from: 'N-th and on' };

/** "mtd12" is one of "mtdN", and a path one of "PATH". */
function kindOfDevice(effects, device) {
    const names = effects.devices.map(each => each.device);
    const plain = device.split(':')[0];
    if (names.includes(plain))
        return plain;
    const numbered = plain.replace(/\d+$/, 'N');
    return names.includes(numbered) ? numbered : plain.startsWith('/') ? 'PATH' : '';
}

export class FaultForm {
    /**
     * @param {any} effects  the words of rules
     * @param {string} device  that it is about; '': it is asked for
     * @param {(rule: Record<string, string>) => Promise<boolean>} onAdd
     */
    constructor(effects, device, onAdd) {
        this.effects = effects;
        this.device = make('input', { type: 'text', value: device || 'cpld', required: true, spellcheck: 'false',
            list: 'fault-devices', autocomplete: 'off' });
        this.effect = choice([], '');
        this.value = make('input', { type: 'text', required: true, spellcheck: 'false', autocomplete: 'off' });
        this.op = choice([], '');
        this.offset = make('input', { type: 'text', placeholder: 'every one', autocomplete: 'off' });
        this.nth = make('input', { type: 'number', min: 1, step: 1, value: 1, required: true });
        this.when = choice(effects.whens.map(value => ({ value, text: whenTexts[value] })), 'from');
        this.sentence = make('p', { class: 'hint' });
        this.valueField = field('Value', this.value);
        this.element = make('form', { class: 'grid' },
            field('Device', this.device, { hidden: device !== '' }), field('Effect', this.effect), this.valueField,
            field('Requests', this.op), field('Offset', this.offset), field('Which', this.when), field('N', this.nth),
            make('button', { class: 'main' }, 'Inject'), this.sentence);
        this.device.addEventListener('input', () => this.offerEffects());
        this.effect.addEventListener('change', () => this.offerOps());
        this.element.addEventListener('submit', event => {
            event.preventDefault();
            onAdd(this.rule());
        });
        this.offerEffects();
    }

    kind() {
        return kindOfDevice(this.effects, this.device.value.trim());
    }

    offerEffects() {
        const kind = this.kind();
        const fitting = this.effects.effects.filter(effect => effect.uses.some(use => use.device === kind));
        fillChoice(this.effect, (fitting.length !== 0 ? fitting : this.effects.effects).map(effect => effect.effect),
            fitting.some(effect => effect.effect === this.effect.value) ? this.effect.value : 'no-answer');
        this.offerOps();
    }

    offerOps() {
        const effect = this.effects.effects.find(each => each.effect === this.effect.value);
        const kind = this.kind();
        const form = effect.form.split('=')[1] ?? '';
        this.valueField.hidden = form === '';
        this.value.disabled = form === '';
        this.value.value = usualValues[form] ?? '';
        this.valueField.querySelector('label').textContent = form || 'Value';
        const ops = effect.uses.find(use => use.device === kind)?.ops ?? ['any'];
        fillChoice(this.op, ops, ops.at(-1));
        const device = this.effects.devices.find(each => each.device === kind);
        this.offset.placeholder = device?.offset ?? 'every one';
        this.sentence.textContent = `${effect.effect}: ${effect.sentence}.`;
    }

    rule() {
        const value = this.value.disabled ? '' : `=${this.value.value.trim()}`;
        const offset = this.offset.value.trim();
        return {
            device: this.device.value.trim(),
            op: this.op.value,
            ...(offset !== '' ? { offset } : {}),
            nth: this.nth.value,
            when: this.when.value,
            effect: this.effect.value + value,
        };
    }
}
