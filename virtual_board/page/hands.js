// What hands can do to the parts of a board, beside setting single properties. A hand is a group of
// controls; each tells what it changes, and how it looks while the board is as it is.

import { nameOf } from './board_state.js';
import { button, choice, field, make, setAttribute } from './elements.js';

/**
 * @typedef {{state: import('./board_state.js').BoardState,
 *            descriptions: import('./descriptions.js').Descriptions,
 *            change: (title: string, changes: Record<string, string>) => Promise<boolean>}} Bench
 * @typedef {{element: HTMLElement, refresh: () => void}} Hand
 */

const signatureTexts = {
    good: 'good',
    bad: 'bad: no PoE device',
    legacy: 'legacy: older than the standard',
    short: 'short circuit',
    open: 'open wire',
};

const moduleTexts = {
    sx: 'sx: 1000BASE-SX, no diagnostics',
    sr: 'sr: 10GBASE-SR',
    lr: 'lr: 10GBASE-LR',
    dac: 'dac: copper cable, 3 m',
    'copper-mode4': 'copper-mode4: RJ45',
    'copper-mode12': 'copper-mode12: RJ45',
    'copper-other': 'copper-other: RJ45',
    'bad-checksum': 'bad-checksum: an sr with a wrong checksum',
    dead: 'dead: an sr that does not answer',
    slow: 'slow: an sr that answers after 2 s',
};

/** Buttons in a row, under a name. @returns {HTMLElement} */
function group(name, ...controls) {
    return make('fieldset', { class: 'hand' }, make('legend', {}, name), make('div', { class: 'row' }, ...controls));
}

/** A button for each value of a property; the one that it has is pressed. @returns {Hand} */
function switches(bench, part, legend, name, words) {
    const buttons = Object.entries(words).map(([value, text]) => [value, button(text, () =>
        bench.change(`${nameOf(part)}: ${text}`, { [name]: value }))]);
    return {
        element: group(legend, ...buttons.map(([, each]) => each)),
        refresh: () => {
            for (const [value, each] of buttons)
                setAttribute(each, 'aria-pressed', String(bench.state.value(name) === value));
        },
    };
}

/** A number that is set with a button. @returns {Hand} */
function numberHand(bench, part, legend, name, what) {
    const row = bench.descriptions.of(name);
    const input = make('input', { type: 'number', step: 1, min: row?.lowest, max: row?.highest, required: true });
    const form = make('form', { class: 'row' }, field(what, input), make('button', {}, 'Set'));
    form.addEventListener('submit', event => {
        event.preventDefault();
        bench.change(`${nameOf(part)}: ${what} ${input.value}`, { [name]: input.value });
    });
    return {
        element: make('fieldset', { class: 'hand' }, make('legend', {}, legend), form),
        refresh: () => {
            if (document.activeElement !== input)
                input.value = bench.state.value(name) ?? '';
        },
    };
}

/** "class=4 signature=good requests=25500 draws=18000 over-current" in its parts. */
function partsOfDevice(text) {
    const words = (text ?? 'none').split(' ').filter(word => word !== 'none');
    const parts = Object.fromEntries(words.filter(word => word.includes('=')).map(word => word.split('=')));
    return { ...parts, isOverCurrent: words.includes('over-current') };
}

function textOfDevice(device) {
    const words = ['class', 'signature', 'requests', 'draws'].filter(name => device[name] !== undefined)
        .map(name => `${name}=${device[name]}`);
    return [...words, ...(device.isOverCurrent ? ['over-current'] : [])].join(' ');
}

const milliwatts = watts => String(Math.round(Number(watts) * 1000));

function poweredDeviceForm(bench, part, name) {
    const classOf = choice([0, 1, 2, 3, 4, 5, 6, 7, 8].map(each => ({ value: String(each) })), '4');
    const watts = value => make('input', { type: 'number', min: 0, max: 100, step: 'any', value, required: true });
    const draws = watts('18');
    const requests = watts('25.5');
    const signature = choice(Object.entries(signatureTexts).map(([value, text]) => ({ value, text })), 'good');
    const form = make('form', { class: 'grid' },
        field('Class', classOf), field('Draws, W', draws), field('Requests, W', requests),
        field('Signature', signature), make('button', { class: 'main' }, 'Plug'));
    form.addEventListener('submit', event => {
        event.preventDefault();
        const device = {
            class: classOf.value,
            signature: signature.value,
            requests: milliwatts(requests.value),
            draws: milliwatts(draws.value),
        };
        bench.change(`${nameOf(part)}: plug a class ${classOf.value} device`, { [name]: textOfDevice(device) });
    });
    return make('fieldset', { class: 'hand' }, make('legend', {}, 'Plug a device'), form);
}

