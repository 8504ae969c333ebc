#include "../model/Reading.h"

#include <vnifc/Columns.h>
#include <vnifc/Facet.h>

#include <VnIfcCore/VnIfcAggregationType.h>

#include <algorithm>
#include <charconv>

namespace vnifc {

using detail::AttributeInfo;
using detail::ClassInfo;
using detail::Entity;
using detail::ModelState;
using VN_SDAI::VnIfcEntityBase;
using VN_SDAI::VnIfcParameterType;
using VN_SDAI::VnTypeCodeKind;
using VN_SDAI::typed::AttributeKind;

namespace {

std::string_view entityOf(const VnIfcEntityBase& instance) {
    const VN_SDAI::VnIfcEntityType* type = instance.getInstanceType();
    return type ? std::string_view(type->entityClass()->name) : std::string_view("(no class)");
}

/// Puts the number of an instance and, beside it, its entity into two columns.
void putTarget(const VN_SDAI::VnDbObjectId& handle, Column& id, Column& entity) {
    const VnIfcEntityBase* target = handle.openObject();
    if (handle.isNull())
        id.null();
    else
        id.id(handle.number());
    target ? entity.text(entityOf(*target)) : entity.null();
}

// ---- Lists

ColumnKind elementKind(VnTypeCodeKind kind) {
    switch (kind) {
    case VnTypeCodeKind::kReal:
        return ColumnKind::kReal;
    case VnTypeCodeKind::kInteger:
        return ColumnKind::kInteger;
    case VnTypeCodeKind::kEntity:
        return ColumnKind::kId;
    default:
        return ColumnKind::kText;
    }
}

/// The column of a list's elements, which may be lists.
Column elementsOf(const VnIfcParameterType* type) {
    const auto* list = dynamic_cast<const VN_SDAI::VnIfcAggregationType*>(detail::underlying(type));
    const VnIfcParameterType* element = list ? detail::underlying(list->elementType()) : nullptr;
    if (!element)
        return {"item", ColumnKind::kText};
    if (!dynamic_cast<const VN_SDAI::VnIfcAggregationType*>(element))
        return {"item", elementKind(element->kind())};
    Column column("item", ColumnKind::kList);
    column.setChild(elementsOf(element));
    return column;
}

/// Puts a list and all that is in it into a column; what is of another kind than the column becomes words or null.
class ListWriter final : public ValueVisitor {
public:
    explicit ListWriter(Column& column) { m_columns.push_back(&column); }

    void null() override { top().null(); }
    void boolean(bool value) override { words(value ? "true" : "false"); }
    void unknown() override { words("unknown"); }
    void integer(std::int64_t value) override {
        if (top().kind() == ColumnKind::kInteger)
            top().integer(value);
        else if (top().kind() == ColumnKind::kReal)
            top().real(static_cast<double>(value));
        else
            digits(value);
    }
    void real(double value) override { top().kind() == ColumnKind::kReal ? top().real(value) : digits(value); }
    void text(std::string_view utf8) override { words(utf8); }
    void literal(std::string_view literal) override { words(literal); }
    void instance(const Instance& instance) override {
        top().kind() == ColumnKind::kId ? top().id(instance.id()) : words('#' + std::to_string(instance.id()));
    }
    std::size_t beginList(std::size_t count) override {
        if (top().kind() != ColumnKind::kList) {
            ++m_unfit;
            return 0;
        }
        m_columns.push_back(top().child());
        return count;
    }
    void endList() override {
        if (m_unfit > 0) {
            --m_unfit;
            return top().null();
        }
        m_columns.pop_back();
        top().endList();
    }

private:
    Column& top() noexcept { return *m_columns.back(); }
    void words(std::string_view words) { top().kind() == ColumnKind::kText ? top().text(words) : top().null(); }
    template <class T>
    void digits(T value) {
        char buffer[32];
        const auto [end, error] = std::to_chars(buffer, buffer + sizeof buffer, value);
        words({buffer, static_cast<std::size_t>(end - buffer)});
    }

