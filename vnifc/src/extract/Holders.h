#pragma once
#include "../whole/References.h"

#include <algorithm>
#include <unordered_map>
#include <vector>

namespace vnifc::detail {

/// Finds the instances that others cannot do without although they refer to them and not the other way round: those
/// that a mandatory inverse attribute holds, as the curve of a segment.
class Holders {
public:
    Holders(ModelState& state, const Roster& roster) : m_state(state), m_roster(roster) {}

    /// Instances that do not stay and without which mandatory inverse attributes of those that do would be empty: one
    /// for each such attribute.
    template <class Stays>
    std::vector<std::uint32_t> missing(Stays stays) {
        // A bit for each mandatory inverse attribute of an instance.
        std::vector<std::uint8_t> held(m_roster.size());
        for (std::uint32_t i = 0; i < m_roster.size(); ++i)
            if (stays(i))
                forEachHeld(i, [&](std::uint32_t target, std::uint8_t bit) { held[target] |= bit; });
        std::vector<std::uint32_t> found;
        for (std::uint32_t i = 0; i < m_roster.size(); ++i) {
            if (stays(i))
                continue;
            bool isMissing = false;
            forEachHeld(i, [&](std::uint32_t target, std::uint8_t bit) {
                if (!stays(target) || (held[target] & bit) != 0)
                    return;
                held[target] |= bit;
                isMissing = true;
            });
            if (isMissing)
                found.push_back(i);
        }
        return found;
    }

private:
    // No entity has more mandatory inverse attributes.
    static constexpr std::size_t kBits = 8;

    struct Class {
        std::vector<const VN_SDAI::typed::InverseLink*> links;   ///< to mandatory inverse attributes of others
        std::vector<const VN_SDAI::typed::InverseRow*> inverses; ///< its own mandatory ones
    };

    /// Calls `visit(ordinal, bit)` for each target that has a mandatory inverse attribute for the reference.
    template <class Visit>
    void forEachHeld(std::uint32_t i, Visit visit) {
        const VN_SDAI::VnIfcEntityBase& instance = m_roster.instance(i);
        const ClassInfo* info = m_state.classOf(instance);
        if (!info)
            return;
        for (const VN_SDAI::typed::InverseLink* link : classOf(*info).links) {
            const auto look = [&](const VN_SDAI::VnDbObjectId& handle) {
                const std::uint32_t target = m_roster.ordinalOf(handle);
                if (const std::uint8_t bit = target == Roster::kNone ? std::uint8_t{0} : bitOf(target, *link))
                    visit(target, bit);
            };
            forEachHandle(instance, *link->forward, look);
        }
    }

    /// 0 when the instance does not have to be referred to so.
    std::uint8_t bitOf(std::uint32_t target, const VN_SDAI::typed::InverseLink& link) {
        const VN_SDAI::VnIfcEntityType* type = m_roster.instance(target).getInstanceType();
        const auto fits = [type](const auto& each) { return type && type->isKindOf(*each.entity); };
        const auto inverse = std::ranges::find_if(link.targets, fits);
        if (inverse == link.targets.end() || inverse->inverse->lower == 0)
            return 0;
        const auto& inverses = classOf(m_state.classOf(*type)).inverses;
        const auto index = static_cast<std::size_t>(std::ranges::find(inverses, inverse->inverse) - inverses.begin());
        return index < std::min(inverses.size(), kBits) ? static_cast<std::uint8_t>(1U << index) : std::uint8_t{0};
    }

    const Class& classOf(const ClassInfo& info) {
        if (&info == m_lastInfo)
            return *m_last;
        const auto [found, isNew] = m_classes.try_emplace(&info);
        if (isNew)
            fill(found->second, info.rows);
        m_lastInfo = &info;
        m_last = &found->second;
        return *m_last;
    }

    static void fill(Class& result, const VN_SDAI::typed::EntityClass& rows) {
        for (const VN_SDAI::typed::EntityClass* each = &rows; each; each = each->supertype) {
            for (const VN_SDAI::typed::InverseLink& link : each->links)
                if (std::ranges::any_of(link.targets, [](const auto& target) { return target.inverse->lower > 0; }))
                    result.links.push_back(&link);
            for (const VN_SDAI::typed::InverseRow& row : each->inverses)
                if (row.lower > 0)
                    result.inverses.push_back(&row);
        }
    }

    ModelState& m_state;
    const Roster& m_roster;
    std::unordered_map<const ClassInfo*, Class> m_classes;
    const ClassInfo* m_lastInfo = nullptr; ///< neighbours are often of one entity
    const Class* m_last = nullptr;
};

} // namespace vnifc::detail
