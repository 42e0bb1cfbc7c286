// Ways through the page without a mouse.

const directions = {
    ArrowLeft: { x: -1, y: 0 },
    ArrowRight: { x: 1, y: 0 },
    ArrowUp: { x: 0, y: -1 },
    ArrowDown: { x: 0, y: 1 },
};

/** @returns {{x: number, y: number}|undefined} */
export function directionOf(key) {
    return directions[key];
}

function centreOf(element) {
    const box = element.getBoundingClientRect();
    return { x: box.left + box.width / 2, y: box.top + box.height / 2 };
}

/** What lies next to an element in a direction: what is beside the way counts as farther. */
export function nearest(element, others, direction) {
    const sidewaysWeight = 3;
    const from = centreOf(element);
    let best;
    let shortest = Infinity;
    for (const other of others) {
        const to = centreOf(other);
        const along = (to.x - from.x) * direction.x + (to.y - from.y) * direction.y;
        const beside = Math.abs((to.x - from.x) * direction.y) + Math.abs((to.y - from.y) * direction.x);
        const distance = along + beside * sidewaysWeight;
        if (other !== element && along > 1 && distance < shortest) {
            best = other;
            shortest = distance;
        }
    }
    return best;
}

/** Whether a key is meant for what somebody is writing. */
export function isWriting(target) {
    return target instanceof HTMLInputElement || target instanceof HTMLTextAreaElement ||
        target instanceof HTMLSelectElement;
}
