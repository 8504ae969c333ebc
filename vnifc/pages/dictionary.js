// The dictionary of one release. Each declaration has an address of its own: #IfcWall.

const byId = (id) => document.getElementById(id);
const kinds = { entity: "Entities", type: "Types", select: "Selects", enumeration: "Enumerations" };
let records = []; // entities, then types, in alphabetical order
const known = new Map(); // by name in upper case: the dictionary has names in several forms

const find = (name) => known.get(name.toUpperCase());
const isBefore = (left, right) => (left.name < right.name ? -1 : 1);

/** A name that may go on in the next line before each of its words. */
function breakable(name) {
    const words = name.split(/(?<=[a-z0-9])(?=[A-Z])/);
    return element("span", null, ...words.flatMap((word, i) => (i > 0 ? [element("wbr"), word] : [word])));
}

function linked(name) {
    const record = find(name);
    return record ? element("a", { href: `#${record.name}` }, breakable(record.name)) : breakable(name);
}

/** A name that the dictionary has in small letters, as those of enumerations, in the form that files have. */
const inOneForm = (name) => (name === name.toLowerCase() ? name.toUpperCase() : name);

/** The text of a type, of which the last word is the name of another declaration: "set [1:?] of IfcWall". */
function linkedType(text) {
    const at = text.lastIndexOf(" ") + 1;
    return element("span", null, text.slice(0, at), linked(text.slice(at)));
}

/** The entity and those above it, the most general first. */
function lineOf(record) {
    const line = [];
    for (let each = record; each; each = each.supertype ? find(each.supertype) : null)
        line.unshift(each);
    return line;
}

function attributeRow(attribute) {
    const derived = attribute.kind === "derived" ? "derived" : "";
    return [breakable(attribute.redeclares || attribute.name), linkedType(attribute.type), attribute.optional ? "optional" : derived];
}

function listOf(names, className) {
    return element("ul", { className: className ?? "" }, ...names.map((name) => element("li", null, linked(name))));
}

function part(title, ...contents) {
    return element("section", null, element("h2", null, title), ...contents);
}

/** Where a declaration is used: attributes of its type, and selects that it is a member of. */
function usesOf(record) {
    const upper = record.name.toUpperCase();
    const ends = (type) => (type ?? "").toUpperCase().split(" ").at(-1) === upper;
    const attributes = records.flatMap((each) => (each.attributes ?? [])
        .filter((attribute) => attribute.kind !== "inverse" && ends(attribute.type))
        .map((attribute) => [each.name, attribute.redeclares || attribute.name]));
    const types = records.filter((each) => ends(each.type) || (each.members ?? []).some((name) => name.toUpperCase() === upper))
        .map((each) => each.name);
    return { attributes, types };
}

/** A subtype with all that is below it. */
function below(record) {
    const subtypes = records.filter((each) => each.supertype === record.name);
    return element("ul", null, ...subtypes.map((each) => element("li", null, linked(each.name), below(each))));
}

function entityParts(record) {
    const line = lineOf(record);
    const parts = [];
    const path = element("p", null, ...line.flatMap((each, i) => [i > 0 ? " › " : null,
        each === record ? element("strong", null, each.name) : linked(each.name)]));
    parts.push(part("Inheritance", path, below(record)));
    for (const [title, isInverse] of [["Attributes", false], ["Inverse attributes", true]]) {
        const tables = line.toReversed().flatMap((each) => {
            const own = each.attributes.filter((attribute) => (attribute.kind === "inverse") === isInverse);
            if (own.length === 0)
                return [];
            const rows = own.map((attribute) => isInverse
                ? [breakable(attribute.name), linkedType(attribute.type), breakable(attribute.inverts)] : attributeRow(attribute));
            const heading = each === record ? "Own" : element("span", null, "Inherited from ", linked(each.name));
            return [element("h3", null, heading), table(["Attribute", isInverse ? "Entity" : "Type", isInverse ? "By its" : ""], rows)];
        });
        if (tables.length > 0)
            parts.push(part(title, element("div", { className: "aligned" }, ...tables)));
    }
    return parts;
}

