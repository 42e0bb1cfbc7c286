// Faults are injected, seen to fire, and removed.

import assert from 'node:assert/strict';
import { choose, eventually, iodbgFails, pageTest } from './support/bench.js';
import { vboard } from './support/programs.js';

const rules = async board => JSON.parse(await vboard('fault', board.folder, 'list', '--json'))
    .map(({ device, op, effect, when, nth }) => ({ device, op, effect, when, nth: String(nth) }));

pageTest('a fault of the bus behind a part', {}, async ({ page, board }) => {
    await choose(page, 'temperature');
    const bus = await board.get('temperature.bus');
    await page.getByText(`Fault of ${bus}`).click();
    const form = page.locator('#card form', { hasText: 'Inject' });
    await form.getByLabel('Effect').selectOption('no-answer');
    await form.getByRole('button', { name: 'Inject' }).click();
    await eventually(async () => JSON.stringify(await rules(board)),
        JSON.stringify([{ device: bus, op: 'any', effect: 'no-answer', when: 'from', nth: '1' }]));
    await iodbgFails(board, 'temperature');
    await page.locator('#card .faults', { hasText: /fired [1-9]/ }).waitFor();
    await page.locator('#undo').click();
    await eventually(async () => (await rules(board)).length, 0);
});

pageTest('a fault of any device, removed and put back', {}, async ({ page, board }) => {
    const section = page.locator('#faults');
    await section.getByText('No fault is injected').waitFor();
    await section.getByLabel('Device').fill('mtd4');
    await section.getByLabel('Effect').selectOption('power-cut');
    await section.getByLabel('BYTES').fill('100');
    await section.getByLabel('Requests').selectOption('change');
    await section.getByLabel('Which').selectOption('once');
    await section.getByLabel('N', { exact: true }).fill('2');
    await section.getByRole('button', { name: 'Inject' }).click();
    const expected = [{ device: 'mtd4', op: 'change', effect: 'power-cut=100', when: 'once', nth: '2' }];
    await eventually(async () => JSON.stringify(await rules(board)), JSON.stringify(expected));
    await section.getByRole('button', { name: /Remove fault/ }).click();
    await section.getByText('No fault is injected').waitFor();
    assert.equal((await rules(board)).length, 0);
    await eventually(() => page.locator('#undo').textContent(), 'Undo “Fault removed: mtd4 power-cut=100”');
    await page.locator('#undo').click();
    await eventually(async () => JSON.stringify(await rules(board)), JSON.stringify(expected));
});

pageTest('a rule that could never fire is refused with what would be right', { expects: /status of 400/ }, async ({ page, board }) => {
    const section = page.locator('#faults');
    await section.getByLabel('Device').fill('cpld');
    await section.getByLabel('Offset').fill('99');
    await section.getByRole('button', { name: 'Inject' }).click();
    await page.locator('#messages', { hasText: '99' }).waitFor();
    assert.equal((await rules(board)).length, 0);
});
