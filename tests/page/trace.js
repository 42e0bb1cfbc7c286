// The trace: filters, search, pause, and the ways between its lines and the parts.

import assert from 'node:assert/strict';
import { choose, eventually, pageTest, partOf } from './support/bench.js';
import { iodbg, vboard } from './support/programs.js';

const rows = page => page.locator('#trace tbody tr');

pageTest('without requests it says how to make some', {}, async ({ page }) => {
    await page.getByText('vboard run DIR -- iodbg show').waitFor();
});

pageTest('the past is there, in the words of vboard trace', {}, async ({ page, board }) => {
    await iodbg(board, 'temperature');
    await page.reload();
    await page.locator('#trace tbody tr').first().waitFor();
    const expected = (await vboard('trace', board.folder)).trim().split('\n').map(line => line.split(' ').slice(2).join(' '));
    assert.ok(expected.length > 0);
    await eventually(() => rows(page).count(), expected.length);
    const shown = await rows(page).evaluateAll(all => all.map(row => row.children[2].textContent));
    assert.deepEqual(shown, expected);
});

pageTest('it is filtered by device and process, and searched', {}, async ({ page, board }) => {
    await iodbg(board, 'temperature');
    await iodbg(board, 'cpld', 'get', '2');
    await iodbg(board, 'sfp', 'show', '49');
    await eventually(async () => await rows(page).count() > 3, true);
    const all = await rows(page).count();
    await page.getByLabel('Device', { exact: true }).first().selectOption({ label: 'CPLD' });
    const texts = await rows(page).evaluateAll(each => each.map(row => row.children[2].textContent));
    assert.ok(texts.length > 0 && texts.length < all);
    assert.ok(texts.every(text => text.startsWith('CPLD')));
    await page.getByLabel('Search the trace').fill('reg 2 ');
    await eventually(() => rows(page).count(), 1);
    await page.getByLabel('Search the trace').fill('there is no such line');
    await page.getByText('what the filters let through').waitFor();
    await page.getByLabel('Search the trace').fill('');
    await page.locator('#trace select').first().selectOption('');
    const process = page.getByLabel('Process');
    const first = await process.locator('option').last().getAttribute('value');
    await process.selectOption(first);
    const processes = await rows(page).evaluateAll(each => each.map(row => row.children[1].textContent));
    assert.ok(processes.length > 0 && processes.length < all);
    assert.ok(processes.every(text => text === first));
});

pageTest('it pauses, counts, and goes on', {}, async ({ page, board }) => {
    await iodbg(board, 'cpld', 'get', '2');
    await eventually(() => rows(page).count(), 1);
    await page.getByRole('button', { name: 'Pause' }).click();
    await iodbg(board, 'cpld', 'get', '3');
    await page.locator('#trace', { hasText: '1 more since the pause' }).waitFor();
    assert.equal(await rows(page).count(), 1);
    await page.getByRole('button', { name: 'Go on' }).click();
    await eventually(() => rows(page).count(), 2);
    await page.locator('#trace').getByRole('button', { name: 'Clear' }).click();
    assert.equal(await rows(page).count(), 0);
});

pageTest('from a line to its part, and from a part to its lines', {}, async ({ page, board }) => {
    await iodbg(board, 'temperature');
    await iodbg(board, 'cpld', 'get', '2');
    await eventually(async () => await rows(page).count() > 1, true);
    const all = await rows(page).count();
    await rows(page).getByRole('button', { name: 'Temperature' }).first().click();
    assert.equal(await partOf(page, 'temperature').getAttribute('aria-pressed'), 'true');
    assert.equal(await page.evaluate(() => document.activeElement.dataset.part), 'temperature');
    await choose(page, 'temperature');
    await page.getByRole('button', { name: /^Its trace/ }).click();
    const left = await rows(page).count();
    assert.ok(left > 0 && left < all, `${left} of ${all}`);
    const parts = await rows(page).evaluateAll(each => each.map(row => row.children[3].textContent));
    assert.equal(new Set(parts).size, 1);
});

pageTest('it keeps 2000 lines and not more', {}, async ({ page, board }) => {
    // What comes faster than pages are told is left out.
    await vboard('run', board.folder, '--', 'sh', '-c', 'i=0; while [ $i -lt 4000 ]; do read -r x < /proc/cmdline; i=$((i+1)); done');
    await page.locator('#trace', { hasText: '2000 requests' }).waitFor();
    assert.equal(await rows(page).count(), 2000);
});
