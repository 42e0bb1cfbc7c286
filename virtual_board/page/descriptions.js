// What properties are, as the server describes them.

import { server } from './api.js';

/** @typedef {{name: string, type: string, unit: string|null, words: string[], settable: boolean,
 *             words_to_set: string[], lowest: number|null, highest: number|null,
 *             description: string}} Description */

export class Descriptions {
    /** @param {Description[]} rows  names with '#' for numbers */
    constructor(rows) {
        this.rows = new Map(rows.map(row => [row.name, row]));
    }

    static async load() {
        return new Descriptions(await server.names());
    }

    /** @param {string} name  "fan.1.state"  @returns {Description|undefined} */
    of(name) {
        return this.rows.get(name) ?? this.rows.get(name.replace(/\d+(?=\.|$)/g, '#'));
    }

    isSettable(name) {
        return this.of(name)?.settable ?? false;
    }
}
