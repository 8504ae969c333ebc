// The report of one model. `overview` is shown at once; `details`, with all objects, is unpacked after that.

const byId = (id) => document.getElementById(id);
const byCount = (left, right) => right[1] - left[1] || (left[0] < right[0] ? -1 : 1);
const nothing = (text) => element("p", { className: "faint" }, text);

/** A chart: rows of a label, a bar and a number. `whole` is what a full bar means. */
function bars(rows, whole, figure) {
    const chart = element("div", { className: "bars" });
    for (const [label, number, tip] of rows) {
        const fill = element("span", { className: "fill" });
        fill.style.width = `${whole > 0 ? (100 * number) / whole : 0}%`;
        chart.append(element("div", { className: "row" }, element("span", { className: "name" }, label),
            element("span", { className: figure ? "track whole" : "track", "aria-hidden": "true", title: tip ?? "" }, fill),
            element("span", { className: "number" }, figure ? figure(number) : count(number))));
    }
    return chart;
}

// ---- All objects

/** All rooted instances, and what is known of them. */
class Objects {
    constructor(data) {
        this.data = data;
        this.texts = data.texts;
        this.ids = [];
        this.entityOf = []; // by ordinal: the table
        this.rowOf = [];
        this.ordinals = new Map(); // by number
        for (const entity of data.entities) {
            let id = 0;
            entity.ids.forEach((step, row) => {
                id += step;
                this.ordinals.set(id, this.ids.length);
                this.ids.push(id);
                this.entityOf.push(entity);
                this.rowOf.push(row);
            });
            entity.nameColumn = entity.columns[entity.attributes.indexOf("Name")];
        }
        this.others = new Map(data.others.map(([id, type, text]) => [id, { type, text }]));
        this.readProperties(data.properties);
    }

    /** Finds where the values of each object begin. */
    readProperties({ ids, shapes }) {
        this.shapeOf = new Int32Array(this.ids.length).fill(-1);
        this.valuesFrom = new Uint32Array(this.ids.length);
        let id = 0;
        let at = 0;
        ids.forEach((step, i) => {
            id += step;
            const ordinal = this.ordinals.get(id);
            this.shapeOf[ordinal] = shapes[i];
            this.valuesFrom[ordinal] = at;
            at += this.data.shapes[shapes[i]].length;
        });
    }

    has(id) { return this.ordinals.has(id) || this.others.has(id); }

    typeOf(id) {
        const ordinal = this.ordinals.get(id);
        return ordinal === undefined ? this.others.get(id)?.type ?? "" : this.entityOf[ordinal].name;
    }

    nameOf(id) {
        const ordinal = this.ordinals.get(id);
        const cell = ordinal === undefined ? null : this.entityOf[ordinal].nameColumn?.[this.rowOf[ordinal]];
        return cell === null || cell === undefined ? "" : this.texts[cell];
    }

    attributesOf(id) {
        const ordinal = this.ordinals.get(id);
        const entity = this.entityOf[ordinal];
        return entity.attributes.map((name, i) => [name, entity.columns[i]?.[this.rowOf[ordinal]] ?? null])
            .filter(([, cell]) => cell !== null)
            .map(([name, cell]) => typeof cell === "number" && cell < 0
                ? { name, reference: -cell } : { name, text: typeof cell === "string" ? cell : this.texts[cell] });
    }

    /** Property sets by name: lists of name, value, unit and whether it comes from the type. */
    setsOf(id) {
        const ordinal = this.ordinals.get(id);
        const sets = new Map();
        if (this.shapeOf[ordinal] < 0)
            return sets;
        this.data.shapes[this.shapeOf[ordinal]].forEach((key, i) => {
            const [set, name, unit, isFromType] = this.data.keys[key];
            const value = this.data.properties.values[this.valuesFrom[ordinal] + i];
            if (!sets.has(set))
                sets.set(set, []);
            sets.get(set).push([this.texts[name], value === null ? "" : this.texts[value], this.texts[unit], isFromType]);
        });
        return new Map([...sets].map(([set, rows]) => [this.texts[set], rows]));
    }

