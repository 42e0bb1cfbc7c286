// Twins: boards that are made of captured units, by dropping their file onto the page.

import { choice, field, make } from './elements.js';
import { server } from './api.js';
import { addressOf } from './boards.js';

/** "unit-17" of "unit 17.json" */
function nameOfFile(name) {
    return name.replace(/\.json$/i, '').replace(/[^A-Za-z0-9_.-]+/g, '-').replace(/^[-.]+|-+$/g, '') || 'twin';
}

export class Twins {
    /**
     * @param {HTMLElement} place
     * @param {{attempt: (deed: () => Promise<void>) => Promise<boolean>}} messages
     * @param {() => void} onMade
     */
    constructor(place, messages, onMade) {
        this.messages = messages;
        this.onMade = onMade;
        this.file = make('input', { type: 'file', accept: '.json,application/json', required: true });
        this.name = make('input', { type: 'text', required: true, pattern: '[A-Za-z0-9_][A-Za-z0-9_.\\-]*', maxlength: 64, placeholder: 'unit-17',
            autocomplete: 'off', spellcheck: 'false' });
        this.time = choice(['virtual', 'real', 'stepped'], 'virtual');
        this.submit = make('button', { class: 'main' }, 'Make the twin');
        this.result = make('div', { role: 'status' });
        this.form = make('form', { class: 'drop row' },
            make('p', { class: 'hint' }, 'Drop the file of a captured unit here (iodbg capture unit.json), or choose it: a ' +
                'board is made that answers as the unit did.'),
            field('File', this.file), field('Name', this.name), field('Time', this.time), this.submit);
        place.replaceChildren(this.form, this.result);
        this.file.addEventListener('change', () => this.suggestName());
        this.form.addEventListener('submit', event => {
            event.preventDefault();
            this.make(this.file.files[0]);
        });
    }

    suggestName() {
        if (this.file.files.length !== 0)
            this.name.value = nameOfFile(this.file.files[0].name);
    }

    /** A file that was let fall somewhere on the page. @param {DataTransfer} dropped */
    drop(dropped) {
        if (dropped.files.length === 0)
            return;
        const name = nameOfFile(dropped.files[0].name);
        this.file.files = dropped.files;
        this.name.value = name;
        this.make(dropped.files[0]);
    }

    async make(file) {
        const name = this.name.value;
        this.submit.disabled = true;
        this.result.replaceChildren();
        const isMade = await this.messages.attempt(async () => {
            const { gaps } = await server.createTwin(name, this.time.value, file);
            this.showMade(name, gaps ?? []);
        });
        this.submit.disabled = false;
        if (isMade) {
            this.form.reset();
            this.onMade();
        }
    }

    showMade(name, gaps) {
        this.result.replaceChildren(make('p', {}, 'The twin is ', make('a', { href: addressOf(name) }, name), '.'));
        if (gaps.length !== 0)
            this.result.append(make('p', { class: 'hint' }, 'What it cannot have of the unit:'),
                make('ul', {}, ...gaps.map(gap => make('li', {}, gap))));
    }
}

/** Lets files be dropped anywhere; without a taker the page says why they are not wanted. */
export function acceptDrops(place, onDrop) {
    place.addEventListener('dragover', event => {
        event.preventDefault();
        place.classList.add('dragging');
    });
    for (const end of ['dragleave', 'drop'])
        place.addEventListener(end, () => place.classList.remove('dragging'));
    place.addEventListener('drop', event => {
        event.preventDefault();
        onDrop(event.dataTransfer);
    });
}
