// Every model draws, and all of its parts have names.

import assert from 'node:assert/strict';
import test from 'node:test';
import { newBoard, openPage, shared } from './support/bench.js';
import { shown } from './support/browser.js';
import { remove, vboard } from './support/programs.js';

/** How many parts of each kind a board has to have, as its properties tell. */
async function expectedOf(board) {
    const all = await board.all();
    const count = pattern => Object.keys(all).filter(name => pattern.test(name)).length;
    return {
        port: Number(all['ports.copper']),
        sfp: Number(all['ports.sfp']) + Number(all['ports.uplinks']),
        fan: count(/^fan\.\d+\.present$/),
        supply: count(/^supply\.\d+\.present$/),
    };
}

test('every model is drawn, with a name for each part', async t => {
    const models = JSON.parse(await vboard('list-models', '--json')).map(model => model.id ?? model.model);
    assert.ok(models.length >= 14);
    const page = await openPage(t);
    for (const model of models) {
        const board = await newBoard(model);
        await page.goto(shared.server.pageOf(board.name));
        await page.locator('#model', { hasText: model }).waitFor();
        await shown(page);
        const parts = await page.locator('#drawing [data-part]').evaluateAll(elements => elements.map(element => ({
            id: element.dataset.part,
            kind: element.getAttribute('class').split(' ')[1],
            label: element.getAttribute('aria-label') ?? '',
            title: element.querySelector(':scope > title')?.textContent ?? '',
            role: element.getAttribute('role'),
            width: element.getBoundingClientRect().width,
        })));
        const expected = await expectedOf(board);
        for (const [kind, count] of Object.entries(expected))
            assert.equal(parts.filter(part => part.kind === kind).length, count, `${kind} of ${model}`);
        for (const part of parts) {
            assert.ok(part.label.length > 3, `${model}: ${part.id} has a name`);
            assert.ok(part.label.startsWith(part.title), part.title);
            assert.equal(part.role, 'button');
            assert.ok(part.width >= 8, `${model}: ${part.id} is seen, ${part.width} wide`);
        }
        assert.equal(new Set(parts.map(part => part.id)).size, parts.length);
        const listed = await page.locator('#part-choice option').count();
        assert.equal(listed, parts.length + 1, 'all parts can be chosen by their names');
        t.after(() => remove(board.folder));
    }
});
