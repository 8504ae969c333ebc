#include "Population.h"

#include "Instances.h"

#include <VnIfcCore/VnIfcEntityType.h>

#include <algorithm>
#include <unordered_map>

namespace vnifc::tool {

using namespace VN_SDAI;

Population::Population(const VnIfcModel& model) {
    std::unordered_map<const VnIfcEntityType*, std::uint64_t> byType;
    model.forEach([&](const VnIfcEntityBase& instance) {
        if (const VnIfcEntityType* type = instance.getInstanceType())
            ++byType[type];
        else
            ++withoutClass[keywordOf(instance)];
    });
    for (const auto& [type, count] : byType)
        entities.emplace(type->name().view(), count);
}

std::vector<std::pair<std::string, std::uint64_t>> byFrequency(const Population::Counts& counts) {
    std::vector<std::pair<std::string, std::uint64_t>> sorted(counts.begin(), counts.end());
    std::ranges::stable_sort(sorted, std::greater(), &std::pair<std::string, std::uint64_t>::second);
    return sorted;
}

std::uint64_t total(const Population::Counts& counts) noexcept {
    std::uint64_t sum = 0;
    for (const auto& [name, count] : counts)
        sum += count;
    return sum;
}

} // namespace vnifc::tool
