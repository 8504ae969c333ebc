#include "Side.h"

#include "../whole/Annotations.h"

namespace vnifc::detail {

using namespace VN_SDAI;

Side::Side(ModelState& modelState, const Digests::Rules& rules)
    : state(modelState), roster(state.model()), digests(state, roster, rules), facets(state, roster) {
    findUnrooted();
}

std::uint64_t Side::digestOf(const Facets::Facet& facet) const {
    // A set counts by what it says: tools give it a new GlobalId when they copy it.
    const std::uint64_t target = facet.aspect == DiffAspect::kProperty ? digests.content(facet.target)
                                                                       : digests.asTarget(facet.target);
    return Digests::mix(static_cast<std::uint64_t>(facet.aspect) + 1, target);
}

std::uint64_t Side::digestOf(std::uint32_t ordinal) const {
    std::uint64_t result = digests.of(ordinal);
    if (isCarrier(ordinal))
        return result;
    for (const Facets::Facet& facet : facets.of(ordinal))
        result += digestOf(facet);
    return result;
}

bool Side::isCarrier(std::uint32_t ordinal) const noexcept {
    const VnIfcEntityType* type = roster.instance(ordinal).getInstanceType();
    return type && (facets.isUsedSet(ordinal) || facets.isFacetRelation(*type));
}

/// What lives by what it is about counts when that is alive: when an object refers to it, by however many steps.
void Side::findUnrooted() {
    std::vector<bool> isAlive(roster.size());
    std::vector<std::uint32_t> pending;
    std::vector<std::uint32_t> waiting;
    const auto enliven = [&](std::uint32_t ordinal) {
        if (!isAlive[ordinal]) {
            isAlive[ordinal] = true;
            pending.push_back(ordinal);
        }
    };
    const auto spread = [&] {
        while (!pending.empty()) {
            const std::uint32_t ordinal = pending.back();
            pending.pop_back();
            forEachTarget(state, roster, roster.instance(ordinal), enliven);
        }
    };
    Annotations annotations;
    for (std::uint32_t i = 0; i < roster.size(); ++i) {
        const VnIfcEntityBase& instance = roster.instance(i);
        const ClassInfo* info = state.classOf(instance);
        if (!info || isObject(i)) {
            enliven(i);
            if (!info)
                unrooted.push_back(i);
        } else if (!annotations.rowsOf(*info).empty()) {
            waiting.push_back(i);
        }
    }
    spread();
    // What is about an annotation becomes alive after that.
    for (std::size_t before = waiting.size() + 1; before != waiting.size();) {
        before = waiting.size();
        std::erase_if(waiting, [&](std::uint32_t i) {
            bool isAboutLiving = false;
            const VnIfcEntityBase& instance = roster.instance(i);
            const auto look = [&](const VnDbObjectId& handle) {
                const std::uint32_t target = roster.ordinalOf(handle);
                isAboutLiving = isAboutLiving || (target != Roster::kNone && isAlive[target]);
            };
            for (const typed::AttributeRow* row : annotations.rowsOf(*state.classOf(instance)))
                forEachHandle(instance, *row, look);
            if (isAboutLiving) {
                if (!isAlive[i])
                    unrooted.push_back(i);
                enliven(i);
            }
            return isAboutLiving;
        });
        spread();
    }
}

} // namespace vnifc::detail
