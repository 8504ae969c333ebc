#pragma once
#include "Annotations.h"
#include "References.h"

#include <algorithm>
#include <vector>

namespace vnifc::detail {

/// Finds out which instances something with an identity needs, by however many references, and which are about one of
/// those.
class Living {
public:
    Living(ModelState& state, const Roster& roster, Annotations& annotations)
        : m_state(state), m_roster(roster), m_annotations(annotations), m_isAlive(roster.size()) {}

    /// Begins with what `isRoot(i)` is true of and with instances without a class. Of annotations those live that
    /// `mayLive(i)` is true of and that are about something that lives.
    template <class IsRoot, class MayLive>
    void start(IsRoot isRoot, MayLive mayLive) {
        std::vector<std::uint32_t> waiting;
        for (std::uint32_t i = 0; i < m_roster.size(); ++i) {
            const ClassInfo* info = m_state.classOf(m_roster.instance(i));
            if (!info || isRoot(i))
                m_isAlive[i] = true;
            else if (!m_annotations.rowsOf(*info).empty() && mayLive(i))
                waiting.push_back(i);
        }
        sweep();
        // What is about an annotation becomes alive after that.
        for (std::size_t before = waiting.size() + 1; before != waiting.size();) {
            before = waiting.size();
            std::erase_if(waiting, [&](std::uint32_t i) {
                const bool isWanted = isAboutLiving(i);
                if (isWanted)
                    enliven(i);
                return isWanted;
            });
            spread();
        }
    }

    /// By ordinal.
    const std::vector<bool>& alive() const noexcept { return m_isAlive; }

private:
    void enliven(std::uint32_t ordinal) {
        if (m_isAlive[ordinal])
            return;
        m_isAlive[ordinal] = true;
        m_pending.push_back(ordinal);
    }
    /// Most references go to instances before: those of a whole model are followed best from its end to its beginning.
    void sweep() {
        for (std::uint32_t i = m_roster.size(); i-- > 0;) {
            if (!m_isAlive[i])
                continue;
            forEachTarget(m_state, m_roster, m_roster.instance(i), [&](std::uint32_t each) {
                if (each < i)
                    m_isAlive[each] = true;
                else
                    enliven(each);
            });
            spread();
        }
    }
    void spread() {
        while (!m_pending.empty()) {
            const std::uint32_t ordinal = m_pending.back();
            m_pending.pop_back();
            forEachTarget(m_state, m_roster, m_roster.instance(ordinal), [&](std::uint32_t each) { enliven(each); });
        }
    }
    bool isAboutLiving(std::uint32_t ordinal) {
        bool isAlive = false;
        const VN_SDAI::VnIfcEntityBase& instance = m_roster.instance(ordinal);
        const auto look = [&](const VN_SDAI::VnDbObjectId& handle) {
            const std::uint32_t target = m_roster.ordinalOf(handle);
            isAlive = isAlive || (target != Roster::kNone && m_isAlive[target]);
        };
        for (const VN_SDAI::typed::AttributeRow* row : m_annotations.rowsOf(*m_state.classOf(instance)))
            forEachHandle(instance, *row, look);
        return isAlive;
    }

    ModelState& m_state;
    const Roster& m_roster;
    Annotations& m_annotations;
    std::vector<bool> m_isAlive;
    std::vector<std::uint32_t> m_pending;
};

} // namespace vnifc::detail
