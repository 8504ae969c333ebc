#pragma once
#include <cstdlib>
#include <filesystem>

namespace vnifc::test {

/// Files of other programs, which are not part of this project; they may not be there.
inline std::filesystem::path corpus() {
    const char* place = std::getenv("VNIFC_CORPUS");
    return place ? std::filesystem::path(place) : std::filesystem::path(VNIFC_TEST_DATA "/../../../shared/corpus");
}

} // namespace vnifc::test
