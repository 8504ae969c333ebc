#include "ModelView.h"

#include "Member.h"

#include <algorithm>

namespace vnifc::rules {

using VN_SDAI::VnDbObjectId;
using VN_SDAI::VnIfcAggr;
using VN_SDAI::VnTypeCodeKind;
using VN_SDAI::typed::Select;
using RowKind = VN_SDAI::typed::AttributeKind;

namespace {

template <class Visit>
void visitHandles(const VnIfcAggr& aggregate, const Visit& visit) {
    switch (aggregate.elementKind()) {
    case VnTypeCodeKind::kEntity:
        for (const VnDbObjectId& each : static_cast<const VN_SDAI::VnIfcAggrOf<VnDbObjectId>&>(aggregate).items())
            visit(each);
        return;
    case VnTypeCodeKind::kSelect: {
        const auto* const selects = static_cast<const Select*>(aggregate.imp().data());
        for (std::uint32_t i = 0; i < aggregate.count(); ++i)
            visit(selects[i].getHandle());
        return;
    }
    case VnTypeCodeKind::kAggregation: {
        const auto* const inner = static_cast<const VnIfcAggr*>(aggregate.imp().data());
        for (std::uint32_t i = 0; i < aggregate.count(); ++i)
            visitHandles(inner[i], visit);
        return;
    }
    default:
        return;
    }
}

template <class Visit>
void visitHandles(const Entity& instance, const VN_SDAI::typed::AttributeRow& row, const Visit& visit) {
    if (row.kind == RowKind::kReference)
        visit(member<VnDbObjectId>(instance, row));
    else if (row.kind == RowKind::kSelect)
        visit(member<Select>(instance, row).getHandle());
    else if (row.kind == RowKind::kAggregate)
        visitHandles(member<VnIfcAggr>(instance, row), visit);
}

} // namespace

std::span<const VnDbObjectId> ModelView::population(TypeIndex entity) {
    const std::lock_guard lock(m_mutex);
    auto& known = m_populations[entity];
    if (!known) {
        const VN_SDAI::VnIfcEntityType* const record =
            m_program.schema().dictionary().entity(m_program.schema().named(entity).name);
        known = std::make_unique<const std::vector<VnDbObjectId>>(m_model.instancesOf(record, true));
    }
    return *known;
}

std::vector<const Attribute*> ModelView::rolesOf(TypeIndex entity) const {
    const Schema& schema = m_program.schema();
    if (m_program.needsAllRoles)
        return schema.explicitOf(entity);
    std::vector<const Attribute*> roles;
    for (const auto& [owner, name] : m_program.roles) {
        if (!schema.isOf(entity, owner))
            continue;
        const Attribute* const attribute = schema.attribute(entity, name);
        if (attribute && attribute->kind == AttributeKind::kExplicit &&
            std::ranges::find(roles, attribute) == roles.end())
            roles.push_back(attribute);
    }
    return roles;
}

void ModelView::findUses() {
    const Schema& schema = m_program.schema();
    std::vector<std::vector<const Attribute*>> roles(schema.named().size());
    for (TypeIndex i = kFirstNamedType; i < schema.named().size(); ++i) {
        if (schema.isEntity(i))
            roles[i] = rolesOf(i);
    }
    m_model.forEach([&](const VN_SDAI::VnIfcEntityBase& base) {
        if (!base.getInstanceType())
            return;
        const auto& instance = static_cast<const Entity&>(base);
        for (const Attribute* role : roles[schema.entityOf(instance)]) {
            visitHandles(instance, *role->row, [&](const VnDbObjectId& handle) {
                if (!handle.isNull())
                    m_uses.push_back({handle.slot(), &instance, role});
            });
        }
    });
    std::ranges::stable_sort(m_uses, std::less<>(), &Use::target);
}

std::span<const ModelView::Use> ModelView::uses(const VN_SDAI::VnIfcInstanceSlot* target) {
    std::call_once(m_hasUses, [&] { findUses(); });
    return {std::ranges::lower_bound(m_uses, target, std::less<>(), &Use::target),
            std::ranges::upper_bound(m_uses, target, std::less<>(), &Use::target)};
}

} // namespace vnifc::rules
