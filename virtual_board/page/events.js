// The stream of what happens on a board. When it breaks off the page asks until the board is there
// again, and goes on by itself.

import { NoAnswer, Refused, server } from './api.js';

const kinds = ['board', 'change', 'trace', 'play', 'gone'];
const firstPauseMs = 500;
const longestPauseMs = 4000;

/** The server that is not served by this page's address any more has another token. */
const wrongToken = 401;

export class Events {
    /**
     * @param {import('./api.js').BoardApi} api
     * @param {(kind: string, data: any) => void} onEvent
     * @param {(connection: {isLive: boolean, reason: string}) => void} onConnection
     */
    constructor(api, onEvent, onConnection) {
        this.api = api;
        this.onEvent = onEvent;
        this.onConnection = onConnection;
        this.pauseMs = firstPauseMs;
        this.source = null;
        this.timer = 0;
        this.isEnded = false;
        this.open();
    }

    end() {
        this.isEnded = true;
        this.source?.close();
        clearTimeout(this.timer);
    }

    open() {
        const source = new EventSource(this.api.eventsAddress());
        this.source = source;
        for (const kind of kinds)
            source.addEventListener(kind, event => this.take(source, kind, JSON.parse(event.data)));
        source.addEventListener('error', () => this.isEnded || source !== this.source || this.lose(new NoAnswer().message));
    }

    take(source, kind, data) {
        if (this.isEnded || source !== this.source)
            return;
        if (kind === 'gone') {
            this.lose(`The board is gone: ${data.reason}`);
            return;
        }
        if (kind === 'board') {
            this.pauseMs = firstPauseMs;
            this.onConnection({ isLive: true, reason: '' });
        }
        this.onEvent(kind, data);
    }

    /** Closes the stream; its own attempts to come back tell nothing of why they fail. */
    lose(reason) {
        this.source?.close();
        this.source = null;
        this.onConnection({ isLive: false, reason });
        this.waitAndAsk();
    }

    waitAndAsk() {
        clearTimeout(this.timer);
        this.timer = setTimeout(() => this.ask(), this.pauseMs);
        this.pauseMs = Math.min(this.pauseMs * 1.5, longestPauseMs);
    }

    /** Asks whether the board is there; a stream of one that is not would be refused. */
    async ask() {
        let reason = '';
        try {
            const { boards } = await server.boards();
            const board = boards.find(each => each.name === this.api.name);
            if (board && !board.problem) {
                if (!this.isEnded)
                    this.open();
                return;
            }
            reason = board?.problem || `The board ${this.api.name} is not there any more.`;
        } catch (error) {
            reason = error instanceof Refused && error.code === wrongToken
                ? 'The server was started anew, with another token: open the address that it has printed.'
                : error.message;
        }
        if (this.isEnded)
            return;
        this.onConnection({ isLive: false, reason });
        this.waitAndAsk();
    }
}
