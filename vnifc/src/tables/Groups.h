#pragma once
#include "../model/ModelState.h"
#include "../whole/Roster.h"

#include <vnifc/Tables.h>

#include <map>
#include <vector>

namespace vnifc::detail {

/// The instances of a model by entity, for tables that are written one after the other.
struct Groups {
    Groups(ModelState& state, const Roster& roster) {
        for (std::uint32_t i = 0; i < roster.size(); ++i) {
            if (const ClassInfo* info = state.classOf(roster.instance(i)))
                byName[info->rows.name].push_back(i);
            else
                foreign.push_back(i);
        }
    }

    std::map<std::string_view, std::vector<std::uint32_t>> byName; ///< "IfcWall"
    std::vector<std::uint32_t> foreign;                            ///< without a class
};

/// Tells of progress now and then; throws Error when it cancels.
class Steps {
public:
    Steps(const TableOptions& options, std::size_t total) noexcept : m_options(options), m_total(total) {}

    void next() {
        if (m_done++ % kStep == 0 && m_options.progress &&
            !m_options.progress(static_cast<double>(m_done) / static_cast<double>(m_total)))
            throw Error("cancelled");
    }

private:
    static constexpr std::size_t kStep = 16384;

    const TableOptions& m_options;
    std::size_t m_total;
    std::size_t m_done = 0;
};

} // namespace vnifc::detail