/** @returns {Hand[]} */
function poePortHands(bench, part, number) {
    const name = `poe.${number}.device`;
    const set = (title, changed) => bench.change(`${nameOf(part)}: ${title}`,
        { [name]: textOfDevice({ ...partsOfDevice(bench.state.value(name)), ...changed }) });
    const pull = button('Pull', () => bench.change(`${nameOf(part)}: pull`, { [name]: 'none' }));
    const overload = button('Overload', () => set('overload', { isOverCurrent: true }));
    const short = button('Short circuit', () => set('short circuit', { signature: 'short' }));
    const repair = button('Repair', () => set('repair', { signature: 'good', isOverCurrent: false }));
    const plugged = group('The plugged device', pull, overload, short, repair);
    return [{
        element: make('div', {}, poweredDeviceForm(bench, part, name), plugged),
        refresh: () => {
            const text = bench.state.value(name) ?? 'none';
            const device = partsOfDevice(text);
            plugged.hidden = text === 'none';
            setAttribute(overload, 'aria-pressed', String(device.isOverCurrent));
            setAttribute(short, 'aria-pressed', String(device.signature === 'short'));
        },
    }];
}

/** @returns {Hand[]} */
function cageHands(bench, part, number) {
    const property = member => `sfp.${number}.${member}`;
    const change = (title, changes) => bench.change(`${nameOf(part)}: ${title}`, changes);
    const words = (bench.descriptions.of(property('module'))?.words ?? []).filter(word => word !== 'none');
    const kind = choice(words.map(value => ({ value, text: moduleTexts[value] })), 'sr');
    const plug = make('form', { class: 'row' }, field('Kind', kind), make('button', { class: 'main' }, 'Plug'));
    plug.addEventListener('submit', event => {
        event.preventDefault();
        change(`plug ${kind.value}`, { [property('module')]: kind.value });
    });
    const light = numberHand(bench, part, 'Light that arrives', property('rx-power'), 'Microwatts');
    light.element.querySelector('form').append(
        button('Darken', () => change('darken', { [property('rx-power')]: '0' })));
    const module = [
        switches(bench, part, 'Link of the cable', property('link'), { up: 'Up', down: 'Down' }),
        light,
        switches(bench, part, 'Health', property('state'), { good: 'Good', 'tx-fault': 'Transmit fault', dead: 'Dead' }),
    ];
    const pull = group('The plugged module', button('Pull', () => change('pull', { [property('module')]: 'none' })));
    const plugged = make('div', {}, pull, ...module.map(hand => hand.element));
    return [{
        element: make('div', {}, make('fieldset', { class: 'hand' }, make('legend', {}, 'Plug a module'), plug), plugged),
        refresh: () => {
            const current = bench.state.value(property('module')) ?? 'none';
            plugged.hidden = current === 'none';
            light.element.hidden = current === 'dac' || current.startsWith('copper');
            for (const hand of module)
                hand.refresh();
        },
    }];
}

/** Whether a part is in its place. */
function presence(bench, part, name) {
    return switches(bench, part, 'Place', name, { yes: 'Plugged', no: 'Pulled' });
}

/** @returns {Hand[]} */
function fanHands(bench, part, number) {
    return [
        presence(bench, part, `fan.${number}.present`),
        switches(bench, part, 'Health', `fan.${number}.state`,
            { good: 'Good', failing: 'Failing', stuck: 'Stuck', held: 'Held' }),
    ];
}

/** @returns {Hand[]} */
function supplyHands(bench, part, number) {
    return [
        presence(bench, part, `supply.${number}.present`),
        switches(bench, part, 'Input', `supply.${number}.input`, { good: 'Good', failed: 'Failed' }),
        switches(bench, part, 'Output', `supply.${number}.output`, { good: 'Good', failed: 'Failed' }),
    ];
}

const gaugeHands = {
    temperature: (bench, part) => [
        numberHand(bench, part, 'Around the unit', 'temperature.ambient', 'Degrees C'),
        switches(bench, part, 'Sensor', 'temperature.state', { good: 'Good', stuck: 'Stuck', missing: 'Missing' }),
    ],
    poe: (bench, part) => {
        const take = button('Take the controller out', () =>
            bench.change(`${nameOf(part)}: missing`, { 'poe.controller': 'missing' }));
        const put = button('Put it back', () =>
            bench.change(`${nameOf(part)}: present`, { 'poe.controller': 'present' }));
        return [{
            element: group('Controller', take, put),
            refresh: () => {
                const isMissing = bench.state.value('poe.controller') === 'missing';
                take.hidden = isMissing;
                put.hidden = !isMissing;
            },
        }];
    },
    calendar: (bench, part) => [
        switches(bench, part, 'Battery', 'rtc.battery', { good: 'Good', empty: 'Empty' }),
    ],
};

/** Hands of the board as a whole. @returns {Hand[]} */
export function boardHands(bench) {
    const cycle = button('Switch off and on', () => bench.change('Switch off and on', { power: 'cycle' }));
    return [{ element: group('Power, cannot be undone', cycle), refresh: () => {} }];
}

const kindHands = { port: poePortHands, sfp: cageHands, fan: fanHands, supply: supplyHands };

/**
 * What can be done to a part.
 *
 * @param {Bench} bench
 * @param {import('./board_state.js').Part} part
 * @returns {Hand[]}
 */
export function handsFor(bench, part) {
    const number = part.id.split('.')[1];
    const isThere = patterns => bench.state.namesFor(patterns).some(name => bench.descriptions.isSettable(name));
    if (!isThere(part.properties))
        return [];
    return (gaugeHands[part.id] ?? kindHands[part.kind] ?? (() => []))(bench, part, number);
}
