// The page of one board: its pieces, and what goes from one to another.

import { BoardApi } from './api.js';
import { BoardState } from './board_state.js';
import { Card } from './card.js';
import { byId, setText } from './elements.js';
import { Events } from './events.js';
import { Faults } from './faults.js';
import { Flash } from './flash.js';
import { isWriting } from './keyboard.js';
import { News } from './news.js';
import { Panel } from './panel.js';
import { Play } from './play.js';
import { Plots } from './plots.js';
import { Properties } from './properties.js';
import { Time } from './time.js';
import { Trace } from './trace.js';
import { Undo } from './undo.js';

const mostPast = 1000; // that the server tells at once
const mostHeld = 500;

export class BoardPage {
    /**
     * @param {string} name
     * @param {{descriptions: any, effects: any}} words  of the server, the same for all boards
     * @param {import('./messages.js').Messages} messages
     * @param {(connection: {isLive: boolean, reason: string}) => void} onConnection
     */
    constructor(name, words, messages, onConnection) {
        byId('board-view').replaceChildren(byId('board-template').content.cloneNode(true));
        this.api = new BoardApi(name);
        this.messages = messages;
        this.onConnection = onConnection;
        this.state = new BoardState();
        this.news = new News(byId('news'));
        this.news.follow(this.state);
        this.undo = new Undo(this.api, this.state, words.descriptions, title => this.showUndo(title));

        const bench = {
            state: this.state,
            descriptions: words.descriptions,
            effects: words.effects,
            change: (title, changes) => this.attempt(title, () => this.undo.change(title, changes)),
            addFault: rule => this.addFault(rule),
            removeFault: fault => this.removeFault(fault),
            showTrace: id => this.trace.showPart(id),
            close: isByKey => this.choose('', isByKey),
        };
        this.panel = new Panel({ drawing: byId('drawing'), parts: byId('part-choice') }, this.state,
            (id, isByKey) => this.choose(id, isByKey));
        this.time = new Time(byId('time'), this.state, {
            change: bench.change,
            advance: seconds => this.attempt('', () => this.api.advance(seconds)),
        });
        this.card = new Card(byId('card'), bench);
        this.trace = new Trace(byId('trace'), this.state, id => this.jump(id));
        this.plots = new Plots(byId('plots'), this.state);
        this.faults = new Faults(byId('faults'), this.state, words.effects, { add: bench.addFault, remove: bench.removeFault });
        this.play = new Play(byId('play'), (action, scenario) =>
            this.attempt('', () => this.api.play(action, scenario)));
        this.flash = new Flash(byId('flash'), this.api, this.state);
        this.properties = new Properties(byId('properties'), bench);
        this.state.watch(() => setText(byId('users'), this.state.users ? `in use by ${this.state.users}` : ''));

        byId('undo').onclick = () => this.goBack();
        this.onKey = event => this.takeKey(event);
        document.addEventListener('keydown', this.onKey);
        this.events = new Events(this.api, (kind, data) => this.take(kind, data), connection => this.connect(connection));
    }

    end() {
        this.drawing = null;
        this.events.end();
        document.removeEventListener('keydown', this.onKey);
    }

    /** Does what somebody has asked for, and says so. */
    async attempt(title, deed) {
        const isDone = await this.messages.attempt(deed);
        if (isDone && title)
            this.news.tell(title);
        return isDone;
    }

    connect(connection) {
        if (!connection.isLive)
            this.drawing = null;
        this.onConnection(connection);
    }

    take(kind, data) {
        if (kind === 'board') {
            this.state.take(true, data);
            this.begin();
        } else if (kind === 'change') {
            this.state.take(false, data);
        } else if (kind === 'trace') {
            this.flash.takeTrace(data.requests);
            this.takeTrace(data);
        } else if (kind === 'play') {
            this.play.take(data);
        }
    }

    /** Fetches what the stream does not tell: once, and when the stream has begun anew. */
    async begin() {
        if (this.drawing)
            return;
        const mine = {};
        this.drawing = mine;
        this.past = [];
        this.showScenarios();
        try {
            const [panel, drawing, past] = await Promise.all(
                [this.api.panel(), this.api.drawing(), this.api.lastRequests(mostPast)]);
            if (this.drawing === mine)
                this.show(panel, drawing, past);
        } catch (error) {
            this.messages.show(error);
        }
    }

    show(panel, drawing, past) {
        setText(byId('model'), `${panel.model}  ${panel.description}`);
        this.panel.show(drawing);
        byId('fan-hint').hidden = ![...this.state.parts.values()].some(part => part.kind === 'fan');
        this.trace.restart(past);
        const news = this.past.flatMap(data => data.requests).filter(request => request.number >= past.next);
        this.past = null;
        this.trace.take({ requests: news });
    }

    /** They are checked against the board, which takes a moment. */
    async showScenarios() {
        try {
            this.play.show(await this.api.scenarios());
        } catch (error) {
            this.messages.show(error);
        }
    }

    /** What comes while the past is still being fetched is taken behind it, and not twice. */
    takeTrace(data) {
        if (this.past)
            this.past = [...this.past, data].slice(-mostHeld);
        else
            this.trace.take(data);
    }

    choose(id, isByKey) {
        const before = this.panel.chosen;
        this.panel.choose(id);
        this.card.show(id);
        if (id === '' && isByKey)
            this.panel.focus(before);
        else if (isByKey)
            this.card.focus();
        if (id !== '' && matchMedia('(max-width: 60rem)').matches)
            byId('card').scrollIntoView({ block: 'start' });
    }

    /** From somewhere else on the page to a part. */
    jump(id) {
        this.panel.choose(id);
        this.card.show(id);
        this.panel.point(id);
        this.panel.focus(id);
    }

    addFault(rule) {
        const title = `Fault: ${rule.device} ${rule.effect}`;
        return this.attempt(title, () => this.undo.addFault(title, rule));
    }

    removeFault(fault) {
        const title = `Fault removed: ${fault.device} ${fault.effect}`;
        return this.attempt(title, () => this.undo.removeFault(title, fault));
    }

    showUndo(title) {
        const undo = byId('undo');
        undo.disabled = title === null;
        setText(undo, title === null ? 'Undo' : `Undo “${title}”`);
    }

    goBack() {
        return this.messages.attempt(async () => {
            const title = await this.undo.undo();
            if (title)
                this.news.tell(`Undone: ${title}`);
        });
    }

    takeKey(event) {
        const isAtPart = byId('card').contains(event.target) || byId('drawing').contains(event.target);
        if (event.key === 'Escape' && isAtPart && this.panel.chosen !== '') {
            this.choose('', true);
        } else if (event.key === 'z' && (event.ctrlKey || event.metaKey) && !event.shiftKey && !isWriting(event.target)) {
            event.preventDefault();
            this.goBack();
        }
    }
}
