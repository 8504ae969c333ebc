#include "pages/Objects.h"

#include <map>
#include <stdexcept>
#include <tuple>

namespace vnifc::detail {

namespace {

// What somebody reads in a table: a list of thousands of references is only told how long it is.
constexpr std::size_t kShownElements = 20;

std::string wordsOf(const Value& value) {
    const Value* list = &value.untyped();
    const auto* elements = std::get_if<Value::List>(&list->variant());
    if (!elements || elements->size() <= kShownElements)
        return value.toString();
    const Value first(Value::List(elements->begin(), elements->begin() + kShownElements));
    return first.toString() + " and " + std::to_string(elements->size() - kShownElements) + " more";
}

/// An attribute of all instances of an entity. References are negative numbers, texts indices, the unset is null.
class Cells {
public:
    void add(const Value& value, bool isText, Texts& texts) {
        if (value.isNull()) {
            m_json.null();
        } else if (const Instance* target = std::get_if<Instance>(&value.variant())) {
            m_json.put(-static_cast<std::int64_t>(target->id()));
            m_isEmpty = false;
        } else {
            const std::string words = wordsOf(value);
            isText ? m_json.put(words) : m_json.put(texts.indexOf(words));
            m_isEmpty = false;
        }
    }
    void begin() { m_json.begin('['); }
    /// The list as JSON; null when no instance has a value.
    std::string end() {
        m_json.end(']');
        return m_isEmpty ? "null" : m_json.take();
    }

private:
    Json m_json;
    bool m_isEmpty = true;
};

struct EntityTable {
    std::vector<std::string> names;
    std::vector<std::uint64_t> ids;
    std::vector<Cells> columns;
};

void add(EntityTable& table, const Instance& instance, Texts& texts) {
    if (table.ids.empty()) {
        for (const Attribute attribute : instance.attributes())
            table.names.emplace_back(attribute.name());
        table.columns.resize(table.names.size());
        for (Cells& cells : table.columns)
            cells.begin();
    }
    table.ids.push_back(instance.id());
    std::size_t column = 0;
    for (const Attribute attribute : instance.attributes()) {
        if (const std::optional<std::string> kept = attribute.keptText())
            table.columns[column].add(*kept, false, texts);
        else // a GlobalId comes once, so that an index of it would only be more
            table.columns[column].add(attribute.value(), table.names[column] == "GlobalId", texts);
        ++column;
    }
}

using Shape = std::vector<std::size_t>;

/// The index of a value in the order of first use.
template <class Key>
class Indices {
public:
    std::size_t operator()(const Key& key) {
        const auto [known, isNew] = m_indices.try_emplace(key, m_indices.size());
        if (isNew)
            m_keys.push_back(&known->first);
        return known->second;
    }
    const std::vector<const Key*>& keys() const noexcept { return m_keys; }

private:
    std::map<Key, std::size_t> m_indices;
    std::vector<const Key*> m_keys;
};

using PropertyKey = std::tuple<std::size_t, std::size_t, std::size_t, bool>;

} // namespace

std::size_t Texts::indexOf(std::string_view text) {
    const auto [known, isNew] = m_indices.try_emplace(std::string(text), m_texts.size());
    if (isNew)
        m_texts.push_back(&known->first);
    return known->second;
}

void Texts::write(Json& json) const {
    json.key("texts").begin('[');
    for (const std::string* text : m_texts)
        json.put(*text);
    json.end(']');
}

void writeAscending(Json& json, std::string_view key, std::span<const std::uint64_t> numbers) {
    json.key(key).begin('[');
    std::uint64_t previous = 0;
    for (const std::uint64_t number : numbers)
        json.put(static_cast<std::int64_t>(number - std::exchange(previous, number)));
    json.end(']');
}

void writeObjects(Json& json, const Model& model, Texts& texts) {
    std::map<std::string, EntityTable, std::less<>> tables;
    for (const Instance instance : model.instances("IfcRoot"))
        if (!instance.isForeign())
            add(tables[std::string(instance.type())], instance, texts);
    json.key("entities").begin('[');
    for (auto& [name, table] : tables) {
        json.begin('{').key("name").put(name).key("attributes").begin('[');
        for (const std::string& attribute : table.names)
            json.put(attribute);
        json.end(']');
        writeAscending(json, "ids", table.ids);
        json.key("columns").begin('[');
        for (Cells& cells : table.columns)
            json.raw(cells.end());
        json.end(']').end('}');
    }
    json.end(']');
}

void writeProperties(Json& json, const ColumnTable& table, Texts& texts) {
    const Column& object = columnOf(table, "object");
    const Column& value = columnOf(table, "value");
    const Column& fromType = columnOf(table, "from_type");
    const Column* const words[] = {&columnOf(table, "set"), &columnOf(table, "name"), &columnOf(table, "unit")};
    Indices<PropertyKey> keys;
    Indices<Shape> shapes;
    std::vector<std::uint64_t> ids, shapeOfObject;
    Json values;
    values.begin('[');
    for (std::size_t row = 0; row < table.rows;) {
        const std::uint64_t id = idAt(object, row);
        Shape shape;
        for (; row < table.rows && idAt(object, row) == id; ++row) {
            const auto text = [&](std::size_t i) { return texts.indexOf(textAt(*words[i], row)); };
            const bool isFromType = static_cast<const unsigned char*>(fromType.values().data())[row / 8] >> row % 8 & 1;
            shape.push_back(keys({text(0), text(1), text(2), isFromType}));
            hasValue(value, row) ? values.put(texts.indexOf(textAt(value, row))) : values.null();
        }
        ids.push_back(id);
        shapeOfObject.push_back(shapes(shape));
    }
    json.key("keys").begin('[');
    for (const PropertyKey* key : keys.keys()) {
        const auto& [set, name, unit, isFromType] = *key;
        json.begin('[').put(set).put(name).put(unit).put(isFromType ? 1 : 0).end(']');
    }
    json.end(']').key("shapes").begin('[');
    for (const Shape* shape : shapes.keys()) {
        json.begin('[');
        for (const std::size_t key : *shape)
            json.put(key);
        json.end(']');
    }
    json.end(']').key("properties").begin('{');
    writeAscending(json, "ids", ids);
    json.key("shapes").begin('[');
    for (const std::uint64_t shape : shapeOfObject)
        json.put(shape);
    json.end(']').key("values").raw(values.end(']').take()).end('}');
}

std::string_view textAt(const Column& column, std::size_t row) {
    if (!hasValue(column, row))
        return {};
    if (column.kind() == ColumnKind::kCategory)
        return textAt(*column.child(),
                      static_cast<std::size_t>(static_cast<const std::int32_t*>(column.values().data())[row]));
    const auto* offsets = static_cast<const std::int64_t*>(column.offsets().data());
    return {static_cast<const char*>(column.values().data()) + offsets[row],
            static_cast<std::size_t>(offsets[row + 1] - offsets[row])};
}

std::uint64_t idAt(const Column& column, std::size_t row) {
    return static_cast<const std::uint64_t*>(column.values().data())[row];
}

bool hasValue(const Column& column, std::size_t row) {
    return column.nulls() == 0 || (static_cast<const unsigned char*>(column.valid().data())[row / 8] >> row % 8 & 1);
}

const Column& columnOf(const ColumnTable& table, std::string_view name) {
    for (const Column& column : table.columns)
        if (column.name() == name)
            return column;
    throw std::logic_error("the table has no column " + std::string(name));
}

} // namespace vnifc::detail
