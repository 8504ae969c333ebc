#pragma once
// The instances that a forward attribute refers to, and the inverse members of theirs that mirror it.
#include <VnIfcTyped/Entity.h>

#include <VnIfcCore/VnIfcModel.h>
#include <VnIfcCore/VnIfcSelect.h>
#include <entities/Members.h>

namespace VN_SDAI::typed {

/// Calls `act(instance, row)` for the inverse member of a target in which the attribute is mirrored, if there is one.
template <class Act>
void withInverse(const VnDbObjectId& target, Rows<InverseTarget> candidates, Act act) {
    VnIfcEntityBase* instance = target.openObject(kForWrite, false);
    if (!instance)
        return;
    for (const InverseTarget& candidate : candidates) {
        if (!instance->isKindOf(*candidate.entity))
            continue;
        act(static_cast<Entity&>(*instance), *candidate.inverse);
        break;
    }
    target.close();
}

/// The forward attribute's targets, whatever holds them.
template <class Visit>
void forEachTarget(const Entity& instance, const AttributeRow& row, Visit visit) {
    switch (row.kind) {
    case AttributeKind::kReference:
        visit(member<VnDbObjectId>(instance, row));
        break;
    case AttributeKind::kSelect:
        visit(member<VnIfcSelect>(instance, row).getHandle());
        break;
    case AttributeKind::kAggregate: {
        const auto& aggregate = member<VnIfcAggr>(instance, row);
        if (aggregate.elementKind() == VnTypeCodeKind::kEntity)
            for (const VnDbObjectId& handle : static_cast<const VnIfcAggrOf<VnDbObjectId>&>(aggregate))
                visit(handle);
        else if (aggregate.elementKind() == VnTypeCodeKind::kSelect)
            for (const Select& select : SelectElements(aggregate))
                visit(select.getHandle());
        break;
    }
    default:
        break;
    }
}

} // namespace VN_SDAI::typed
