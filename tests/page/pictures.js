// Pictures of the page, to be looked at: `scripts/test-page pictures FOLDER`.

import path from 'node:path';
import { Browser, desk, phone, shown } from './support/browser.js';
import { Board, iodbg, remove, scenarios, Server, temporaryFolder } from './support/programs.js';

const folder = process.argv[2];
const boards = await temporaryFolder();
const browser = await Browser.start();
const server = await Server.start(boards, '--allow-run', '--scenario', `${scenarios}/poe-overload.toml`);

/** A unit at work: devices, modules with light and without, a fan that fails, a supply without input. */
async function unitAtWork(name) {
    const board = await Board.create(boards, name, '0x0709', 'virtual');
    await iodbg(board, 'poe', 'init');
    await iodbg(board, 'poe', 'set', 'budget', '120000');
    const devices = [1, 2, 5, 6, 9, 13, 14, 25, 27, 30].map((port, index) =>
        `poe.${port}.device=class=${2 + index % 3} draws=${[4200, 6500, 12800][index % 3]}`);
    await board.set(...devices, 'poe.8.device=class=3 over-current', 'poe.22.device=class=4 requests=60000 draws=60000',
        'sfp.49.module=sr', 'sfp.49.rx-power=420', 'sfp.50.module=lr', 'sfp.51.module=dac', 'sfp.51.link=up',
        'sfp.52.module=copper-mode4', 'sfp.53.module=sr', 'sfp.53.state=tx-fault');
    await iodbg(board, 'fan', 'set', '4');
    await iodbg(board, 'led', 'set', 'system', '2');
    return board;
}

const board = await unitAtWork('unit-17');
await Board.create(boards, 'lab-3', '0x0309', 'stepped');
await Board.create(boards, 'small', '0x0109', 'x60');

/** What happens while the page looks on. */
async function happen(page) {
    await board.set('time', 'stepped');
    for (const [change, seconds] of [['fan.2.state=good', 10], ['temperature.ambient=31', 60], ['fan.2.state=stuck', 10],
        ['supply.1.input=failed', 10], ['sfp.49.rx-power=180', 10], ['temperature.ambient=27', 60], ['fan.2.state=stuck', 5]]) {
        await board.set(change);
        for (let i = 0; i < 5; ++i) {
            await page.evaluate(({ name, by }) => fetch(`api/advance?board=${name}`, { method: 'POST',
                headers: { 'Content-Type': 'application/json' }, body: `{"seconds":"${by / 5}"}` }), { name: board.name, by: seconds });
            await new Promise(resolve => setTimeout(resolve, 60));
        }
    }
    await board.set('time', 'virtual');
    await iodbg(board, 'poe', 'status', '1,8,22');
    await iodbg(board, 'temperature');
}

async function take(name, view, part) {
    const { page, close } = await browser.open(view);
    await page.goto(server.pageOf(board.name));
    await shown(page);
    if (part)
        await page.locator(`#drawing [data-part="${part}"]`).click();
    await happen(page);
    await page.evaluate(() => scrollTo(0, 0));
    await new Promise(resolve => setTimeout(resolve, 300));
    await page.screenshot({ path: path.join(folder, `${name}.png`), fullPage: true });
    if (view.viewport === desk)
        await page.screenshot({ path: path.join(folder, `${name}-top.png`), clip: { x: 0, y: 0, width: 1280, height: 640 } });
    await close();
}

try {
    for (const [width, viewport] of Object.entries({ desk, phone })) {
        for (const colorScheme of ['light', 'dark']) {
            await take(`${width}-${colorScheme}`, { viewport, colorScheme }, colorScheme === 'light' ? 'sfp.49' : 'port.8');
            const { page, close } = await browser.open({ viewport, colorScheme });
            await page.goto(server.address);
            await page.locator('table.boards a').first().waitFor();
            await page.screenshot({ path: path.join(folder, `${width}-${colorScheme}-boards.png`) });
            await close();
        }
    }
} finally {
    await browser.end();
    await server.end();
    await remove(boards);
}
