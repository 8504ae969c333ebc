#include "Merging.h"

#include "../whole/Living.h"

#include <vnifc/Optimise.h>

namespace vnifc {

using namespace VN_SDAI;
using namespace detail;

namespace {

/// Objects, types and sets of properties that nothing refers to.
std::vector<bool> unusedObjects(ModelState& state, const Roster& roster) {
    std::vector<bool> isUnused(roster.size());
    const VnIfcEntityType* project = state.schema().entity("IfcProject");
    const auto isKindOf = [&](const VnIfcEntityType& type, const char* name) {
        const VnIfcEntityType* wanted = state.schema().entity(name);
        return wanted && type.isKindOf(wanted);
    };
    for (std::uint32_t i = 0; i < roster.size(); ++i) {
        const VnIfcEntityType* type = roster.instance(i).getInstanceType();
        isUnused[i] = type && type != project && isKindOf(*type, "IfcRoot") && !isKindOf(*type, "IfcRelationship");
    }
    for (std::uint32_t i = 0; i < roster.size(); ++i)
        forEachTarget(state, roster, roster.instance(i), [&](std::uint32_t target) {
            if (target != i)
                isUnused[target] = false;
        });
    return isUnused;
}

} // namespace

OptimiseResult optimise(Model& model, const OptimiseOptions& options) {
    ModelState& state = *model.wrap({}).state();
    const Roster roster(state.model());
    Annotations annotations;
    const Digests before(state, roster, {});
    const std::vector<bool> isUnused =
        options.unusedObjects ? unusedObjects(state, roster) : std::vector<bool>(roster.size());

    std::vector<std::uint32_t> standIns(roster.size());
    {
        Merging merging(state, roster, before, annotations);
        merging.redirect();
        for (std::uint32_t i = 0; i < roster.size(); ++i)
            standIns[i] = merging.standIn(i);
    }
    Living living(state, roster, annotations);
    living.start([&](std::uint32_t i) { return before.identity(i) != 0 && !isUnused[i]; },
                 [&](std::uint32_t i) { return standIns[i] == i; });

    const std::vector<bool>& isAlive = living.alive();
    const Digests after(state, roster, {}, &isAlive);
    OptimiseResult result;
    std::vector<VnDbObjectId> gone;
    for (std::uint32_t i = 0; i < roster.size(); ++i) {
        if (!isAlive[i]) {
            ++(standIns[i] == i ? result.removed : result.merged);
            gone.push_back(roster.handle(i));
        } else if (before.of(i) != after.of(i)) {
            throw Error("#" + std::to_string(roster.handle(i).number()) +
                        " says something else than before: this is a fault of the library");
        }
    }
    result.kept = roster.size() - gone.size();
    if (state.hasInverses)
        state.model().setInverseCounterParts();
    state.model().erase(gone);
    state.dropAll();
    return result;
}

} // namespace vnifc
