#include "Layout.h"

#include <VnIfcCore/VnIfcDefinedType.h>
#include <VnIfcCore/VnIfcVariant.h>
#include <VnIfcCore/VnIfcVariantTypeSelect.h>
#include <VnIfcTyped/Select.h>

#include <algorithm>
#include <memory>

namespace vnifc::conversion {

using namespace VN_SDAI;

std::size_t Layout::find(std::string_view attribute) const noexcept {
    for (std::size_t i = 0; i < fields.size(); ++i)
        if (vnEqualNoCase(fields[i].name, attribute))
            return i;
    return kNone;
}

const EntityType* Release::concrete(std::string_view name) const noexcept {
    const EntityType* found = m_schema.entity(name);
    return found && !found->isAbstract() ? found : nullptr;
}

const Layout& Release::layout(const EntityType& entity) {
    const auto [place, isNew] = m_layouts.try_emplace(&entity);
    Layout& layout = place->second;
    if (!isNew)
        return layout;
    const typed::EntityClass& rows = *entity.entityClass();
    layout.entity = &entity;
    layout.name = rows.name;
    layout.keyword = rows.keyword;
    for (const typed::AttributeRow* row : rows.fields) {
        Field field{row->name, nullptr, row, row->mark == typed::kOptional,
                    row->kind == typed::AttributeKind::kDerived};
        if (const VnIfcAttributeDefinition* attribute = entity.findAttribute(row->name))
            field.type = attribute->type();
        layout.fields.push_back(field);
        if (row->kind == typed::AttributeKind::kSelect)
            learnWords(entity, field);
    }
    return layout;
}

/// The classes of enumerations in selects are known to the select's class, which an instance has.
void Release::learnWords(const EntityType& entity, const Field& field) {
    bool hasEnumeration = false;
    forEachMember(field.type, [&](const Type& member) { hasEnumeration = hasEnumeration || asEnumeration(&member); });
    VnIfcVariant value;
    const std::unique_ptr<VnIfcEntityBase> instance(hasEnumeration ? entity.create() : nullptr);
    if (!instance || !instance->getAttr(VnAnsiString(field.name), value))
        return;
    const auto* type = dynamic_cast<const VnIfcSelectVariantType*>(value.type());
    const auto* select = dynamic_cast<const typed::Select*>(type ? type->selectIn(value) : nullptr);
    if (!select)
        return;
    for (const typed::SelectMember& member : select->selectClass().members)
        if (member.enumeration)
            m_words.emplace_back(member.name->view(), member.enumeration);
}

const typed::EnumerationClass* Release::words(std::string_view enumeration) const {
    for (const auto& [name, words] : m_words)
        if (vnEqualNoCase(name, enumeration))
            return words;
    return nullptr;
}

std::string_view nameOf(const EntityType& entity) noexcept { return entity.entityClass()->name; }

bool isNamed(const EntityType& entity, std::string_view name) noexcept {
    for (const EntityType* each = &entity; each; each = each->supertype())
        if (vnEqualNoCase(nameOf(*each), name))
            return true;
    return false;
}

const Type* beneath(const Type* type) noexcept {
    while (const auto* defined = dynamic_cast<const VnIfcDefinedType*>(type))
        type = defined->underlyingType();
    return type;
}

std::string_view nameOf(const Type* type) noexcept {
    const auto* named = dynamic_cast<const VnIfcNameType*>(type);
    // Anonymous aggregations go by a descriptive text.
    return named && named->name().view().find(' ') == std::string_view::npos ? named->name().view()
                                                                             : std::string_view();
}

std::string_view innermostName(const Type* type) noexcept {
    while (nameOf(type).empty()) {
        const VnIfcAggregationType* aggregation = asAggregation(type);
        if (!aggregation)
            return {};
        type = aggregation->elementType();
    }
    return nameOf(type);
}

const VnIfcSelectType* asSelect(const Type* type) noexcept {
    return dynamic_cast<const VnIfcSelectType*>(beneath(type));
}
const VnIfcAggregationType* asAggregation(const Type* type) noexcept {
    return dynamic_cast<const VnIfcAggregationType*>(beneath(type));
}
bool allowsEmpty(const Field& field) noexcept {
    const VnIfcAggregationType* aggregation = asAggregation(field.type);
    return aggregation && !aggregation->lowerBound().isUnbounded() && aggregation->lowerBound().value() == 0;
}
const VnIfcEnumerationType* asEnumeration(const Type* type) noexcept {
    return dynamic_cast<const VnIfcEnumerationType*>(beneath(type));
}
const EntityType* asEntity(const Type* type) noexcept { return dynamic_cast<const EntityType*>(beneath(type)); }

void forEachMember(const Type* type, const std::function<void(const Type&)>& visit) {
    const VnIfcSelectType* select = asSelect(type);
    if (!select)
        return;
    for (const VnIfcNameType* member : select->members()) {
        if (!member)
            continue;
        asSelect(member) ? forEachMember(member, visit) : visit(*member);
    }
}

const Type* memberNamed(const Type* select, std::string_view name) {
    const Type* found = nullptr;
    forEachMember(select, [&](const Type& member) {
        if (!found && vnEqualNoCase(nameOf(&member), name))
            found = &member;
    });
    return found;
}

bool mayReferTo(const Type* type, const EntityType& entity) {
    if (const EntityType* target = asEntity(type))
        return entity.isKindOf(target);
    bool may = false;
    forEachMember(type, [&](const Type& member) {
        const EntityType* target = asEntity(&member);
        may = may || (target && entity.isKindOf(target));
    });
    return may;
}

} // namespace vnifc::conversion
