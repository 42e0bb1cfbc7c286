// Scenarios: what can be played, and how its steps pass.

import { button, choice, field, fillChoice, make, setAttribute, setText } from './elements.js';

const stateTexts = { waiting: 'waits', 'under-way': 'under way', passed: 'passed', failed: 'failed' };
const signs = { waiting: '·', 'under-way': '▸', passed: '✓', failed: '✗' };

const playTexts = {
    running: 'runs', paused: 'pauses', passed: 'has passed', failed: 'has failed', stopped: 'was stopped',
};

function nameOf(scenario) {
    return scenario.title ? `${scenario.title} (${scenario.file})` : scenario.file;
}

export class Play {
    /**
     * @param {HTMLElement} place
     * @param {(action: string, scenario?: number) => void} onAction
     */
    constructor(place, onAction) {
        this.place = place;
        this.onAction = onAction;
        /** What can be played; unknown at first. */
        this.scenarios = [];
        this.isUnderWay = false;
        this.rows = [];
        this.choice = choice([], '');
        this.choice.addEventListener('change', () => this.listSteps());
        this.start = button('Start', () => onAction('start', Number(this.choice.value)), { class: 'main' });
        this.pause = button('Pause', () => onAction('pause'), { hidden: true });
        this.resume = button('Go on', () => onAction('resume'), { hidden: true });
        this.stop = button('Stop', () => onAction('stop'), { hidden: true });
        this.status = make('p', { class: 'hint', role: 'status' });
        this.list = make('ol', { class: 'play-steps', tabindex: '0', 'aria-label': 'Steps' });
    }

    /** @param {any[]} scenarios  those that the server offers for this board */
    show(scenarios) {
        this.scenarios = scenarios;
        if (scenarios.length === 0) {
            this.place.replaceChildren(make('p', { class: 'hint' },
                'No scenario is offered. Name some when the server is started: ' +
                'vboard serve DIR --scenario fan-failure.toml'));
            return;
        }
        fillChoice(this.choice, scenarios.map(each => ({ value: String(each.id), text: nameOf(each) })));
        this.place.replaceChildren(
            make('div', { class: 'row' }, field('Scenario', this.choice), this.start, this.pause, this.resume, this.stop),
            this.status, this.list);
        this.listSteps();
        if (this.last)
            this.take(this.last);
    }

    chosen() {
        return this.scenarios.find(each => String(each.id) === this.choice.value);
    }

    listSteps() {
        const scenario = this.chosen();
        this.rows = scenario.steps.map(step => {
            const sign = make('span', { class: 'sign', 'aria-hidden': 'true' }, signs.waiting);
            const result = make('span', { class: 'hint' });
            const moment = step.moment ? make('span', { class: 'hint' }, step.moment) : null;
            const element = make('li', { 'data-state': 'waiting' }, sign, make('span', {}, step.text), moment, result);
            return { element, sign, result };
        });
        this.list.replaceChildren(...this.rows.map(row => row.element));
        setText(this.status, scenario.problem || `${scenario.steps.length} steps.`);
        this.start.disabled = Boolean(scenario.problem);
    }

    /** How a play goes. */
    take(data) {
        this.last = data;
        if (this.scenarios.length === 0)
            return;
        const isUnderWay = data.state === 'running' || data.state === 'paused';
        if (this.choice.value !== String(data.scenario) || (isUnderWay && !this.isUnderWay)) {
            this.choice.value = String(data.scenario);
            this.listSteps();
        }
        this.isUnderWay = isUnderWay;
        this.choice.disabled = isUnderWay;
        this.start.hidden = isUnderWay;
        this.pause.hidden = data.state !== 'running';
        this.resume.hidden = data.state !== 'paused';
        this.stop.hidden = !isUnderWay;
        data.steps.forEach((step, index) => this.showStep(this.rows[index], step));
        const reason = data.reason ? `: ${data.reason}` : '';
        setText(this.status, `The play ${playTexts[data.state]}, ${data.passed} of ${this.rows.length} steps passed${reason}`);
    }

    showStep(row, step) {
        if (!row)
            return;
        setAttribute(row.element, 'data-state', step.state);
        setText(row.sign, signs[step.state]);
        const seconds = step.seconds ? ` at ${step.seconds} s` : '';
        setText(row.result, `${stateTexts[step.state]}${seconds}${step.reason ? `: ${step.reason}` : ''}`);
    }
}
