#pragma once
#include "support/Releases.h"

#include <vnifc/Model.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace vnifc::test {

inline const std::vector<std::string> kReleases = builtReleases();

/// A file of a release with these lines in its DATA section.
inline std::string fileOf(const std::string& release, const std::string& lines) {
    return "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\nFILE_NAME('','',(''),(''),'','','');\nFILE_SCHEMA(("
           "'" +
           release + "'));\nENDSEC;\nDATA;\n" + lines + "\nENDSEC;\nEND-ISO-10303-21;\n";
}

/// Files of other programs, which are not part of this project; they may not be there.
inline std::filesystem::path corpus() {
    const char* place = std::getenv("VNIFC_CORPUS");
    return place ? std::filesystem::path(place) : std::filesystem::path(VNIFC_TEST_DATA "/../../../shared/corpus");
}

/// The message of what an action throws; empty, and a failure, when it throws nothing or something else.
template <class Thrown, class Action>
std::string messageOf(Action action) {
    try {
        action();
    } catch (const Thrown& error) {
        return error.what();
    } catch (const std::exception& error) {
        ADD_FAILURE() << "another exception: " << error.what();
        return {};
    }
    ADD_FAILURE() << "no exception";
    return {};
}

/// The numbers of instances, in their order.
template <class Range>
std::vector<std::uint64_t> idsOf(Range&& instances) {
    std::vector<std::uint64_t> ids;
    for (const Instance& instance : instances)
        ids.push_back(instance.id());
    return ids;
}

using Ids = std::vector<std::uint64_t>;

} // namespace vnifc::test
