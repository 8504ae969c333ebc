#include "model/SimilarEntity.h"

#include <VnIfcTyped/Entity.h>

#include <vnifc/Similar.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace vnifc {

namespace {

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

/// How many letters differ, where two neighbours that changed places are one; more than `most` is as good as any.
std::size_t distance(std::string_view left, std::string_view right, std::size_t most) {
    const std::size_t difference = left.size() > right.size() ? left.size() - right.size() : right.size() - left.size();
    if (difference > most)
        return most + 1;
    std::vector<std::size_t> before, above(right.size() + 1), row(right.size() + 1);
    for (std::size_t k = 0; k <= right.size(); ++k)
        above[k] = k;
    for (std::size_t i = 1; i <= left.size(); ++i) {
        row[0] = i;
        for (std::size_t k = 1; k <= right.size(); ++k) {
            const bool isSame = lower(left[i - 1]) == lower(right[k - 1]);
            row[k] = std::min({above[k] + 1, row[k - 1] + 1, above[k - 1] + (isSame ? 0 : 1)});
            if (i > 1 && k > 1 && lower(left[i - 1]) == lower(right[k - 2]) &&
                lower(left[i - 2]) == lower(right[k - 1]))
                row[k] = std::min(row[k], before[k - 2] + 1);
        }
        before = std::exchange(above, row);
    }
    return above.back();
}

} // namespace

std::string_view similarName(std::string_view name, std::span<const std::string_view> known) {
    constexpr std::size_t kLongest = 100; // nobody mistypes more, and the time grows with the square
    if (name.size() > kLongest)
        return {};
    // All names of a schema begin alike, which says nothing of how near they are.
    constexpr std::string_view kPrefix = "ifc";
    const bool hasPrefix = name.size() > kPrefix.size() && distance(name.substr(0, kPrefix.size()), kPrefix, 1) == 0;
    std::size_t most = std::max<std::size_t>(1, (name.size() - (hasPrefix ? kPrefix.size() : 0)) / 3);
    std::string_view nearest;
    for (const std::string_view each : known) {
        const std::size_t found = distance(name, each, most);
        if (found <= most && (nearest.empty() || found < most)) {
            nearest = each;
            most = found;
        }
    }
    return nearest;
}

std::string detail::similarEntity(const VN_SDAI::VnIfcSchema& schema, std::string_view name) {
    std::vector<std::string_view> known;
    for (const auto& entry : schema.entities())
        if (const auto* entity = dynamic_cast<const VN_SDAI::VnIfcEntityType*>(&*entry.instance))
            known.emplace_back(entity->entityClass()->name);
    const std::string_view similar = similarName(name, known);
    return similar.empty() ? "" : " (did you mean " + std::string(similar) + "?)";
}

} // namespace vnifc
