"use strict";
// What the pages share. Whatever comes from a file gets into the document as text only (`element`), never as markup.

/** Makes an element; properties are set, children are elements or text. */
function element(tag, properties, ...children) {
    const made = document.createElement(tag);
    for (const [name, value] of Object.entries(properties ?? {})) {
        if (name.startsWith("aria-") || name === "role" || name === "scope")
            made.setAttribute(name, value);
        else
            made[name] = value;
    }
    made.append(...children.filter((child) => child !== null && child !== undefined));
    return made;
}

const numbers = new Intl.NumberFormat("en-GB");
const measures = new Intl.NumberFormat("en-GB", { minimumFractionDigits: 2, maximumFractionDigits: 2 });
const count = (number) => numbers.format(number);
const counted = (number, one, many) => `${count(number)} ${number === 1 ? one : many}`;

/** The data in the element of that id: base64 of JSON, compressed unless the page says otherwise. */
async function dataOf(id) {
    const source = document.getElementById(id);
    const binary = atob(source.textContent);
    source.textContent = ""; // its memory is wanted for what is in it
    const bytes = new Uint8Array(binary.length);
    for (let i = 0; i < binary.length; ++i)
        bytes[i] = binary.charCodeAt(i);
    let stream = new Blob([bytes]).stream();
    if (source.dataset.form === "deflate")
        stream = stream.pipeThrough(new DecompressionStream("deflate"));
    return JSON.parse(await new Response(stream).text());
}

/** A table; heads that are numbers begin with "#". Cells are text, numbers or elements. */
function table(heads, rows) {
    const isNumber = heads.map((head) => head.startsWith("#"));
    const classOf = (i) => (isNumber[i] ? "number" : "");
    const head = heads.map((each, i) =>
        element("th", { scope: "col", className: classOf(i) }, each.replace(/^#/, "")));
    const body = rows.map((row) => element("tr", null, ...row.map((cell, i) =>
        element("td", { className: classOf(i) }, typeof cell === "number" ? count(cell) : cell))));
    return element("div", { className: "wide" }, element("table", null,
        element("thead", null, element("tr", null, ...head)), element("tbody", null, ...body)));
}

/** Shows `first` of the items now and as many more with each press of a button. */
function growing(container, items, show, first) {
    let shown = 0;
    const more = element("button", { type: "button", className: "more" });
    const grow = () => {
        const next = items.slice(shown, shown + first);
        container.append(...next.map(show));
        shown += next.length;
        more.textContent = `Show more (${count(items.length - shown)} left)`;
        if (shown >= items.length)
            more.remove();
    };
    more.addEventListener("click", grow);
    const whole = element("div", null, container, more);
    grow();
    return whole;
}

/** What opens and closes; what is in it is made when it is first opened. */
function opening(summary, contents, isOpen) {
    const made = element("details", null, element("summary", null, ...summary));
    const fill = () => {
        if (made.open && made.childElementCount === 1)
            made.append(contents());
    };
    made.addEventListener("toggle", fill);
    if (isOpen) {
        made.open = true;
        fill();
    }
    return made;
}

/** Calls `action` when nothing has been typed for a moment. */
function whenTyped(input, action) {
    let timer = 0;
    input.addEventListener("input", () => {
        clearTimeout(timer);
        timer = setTimeout(action, 120);
    });
}

function showFailure(failure) {
    const main = document.querySelector("main");
    main.prepend(element("p", { className: "error", role: "alert" },
        `This page cannot be shown: ${failure.message}. It needs a browser of 2023 or later.`));
    console.error(failure);
}

