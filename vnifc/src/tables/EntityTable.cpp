#include "EntityTable.h"

#include "../model/Reading.h"

#include <VnIfcCore/VnIfcAggregationType.h>
#include <VnIfcCore/VnIfcGUID.h>
#include <VnIfcCore/VnIfcText.h>

#include <algorithm>
#include <charconv>
#include <cmath>

namespace vnifc::detail {

using namespace VN_SDAI;
using typed::AttributeKind;
using typed::fieldOf;

namespace {

bool holdsOnlyInstances(const typed::SelectClass& type) {
    return std::ranges::all_of(type.members, [](const auto& member) { return member.kind == VnTypeCodeKind::kEntity; });
}

/// True for a list of instances that is in no other list.
bool isListOfInstances(const VnIfcParameterType* type) {
    const auto* aggregation = dynamic_cast<const VnIfcAggregationType*>(underlying(type));
    const VnIfcParameterType* element = aggregation ? underlying(aggregation->elementType()) : nullptr;
    return element && element->kind() == VnTypeCodeKind::kEntity;
}

TableColumn::Kind kindOf(const AttributeInfo& attribute) {
    switch (attribute.row->kind) {
    case AttributeKind::kReal:
        return TableColumn::Kind::kReal;
    case AttributeKind::kInteger:
    case AttributeKind::kBoolean:
    case AttributeKind::kLogical:
        return TableColumn::Kind::kInteger;
    case AttributeKind::kReference:
        return TableColumn::Kind::kReference;
    case AttributeKind::kSelect:
        return holdsOnlyInstances(typed::selectClassOf(*attribute.row)) ? TableColumn::Kind::kReference
                                                                        : TableColumn::Kind::kSelect;
    case AttributeKind::kAggregate:
        return isListOfInstances(attribute.type) ? TableColumn::Kind::kTargets : TableColumn::Kind::kJson;
    default:
        return TableColumn::Kind::kText;
    }
}

void appendNumber(std::string& json, double value) {
    char digits[32];
    const auto [end, error] = std::to_chars(digits, digits + sizeof digits, value);
    json.append(digits, error == std::errc() ? end : digits);
}

void appendText(std::string& json, std::string_view utf8) {
    static constexpr char kDigits[] = "0123456789abcdef";
    json += '"';
    for (const char c : utf8) {
        if (c == '"' || c == '\\') {
            json.append(1, '\\').append(1, c);
        } else if (static_cast<unsigned char>(c) < ' ') {
            json += "\\u00";
            json.append(1, kDigits[c >> 4]).append(1, kDigits[c & 15]);
        } else {
            json += c;
        }
    }
    json += '"';
}

struct JsonMaker {
    std::string& json;

