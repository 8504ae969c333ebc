#pragma once
#include <VnIfcCore/VnIfcModel.h>

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace vnifc::tool {

/// How many instances a model has of what.
struct Population {
    using Counts = std::map<std::string, std::uint64_t>;

    Counts entities;     ///< by entity name: "IFCWALL"
    Counts withoutClass; ///< by keyword as it stands in the file; "(complex)", and "(malformed)" where there is none

    explicit Population(const VN_SDAI::VnIfcModel& model);
};

/// The most frequent first, those of equal count by name.
std::vector<std::pair<std::string, std::uint64_t>> byFrequency(const Population::Counts& counts);

/// The sum of all counts.
std::uint64_t total(const Population::Counts& counts) noexcept;

} // namespace vnifc::tool
