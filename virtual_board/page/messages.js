// What went wrong with something that somebody has asked for.

import { button, make } from './elements.js';

export class Messages {
    /** @param {HTMLElement} place  an alert region */
    constructor(place) {
        this.place = place;
    }

    /** @param {unknown} error */
    show(error) {
        const text = error instanceof Error ? error.message : String(error);
        this.place.replaceChildren(make('p', {}, text), button('Dismiss', () => this.clear()));
    }

    clear() {
        this.place.replaceChildren();
    }

    /** Does something, and shows why it failed. @returns {Promise<boolean>} */
    async attempt(deed) {
        try {
            await deed();
            this.clear();
            return true;
        } catch (error) {
            this.show(error);
            return false;
        }
    }
}