    std::vector<Column*> m_columns;
    unsigned m_unfit = 0; ///< lists that were begun where none was expected
};

// ---- Single values

/// Puts a value that is no list into a column.
class CellWriter final : public ValueVisitor {
public:
    explicit CellWriter(Column& column) : m_column(column) {}
    void null() override { m_column.null(); }
    void boolean(bool value) override {
        m_column.kind() == ColumnKind::kBoolean ? m_column.boolean(value) : m_column.text(value ? "TRUE" : "FALSE");
    }
    void unknown() override { m_column.text("UNKNOWN"); }
    void integer(std::int64_t value) override { m_column.integer(value); }
    void real(double value) override { m_column.real(value); }
    void text(std::string_view utf8) override { m_column.text(utf8); }
    void literal(std::string_view literal) override { m_column.text(literal); }

private:
    Column& m_column;
};

ColumnKind cellKind(AttributeKind kind) {
    switch (kind) {
    case AttributeKind::kReal:
        return ColumnKind::kReal;
    case AttributeKind::kInteger:
        return ColumnKind::kInteger;
    case AttributeKind::kBoolean:
        return ColumnKind::kBoolean;
    case AttributeKind::kLogical: // has a third value
    case AttributeKind::kEnumeration:
        return ColumnKind::kCategory;
    case AttributeKind::kReference:
        return ColumnKind::kId;
    case AttributeKind::kAggregate:
        return ColumnKind::kList;
    default:
        return ColumnKind::kText;
    }
}

/// What is in a select: words beside the type of the value or the entity.
void putSelect(const Value& value, Column& words, Column& type) {
    if (value.isNull()) {
        words.null();
        return type.null();
    }
    words.text(value.toString());
    if (const auto* typed = std::get_if<Typed>(&value.variant()))
        return type.text(typed->type());
    const auto* instance = std::get_if<Instance>(&value.variant());
    const VnIfcEntityBase* target = instance ? instance->core().openObject() : nullptr;
    target ? type.text(entityOf(*target)) : type.null();
}

bool holdsOnlyInstances(const VN_SDAI::typed::SelectClass& type) {
    return std::ranges::all_of(type.members, [](const auto& member) { return member.kind == VnTypeCodeKind::kEntity; });
}

/// Fills the column or the two columns of an attribute. A subtype may derive what its supertype stores, so that the
/// attribute is looked up for the instance's own class.
class AttributeFiller {
public:
    AttributeFiller(ModelState& state, const AttributeInfo& attribute) : m_state(state), m_attribute(attribute) {
        m_hasOnlyInstances = kind() == AttributeKind::kReference;
        if (kind() == AttributeKind::kSelect)
            m_hasOnlyInstances = holdsOnlyInstances(VN_SDAI::typed::selectClassOf(*attribute.row));
    }

    void addTo(std::vector<Column>& columns) {
        m_first = columns.size();
        const std::string name = m_attribute.row->name;
        columns.emplace_back(name, m_hasOnlyInstances ? ColumnKind::kId : cellKind(kind()));
        if (columns.back().kind() == ColumnKind::kList)
            columns.back().setChild(elementsOf(m_attribute.type));
        if (m_hasOnlyInstances)
            columns.emplace_back(name + "_entity", ColumnKind::kCategory);
        else if (kind() == AttributeKind::kSelect)
            columns.emplace_back(name + "_type", ColumnKind::kCategory);
    }

    void put(const VnIfcEntityBase& instance, std::vector<Column>& columns) {
        const AttributeInfo* own = m_state.classOf(instance)->infoOf(*m_attribute.row);
        const bool isDerived = !own || own->isDerived;
        Column& column = columns[m_first];
        if (m_hasOnlyInstances || kind() == AttributeKind::kSelect) {
            const Value value = isDerived ? Value() : valueOf(m_state, instance, *m_attribute.row, own);
            if (!m_hasOnlyInstances)
                return putSelect(value, column, columns[m_first + 1]);
            const auto* target = std::get_if<Instance>(&value.variant());
            return putTarget(target ? target->core() : VN_SDAI::VnDbObjectId(), column, columns[m_first + 1]);
        }
        if (isDerived)
            return column.null();
        if (kind() == AttributeKind::kAggregate) {
            ListWriter writer(column);
            return visitField(m_state, instance, *m_attribute.row, own->mayBeEmpty, writer);
        }
        CellWriter writer(column);
        visitField(m_state, instance, *m_attribute.row, own->mayBeEmpty, writer);
    }

private:
    AttributeKind kind() const noexcept { return m_attribute.row->kind; }

