// Elements of the page. Texts come in as text only, so that nothing a board says is ever markup.

const svgNamespace = 'http://www.w3.org/2000/svg';

/** @param {Element} element  @param {Record<string, any>} attributes */
function assign(element, attributes) {
    for (const [name, value] of Object.entries(attributes)) {
        if (name.startsWith('on'))
            element.addEventListener(name.slice(2), value);
        else if (value === true)
            element.setAttribute(name, '');
        else if (value !== false && value !== null && value !== undefined)
            element.setAttribute(name, String(value));
    }
}

/**
 * An element with its attributes and children; 'onclick' and the like are listeners.
 *
 * @param {string} tag
 * @param {Record<string, any>} [attributes]
 * @param {...(Node|string|null)} children
 * @returns {HTMLElement}
 */
export function make(tag, attributes = {}, ...children) {
    const element = document.createElement(tag);
    assign(element, attributes);
    element.append(...children.filter(child => child !== null));
    return element;
}

/** The same for elements of drawings. */
export function draw(tag, attributes = {}, ...children) {
    const element = document.createElementNS(svgNamespace, tag);
    assign(element, attributes);
    element.append(...children);
    return element;
}

/** A button that is not one of a form. */
export function button(text, onclick, attributes = {}) {
    return make('button', { type: 'button', onclick, ...attributes }, text);
}

let lastId = 0;

/** A field with its name beside it. */
export function field(name, control, attributes = {}) {
    control.id ||= `field-${++lastId}`;
    return make('div', { class: 'field', ...attributes }, make('label', { for: control.id }, name), control);
}

/** @param {{value: string, text?: string}[]|string[]} options */
export function choice(options, chosen, attributes = {}) {
    const select = make('select', attributes);
    fillChoice(select, options, chosen);
    return select;
}

/** Gives a choice other options; what is chosen stays so if it can. */
export function fillChoice(select, options, chosen = select.value) {
    select.replaceChildren(...options.map(option => {
        const { value, text } = typeof option === 'string' ? { value: option, text: option } : option;
        return make('option', { value }, text ?? value);
    }));
    if ([...select.options].some(option => option.value === chosen))
        select.value = chosen;
}

/** Sets a text only where it differs: screen readers and selections notice each time. */
export function setText(element, text) {
    if (element.textContent !== text)
        element.textContent = text;
}

/** Sets an attribute only where it differs. */
export function setAttribute(element, name, value) {
    if (element.getAttribute(name) !== value)
        element.setAttribute(name, value);
}

/** The element of the page with an id; all of them are in index.html. */
export function byId(id) {
    const element = document.getElementById(id);
    if (!element)
        throw new Error(`the page has no element ${id}`);
    return element;
}
