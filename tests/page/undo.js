// What hands have done is taken back.

import assert from 'node:assert/strict';
import { choose, eventually, hand, holds, pageTest } from './support/bench.js';

pageTest('steps are taken back one by one, the last first', {}, async ({ page, board }) => {
    const undo = page.locator('#undo');
    assert.equal(await undo.isDisabled(), true);
    await choose(page, 'fan.1');
    await hand(page, 'Stuck').click();
    await holds(board, 'fan.1.state', 'stuck');
    await hand(page, 'Pulled').click();
    await holds(board, 'fan.1.present', 'no');
    await eventually(() => undo.textContent(), 'Undo “Fan 1: Pulled”');
    await undo.click();
    await holds(board, 'fan.1.present', 'yes');
    assert.equal(await board.get('fan.1.state'), 'stuck');
    await page.locator('#drawing [data-part="fan.1"]').focus();
    await page.keyboard.press('Control+z');
    await holds(board, 'fan.1.state', 'good');
    await eventually(() => undo.isDisabled(), true);
});

pageTest('a pulled module comes back with its light and what was written into it', {}, async ({ page, board }) => {
    await board.set('sfp.49.module=sr', 'sfp.49.rx-power=321', 'sfp.49.id@100=abcd');
    const names = ['sfp.49.module', 'sfp.49.link', 'sfp.49.rx-power', 'sfp.49.id'];
    const before = await board.all(...names);
    await choose(page, 'sfp.49');
    await hand(page, 'Pull').click();
    await holds(board, 'sfp.49.module', 'none');
    await eventually(() => page.locator('#undo').isDisabled(), false);
    await page.locator('#undo').click();
    await holds(board, 'sfp.49.module', 'sr');
    await eventually(async () => JSON.stringify(await board.all(...names)), JSON.stringify(before));
});

pageTest('a dark module comes back dark', {}, async ({ page, board }) => {
    await board.set('sfp.49.module=sr', 'sfp.49.link=up', 'sfp.49.rx-power=0');
    await choose(page, 'sfp.49');
    await hand(page, 'Pull').click();
    await holds(board, 'sfp.49.module', 'none');
    await eventually(() => page.locator('#undo').isDisabled(), false);
    await page.locator('#undo').click();
    await holds(board, 'sfp.49.link', 'up');
    await holds(board, 'sfp.49.rx-power', '0');
});

pageTest('what somebody else has changed since stays', {}, async ({ page, board }) => {
    await choose(page, 'fan.1');
    await hand(page, 'Stuck').click();
    await eventually(() => page.locator('#undo').isDisabled(), false);
    await board.set('fan.1.state', 'failing');
    await page.locator('#undo').click();
    await page.locator('#messages', { hasText: 'somebody else has set fan.1.state to failing' }).waitFor();
    assert.equal(await board.get('fan.1.state'), 'failing');
});