    /** The numbers of the objects in which each word of the query stands somewhere. */
    find(query) {
        const words = query.toLowerCase().split(/\s+/).filter((word) => word !== "");
        this.lower ??= this.texts.map((text) => text.toLowerCase());
        let found = null;
        for (const word of words) {
            const hits = this.withWord(word);
            found = found === null ? hits : found.map((hit, i) => hit & hits[i]);
        }
        const result = [];
        found?.forEach((hit, ordinal) => {
            if (hit)
                result.push(this.ids[ordinal]);
        });
        return result;
    }

    withWord(word) {
        const hits = new Uint8Array(this.ids.length);
        const number = /^#?(\d+)$/.exec(word);
        const numbered = number ? this.ordinals.get(Number(number[1])) : undefined;
        if (numbered !== undefined)
            hits[numbered] = 1;
        if (word.startsWith("#"))
            return hits;
        const texts = new Uint8Array(this.lower.length);
        this.lower.forEach((text, i) => { texts[i] = text.includes(word) ? 1 : 0; });
        const has = (cell) => typeof cell === "number" ? cell >= 0 && texts[cell]
            : cell !== null && cell.toLowerCase().includes(word);
        let first = 0;
        for (const entity of this.data.entities) {
            if (entity.name.toLowerCase().includes(word))
                hits.fill(1, first, first + entity.ids.length);
            for (const column of entity.columns)
                column?.forEach((cell, row) => {
                    if (has(cell))
                        hits[first + row] = 1;
                });
            first += entity.ids.length;
        }
        this.markProperties(texts, hits);
        return hits;
    }

    markProperties(texts, hits) {
        const keys = this.data.keys.map(([set, name]) => texts[set] || texts[name]);
        const shapes = this.data.shapes.map((shape) => shape.some((key) => keys[key]));
        const { values } = this.data.properties;
        this.shapeOf.forEach((shape, ordinal) => {
            if (shape < 0 || hits[ordinal])
                return;
            const from = this.valuesFrom[ordinal];
            const to = from + this.data.shapes[shape].length;
            hits[ordinal] = shapes[shape] ? 1 : 0;
            for (let i = from; i < to && !hits[ordinal]; ++i)
                hits[ordinal] = values[i] !== null && texts[values[i]] ? 1 : 0;
        });
    }
}

let objects = null; // until the details are unpacked
let setUnpacked;
const unpacked = new Promise((resolve) => { setUnpacked = resolve; });

/** A button that shows an instance; text alone where the page does not have it. */
function link(id, withType) {
    const name = objects?.nameOf(id) ?? "";
    const type = withType ? objects?.typeOf(id) ?? "" : "";
    const text = [`#${id}`, type, name].filter((each) => each !== "").join(" ");
    if (objects && !objects.has(id))
        return element("span", { className: "mono" }, text);
    return element("button", { type: "button", onclick: () => showObject(id) }, text);
}

function showObject(id) {
    if (!objects?.has(id))
        return;
    const dialog = byId("object");
    const title = element("h2", { id: "object-title" }, [objects.typeOf(id), objects.nameOf(id)].filter(Boolean).join(" – "));
    const close = element("button", { type: "button", onclick: () => dialog.close() }, "Close");
    dialog.replaceChildren(element("div", { className: "top" }, title, close));
    const other = objects.others.get(id);
    if (other) {
        dialog.append(element("p", null, element("code", null, other.text)));
    } else {
        const attributes = element("dl", null, element("dt", null, "Number"), element("dd", null, `#${id}`));
        for (const { name, text, reference } of objects.attributesOf(id))
            attributes.append(element("dt", null, name), element("dd", null, reference ? link(reference, true) : text));
        dialog.append(attributes);
        for (const [set, rows] of objects.setsOf(id))
            dialog.append(element("h3", null, set), table(["Property", "Value", "Unit", ""],
                rows.map(([name, value, unit, isFromType]) => [name, value, unit, isFromType ? "of the type" : ""])));
    }
    if (!dialog.open)
        dialog.showModal();
    dialog.scrollTop = 0;
}

