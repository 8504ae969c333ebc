#pragma once
#include "References.h"

#include <string_view>
#include <vector>

namespace vnifc::detail {

/// What an attribute refers to by name; nothing where the entity has no such attribute.
inline std::vector<std::uint32_t> targetsOf(ModelState& state, const Roster& roster,
                                            const VN_SDAI::VnIfcEntityBase& instance, std::string_view attribute) {
    std::vector<std::uint32_t> targets;
    const ClassInfo* type = state.classOf(instance);
    const AttributeInfo* info = type ? type->findExplicit(attribute) : nullptr;
    const auto add = [&](const VN_SDAI::VnDbObjectId& handle) {
        if (const std::uint32_t target = roster.ordinalOf(handle); target != Roster::kNone)
            targets.push_back(target);
    };
    if (info && !info->isDerived)
        forEachHandle(instance, *info->row, add);
    return targets;
}

} // namespace vnifc::detail
