// Numbers as people read them.

/** "12.345 s", "3 min 20 s", "2 h 5 min" */
export function durationText(seconds) {
    if (!Number.isFinite(seconds))
        return '';
    if (seconds < 120)
        return `${seconds < 10 ? Number(seconds.toFixed(1)) : Math.round(seconds)} s`;
    const minutes = Math.floor(seconds / 60);
    if (minutes < 120)
        return `${minutes} min ${Math.round(seconds % 60)} s`;
    return `${Math.floor(minutes / 60)} h ${minutes % 60} min`;
}

/** At most three digits behind the point, without zeros at the end. */
export function plainNumber(value) {
    return Number.isFinite(value) ? String(Number(value.toFixed(Math.abs(value) < 10 ? 2 : 1))) : '–';
}

/** Seconds on the clock with milliseconds; the board tells nanoseconds. */
export function clockText(seconds) {
    const [whole, fraction = ''] = seconds.split('.');
    return whole === '' ? '–' : `${whole}.${fraction.padEnd(3, '0').slice(0, 3)}`;
}