    void operator()(std::monostate) const { json += "null"; }
    void operator()(bool value) const { json += value ? "true" : "false"; }
    void operator()(Logical) const { json += "\"UNKNOWN\""; }
    void operator()(std::int64_t value) const { json += std::to_string(value); }
    void operator()(double value) const { std::isfinite(value) ? appendNumber(json, value) : void(json += "null"); }
    void operator()(const std::string& text) const { appendText(json, text); }
    void operator()(const Literal& literal) const { appendText(json, literal.text); }
    void operator()(const Instance& instance) const { json += std::to_string(instance.id()); }
    void operator()(const Value::List& list) const {
        json += '[';
        for (std::size_t i = 0; i < list.size(); ++i) {
            json.append(i > 0 ? "," : "");
            appendJson(json, list[i]);
        }
        json += ']';
    }
    void operator()(const Typed& typed) const {
        json += "{\"type\":";
        appendText(json, typed.type());
        json += ",\"value\":";
        appendJson(json, typed.value());
        json += '}';
    }
};

} // namespace

void appendJson(std::string& json, const Value& value) { value.visit(JsonMaker{json}); }

std::vector<TableColumn> columnsOf(const ClassInfo& info) {
    std::vector<TableColumn> columns;
    for (const AttributeInfo& attribute : info.attributes) {
        if (attribute.isDerived)
            continue;
        columns.push_back({attribute.row->name, kindOf(attribute), &attribute});
        if (columns.back().kind == TableColumn::Kind::kSelect)
            columns.push_back({columns.back().name + "_type", TableColumn::Kind::kType, &attribute});
    }
    return columns;
}

std::string& RowReader::buffer() {
    if (m_used == m_buffers.size())
        m_buffers.emplace_back();
    std::string& result = m_buffers[m_used++];
    result.clear();
    return result;
}

void RowReader::read(const VnIfcEntityBase& instance, const std::vector<TableColumn>& columns) {
    // Each cell takes one buffer at most; they must not move while the row is being made.
    if (m_buffers.size() < columns.size())
        m_buffers.resize(columns.size());
    m_used = 0;
    for (const TableColumn& column : columns)
        cell(instance, column);
    if (!instance.objectId().slot()->has(VnIfcInstanceSlot::kHasKept))
        return;
    const ClassInfo& info = *m_state.classOf(instance);
    for (const auto& [position, text] : instance.keptTexts())
        m_sink.kept(position < info.attributes.size() ? info.attributes[position].row->name : "", text);
}

void RowReader::cell(const VnIfcEntityBase& instance, const TableColumn& column) {
    const typed::AttributeRow& row = *column.attribute->row;
    if (column.kind == TableColumn::Kind::kType)
        return typeOf(fieldOf<typed::Select>(instance, row));
    switch (row.kind) {
    case AttributeKind::kString:
    case AttributeKind::kBinary:
        return exchangeText(fieldOf<VnAnsiString>(instance, row));
    case AttributeKind::kGuid:
        return exchangeText(fieldOf<VnIfcGUID>(instance, row).view());
    case AttributeKind::kReal: {
        const double value = fieldOf<double>(instance, row);
        return std::isnan(value) ? m_sink.null() : m_sink.real(value);
    }
    case AttributeKind::kInteger: {
        const int value = fieldOf<int>(instance, row);
        return value == Consts::VnIntUnset ? m_sink.null() : m_sink.integer(value);
    }
    case AttributeKind::kBoolean: {
        const auto value = fieldOf<VnIfcBoolean>(instance, row);
        return value.isUnset() ? m_sink.null() : m_sink.integer(value == VnIfcBoolean::True);
    }
    case AttributeKind::kLogical: {
        const auto value = fieldOf<VnIfcLogical>(instance, row);
        return value.isUnset()                  ? m_sink.null()
               : value == VnIfcLogical::Unknown ? m_sink.text("UNKNOWN")
                                                : m_sink.integer(value == VnIfcLogical::True);
    }
    case AttributeKind::kEnumeration: {
        const char* literal =
            typed::enumerationClassOf(row).toLiteral(static_cast<int>(fieldOf<std::uint32_t>(instance, row)));
        return literal ? m_sink.text(literal) : m_sink.null();
    }
    case AttributeKind::kReference:
        return reference(fieldOf<VnDbObjectId>(instance, row), column);
    case AttributeKind::kSelect:
        return select(instance, column);
    case AttributeKind::kAggregate: {
        const auto& elements = fieldOf<VnIfcAggr>(instance, row);
        if (column.kind == TableColumn::Kind::kTargets && !m_targetsAsJson)
            return m_sink.targets(column, elements);
        const Value value = valueOf(m_state, instance, row, column.attribute);
        if (value.isNull())
            return m_sink.null();
        std::string& json = buffer();
        appendJson(json, value);
        return m_sink.json(json);
    }
    case AttributeKind::kDerived:
        return m_sink.null();
    }
}

void RowReader::exchangeText(std::string_view text) {
    if (text == Consts::VnStringUnset)
        return m_sink.null();
    if (text.find('\\') == text.npos)
        return m_sink.text(text);
    m_sink.text(vnDecodeText(text, buffer()));
}

void RowReader::reference(const VnDbObjectId& handle, const TableColumn& column) {
    if (handle.isNull())
        return m_sink.null();
    if (handle.openObject())
        return m_sink.integer(static_cast<std::int64_t>(handle.number()));
    m_sink.null();
    m_sink.kept(column.name, '#' + std::to_string(handle.number()));
}

void RowReader::select(const VnIfcEntityBase& instance, const TableColumn& column) {
    const auto& value = fieldOf<typed::Select>(instance, *column.attribute->row);
    if (!value.hasValue())
        return m_sink.null();
    if (value.kind() == VnTypeCodeKind::kEntity)
        return reference(value.getHandle(), column);
    VnIfcBoolean truth;
    VnIfcLogical logical;
    int number = 0;
    double real = 0;
    std::uint32_t code = 0;
    if (value.getDouble(real))
        return m_sink.real(real);
    if (value.getInt32(number))
        return m_sink.integer(number);
    if (value.getBoolean(truth))
        return m_sink.integer(truth == VnIfcBoolean::True);
    if (value.getLogical(logical))
        return logical == VnIfcLogical::Unknown ? m_sink.text("UNKNOWN")
                                                : m_sink.integer(logical == VnIfcLogical::True);
    if (value.getEnum(code) && value.chosen() && value.chosen()->enumeration) {
        const char* literal = value.chosen()->enumeration->toLiteral(static_cast<int>(code));
        return literal ? m_sink.text(literal) : m_sink.null();
    }
    if (!value.getAggr())
        return exchangeText(value.text());
    std::string& json = buffer();
    appendJson(json, valueOf(m_state, instance, *column.attribute->row, column.attribute).untyped());
    m_sink.json(json);
}

void RowReader::typeOf(const typed::Select& value) {
    if (!value.hasValue())
        return m_sink.null();
    if (value.kind() == VnTypeCodeKind::kEntity) {
        const VnIfcEntityBase* instance = value.getHandle().openObject();
        const ClassInfo* info = instance ? m_state.classOf(*instance) : nullptr;
        return info ? m_sink.text(info->rows.name) : m_sink.null();
    }
    m_sink.text(value.underlyingTypeName().view());
}

} // namespace vnifc::detail
