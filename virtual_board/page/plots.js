// Readings over the time that the page is open, on the board's clock.

import { choice, draw, fillChoice, make, setAttribute, setText } from './elements.js';
import { durationText, plainNumber } from './numbers.js';
import { Series } from './series.js';

const width = 320;
const height = 96;
const margin = { left: 34, right: 6, top: 6, bottom: 16 };

/** @typedef {{name: string, property: string, factor?: number}} Line */

/** The lines of each plot, for a board. @param {import('./board_state.js').BoardState} state */
function plotsOf(state) {
    const each = (pattern, name) => state.namesFor([pattern])
        .map(property => ({ name: `${name} ${property.split('.')[1]}`, property }));
    const watts = lines => lines.map(line => ({ ...line, factor: 1e-3 }));
    return [
        { title: 'Temperature', unit: 'C', lines: [
            { name: 'board', property: 'temperature.board' }, { name: 'sensor', property: 'temperature.sensor' },
            { name: 'around', property: 'temperature.ambient' }] },
        { title: 'Fans', unit: 'rpm', isFromZero: true, lines: each('fan.*.speed', 'fan') },
        { title: 'Power over Ethernet', unit: 'W', isFromZero: true, lines: watts([
            { name: 'drawn', property: 'poe.drawn' }, { name: 'budget', property: 'poe.budget' }]) },
        { title: 'Supplies', unit: 'W', isFromZero: true, lines: watts(each('supply.*.output-power', 'supply')) },
    ].map(plot => ({ ...plot, lines: plot.lines.filter(line => state.value(line.property) !== undefined) }));
}

/** A round number not below another one. */
function roundUp(value) {
    const power = 10 ** Math.floor(Math.log10(value));
    return [1, 2, 2.5, 5, 10].map(step => step * power).find(step => step >= value * 0.999);
}

/** Limits of an axis for some values: round, and with room for a flat line. */
export function axisFor(lowest, highest, isFromZero) {
    const from = isFromZero ? Math.min(0, lowest) : lowest;
    const step = roundUp(Math.max(highest - from, isFromZero ? 1 : 4) / 4);
    const start = Math.floor(from / step) * step;
    const end = Math.max(Math.ceil(highest / step) * step, start + step * (isFromZero ? 1 : 2));
    return { start, end };
}

/** One plot: a figure with its drawing, and a legend that has the values. */
class Plot {
    constructor(plot, extra = null) {
        this.plot = plot;
        this.series = plot.lines.map(() => new Series());
        this.paths = plot.lines.map((line, index) => draw('path', { class: `line line-${index % 6}` }));
        this.high = draw('text', { class: 'axis', x: margin.left - 4, y: margin.top + 8, 'text-anchor': 'end' });
        this.low = draw('text', { class: 'axis', x: margin.left - 4, y: height - margin.bottom, 'text-anchor': 'end' });
        this.span = draw('text', { class: 'axis', x: margin.left, y: height - 3 });
        this.now = draw('text', { class: 'axis', x: width - margin.right, y: height - 3, 'text-anchor': 'end' }, 'now');
        this.svg = draw('svg', { viewBox: `0 0 ${width} ${height}`, role: 'img', class: 'plot' },
            draw('path', { class: 'frame', d: `M${margin.left} ${margin.top}V${height - margin.bottom}H${width - margin.right}` }),
            this.high, this.low, this.span, this.now, ...this.paths);
        this.values = plot.lines.map(() => make('span', { class: 'reading' }));
        const entries = plot.lines.map((line, index) => make('li', { class: `line-${index % 6}` },
            draw('svg', { viewBox: '0 0 20 6', class: 'key', 'aria-hidden': 'true' },
                draw('path', { class: `line line-${index % 6}`, d: 'M0 3H20' })),
            `${line.name} `, this.values[index]));
        this.element = make('figure', { class: 'plot-box' },
            make('figcaption', {}, make('h3', {}, `${plot.title}, ${plot.unit}`), extra), this.svg,
            make('ul', { class: 'legend' }, ...entries));
    }

    take(state) {
        this.plot.lines.forEach((line, index) => this.series[index].add(
            state.clockSeconds(), state.number(line.property) * (line.factor ?? 1)));
    }

