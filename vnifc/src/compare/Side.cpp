#include "Side.h"

#include "../whole/Living.h"

namespace vnifc::detail {

using namespace VN_SDAI;

Side::Side(ModelState& modelState, const Digests::Rules& rules)
    : state(modelState), roster(state.model()), digests(state, roster, rules), facets(state, roster),
      contents(roster.size()) {
    for (std::uint32_t i = 0; i < roster.size(); ++i)
        if (facets.isUsedSet(i))
            contents[i] = digests.content(i);
    findUnrooted();
}

std::uint64_t Side::digestOf(const Facets::Facet& facet) const {
    // A set counts by what it says: tools give it a new GlobalId when they copy it.
    const std::uint64_t target =
        facet.aspect == DiffAspect::kProperty ? contents[facet.target] : digests.asTarget(facet.target);
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

void Side::findUnrooted() {
    Annotations annotations;
    for (std::uint32_t i = 0; i < roster.size(); ++i) {
        const ClassInfo* info = state.classOf(roster.instance(i));
        if (!info || (!isObject(i) && !annotations.rowsOf(*info).empty()))
            unrooted.push_back(i);
    }
}

std::vector<bool> Side::alive() const {
    Annotations annotations;
    Living living(state, roster, annotations);
    living.start([this](std::uint32_t i) { return isObject(i); }, [](std::uint32_t) { return true; });
    return living.alive();
}

} // namespace vnifc::detail
