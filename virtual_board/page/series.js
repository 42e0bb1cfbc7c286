// Values over time, in bounded memory: when there are too many, older ones are thinned out.

const mostPoints = 800;

export class Series {
    constructor() {
        /** @type {{time: number, value: number}[]} */
        this.points = [];
    }

    /** Where a clock stands the newest value counts; one that has gone back is another board's. */
    add(time, value) {
        const last = this.points.at(-1);
        if (last && time < last.time)
            this.points = [];
        if (last && time === last.time && this.points.length !== 0) {
            last.value = value;
            return;
        }
        const before = this.points.at(-2);
        if (last && before && Object.is(last.value, value) && Object.is(before.value, value)) {
            last.time = time; // the middle of a flat stretch
            return;
        }
        this.points.push({ time, value });
        if (this.points.length > mostPoints)
            this.thin();
    }

    /** Of each four neighbours in the older half the lowest and the highest stay. */
    thin() {
        const half = this.points.length / 2;
        const kept = [];
        for (let start = 0; start < half; start += 4) {
            const group = this.points.slice(start, Math.min(start + 4, half));
            const sorted = [...group].sort((one, other) => one.value - other.value);
            kept.push(...group.filter(point => point === sorted[0] || point === sorted.at(-1)));
        }
        this.points = [...kept, ...this.points.slice(Math.ceil(half))];
    }

    last() {
        return this.points.at(-1)?.value ?? NaN;
    }

    limits() {
        const values = this.points.map(point => point.value).filter(Number.isFinite);
        return { lowest: Math.min(...values), highest: Math.max(...values) };
    }

    /** A line that holds each value until the next; with gaps where there was none. */
    path(x, y, end) {
        let text = '';
        let isDrawing = false;
        for (const { time, value } of this.points) {
            const at = x(time).toFixed(1);
            if (isDrawing)
                text += `H${at}`;
            if (!Number.isFinite(value))
                isDrawing = false;
            else if (isDrawing)
                text += `V${y(value).toFixed(1)}`;
            else {
                text += `M${at} ${y(value).toFixed(1)}`;
                isDrawing = true;
            }
        }
        return isDrawing ? `${text}H${x(end).toFixed(1)}` : text;
    }
}
