// For everyone: judged by axe at both widths and in both themes, and walked through by keyboard.

import assert from 'node:assert/strict';
import axe from 'axe-core';
import test from 'node:test';
import { choose, eventually, holds, newBoard, openPage, pageTest, partOf, shared } from './support/bench.js';
import { desk, phone, shown } from './support/browser.js';
import { iodbg, vboard } from './support/programs.js';

const tags = ['wcag2a', 'wcag2aa', 'wcag21a', 'wcag21aa', 'wcag22aa'];

/**
 * Takes all texts of an element for one, which its name would have to hold: "318.0 W" of "Port 3: delivers 18.0 W".
 * For parts of the drawing `unspoken` judges text by text.
 */
const wholeTextRule = 'label-content-name-mismatch';

/** What is written on parts of the drawing, and their names do not hold. */
const unspoken = page => page.locator('#drawing [data-part]').evaluateAll(parts => parts.flatMap(part =>
    [...part.querySelectorAll('text')].map(text => text.textContent)
        .filter(text => /\w/.test(text) && !part.getAttribute('aria-label').toLowerCase().includes(text.toLowerCase()))
        .map(text => `${part.id}: ${text}`)));

/** Fails with what axe finds. */
async function judge(page, what) {
    await page.evaluate(axe.source);
    const found = await page.evaluate(async ([values, rule]) => {
        const run = (context, rules) => globalThis.axe.run(context,
            { runOnly: { type: 'tag', values }, rules, resultTypes: ['violations'] });
        const results = [await run({ exclude: ['#drawing'] }, {})];
        if (document.querySelector('#drawing'))
            results.push(await run({ include: ['#drawing'] }, { [rule]: { enabled: false } }));
        return results.flatMap(result => result.violations)
            .map(each => `${each.id}: ${each.nodes.slice(0, 3).map(node => `${node.html} ${node.failureSummary}`).join('\n')}`);
    }, [tags, wholeTextRule]);
    assert.deepEqual(found, [], what);
    assert.deepEqual(await unspoken(page), []);
}

for (const [name, viewport] of Object.entries({ desk, phone })) {
    for (const colorScheme of ['light', 'dark']) {
        pageTest(`axe finds nothing: ${name}, ${colorScheme}`, { viewport, colorScheme }, async ({ page, board }) => {
            await iodbg(board, 'poe', 'init');
            await vboard('trace', board.folder, '--clear');
            await board.set('poe.3.device=class=4', 'poe.8.device=class=3 over-current', 'sfp.49.module=sr', 'sfp.49.link=up',
                'fan.2.state=stuck', 'supply.1.input=failed');
            await page.reload();
            await shown(page);
            await iodbg(board, 'temperature'); // some lines of a trace are as good as a thousand, and judged sooner
            await page.locator('#trace tbody tr').first().waitFor();
            await choose(page, 'port.3');
            await page.locator('#card summary').click();
            await judge(page, 'a port with its faults');
            const { width } = await page.evaluate(() => ({ width: document.documentElement.scrollWidth }));
            assert.ok(width <= viewport.width, `the page is ${width} wide`);
        });
    }
}

test('axe finds nothing in the list of boards', async t => {
    await newBoard();
    for (const colorScheme of ['light', 'dark']) {
        const page = await openPage(t, { colorScheme, viewport: phone });
        await page.goto(shared.server.address);
        await page.locator('table.boards a').first().waitFor();
        await judge(page, colorScheme);
    }
});

/** Goes on with Tab until something has the focus. */
async function tabTo(page, isThere, most = 60) {
    for (let i = 0; i < most; ++i) {
        await page.keyboard.press('Tab');
        if (await page.evaluate(isThere))
            return;
    }
    assert.fail(`${isThere} is not reached with Tab`);
}

const focused = page => page.evaluate(() => document.activeElement.dataset.part ?? '');

pageTest('a fan is found, broken and put right with keys alone', {}, async ({ page, board }) => {
    await tabTo(page, () => document.activeElement.dataset.part !== undefined);
    assert.equal(await focused(page), 'port.1');
    await page.keyboard.press('ArrowDown');
    assert.equal(await focused(page), 'port.2');
    await page.keyboard.press('ArrowRight');
    assert.equal(await focused(page), 'port.4');
    await page.keyboard.press('ArrowUp');
    assert.equal(await focused(page), 'port.3');
    await page.keyboard.press('End');
    await page.keyboard.press('Home');
    assert.equal(await focused(page), 'port.1');
    for (let i = 0; i < 20 && !(await focused(page)).startsWith('fan.'); ++i)
        await page.keyboard.press('ArrowDown');
    const fan = await focused(page);
    assert.match(fan, /^fan\./, 'the arrows lead to the fans');
    await page.keyboard.press('Enter');
    await eventually(() => page.evaluate(() => document.activeElement.textContent), `Fan ${fan.split('.')[1]}`);
    await tabTo(page, () => document.activeElement.textContent === 'Stuck');
    await page.keyboard.press('Space');
    await holds(board, `${fan}.state`, 'stuck');
    await page.locator('#news', { hasText: 'Stuck' }).waitFor();
    await page.keyboard.press('Escape');
    assert.equal(await focused(page), fan);
    await eventually(() => page.locator('#undo').isDisabled(), false);
    await page.keyboard.press('Control+z');
    await holds(board, `${fan}.state`, 'good');
});

pageTest('axe finds nothing in the cards of the board and of a cage', {}, async ({ page, board }) => {
    await judge(page, 'the card of the board');
    await board.set('sfp.49.module=sr', 'sfp.49.link=up');
    await choose(page, 'sfp.49');
    await judge(page, 'a cage');
});

pageTest('what has focus is seen', {}, async ({ page }) => {
    await tabTo(page, () => document.activeElement.dataset.part !== undefined);
    const style = await partOf(page, 'port.1').evaluate(element => getComputedStyle(element).outlineStyle);
    assert.equal(style, 'solid');
});
