#pragma once
#include "support/Corpus.h"
#include "support/Files.h"
#include "support/Releases.h"

#include <vnifc/Model.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vnifc::test {

inline const std::vector<std::string> kReleases = builtReleases();

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
