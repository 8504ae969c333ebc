#pragma once
#include "Commands.h"

#include <string>
#include <vector>

namespace vnifc::tool {

enum class RowFormat : std::uint8_t { kTable, kCsv, kJson };

/// What is said of the instances that a selector picks.
struct RowFlags {
    std::vector<std::string> columns; ///< facets; without any, the line that names an instance
    RowFormat format = RowFormat::kTable;
    bool count = false;  ///< only how many there are
    std::string sum;     ///< facet whose numbers are summed up
    std::string groupBy; ///< facet by which they are counted and summed up

    bool areAsked() const { return !columns.empty() || count || !sum.empty() || !groupBy.empty(); }
};

/// Says what the options want to know of the instances that a selector picks.
ExitCode findRows(const ReadFlags& flags, const std::string& selector, const RowFlags& options);
/// NAME=VALUE: gives attributes and properties of all that a selector picks a value, and writes the file.
ExitCode setAll(const ReadFlags& flags, const std::string& target, const std::string& selector,
                const std::vector<std::string>& changes);

} // namespace vnifc::tool