    paint() {
        const filled = this.series.filter(series => series.points.length !== 0);
        if (filled.length === 0)
            return;
        const start = Math.min(...filled.map(series => series.points[0].time));
        const end = Math.max(...filled.map(series => series.points.at(-1).time));
        const limits = filled.map(series => series.limits()).filter(each => each.lowest <= each.highest);
        const axis = axisFor(Math.min(...limits.map(each => each.lowest), limits.length !== 0 ? Infinity : 0),
            Math.max(...limits.map(each => each.highest), limits.length !== 0 ? -Infinity : 0), this.plot.isFromZero);
        const x = time => margin.left + (end === start ? 1 : (time - start) / (end - start)) *
            (width - margin.left - margin.right);
        const y = value => height - margin.bottom - (value - axis.start) / (axis.end - axis.start) *
            (height - margin.top - margin.bottom);
        this.series.forEach((series, index) => setAttribute(this.paths[index], 'd', series.path(x, y, end)));
        setText(this.high, plainNumber(axis.end));
        setText(this.low, plainNumber(axis.start));
        setText(this.span, end === start ? 'the clock stands' : `${durationText(end - start)} ago`);
        this.tell(end - start);
    }

    tell(seconds) {
        const { title, unit, lines } = this.plot;
        lines.forEach((line, index) => setText(this.values[index], plainNumber(this.series[index].last())));
        const texts = lines.map((line, index) => {
            const { lowest, highest } = this.series[index].limits();
            return lowest <= highest
                ? `${line.name} ${plainNumber(this.series[index].last())}, lowest ${plainNumber(lowest)}, highest ${plainNumber(highest)}`
                : `${line.name} none`;
        });
        setAttribute(this.svg, 'aria-label', `${title} in ${unit} over ${durationText(seconds)}: ${texts.join('; ')}`);
    }
}

export class Plots {
    /**
     * @param {HTMLElement} place
     * @param {import('./board_state.js').BoardState} state
     */
    constructor(place, state) {
        this.place = place;
        this.state = state;
        /** @type {Plot[]} */
        this.plots = [];
        this.light = null;
        this.isWaiting = false;
        this.cage = choice([], '', { 'aria-label': 'Cage of which the light is plotted' });
        this.cage.addEventListener('change', () => this.showLight());
        state.watch(() => this.take());
    }

    take() {
        if (this.plots.length === 0 && this.state.parts.size !== 0)
            this.begin();
        if (this.plots.length !== 0)
            this.offerCages();
        for (const plot of this.plots)
            plot.take(this.state);
        if (!this.isWaiting && this.plots.length !== 0) {
            this.isWaiting = true;
            requestAnimationFrame(() => this.paint());
        }
    }

    paint() {
        this.isWaiting = false;
        for (const plot of this.plots)
            plot.paint();
    }

    begin() {
        this.plots = plotsOf(this.state).filter(plot => plot.lines.length !== 0).map(plot => new Plot(plot));
        this.place.replaceChildren(...this.plots.map(plot => plot.element));
        this.hint = make('p', { class: 'hint plot-box' },
            'Plug a module that receives light into a cage, and its light is plotted here.');
        this.place.append(this.hint);
    }

    /** Cages that have a module; the first one that comes is plotted. */
    offerCages() {
        const cages = this.state.namesFor(['sfp.*.module']).filter(name => this.state.value(name) !== 'none')
            .map(name => name.split('.')[1]);
        const offered = [...this.cage.options].map(option => option.value);
        if (cages.join() === offered.join())
            return;
        const before = this.cage.value;
        fillChoice(this.cage, cages.map(value => ({ value, text: `cage ${value}` })));
        if (this.cage.value !== before || !this.light)
            this.showLight();
    }

    showLight() {
        this.plots = this.plots.filter(plot => plot !== this.light);
        this.light?.element.remove();
        this.light = null;
        this.hint.hidden = this.cage.value !== '';
        if (this.cage.value === '')
            return;
        const lines = [{ name: `cage ${this.cage.value}`, property: `sfp.${this.cage.value}.rx-power` }];
        this.light = new Plot({ title: 'Light received', unit: 'µW', isFromZero: true, lines }, this.cage);
        this.plots.push(this.light);
        this.light.take(this.state);
        this.place.append(this.light.element);
        this.light.paint();
    }
}
