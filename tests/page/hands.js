// Each click does to the board what it says; the board is asked by `vboard get`.

import assert from 'node:assert/strict';
import { choose, hand, holds, pageTest, partOf } from './support/bench.js';

pageTest('devices are plugged into a PoE port, overloaded, repaired and pulled', {}, async ({ page, board }) => {
    const name = 'poe.3.device';
    await choose(page, 'port.3');
    await page.getByLabel('Draws, W').fill('15.4');
    await page.getByLabel('Class').selectOption('3');
    await hand(page, 'Plug').click();
    await holds(board, name, 'class=3 signature=good requests=25500 draws=15400');
    await hand(page, 'Overload').click();
    await holds(board, name, 'class=3 signature=good requests=25500 draws=15400 over-current');
    await hand(page, 'Repair').click();
    await hand(page, 'Short circuit').click();
    await holds(board, name, 'class=3 signature=short requests=25500 draws=15400');
    await hand(page, 'Pull').click();
    await holds(board, name, 'none');
    await hand(page, 'Pull').waitFor({ state: 'hidden' });
});

pageTest('modules are plugged, linked, lit, darkened, broken and pulled', {}, async ({ page, board }) => {
    await choose(page, 'sfp.49');
    await page.getByLabel('Kind').selectOption('sr');
    await hand(page, 'Plug').click();
    await holds(board, 'sfp.49.module', 'sr');
    await hand(page, 'Up').click();
    await holds(board, 'sfp.49.link', 'up');
    await page.getByLabel('Microwatts').fill('420');
    await hand(page, 'Set', 'Light that arrives').click();
    await holds(board, 'sfp.49.rx-power', '420');
    await hand(page, 'Darken').click();
    await holds(board, 'sfp.49.rx-power', '0');
    await hand(page, 'Transmit fault').click();
    await holds(board, 'sfp.49.state', 'tx-fault');
    await hand(page, 'Dead').click();
    await holds(board, 'sfp.49.state', 'dead');
    await hand(page, 'Down').click();
    await holds(board, 'sfp.49.link', 'down');
    await hand(page, 'Pull').click();
    await holds(board, 'sfp.49.module', 'none');
});

const switched = [
    ['fan.1', 'Place', 'Pulled', 'fan.1.present', 'no'],
    ['fan.1', 'Place', 'Plugged', 'fan.1.present', 'yes'],
    ['fan.2', 'Health', 'Failing', 'fan.2.state', 'failing'],
    ['fan.2', 'Health', 'Stuck', 'fan.2.state', 'stuck'],
    ['fan.2', 'Health', 'Held', 'fan.2.state', 'held'],
    ['fan.2', 'Health', 'Good', 'fan.2.state', 'good'],
    ['supply.1', 'Input', 'Failed', 'supply.1.input', 'failed'],
    ['supply.1', 'Output', 'Failed', 'supply.1.output', 'failed'],
    ['supply.1', 'Output', 'Good', 'supply.1.output', 'good'],
    ['supply.2', 'Place', 'Pulled', 'supply.2.present', 'no'],
    ['temperature', 'Sensor', 'Stuck', 'temperature.state', 'stuck'],
    ['temperature', 'Sensor', 'Missing', 'temperature.state', 'missing'],
    ['calendar', 'Battery', 'Empty', 'rtc.battery', 'empty'],
    ['poe', 'Controller', 'Take the controller out', 'poe.controller', 'missing'],
    ['poe', 'Controller', 'Put it back', 'poe.controller', 'application'],
];

pageTest('fans, supplies, sensor, battery and controller are switched', {}, async ({ page, board }) => {
    for (const [part, group, text, name, value] of switched) {
        await choose(page, part);
        await hand(page, text, group).click();
        await holds(board, name, value);
    }
});

pageTest('a pressed button is what the board has', {}, async ({ page, board }) => {
    await choose(page, 'fan.1');
    await page.locator('#card button[aria-pressed=true]', { hasText: 'Good' }).waitFor();
    await board.set('fan.1.state', 'stuck');
    await page.locator('#card button[aria-pressed=true]', { hasText: 'Stuck' }).waitFor();
    assert.equal(await hand(page, 'Good').getAttribute('aria-pressed'), 'false');
});

pageTest('surroundings and single properties are set', {}, async ({ page, board }) => {
    await choose(page, 'temperature');
    await page.getByLabel('Degrees C').fill('41');
    await hand(page, 'Set', 'Around the unit').click();
    await holds(board, 'temperature.ambient', '41');
    await choose(page, 'supply.1');
    await page.getByLabel('supply.1.input-voltage').fill('118000');
    await page.getByLabel('supply.1.input-voltage').press('Enter');
    await holds(board, 'supply.1.input-voltage', '118000');
    await page.getByLabel('supply.1.present').selectOption('no');
    await holds(board, 'supply.1.present', 'no');
});

pageTest('all properties are found by their names, and set', {}, async ({ page, board }) => {
    await page.getByText('All properties').first().click();
    await page.getByLabel('Names of properties').fill('cpld.9');
    const editor = page.getByLabel('cpld.9', { exact: true });
    await editor.fill('0x1234');
    await editor.press('Enter');
    await holds(board, 'cpld.9', '0x1234');
});

pageTest('the power is switched off and on', {}, async ({ page, board }) => {
    const before = Number(await board.get('reset.count'));
    await hand(page, 'Switch off and on').click();
    await holds(board, 'reset.count', String(before + 1));
});

pageTest('what the board refuses is told in its words', { expects: /status of 400/ }, async ({ page, board }) => {
    await choose(page, 'supply.1');
    const editor = page.getByLabel('supply.1.input-voltage');
    const before = await board.get('supply.1.input-voltage');
    await editor.fill('plenty');
    await editor.press('Enter');
    await page.locator('#messages', { hasText: 'supply.1.input-voltage' }).waitFor();
    assert.equal(await editor.inputValue(), 'plenty', 'what was written is still there');
    await editor.press('Escape');
    assert.equal(await editor.inputValue(), before);
    assert.equal(await board.get('supply.1.input-voltage'), before);
    await page.getByRole('button', { name: 'Dismiss' }).click();
    await page.locator('#messages p').waitFor({ state: 'detached' });
});

pageTest('a click marks the part and opens its card; Close leads back to the board', {}, async ({ page }) => {
    await choose(page, 'fan.1');
    assert.equal(await partOf(page, 'fan.1').getAttribute('aria-pressed'), 'true');
    assert.equal(await page.locator('#card h2').textContent(), 'Fan 1');
    await page.getByLabel('Card of').selectOption('fan.2');
    assert.equal(await page.locator('#card h2').textContent(), 'Fan 2');
    await hand(page, 'Close').click();
    assert.equal(await page.locator('#card h2').textContent(), 'The board');
    assert.equal(await page.locator('#drawing [aria-pressed=true]').count(), 0);
});
