// The server goes and comes back, and so does the board.

import assert from 'node:assert/strict';
import { writeFile } from 'node:fs/promises';
import test from 'node:test';
import { eventually, newBoard, shared } from './support/bench.js';
import { shown } from './support/browser.js';
import { Board, Server, temporaryFolder, remove, vboard } from './support/programs.js';

/** What browsers themselves tell of a server that is not there. */
const networkTrouble = /ERR_CONNECTION_REFUSED|ERR_INCOMPLETE_CHUNKED_ENCODING|ERR_CONNECTION_RESET|ERR_EMPTY_RESPONSE/;

test('a server that ends is waited for, and the page goes on by itself', async () => {
    const folder = await temporaryFolder();
    const board = await Board.create(folder, 'board');
    const tokenFile = `${folder}/token`;
    await writeFile(tokenFile, 'a-token-of-the-tests', { mode: 0o600 });
    const first = await Server.start(board.folder, '--token-file', tokenFile);
    const { page, told, close } = await shared.browser.open();
    await page.goto(first.address);
    await shown(page);
    assert.equal(await page.getByRole('link', { name: 'All boards' }).isVisible(), false);
    assert.equal(await first.end(), 0);
    await page.locator('#connection', { hasText: 'Trying again' }).waitFor();
    await board.set('fan.2.state', 'stuck');
    const second = await Server.start(board.folder, '--token-file', tokenFile, '--listen', `127.0.0.1:${first.port}`);
    await page.locator('#connection').waitFor({ state: 'hidden' });
    await page.locator('#drawing [data-part="fan.2"][aria-label*="stuck"], #drawing [data-part="fan.2"][aria-label*="stands"]').waitFor();
    await page.locator('#drawing [data-part="fan.1"]').click();
    await page.locator('#card').getByRole('button', { name: 'Pulled' }).click();
    await eventually(() => board.get('fan.1.present'), 'no');
    await second.end();
    await close();
    await remove(folder);
    assert.deepEqual(told.filter(text => !networkTrouble.test(text)), []);
});

test('a board that is removed is told, and shown again when there is one', async () => {
    const board = await newBoard();
    const { page, told, close } = await shared.browser.open();
    await page.goto(shared.server.pageOf(board.name));
    await shown(page);
    await remove(board.folder);
    await page.locator('#connection', { hasText: 'Trying again' }).waitFor();
    await vboard('create', '--model', '0x0109', board.folder);
    await page.locator('#model', { hasText: '0x0109' }).waitFor();
    await page.locator('#connection').waitFor({ state: 'hidden' });
    await eventually(() => page.locator('#drawing [data-part^="fan."]').count(), 0);
    await close();
    assert.deepEqual(told, []);
});
