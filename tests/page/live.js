// What happens on the board is seen: by programs, by hands elsewhere, by another page.

import assert from 'node:assert/strict';
import test from 'node:test';
import { choose, eventually, hand, holds, newBoard, openPage, pageTest, partOf, shared } from './support/bench.js';
import { shown } from './support/browser.js';
import { iodbg } from './support/programs.js';

const labelOf = (page, id) => partOf(page, id).getAttribute('aria-label');

pageTest('a program’s doing is seen: a lamp, the fans, the trace', {}, async ({ page, board }) => {
    const before = await labelOf(page, 'lamp.system');
    await iodbg(board, 'led', 'set', 'system', '2');
    await page.waitForFunction(text => document.querySelector('[data-part="lamp.system"]').getAttribute('aria-label') !== text,
        before);
    await iodbg(board, 'fan', 'set', '5');
    await iodbg(board, 'poe', 'init');
    await eventually(async () => (await labelOf(page, 'fan.1')).includes(await board.get('fan.1.speed')), true);
    await page.locator('#trace tbody tr', { hasText: 'CPLD write' }).first().waitFor();
    const clock = await board.get('clock');
    await eventually(() => page.locator('.board-clock').textContent(), `${Number(clock).toFixed(3)} s`);
});

pageTest('a device that gets power is drawn so, and told', {}, async ({ page, board }) => {
    await iodbg(board, 'poe', 'init');
    await eventually(() => page.locator('#drawing .port.idle').count(), 48);
    await board.set('time', 'stepped');
    await board.set('poe.7.device', 'class=4 requests=25500 draws=18000');
    for (let i = 0; i < 3; ++i) // found, classified, powered up
        await page.getByRole('button', { name: '+1 s', exact: true }).click();
    await page.locator('#news', { hasText: 'Port 7' }).waitFor();
    await page.locator('#drawing [data-part="port.7"].delivering').waitFor();
    assert.match(await labelOf(page, 'port.7'), /18/);
    await holds(board, 'poe.7.state', 'delivering');
});

pageTest('a hand elsewhere is seen within 100 ms', {}, async ({ page, board }) => {
    await page.evaluate(() => {
        const part = document.querySelector('[data-part="fan.1"]');
        new MutationObserver(() => { globalThis.seen ??= Date.now(); }).observe(part, { attributes: true });
    });
    const start = Date.now();
    await board.set('fan.1.state', 'stuck');
    const end = Date.now();
    await page.waitForFunction(() => globalThis.seen);
    const seen = await page.evaluate(() => globalThis.seen);
    // It happened at some time between; where many tests run beside this one everything takes longer.
    const atMost = process.env.PAGE_TEST_QUIET ? 100 : 1000;
    assert.ok(seen - end <= atMost, `${seen - start} ms after the command began, ${seen - end} ms after its end`);
});

pageTest('fans turn as fast as they turn', { reducedMotion: 'no-preference' }, async ({ page, board }) => {
    const rate = () => page.evaluate(() => {
        const rotor = document.querySelector('[data-part="fan.1"] .rotor');
        const [animation] = rotor.getAnimations();
        return animation?.playState === 'running' ? animation.playbackRate * 60 / animation.effect.getTiming().duration * 1000 : 0;
    });
    // 60 times slower than they do: a turn a minute is drawn as one in an hour.
    const rpm = async () => Math.round(await rate() * 60);
    await eventually(rpm, Number(await board.get('fan.1.speed')));
    await board.set('fan.1.present', 'no');
    await eventually(rpm, 0);
});

test('two pages show one board, and what one does is on the other', async t => {
    const board = await newBoard();
    const one = await openPage(t);
    const other = await openPage(t);
    for (const page of [one, other]) {
        await page.goto(shared.server.pageOf(board.name));
        await shown(page);
    }
    await choose(one, 'sfp.50');
    await one.getByLabel('Kind').selectOption('lr');
    await hand(one, 'Plug').click();
    await other.waitForFunction(() => document.querySelector('[data-part="sfp.50"]').getAttribute('aria-label').includes('lr'));
    await choose(other, 'sfp.50');
    await hand(other, 'Pull').click();
    await one.locator('#card .sentence', { hasText: 'empty' }).waitFor();
});
