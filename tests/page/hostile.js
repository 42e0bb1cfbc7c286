// A page elsewhere in the user's browser, which even knows the token, gets nowhere.

import assert from 'node:assert/strict';
import { createServer } from 'node:http';
import test from 'node:test';
import { eventually, newBoard, openPage, shared } from './support/bench.js';

/** What the hostile page tries; each tells what it got. */
async function attack(base, board) {
    const query = `?board=${board}`;
    const json = { 'Content-Type': 'application/json' };
    const attempt = async (name, deed) => {
        try {
            return [name, await deed()];
        } catch {
            return [name, 'failed'];
        }
    };
    const read = async (name, options) => {
        const answer = await fetch(base + name + query, options);
        return answer.type === 'opaque' ? 'opaque' : answer.text();
    };
    const body = '{"fan.1.state":"stuck"}';
    const stream = () => new Promise(resolve => {
        const source = new EventSource(`${base}api/events${query}`);
        source.onopen = () => resolve('open');
        source.onerror = () => {
            source.close();
            resolve('failed');
        };
    });
    const loaded = tag => new Promise(resolve => {
        const element = document.createElement(tag);
        element.onload = () => resolve('loaded');
        element.onerror = () => resolve('failed');
        element.src = `${base}${tag === 'script' ? 'main.js' : 'icon.svg'}`;
        document.body.append(element);
    });
    const form = () => new Promise(resolve => {
        const frame = document.createElement('iframe');
        frame.name = 'target';
        document.body.append(frame);
        const element = document.createElement('form');
        element.method = 'post';
        element.enctype = 'text/plain';
        element.target = 'target';
        element.action = `${base}api/play${query}`;
        const input = document.createElement('input');
        input.name = '{"action":"start","scenario":0,"x":"';
        input.value = '"}';
        element.append(input);
        document.body.append(element);
        frame.onload = () => resolve('sent');
        element.submit();
    });
    const framed = () => new Promise(resolve => {
        const frame = document.createElement('iframe');
        frame.id = 'framed';
        frame.onload = () => resolve('sent');
        frame.src = base;
        document.body.append(frame);
    });
    return Object.fromEntries([
        await attempt('read', () => read('api/properties')),
        await attempt('read blindly', () => read('api/properties', { mode: 'no-cors' })),
        await attempt('change', () => read('api/properties', { method: 'PATCH', headers: json, body })),
        await attempt('play blindly', () => read('api/play', { method: 'POST', mode: 'no-cors', body: '{"action":"start","scenario":0}' })),
        await attempt('advance', () => read('api/advance', { method: 'POST', headers: json, body: '{"seconds":"1"}' })),
        await attempt('events', stream),
        await attempt('script', () => loaded('script')),
        await attempt('image', () => loaded('img')),
        await attempt('form', form),
        await attempt('frame', framed),
    ]);
}

const unread = { read: 'failed', 'read blindly': 'failed', change: 'failed', 'play blindly': 'failed', advance: 'failed',
    events: 'failed', script: 'failed', image: 'failed', form: 'sent', frame: 'sent' };

/** The statuses of all answers to a page, also of those that its scripts are not told of. */
async function watchAnswers(page) {
    const statuses = [];
    const session = await page.context().newCDPSession(page);
    const asked = new Map();
    session.on('Network.requestWillBeSent', event => asked.set(event.requestId, event.request.url));
    session.on('Network.responseReceivedExtraInfo', event =>
        asked.get(event.requestId)?.startsWith(shared.server.address) && statuses.push(event.statusCode));
    await session.send('Network.enable');
    return statuses;
}

for (const host of ['127.0.0.1', 'elsewhere.example']) {
    test(`a page of ${host} reads nothing and changes nothing`, async t => {
        const board = await newBoard();
        const before = JSON.stringify(await board.all());
        const elsewhere = createServer((request, answer) => answer.setHeader('Content-Type', 'text/html')
            .end('<!doctype html><title>elsewhere</title><link rel="icon" href="data:,"><body>'));
        await new Promise(resolve => elsewhere.listen(0, '127.0.0.1', resolve));
        t.after(() => {
            elsewhere.close();
            elsewhere.closeAllConnections();
        });
        const page = await openPage(t, {}, /./);
        const statuses = await watchAnswers(page);
        await page.goto(`http://${host}:${elsewhere.address().port}/`);
        const got = await page.evaluate(`(${attack})(${JSON.stringify(shared.server.address)}, ${JSON.stringify(board.name)})`);
        assert.deepEqual(got, unread);
        // All have reached the server; frames tell of theirs elsewhere.
        await eventually(() => statuses.length >= Object.keys(unread).length - 2, true);
        assert.deepEqual([...new Set(statuses)], [403]);
        const frame = page.frames().find(each => each.url().startsWith(shared.server.address));
        assert.equal(frame ? await frame.locator('#drawing').count() : 0, 0);
        assert.equal(JSON.stringify(await board.all()), before);
    });
}

test('a name of elsewhere that leads to this machine is refused', async t => {
    const page = await openPage(t, {}, /status of (421|401)/);
    const address = new URL(shared.server.address);
    address.hostname = 'elsewhere.example';
    const answer = await page.goto(address.href);
    assert.equal(answer.status(), 421);
});

test('without the token there is nothing', async t => {
    const page = await openPage(t, {}, /status of (421|401)/);
    const { origin } = new URL(shared.server.address);
    for (const place of ['/', '/main.js', '/api/boards', '/AAAAAAAAAAAAAAAAAAAAAA/'])
        assert.equal((await page.goto(origin + place)).status(), 401, place);
});
