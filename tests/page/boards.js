// The list of boards, and twins of captured units.

import assert from 'node:assert/strict';
import { readFile } from 'node:fs/promises';
import test from 'node:test';
import { eventually, newBoard, openPage, shared } from './support/bench.js';
import { shown } from './support/browser.js';
import { Board, vboard } from './support/programs.js';

/** Lets a file fall on the page, as a hand does. */
async function drop(page, name, content) {
    const transfer = await page.evaluateHandle(([title, text]) => {
        const data = new DataTransfer();
        data.items.add(new File([text], title, { type: 'application/json' }));
        return data;
    }, [name, content]);
    await page.dispatchEvent('body', 'dragover', { dataTransfer: transfer });
    await page.dispatchEvent('body', 'drop', { dataTransfer: transfer });
}

test('boards are listed, opened, and left for the list', async t => {
    const board = await newBoard();
    const page = await openPage(t);
    await page.goto(shared.server.address);
    await page.getByRole('link', { name: board.name, exact: true }).click();
    await shown(page);
    assert.equal(await page.locator('h1').textContent(), board.name);
    await page.getByRole('link', { name: 'All boards' }).click();
    const late = await newBoard('0x0109');
    await page.getByRole('row', { name: new RegExp(`${late.name} 0x0109`) }).waitFor();
    await vboard('delete', late.folder);
    await page.getByRole('link', { name: late.name, exact: true }).waitFor({ state: 'detached' });
});

test('a captured unit’s file makes a twin', async t => {
    const unit = await newBoard('0x0709');
    await unit.set('temperature.ambient=33', 'identity.serial=FIELD17');
    const file = `${shared.folder}/unit.json`;
    await vboard('capture', unit.folder, file);
    const page = await openPage(t, {}, /status of 400/);
    await page.goto(shared.server.address);
    await page.getByText('Drop the file of a captured unit').waitFor();
    await drop(page, 'from the field.json', await readFile(file, 'utf8'));
    const link = page.getByRole('status').getByRole('link', { name: 'from-the-field' });
    await link.waitFor();
    const twin = new Board(shared.folder, 'from-the-field');
    assert.equal(await twin.get('identity.serial'), 'FIELD17');
    assert.equal(await twin.get('time'), 'virtual');
    await link.click();
    await shown(page);
    await page.getByRole('link', { name: 'All boards' }).click();
    await drop(page, 'nonsense.json', '{"no": "unit"}');
    await page.locator('#messages p').waitFor();
    await eventually(async () => (await vboard('list', shared.folder)).includes('nonsense'), false);
});
