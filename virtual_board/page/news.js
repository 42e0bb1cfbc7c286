// What has changed, in a line that screen readers read out. Drifting numbers are no news: a part is
// told when it looks different.

import { setText } from './elements.js';

const pauseMs = 1500;
const mostAtOnce = 4;

export class News {
    /** @param {HTMLElement} line */
    constructor(line) {
        this.line = line;
        /** @type {Map<string, string>} */
        this.looks = new Map();
        /** @type {Map<string, string>} */
        this.waiting = new Map();
        this.timer = 0;
        this.published = -pauseMs;
    }

    /** @param {import('./board_state.js').BoardState} state */
    follow(state) {
        state.watch(change => {
            for (const id of change.parts) {
                const part = state.parts.get(id);
                if (!change.isWhole && this.looks.get(id) !== part.look)
                    this.tell(part.label, id);
                this.looks.set(id, part.look);
            }
        });
    }

    /** Tells something soon; what comes of the same matter meanwhile takes its place. */
    tell(text, matter = text) {
        this.waiting.delete(matter);
        this.waiting.set(matter, text);
        const pause = this.published + pauseMs - performance.now();
        this.timer ||= setTimeout(() => this.publish(), Math.max(pause, 0));
    }

    publish() {
        this.timer = 0;
        this.published = performance.now();
        const texts = [...this.waiting.values()];
        this.waiting.clear();
        const more = texts.length - mostAtOnce;
        setText(this.line, texts.slice(-mostAtOnce).join('. ') + (more > 0 ? `; and ${more} more changes` : ''));
    }
}