function typeParts(record) {
    if (record.literals)
        return [part("Literals", element("ul", { className: "mono" },
            ...record.literals.map((literal) => element("li", null, literal))))];
    return record.members ? [part("Members", listOf(record.members))] : [part("Underlying type", linkedType(record.type))];
}

function showRecord(record) {
    const kind = `${record.abstract ? "abstract " : ""}${record.kind}`;
    const { attributes, types } = usesOf(record);
    const uses = attributes.length + types.length === 0 ? []
        : [part("Used by", types.length > 0 ? listOf(types) : null, attributes.length > 0
            ? table(["Entity", "Attribute"], attributes.map(([entity, name]) => [linked(entity), name])) : null)];
    document.title = `${record.name} – ${byId("title").textContent}`;
    byId("page").replaceChildren(
        element("div", { className: "heading" }, element("h2", null, record.name), element("p", { className: "faint" }, kind)),
        ...(record.kind === "entity" ? entityParts(record) : typeParts(record)), ...uses);
}

function showOverview() {
    document.title = byId("title").textContent;
    const tiles = element("div", { className: "tiles" }, ...Object.entries(kinds).map(([kind, title]) =>
        element("div", null, element("strong", null, count(records.filter((each) => each.kind === kind).length)),
            title.toLowerCase())));
    const roots = records.filter((each) => each.kind === "entity" && !each.supertype);
    const tree = (record) => opening([linked(record.name)], () => element("ul", null,
        ...records.filter((each) => each.supertype === record.name).map((each) => element("li", null, node(each)))),
    record.name === "IfcRoot");
    const node = (record) => records.some((each) => each.supertype === record.name) ? tree(record) : linked(record.name);
    const lists = Object.entries(kinds).map(([kind, title]) => part(title, element("div", { className: "names" },
        listOf(records.filter((each) => each.kind === kind).map((each) => each.name)))));
    byId("page").replaceChildren(tiles, part("Inheritance", element("ul", { className: "tree" },
        ...roots.map((each) => element("li", null, node(each))))), ...lists);
}

function show() {
    const name = decodeURIComponent(location.hash.slice(1));
    const record = find(name);
    record ? showRecord(record) : showOverview();
    if (name !== "" && !record)
        byId("page").prepend(element("p", { role: "status" }, `This release has no ${name}.`));
    byId("search").value = "";
    search();
    scrollTo(0, 0);
}

/** What is found in a record, the most telling first: its name, an attribute, a literal. */
function hitIn(record, word) {
    const name = record.name.toLowerCase();
    if (name.includes(word))
        return { record, rank: name === word || name === `ifc${word}` ? 0 : name.startsWith(word) || name.startsWith(`ifc${word}`) ? 1 : 2 };
    const inner = (record.attributes ?? []).map((each) => each.redeclares || each.name)
        .concat(record.literals ?? []).find((each) => each.toLowerCase().includes(word));
    return inner === undefined ? null : { record, rank: 3, inner };
}

function search() {
    const word = byId("search").value.trim().toLowerCase();
    const results = byId("results");
    results.hidden = word === "";
    if (word === "")
        return;
    const hits = records.map((record) => hitIn(record, word)).filter((hit) => hit !== null)
        .sort((left, right) => left.rank - right.rank);
    results.replaceChildren(element("h2", null, hits.length === 0 ? "Nothing found"
        : counted(hits.length, "declaration found", "declarations found")),
    growing(element("ul"), hits, ({ record, inner }) => element("li", null, linked(record.name),
        element("span", { className: "faint" }, inner ? ` ${record.kind}: ${inner}` : ` ${record.kind}`)), 50));
}

async function start() {
    const data = await dataOf("dictionary");
    records = data.records.map((record) => ({ ...record, name: inOneForm(record.name) })).sort(isBefore);
    for (const record of records)
        known.set(record.name.toUpperCase(), record);
    byId("title").textContent = `${data.release} dictionary`;
    byId("made").textContent = `${data.title}. Made by ${data.program}.`;
    const input = byId("search");
    input.form.addEventListener("submit", (event) => {
        event.preventDefault();
        search();
        document.querySelector("#results a")?.click();
    });
    whenTyped(input, search);
    addEventListener("hashchange", show);
    show();
    document.body.dataset.state = "ready";
}

start().catch(showFailure);
