// The board's clock in the page's hands.

import assert from 'node:assert/strict';
import { eventually, holds, pageTest } from './support/bench.js';

const press = (page, name) => page.locator('#time').getByRole('button', { name, exact: true }).click();

pageTest('time is stepped by buttons', { time: 'stepped' }, async ({ page, board }) => {
    for (const name of ['+1 ms', '+100 ms', '+1 s', '+10 s', '+1 min'])
        await press(page, name);
    await holds(board, 'clock', '71.101000000');
    await eventually(() => page.locator('.board-clock').textContent(), '71.101 s');
});

pageTest('kinds of time are chosen, and taken back', {}, async ({ page, board }) => {
    await press(page, 'Stepped');
    await holds(board, 'time', 'stepped');
    await page.getByLabel('N', { exact: true }).first().fill('250');
    await press(page, '× N');
    await holds(board, 'time', 'x250');
    await page.getByRole('group', { name: 'Move the clock' }).waitFor({ state: 'hidden' });
    await press(page, 'Real');
    await holds(board, 'time', 'real');
    await eventually(() => page.locator('#undo').textContent(), 'Undo “Time: real”');
    await page.locator('#undo').click();
    await holds(board, 'time', 'x250');
    await press(page, 'Virtual');
    await holds(board, 'time', 'virtual');
    await page.locator('#time button[aria-pressed=true]', { hasText: 'Virtual' }).waitFor();
});

pageTest('readings are plotted on the board’s clock', { time: 'stepped' }, async ({ page, board }) => {
    const figure = page.getByRole('img', { name: /^Fans in rpm/ });
    await board.set('fan.1.state', 'stuck');
    for (let i = 1; i <= 6; ++i) {
        await press(page, '+1 s');
        await eventually(() => page.locator('.board-clock').textContent(), `${i}.000 s`);
    }
    await holds(board, 'fan.1.speed', '0');
    await eventually(async () => /over 6 s: fan 1 0, lowest 0, highest 2400; fan 2/.test(await figure.getAttribute('aria-label')), true);
    const path = await figure.locator('path.line-0').getAttribute('d');
    assert.ok(path.split('V').length >= 4, `falls in steps: ${path}`);
    await board.set('sfp.50.module=sr', 'sfp.50.rx-power=333');
    await page.getByRole('img', { name: /^Light received.*cage 50 333/ }).waitFor();
});
