// What a test works at: a server with a folder of boards, a board, and its page.

import assert from 'node:assert/strict';
import { writeFile } from 'node:fs/promises';
import test, { after, before } from 'node:test';
import { Browser, shown } from './browser.js';
import { Board, iodbg, remove, scenarios, Server, temporaryFolder } from './programs.js';

export const shared = { browser: null, server: null, folder: '' };

before(async () => {
    shared.folder = await temporaryFolder();
    const played = ['fan-failure.toml', 'sfp-swap.toml'].flatMap(name => ['--scenario', `${scenarios}/${name}`]);
    [shared.browser, shared.server] = await Promise.all([Browser.start(),
        Server.start(shared.folder, '--allow-run', ...played, '--scenario', await slowScenario(shared.folder))]);
});

after(async () => {
    await shared.browser?.end();
    await shared.server?.end();
    await remove(shared.folder);
});

/** A play that lasts as long as a hand needs to pause it. */
async function slowScenario(folder) {
    const steps = ['[[step]]\nset.fan.1.state = "stuck"', ...[1, 2, 3, 4, 5, 6, 7, 8, 9, 10].map(
        number => `[[step]]\nafter = 0.3\nset.temperature.ambient = ${25 + number}`)];
    await writeFile(`${folder}/slow.toml`, `title = "It gets warmer"\n\n${steps.join('\n\n')}\n`);
    return `${folder}/slow.toml`;
}

let boards = 0;

/** A new board beside those of other tests. */
export const newBoard = (model, time) => Board.create(shared.folder, `board-${++boards}`, model, time);

/**
 * A test of a board's page. Whatever the page writes on the console fails it, but for what it
 * expects: browsers tell there of each answer that refuses something.
 *
 * @param {string} name
 * @param {{model?: string, time?: string, expects?: RegExp, viewport?: any, colorScheme?: string,
 *          reducedMotion?: string}} options
 * @param {(bench: {page: import('playwright-core').Page, board: Board}) => Promise<void>} body
 */
export function pageTest(name, { model, time, expects = /^$/, ...view }, body) {
    test(name, async () => {
        const board = await newBoard(model, time);
        const key = JSON.stringify(view);
        const opened = pages.get(key) ?? await shared.browser.open(view);
        pages.delete(key); // and stays away, should the test fail
        try {
            await show(opened, board);
            await body({ page: opened.page, board });
            assert.deepEqual(opened.told.filter(text => !expects.test(text)), [], 'on the console');
            pages.set(key, opened);
        } finally {
            if (!pages.has(key))
                await opened.close();
        }
    });
}

/** Pages of tests that are over: the next of the same kind goes on with it, as people go from board to board. */
const pages = new Map();

/** Goes to a board, and removes the one that was shown before. */
async function show(opened, board) {
    opened.told.length = 0;
    await opened.page.goto(shared.server.pageOf(board.name));
    await opened.page.locator('h1', { hasText: new RegExp(`^${board.name}$`) }).waitFor();
    await shown(opened.page);
    if (opened.board)
        await remove(opened.board.folder);
    opened.board = board;
}

/** A page for a test, which fails when something unexpected stands on the console. */
export async function openPage(t, view = {}, expects = /^$/) {
    const { page, told, close } = await shared.browser.open(view);
    t.after(async () => {
        await close();
        assert.deepEqual(told.filter(text => !expects.test(text)), [], 'on the console');
    });
    return page;
}

/** Waits until something holds, or tells the last of what it was. */
export async function eventually(look, expected) {
    const end = Date.now() + 5000;
    for (;;) {
        const seen = await look();
        if (seen === expected)
            return;
        if (Date.now() > end)
            assert.equal(seen, expected);
        await new Promise(resolve => setTimeout(resolve, 20));
    }
}

/** Waits until a property of a board holds a value. */
export const holds = (board, name, value) => eventually(() => board.get(name), value);

/** The element of a part in the drawing. */
export const partOf = (page, id) => page.locator(`#drawing [data-part="${id}"]`);

/** Opens the card of a part. */
export async function choose(page, id) {
    await partOf(page, id).click();
    await page.locator('#card .sentence').waitFor();
}

/** A button of the card's, by its text, in a group. */
export function hand(page, text, group = undefined) {
    const card = page.locator('#card');
    return (group ? card.getByRole('group', { name: group, exact: true }) : card)
        .getByRole('button', { name: text, exact: true });
}

/** iodbg on a board, which has to end with an error. */
export async function iodbgFails(board, ...words) {
    await assert.rejects(iodbg(board, ...words), error => error.code !== 0);
}
