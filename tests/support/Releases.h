#pragma once
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace vnifc::test {

/// The releases whose modules this build has, oldest first, by the names of their schemas.
inline std::vector<std::string> builtReleases() {
    std::istringstream names(VNIFC_BUILT_RELEASES);
    std::vector<std::string> result;
    for (std::string name; names >> name;)
        result.push_back(name);
    return result;
}

inline bool isBuilt(std::string_view release) {
    for (const std::string& each : builtReleases())
        if (each == release)
            return true;
    return false;
}

/// For suites that run once for each release.
inline std::string nameOfRelease(const testing::TestParamInfo<std::string>& release) { return release.param; }

} // namespace vnifc::test