function search() {
    const query = byId("search").value.trim();
    const results = byId("results");
    results.hidden = query === "";
    if (query === "")
        return;
    const found = objects.find(query);
    const title = element("h2", null, found.length === 0 ? "Nothing found"
        : counted(found.length, "object found", "objects found"));
    results.replaceChildren(title, growing(element("ul"), found, (id) => element("li", null, link(id, true)), 50));
}

// ---- The sections

function showFile(overview) {
    document.title = `${overview.title} – report`;
    byId("title").textContent = overview.title;
    const facts = [["Release", overview.release], ...overview.header];
    byId("file").append(element("dl", null,
        ...facts.flatMap(([label, text]) => [element("dt", null, label), element("dd", null, text)])));
    const { error, warning } = overview.counts;
    const tile = (number, label, kind) =>
        element("div", null, element("strong", { className: number > 0 ? kind ?? "" : "" }, count(number)), label);
    byId("tiles").append(tile(overview.instances, "instances"), tile(overview.types.length, "entities used"),
        tile(overview.structure.reduce((sum, node) => sum + node.count, overview.outside), "elements"),
        tile(overview.sets.length, "property sets"), tile(error, "errors", "error"), tile(warning, "warnings", "warning"));
    byId("made").textContent = `Made by ${overview.program}. This page holds all of its data and asks no network for any.`;
}

/** The elements of a node by type, each group to be opened; what is asked for too early comes later. */
function elementGroups(place) {
    if (!objects) {
        const waiting = element("li", { className: "faint" }, "Unpacking the objects …");
        unpacked.then(() => waiting.replaceWith(...elementGroups(place)));
        return [waiting];
    }
    const groups = new Map();
    let id = 0;
    for (const step of objects.data.elements[place]) {
        id += step;
        const type = objects.typeOf(id) || "without a class";
        groups.has(type) ? groups.get(type).push(id) : groups.set(type, [id]);
    }
    return [...groups].sort((left, right) => right[1].length - left[1].length).map(([type, ids]) =>
        element("li", null, opening([`${type} `, element("span", { className: "faint" }, count(ids.length))],
            () => growing(element("ul"), ids, (each) => element("li", null, link(each)), 100))));
}

/** A node of the tree with what is below it; its total counts all of that. */
function treeNode(node, isOpen) {
    const name = [node.name, node.longName].filter(Boolean).join(" – ") || `#${node.id}`;
    const summary = [`${node.type} `, element("strong", null, name), " ",
        element("span", { className: "faint" }, counted(node.total, "element", "elements"))];
    const contents = () => element("ul", null,
        element("li", null, link(node.id), element("span", { className: "faint" }, " its attributes and properties")),
        ...node.children.map((child) => element("li", null, treeNode(child, isOpen && node.children.length === 1))),
        ...(node.count > 0 ? elementGroups(node.place) : []));
    return opening(summary, contents, isOpen);
}

function showStructure({ structure, outside }) {
    const roots = [];
    const path = [];
    structure.forEach((node, place) => {
        Object.assign(node, { place, total: 0, children: [] });
        path.length = node.level;
        (path.at(-1)?.children ?? roots).push(node);
        path.push(node);
        for (const above of path)
            above.total += node.count;
    });
    const section = byId("structure");
    if (roots.length === 0)
        section.append(nothing("There is no project and no spatial element."));
    section.append(...roots.map((root) => treeNode(root, true)));
    if (outside > 0)
        section.append(opening(["In no spatial element ", element("span", { className: "faint" }, count(outside))],
            () => element("ul", null, ...elementGroups(structure.length))));
}

