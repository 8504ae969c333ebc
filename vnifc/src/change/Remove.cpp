#include "../model/Erasing.h"
#include "Relate.h"

#include <vnifc/Change.h>

#include <algorithm>

namespace vnifc {

using namespace VN_SDAI;
using detail::Entity;
using detail::ModelState;
using detail::Name;

namespace {

/// Finds all that goes with some objects, without changing anything.
class Removal {
public:
    explicit Removal(ModelState& state) : m_state(state) { m_state.needInverses(); }

    const std::vector<VnDbObjectId>& run(std::span<const Instance> objects) {
        for (const Instance& object : objects)
            addWithParts(detail::opened(object));
        // Relations of the objects, then whatever nobody else uses; each may make more free.
        for (std::size_t i = 0; i < m_gone.size(); ++i) {
            addEmptyRelations(m_gone[i]);
            for (const Instance& used : m_state.wrap(*m_gone[i].openObject()).references())
                addIfUnused(used);
        }
        return m_gone;
    }

private:
    bool isGone(const VnDbObjectId& handle) const { return m_known.contains(handle.slot()); }
    bool add(const VnDbObjectId& handle) {
        const bool isNew = m_known.insert(handle.slot()).second;
        if (isNew)
            m_gone.push_back(handle);
        return isNew;
    }

    void addWithParts(VnIfcEntityBase& root) {
        static constexpr std::pair<Name, Name> kWays[] = {{Name::IsDecomposedBy, Name::RelatedObjects},
                                                          {Name::IsNestedBy, Name::RelatedObjects},
                                                          {Name::HasOpenings, Name::RelatedOpeningElement},
                                                          {Name::HasProjections, Name::RelatedFeatureElement}};
        std::vector<VnIfcEntityBase*> pending{&root};
        while (!pending.empty()) {
            const VnIfcEntityBase& next = *pending.back();
            pending.pop_back();
            if (!add(next.objectId()))
                continue;
            for (const std::pair<Name, Name>& way : kWays)
                m_state.forEachTarget(next, way.first, [&](VnIfcEntityBase& relation) {
                    m_state.forEachTarget(relation, way.second,
                                          [&](VnIfcEntityBase& part) { pending.push_back(&part); });
                });
        }
    }

    /// Relations and the like that say nothing without what is gone.
    void addEmptyRelations(const VnDbObjectId& handle) {
        for (const Instance& referrer : m_state.referrers.of(m_state, handle)) {
            const VnIfcEntityBase& instance = *referrer.core().openObject();
            if ((m_state.is(instance, Entity::IfcRelationship) || isDescription(instance)) && isEmpty(instance))
                add(referrer.core());
        }
    }

    /// What says something of an item, and is no use of it.
    bool isDescription(const VnIfcEntityBase& instance) const {
        return m_state.is(instance, Entity::IfcPresentationLayerAssignment) ||
               m_state.is(instance, Entity::IfcStyledItem) || m_state.is(instance, Entity::IfcShapeAspect);
    }

    /// True when an attribute that has to be there would hold nothing any more; what describes an item has to have it.
    bool isEmpty(const VnIfcEntityBase& instance) {
        for (const typed::AttributeRow* row : m_state.classOf(instance)->references) {
            const bool isNeeded = row->mark == typed::kMandatory || (m_state.is(instance, Entity::IfcStyledItem) &&
                                                                     std::string_view(row->name) == "Item");
            std::size_t held = 0, left = 0;
            const auto count = [&](const VnDbObjectId& target) {
                held += target.isNull() ? 0 : 1;
                left += target.isNull() || isGone(target) ? 0 : 1;
            };
            detail::forEachHandle(instance, *row, count);
            if (isNeeded && held > 0 && left == 0)
                return true;
        }
        return false;
    }

    /// Of what is rooted only sets of properties are somebody's own.
    void addIfUnused(const Instance& used) {
        VnIfcEntityBase* instance = used.core().openObject();
        if (!instance || isGone(used.core()))
            return;
        if (m_state.is(*instance, Entity::IfcRoot) && !m_state.is(*instance, Entity::IfcPropertySetDefinition))
            return;
        for (const Instance& referrer : m_state.referrers.of(m_state, used.core()))
            if (!isGone(referrer.core()) && !isDescription(*referrer.core().openObject()))
                return;
        add(used.core());
    }

    ModelState& m_state;
    detail::Slots m_known;
    std::vector<VnDbObjectId> m_gone;
};

} // namespace

std::size_t remove(std::span<const Instance> objects) {
    ModelState* state = detail::modelOf(objects);
    if (!state)
        return 0;
    Removal removal(*state);
    const std::vector<VnDbObjectId>& gone = removal.run(objects);
    detail::eraseAll(*state, gone);
    return gone.size();
}

} // namespace vnifc
