// A property in a table: what it holds, and a control where hands can set it.

import { button, choice, make, setAttribute, setText } from './elements.js';

const longestText = 64;

/**
 * @param {import('./hands.js').Bench} bench
 * @param {string} name
 * @returns {{element: HTMLElement, refresh: () => void}}
 */
export function propertyRow(bench, name) {
    const description = bench.descriptions.of(name);
    const unit = description?.unit ? ` ${description.unit}` : '';
    const head = make('th', { scope: 'row', title: description?.description }, name);
    const cell = make('td');
    const control = description?.settable ? editor(bench, name, description) : plainValue(bench, name);
    cell.append(control.element, make('span', { class: 'unit' }, unit));
    return { element: make('tr', {}, head, cell), refresh: control.refresh };
}

function plainValue(bench, name) {
    const element = make('span', { class: 'reading' });
    return { element, refresh: () => setText(element, bench.state.value(name) ?? '–') };
}

function editor(bench, name, description) {
    const isWord = description.type === 'word';
    return isWord ? wordEditor(bench, name, description) : textEditor(bench, name, description);
}

/** A choice of the words that can be set, and of that which is held. */
function wordEditor(bench, name, description) {
    const select = choice(description.words_to_set, '', { 'aria-label': name });
    const show = () => {
        const value = bench.state.value(name) ?? '';
        if (![...select.options].some(option => option.value === value))
            select.add(new Option(value, value));
        select.value = value;
    };
    select.addEventListener('change', async () => {
        if (!await bench.change(`${name}: ${select.value}`, { [name]: select.value }))
            show();
    });
    return { element: select, refresh: () => document.activeElement === select || show() };
}

/** A field, with a button as soon as something else stands in it than the board holds. */
function textEditor(bench, name, description) {
    const input = make('input', {
        type: 'text',
        'aria-label': name,
        spellcheck: 'false',
        autocomplete: 'off',
        inputmode: description.type === 'number' && (description.lowest ?? -1) >= 0 ? 'numeric' : null,
    });
    const set = make('button', { class: 'small', hidden: true }, 'Set');
    const revert = button('Cancel', () => show(), { class: 'small', hidden: true });
    const form = make('form', { class: description.unit ? 'editor' : 'editor of-text' }, input, set, revert);
    let isDirty = false;
    const mark = dirty => {
        isDirty = dirty;
        set.hidden = !dirty;
        revert.hidden = !dirty;
    };
    const show = () => {
        const value = bench.state.value(name) ?? '';
        if (input.value !== value)
            input.value = value;
        setAttribute(input, 'title', value.length > longestText ? `${value.length} characters` : value);
        mark(false);
    };
    input.addEventListener('input', () => mark(input.value !== bench.state.value(name)));
    input.addEventListener('keydown', event => {
        if (event.key === 'Escape' && isDirty) {
            event.stopPropagation();
            show();
        }
    });
    form.addEventListener('submit', async event => {
        event.preventDefault();
        const value = input.value;
        if (await bench.change(`${name}: ${value}`, { [name]: value }))
            mark(false);
    });
    return { element: form, refresh: () => isDirty || show() };
}
