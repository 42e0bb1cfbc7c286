// The server goes and comes back, and so does the board.

import assert from 'node:assert/strict';
import { writeFile } from 'node:fs/promises';
import test from 'node:test';
import { eventually, newBoard, openPage, shared } from './support/bench.js';
import { shown } from './support/browser.js';
import { remove, Server, vboard } from './support/programs.js';

/** What browsers themselves tell of a server that is not there. */
const networkTrouble = /ERR_CONNECTION_REFUSED|ERR_INCOMPLETE_CHUNKED_ENCODING|ERR_CONNECTION_RESET|ERR_EMPTY_RESPONSE/;

test('a server that ends is waited for, and the page goes on by itself', async t => {
    const page = await openPage(t, {}, networkTrouble); // closed before its servers end
    const board = await newBoard();
    const tokenFile = `${shared.folder}/token`;
    await writeFile(tokenFile, 'a-token-of-the-tests', { mode: 0o600 });
    const first = await Server.start(board.folder, '--token-file', tokenFile);
    t.after(() => first.end());
    await page.goto(first.address);
    await shown(page);
    assert.equal(await page.getByRole('link', { name: 'All boards' }).isVisible(), false);
    assert.equal(await first.end(), 0);
    await page.locator('#connection', { hasText: 'Trying again' }).waitFor();
    await board.set('fan.2.state', 'stuck');
    const second = await Server.start(board.folder, '--token-file', tokenFile, '--listen', `127.0.0.1:${first.port}`);
    t.after(() => second.end());
    await page.locator('#connection').waitFor({ state: 'hidden' });
    await page.locator('#drawing [data-part="fan.2"][aria-label*="stuck"], #drawing [data-part="fan.2"][aria-label*="stands"]').waitFor();
    await page.locator('#drawing [data-part="fan.1"]').click();
    await page.locator('#card').getByRole('button', { name: 'Pulled' }).click();
    await eventually(() => board.get('fan.1.present'), 'no');
});

test('a board that is removed is told, and shown again when there is one', async t => {
    const board = await newBoard();
    const page = await openPage(t);
    await page.goto(shared.server.pageOf(board.name));
    await shown(page);
    await remove(board.folder);
    await page.locator('#connection', { hasText: 'Trying again' }).waitFor();
    await vboard('create', '--model', '0x0109', board.folder);
    await page.locator('#model', { hasText: '0x0109' }).waitFor();
    await page.locator('#connection').waitFor({ state: 'hidden' });
    await eventually(() => page.locator('#drawing [data-part^="fan."]').count(), 0);
});
