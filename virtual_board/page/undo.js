// What hands have done on this page, and the way back.

const mostSteps = 100;

/** A link that comes back brings light along, which was another one: what comes back is looked at again. */
const mostRounds = 3;

/** The properties of the same part have a name that begins so: "sfp.49." */
function partPrefix(name) {
    return name.match(/^[a-z-]+\.(\d+\.)?/)?.[0] ?? name;
}

/** A time moves on while it is there to be undone. */
const movingNames = new Set(['rtc.time']);

export class Undo {
    /**
     * @param {import('./api.js').BoardApi} api
     * @param {import('./board_state.js').BoardState} state
     * @param {import('./descriptions.js').Descriptions} descriptions
     * @param {(title: string|null) => void} onChange  what would be undone next
     */
    constructor(api, state, descriptions, onChange) {
        this.api = api;
        this.state = state;
        this.descriptions = descriptions;
        this.onChange = onChange;
        /** @type {{title: string, undo: () => Promise<void>}[]} */
        this.steps = [];
        onChange(null);
    }

    push(title, undo) {
        this.steps.push({ title, undo });
        this.steps.splice(0, this.steps.length - mostSteps);
        this.onChange(title);
    }

    /** Takes the last step back; what it was. */
    async undo() {
        const step = this.steps.pop();
        this.onChange(this.steps.at(-1)?.title ?? null);
        if (!step)
            return null;
        await step.undo();
        return step.title;
    }

    /**
     * Changes properties. What the board itself changes of the same part because of it, as an unplugged
     * module loses its link, comes back with them.
     *
     * @param {string} title  "Fan 1: stuck"
     * @param {Record<string, string>} changes  in their order
     */
    async change(title, changes) {
        const names = Object.keys(changes);
        const prefixes = [...new Set(names.map(partPrefix))];
        const before = await this.settable(names, prefixes, name => this.state.value(name));
        await this.api.change(changes);
        if (names.includes('power'))
            return; // what was in the board's memory is gone
        const after = await this.settable(names, prefixes, name => changes[name] ?? before.get(name));
        const clock = this.state.clockSeconds();
        this.push(title, () => this.goBack(names, prefixes, before, after, clock));
    }

    /**
     * What can be set of some parts, and what modules hold.
     *
     * @param {(name: string) => string|undefined} valueOf  what a property holds just then: cages that are empty
     *        refuse to tell of their modules
     * @returns {Promise<Map<string, string>>}
     */
    async settable(names, prefixes, valueOf) {
        const patterns = prefixes.map(prefix => prefix.endsWith('.') ? `${prefix}*` : prefix);
        const pages = prefixes.filter(prefix => prefix.startsWith('sfp.') && (valueOf(`${prefix}module`) ?? 'none') !== 'none')
            .map(prefix => `${prefix}id`);
        const rows = await this.api.properties([...new Set([...names, ...patterns, ...pages])]);
        return new Map(rows.filter(row => this.descriptions.isSettable(row.name)).map(row => [row.name, row.value]));
    }

    /**
     * Sets what was there before, unless somebody else has changed it since; then what the board has
     * changed because of it, as far as it has not come back by itself.
     */
    async goBack(names, prefixes, before, after, clock) {
        const now = await this.settable(names, prefixes, name => this.state.value(name));
        const isTouched = name => !movingNames.has(name) && now.get(name) !== after.get(name);
        const touched = names.find(isTouched);
        if (touched)
            throw new Error(`Not undone: somebody else has set ${touched} to ${now.get(touched)} since.`);
        await this.api.change(Object.fromEntries(
            names.map(name => [name, this.movedOn(name, before.get(name), clock)])));
        for (let i = 0; i < mostRounds; ++i) {
            const then = await this.settable(names, prefixes, name => before.get(name));
            const rest = [...before].filter(([name, value]) => !names.includes(name) && !isTouched(name) &&
                then.has(name) && then.get(name) !== value);
            if (rest.length === 0)
                break;
            await this.api.change(Object.fromEntries(rest));
        }
    }

    movedOn(name, value, clock) {
        if (!movingNames.has(name))
            return value;
        const then = Date.parse(`${value.replace(' ', 'T')}Z`);
        const now = new Date(then + (this.state.clockSeconds() - clock) * 1000);
        return now.toISOString().slice(0, 19).replace('T', ' ');
    }

    /** Adds a fault rule. */
    async addFault(title, rule) {
        const id = await this.api.addFault(rule);
        this.push(title, async () => {
            if (this.state.faults.some(fault => fault.id === id))
                await this.api.removeFault(id);
        });
    }

    /** Removes a fault rule; when it comes back it counts from the beginning. */
    async removeFault(title, fault) {
        await this.api.removeFault(fault.id);
        const members = ['device', 'op', 'offset', 'nth', 'when', 'effect'];
        const rule = Object.fromEntries(members.filter(name => fault[name] !== null && fault[name] !== undefined)
            .map(name => [name, String(fault[name])]));
        this.push(title, async () => {
            await this.api.addFault(rule);
        });
    }
}
