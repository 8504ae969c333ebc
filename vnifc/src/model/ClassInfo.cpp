#include "ClassInfo.h"

#include <VnIfcCore/VnIfcAggr.h>
#include <VnIfcCore/VnIfcAggregationType.h>
#include <VnIfcCore/VnIfcAttributeDefinition.h>
#include <VnIfcCore/VnIfcDefinedType.h>
#include <VnIfcTyped/Fields.h>

#include <algorithm>

namespace vnifc::detail {

using namespace VN_SDAI;
using typed::AttributeKind;
using typed::AttributeRow;
using typed::EntityClass;

namespace {

constexpr char lower(char c) noexcept { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; }

bool mayBeEmpty(const VnIfcParameterType* type) {
    const auto* aggregation = dynamic_cast<const VnIfcAggregationType*>(underlying(type));
    return aggregation && !aggregation->lowerBound().isUnbounded() && aggregation->lowerBound().value() == 0;
}

/// True when values of the type hold instances.
bool refers(const VnIfcParameterType* type) {
    type = innermost(type);
    return !type || type->kind() == VnTypeCodeKind::kEntity || type->kind() == VnTypeCodeKind::kSelect;
}

void collectInverses(const EntityClass& type, std::vector<const AttributeRow*>& rows) {
    if (type.supertype)
        collectInverses(*type.supertype, rows);
    for (const typed::InverseRow& row : type.inverses)
        rows.push_back(&row.attribute);
}

const AttributeRow* findMember(const EntityClass& type, std::string_view name) {
    for (const EntityClass* each = &type; each; each = each->supertype)
        for (const AttributeRow& row : each->attributes)
            if (sameName(row.name, name))
                return &row;
    return nullptr;
}

} // namespace

bool sameName(std::string_view left, std::string_view right) noexcept {
    return left.size() == right.size() &&
           std::ranges::equal(left, right, [](char a, char b) { return lower(a) == lower(b); });
}

const VnIfcParameterType* underlying(const VnIfcParameterType* type) noexcept {
    while (const auto* named = dynamic_cast<const VnIfcDefinedType*>(type))
        type = named->underlyingType();
    return type;
}

const VnIfcParameterType* innermost(const VnIfcParameterType* type) noexcept {
    type = underlying(type);
    while (const auto* aggregation = dynamic_cast<const VnIfcAggregationType*>(type))
        type = underlying(aggregation->elementType());
    return type;
}

std::string upperNameOf(const VnIfcParameterType* type) {
    const auto* named = dynamic_cast<const VnIfcNameType*>(type);
    std::string upper(named ? named->name().view() : std::string_view());
    for (char& c : upper)
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c;
    return upper;
}

ClassInfo::ClassInfo(const VnIfcEntityType& record) : type(record), rows(*record.entityClass()) {
    std::vector<const VnIfcAttributeDefinition*> definitions;
    for (const VnIfcAttributeDefinition* each : record.allAttributes())
        if (each->attributeKind() == VnIfcAttributeDefinition::Kind::kExplicit)
            definitions.push_back(each);
    for (unsigned i = 0; i < rows.fields.size() && i < definitions.size(); ++i) {
        const VnIfcAttributeDefinition& definition = *definitions[i];
        const bool isDerived = rows.fields[i]->kind == AttributeKind::kDerived;
        const AttributeRow* row = isDerived ? findMember(rows, definition.name()) : rows.fields[i];
        attributes.push_back(
            {row, definition.type(), definition.typeName(), i, isDerived, mayBeEmpty(definition.type())});
        const bool canRefer = row->kind == AttributeKind::kReference || row->kind == AttributeKind::kSelect ||
                              (row->kind == AttributeKind::kAggregate && refers(definition.type()));
        if (canRefer && !isDerived)
            references.push_back(row);
    }
    collectInverses(rows, inverses);
    for (std::size_t i = 0; i < kAttributeCount; ++i)
        named[i] = find(kAttributeNames[i]);
    static constexpr std::string_view kUnitCarriers[] = {
        "IfcProject",         "IfcUnitAssignment",     "IfcNamedUnit",   "IfcDerivedUnit",
        "IfcMeasureWithUnit", "IfcDerivedUnitElement", "IfcMonetaryUnit"};
    carriesUnits = std::ranges::any_of(kUnitCarriers, [&](std::string_view name) {
        for (const EntityClass* each = &rows; each; each = each->supertype)
            if (each->name == name)
                return true;
        return false;
    });
}

const AttributeRow* ClassInfo::find(std::string_view name) const noexcept {
    if (const AttributeInfo* info = findExplicit(name))
        return info->row;
    const auto found =
        std::ranges::find_if(inverses, [&](const AttributeRow* row) { return sameName(row->name, name); });
    return found == inverses.end() ? nullptr : *found;
}

const AttributeInfo* ClassInfo::findExplicit(std::string_view name) const noexcept {
    for (const AttributeInfo& info : attributes)
        if (lower(info.row->name[0]) == lower(name.empty() ? '\0' : name[0]) && sameName(info.row->name, name))
            return &info;
    return nullptr;
}

const AttributeInfo* ClassInfo::infoOf(const AttributeRow& row) const noexcept {
    const auto found = std::ranges::find(attributes, &row, &AttributeInfo::row);
    return found == attributes.end() ? nullptr : &*found;
}

bool ClassInfo::isMirrored(const AttributeRow& row) const noexcept {
    for (const EntityClass* each = &rows; each; each = each->supertype)
        if (std::ranges::find(each->links, &row, &typed::InverseLink::forward) != each->links.end())
            return true;
    return false;
}

} // namespace vnifc::detail
