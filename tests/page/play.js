// Scenarios: their steps pass, and hands hold them up.

import assert from 'node:assert/strict';
import { eventually, holds, pageTest } from './support/bench.js';

const section = page => page.locator('#play');
const press = (page, name) => section(page).getByRole('button', { name, exact: true }).click();
const passed = page => section(page).locator('li[data-state=passed]').count();

pageTest('a scenario passes, step by step', { model: '0x0309' }, async ({ page, board }) => {
    await section(page).getByLabel('Scenario').selectOption({ label: 'Fan failure at heat (fan-failure.toml)' });
    const steps = await section(page).locator('li').count();
    assert.ok(steps > 10);
    await press(page, 'Start');
    await section(page).getByText('has passed').waitFor();
    assert.equal(await passed(page), steps);
    assert.equal(await board.get('temperature.ambient'), '42');
});

pageTest('a play pauses, goes on, and is stopped', { time: 'real' }, async ({ page, board }) => {
    await section(page).getByLabel('Scenario').selectOption({ label: 'It gets warmer (slow.toml)' });
    await press(page, 'Start');
    await eventually(async () => await passed(page) >= 2, true);
    await press(page, 'Pause');
    await section(page).getByText('pauses').waitFor();
    await new Promise(resolve => setTimeout(resolve, 150));
    const held = await board.get('temperature.ambient');
    await new Promise(resolve => setTimeout(resolve, 700));
    assert.equal(await board.get('temperature.ambient'), held);
    await press(page, 'Go on');
    await eventually(async () => Number(await board.get('temperature.ambient')) > Number(held), true);
    await press(page, 'Stop');
    await section(page).getByText('was stopped').waitFor();
    const last = await board.get('temperature.ambient');
    assert.ok(Number(last) < 35, `stopped at ${last}`);
    await section(page).getByRole('button', { name: 'Start' }).waitFor();
});

pageTest('a step that fails says why', {}, async ({ page, board }) => {
    await section(page).getByLabel('Scenario').selectOption({ label: 'Fan failure at heat (fan-failure.toml)' });
    await board.set('temperature.state', 'missing');
    await press(page, 'Start');
    await section(page).locator('li[data-state=failed]').waitFor();
    await section(page).getByText('has failed').waitFor();
    await holds(board, 'temperature.ambient', '42');
});
