// Small helpers for the page's elements. Text is set as text, never as markup.

/** `make('button', {class: 'x', title: 'y', onclick: f}, child, 'text')` */
export function make(tag, attributes = {}, ...children) {
    const element = document.createElement(tag);
    for (const [name, value] of Object.entries(attributes))
        if (name.startsWith('on'))
            element.addEventListener(name.slice(2), value);
        else if (value !== false && value !== undefined)
            element.setAttribute(name, value === true ? '' : value);
    element.append(...children.filter(child => child !== null && child !== undefined));
    return element;
}

/** A part of a drawing, as `make` does. */
export function makeShape(tag, attributes = {}, ...children) {
    const element = document.createElementNS('http://www.w3.org/2000/svg', tag);
    for (const [name, value] of Object.entries(attributes))
        element.setAttribute(name, value);
    element.append(...children);
    return element;
}

export const find = id => document.getElementById(id);

/** Of an element; none where the file was cut short before it. */
export function textOf(id) {
    return find(id) ? find(id).textContent : '';
}

/** A file for the reader to keep. */
export function saveFile(name, blob) {
    const url = URL.createObjectURL(blob);
    const link = make('a', {href: url, download: name});
    document.body.append(link);
    link.click();
    link.remove();
    setTimeout(() => URL.revokeObjectURL(url), 60000);
}

/** A file name for what is saved from this page. */
export function fileName(title, ending) {
    return (title.replace(/[^\p{L}\p{N}]+/gu, '-').replace(/^-+|-+$/g, '') || 'map') + ending;
}

let notices;
/** One line that goes by itself. */
export function notify(text) {
    notices = notices || document.body.appendChild(make('div', {class: 'notice', role: 'status'}));
    notices.textContent = text;
    notices.hidden = false;
    clearTimeout(notify.timer);
    notify.timer = setTimeout(() => notices.hidden = true, 4000);
}

export async function copyText(text) {
    try {
        await navigator.clipboard.writeText(text);
        notify(`Copied: ${text}`);
    } catch {
        // Without a secure origin there may be no clipboard; the text can then be picked by hand.
        const field = make('textarea', {class: 'off-screen'});
        field.value = text;
        document.body.append(field);
        field.select();
        notify(document.execCommand('copy') ? `Copied: ${text}` : text);
        field.remove();
    }
}