    ModelState& m_state;
    const AttributeInfo& m_attribute;
    bool m_hasOnlyInstances = false;
    std::size_t m_first = 0;
};

/// What a facet says: numbers when it says nothing else, words otherwise.
Column facetColumn(const std::string& name, const Model& model, const InstanceRange& instances) {
    const Facet facet(name);
    facet.check(model);
    std::vector<Value> values;
    for (const Instance instance : instances)
        values.push_back(facet.value(instance));
    const auto isNumber = [](const Value& value) { return value.isNull() || value.get<double>(); };
    const bool hasValue = std::ranges::any_of(values, [](const Value& value) { return !value.isNull(); });
    const bool areNumbers = hasValue && std::ranges::all_of(values, isNumber);
    Column column(name, areNumbers ? ColumnKind::kReal : ColumnKind::kCategory);
    std::size_t row = 0;
    for (const Instance instance : instances) {
        const Value& value = values[row++];
        if (value.isNull())
            column.null();
        else if (areNumbers)
            column.real(value.as<double>());
        else
            column.text(facet.words(instance));
    }
    return column;
}

void fitAll(ColumnTable& table, std::size_t rows) {
    for (Column& column : table.columns)
        column.fit();
    table.rows = rows;
}

void fill(ColumnTable& table, const InstanceRange& instances, std::vector<AttributeFiller>& fillers) {
    table.columns.emplace_back("id", ColumnKind::kId);
    table.columns.emplace_back("entity", ColumnKind::kCategory);
    for (AttributeFiller& filler : fillers)
        filler.addTo(table.columns);
    for (const Instance instance : instances) {
        const VnIfcEntityBase& object = *instance.core().openObject();
        table.columns[0].id(instance.id());
        table.columns[1].text(entityOf(object));
        for (AttributeFiller& filler : fillers)
            filler.put(object, table.columns);
    }
}

} // namespace

ColumnTable entityColumns(const Model& model, std::string_view entity, std::span<const std::string> names) {
    ModelState& state = *model.wrap({}).state();
    const VN_SDAI::VnIfcEntityType* type = state.schema().entity(entity);
    if (!type)
        throw NotFound(std::string(model.release()) + " has no entity " + std::string(entity));
    const ClassInfo& info = state.classOf(*type);
    const InstanceRange instances = model.instances(entity);
    std::vector<AttributeFiller> fillers;
    std::vector<std::string> facets;
    for (const std::string& name : names) {
        if (const AttributeInfo* attribute = info.findExplicit(name))
            fillers.emplace_back(state, *attribute);
        else if (!detail::sameName(name, "id") && !detail::sameName(name, "entity"))
            facets.push_back(name);
    }
    if (names.empty())
        for (const AttributeInfo& attribute : info.attributes)
            if (!attribute.isDerived)
                fillers.emplace_back(state, attribute);
    ColumnTable table;
    fill(table, instances, fillers);
    for (const std::string& name : facets)
        table.columns.push_back(facetColumn(name, model, instances));
    fitAll(table, table.columns.front().size());
    return table;
}

namespace {

/// The attributes of a relationship that tell who is related to whom. In some both ends are "Related...": the first one
/// counts as relating then.
struct Ends {
    const VN_SDAI::typed::AttributeRow* relating = nullptr;
    const VN_SDAI::typed::AttributeRow* related = nullptr;
};

Ends endsOf(const ClassInfo& info) {
    Ends ends;
    const VN_SDAI::typed::AttributeRow* firstRelated = nullptr;
    for (const VN_SDAI::typed::AttributeRow* row : info.references) {
        const std::string_view name = row->name;
        if (name.starts_with("Relating") && !ends.relating)
            ends.relating = row;
        else if (name.starts_with("Related"))
            (firstRelated ? ends.related : firstRelated) = row;
    }
    if (ends.relating)
        ends.related = firstRelated;
    else
        ends.relating = firstRelated;
    return ends;
}

} // namespace

ColumnTable relationColumns(const Model& model, std::string_view entity) {
    ModelState& state = *model.wrap({}).state();
    ColumnTable table;
    for (const char* name : {"relation", "relating", "related"}) {
        table.columns.emplace_back(name, ColumnKind::kId);
        table.columns.emplace_back(name == std::string_view("relation") ? "entity" : std::string(name) + "_entity",
                                   ColumnKind::kCategory);
    }
    std::vector<Column>& columns = table.columns;
    for (const Instance relation : model.instances(entity.empty() ? "IfcRelationship" : entity)) {
        const VnIfcEntityBase& object = *relation.core().openObject();
        const ClassInfo* info = state.classOf(object);
        const Ends ends = info ? endsOf(*info) : Ends();
        if (!ends.relating || !ends.related)
            continue;
        // Either end may have several.
        const auto each = [&](const VN_SDAI::VnDbObjectId& relating) {
            const auto put = [&](const VN_SDAI::VnDbObjectId& related) {
                columns[0].id(relation.id());
                columns[1].text(entityOf(object));
                putTarget(relating, columns[2], columns[3]);
                putTarget(related, columns[4], columns[5]);
            };
            detail::forEachHandle(object, *ends.related, put);
        };
        detail::forEachHandle(object, *ends.relating, each);
    }
    fitAll(table, columns.front().size());
    return table;
}

} // namespace vnifc