function showTypes({ types }) {
    const rows = types.sort(byCount);
    const largest = rows[0]?.[1] ?? 0;
    const shown = 12;
    const section = byId("types");
    section.append(rows.length > 0 ? bars(rows.slice(0, shown), largest) : nothing("There are no instances."));
    if (rows.length > shown)
        section.append(opening([counted(rows.length - shown, "more entity", "more entities")],
            () => bars(rows.slice(shown), largest)));
}

function showMaterials({ materials }) {
    const rows = materials.sort(byCount).map(([name, number]) => [name || "(without a name)", number]);
    byId("materials").append(rows.length === 0 ? nothing("No object has a material.")
        : growing(element("div"), rows, (row) => bars([row], rows[0][1]), 24));
}

function showSets({ sets }) {
    const section = byId("sets");
    if (sets.length === 0)
        section.append(nothing("No object has a property set."));
    else
        section.append(element("p", { className: "faint" },
            "How many objects and types have a set, and in how many of these a property has a value."));
    for (const [name, users, properties] of sets) {
        const filled = properties.reduce((sum, [, number]) => sum + number, 0) / (properties.length * users || 1);
        section.append(opening([`${name || "(without a name)"} `, element("span", { className: "faint" },
            `${counted(users, "object", "objects")}, ${percent(filled)} filled`)],
        () => bars(properties.map(([property, number]) => [property, number, `${count(number)} of ${count(users)}`]), users,
            (number) => percent(number / users))));
    }
}

const percent = (share) => `${share > 0 && share < 0.01 ? "<1" : Math.floor(share * 100 + 1e-9)} %`;

function showQuantities({ quantities }) {
    const section = byId("quantities");
    if (quantities.length === 0)
        section.append(nothing("No object in the spatial structure has quantities."));
    quantities.forEach((place, i) => {
        const rows = place.sums.map(([set, name, sum, sign, number]) =>
            [set, name, sign === "" ? numbers.format(sum) : measures.format(sum), sign, number]);
        section.append(opening([`${place.type} `, element("strong", null, place.name || `#${place.id}`), " ",
            element("span", { className: "faint" }, counted(rows.length, "quantity", "quantities"))],
        () => table(["Set", "Quantity", "#Sum", "Unit", "#Objects"], rows), i === 0));
    });
}

function showClassifications({ classifications }) {
    const rows = classifications.sort(byCount).map(([text, number]) => [...text.split("\n"), number]);
    byId("classifications").append(rows.length === 0 ? nothing("No object is classified.")
        : table(["System", "Identification", "Name", "#Objects"], rows));
}

function showFindings({ findings, counts, rules }) {
    const section = byId("findings");
    section.append(element("p", { className: "faint" }, findings.length === 0 ? "Nothing was found wrong. " : "",
        rules ? "The schema's rules were checked." : "The schema's rules were not checked, since their text was not given."));
    for (const { severity, code, rule, count: number, shown } of findings) {
        const show = ([id, line, text]) => element("li", null,
            ...(id > 0 ? [link(id), " "] : []), line > 0 ? element("span", { className: "faint" }, `line ${line} `) : null, text);
        section.append(opening([element("span", { className: severity }, severity), ` ${rule || code} `,
            element("span", { className: "faint" }, count(number))], () => {
            const list = growing(element("ul"), shown, show, 20);
            if (number > shown.length)
                list.append(nothing(`Here are the first ${count(shown.length)}; the command check tells all.`));
            return list;
        }));
    }
}

async function start() {
    const overview = await dataOf("overview");
    showFile(overview);
    showStructure(overview);
    showFindings(overview);
    showTypes(overview);
    showMaterials(overview);
    showSets(overview);
    showQuantities(overview);
    showClassifications(overview);
    objects = new Objects(await dataOf("details"));
    setUnpacked();
    const input = byId("search");
    input.disabled = false;
    input.form.addEventListener("submit", (event) => {
        event.preventDefault();
        search();
    });
    whenTyped(input, search);
    document.body.dataset.state = "ready";
}

start().catch(showFailure);
