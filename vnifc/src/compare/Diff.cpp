#include "Details.h"

#include <VnIfcCore/VnIfcGUID.h>

#include <algorithm>
#include <future>

namespace vnifc {

using namespace detail;

std::string_view nameOf(DiffAspect aspect) noexcept {
    switch (aspect) {
    case DiffAspect::kClass:
        return "class";
    case DiffAspect::kAttribute:
        return "attribute";
    case DiffAspect::kProperty:
        return "property";
    case DiffAspect::kContainer:
        return "container";
    case DiffAspect::kWhole:
        return "whole";
    case DiffAspect::kType:
        return "type";
    case DiffAspect::kMaterial:
        return "material";
    case DiffAspect::kClassification:
        return "classification";
    case DiffAspect::kGroup:
        return "group";
    }
    return "";
}

namespace {

using Key = std::pair<std::uint64_t, std::uint32_t>; ///< what an instance is found by, and the instance
using Match = std::pair<std::uint32_t, std::uint32_t>;

std::vector<Key> objectsOf(const Side& side) {
    std::vector<Key> keys;
    for (std::uint32_t i = 0; i < side.roster.size(); ++i)
        if (side.isObject(i))
            keys.emplace_back(side.digests.identity(i), i);
    std::ranges::sort(keys);
    return keys;
}

/// Equal ones count once: merging them changes nothing that is said.
std::vector<Key> unrootedOf(const Side& side) {
    std::vector<Key> keys;
    for (const std::uint32_t i : side.unrooted)
        keys.emplace_back(side.digests.of(i), i);
    std::ranges::sort(keys);
    const auto isSame = [](const Key& left, const Key& right) { return left.first == right.first; };
    keys.erase(std::unique(keys.begin(), keys.end(), isSame), keys.end());
    return keys;
}

/// Goes through two sorted lists at once; kNone stands for what the other list does not have.
std::vector<Match> matched(const std::vector<Key>& before, const std::vector<Key>& after) {
    std::vector<Match> matches;
    matches.reserve(std::max(before.size(), after.size()));
    for (std::size_t i = 0, j = 0; i < before.size() || j < after.size();) {
        const bool isOld = i < before.size() && (j == after.size() || before[i].first <= after[j].first);
        const bool isNew = j < after.size() && (i == before.size() || after[j].first <= before[i].first);
        matches.emplace_back(isOld ? before[i].second : Roster::kNone, isNew ? after[j].second : Roster::kNone);
        i += isOld ? 1 : 0;
        j += isNew ? 1 : 0;
    }
    return matches;
}

class Comparison {
public:
    Comparison(const Side& before, const Side& after, const DiffOptions& options)
        : m_before(before), m_after(after), m_options(options), m_details(before, after, options) {}

    DiffResult run() {
        std::vector<Match> matches = matched(objectsOf(m_before), objectsOf(m_after));
        std::erase_if(matches, [this](const Match& match) {
            const bool isSame = match.first != Roster::kNone && match.second != Roster::kNone &&
                                m_before.digestOf(match.first) == m_after.digestOf(match.second);
            m_result.same += isSame ? 1 : 0;
            return isSame;
        });
        addUnrooted(matches);
        std::ranges::sort(matches); // kNone is the largest, so that what was added comes last
        std::size_t done = 0;
        for (const Match& match : matches) {
            if (m_options.progress && done % kStep == 0 &&
                !m_options.progress(static_cast<double>(done) / static_cast<double>(matches.size())))
                throw Error("cancelled");
            ++done;
            tell(match);
        }
        return m_result;
    }

private:
    static constexpr std::size_t kStep = 1024;

    /// What is about others is the same or not there; and it counts only when it is about something that counts.
    void addUnrooted(std::vector<Match>& matches) {
        std::vector<Match> single = matched(unrootedOf(m_before), unrootedOf(m_after));
        std::erase_if(single,
                      [](const Match& match) { return match.first != Roster::kNone && match.second != Roster::kNone; });
        if (single.empty())
            return;
        const std::vector<bool> oldAlive = m_before.alive();
        const std::vector<bool> newAlive = m_after.alive();
        std::erase_if(single, [&](const Match& match) {
            return match.second == Roster::kNone ? !oldAlive[match.first] : !newAlive[match.second];
        });
        matches.insert(matches.end(), single.begin(), single.end());
    }

    void tell(const Match& match) {
        const auto& [before, after] = match;
        Difference difference;
        if (before == Roster::kNone || after == Roster::kNone) {
            const bool isAdded = before == Roster::kNone;
            if (isAdded ? m_after.isCarrier(after) : m_before.isCarrier(before))
                return;
            ++(isAdded ? m_result.added : m_result.removed);
            difference.kind = isAdded ? Difference::Kind::kAdded : Difference::Kind::kRemoved;
        } else {
            m_details.compare(before, after, difference);
            if (difference.details.empty()) {
                ++m_result.same;
                return;
            }
            ++m_result.changed;
        }
        if (!m_options.differences)
            return;
        const Instance shown = after == Roster::kNone ? m_before.wrap(before) : m_after.wrap(after);
        difference.globalId = shown.isForeign() ? "" : shown.globalId();
        difference.entity = shown.type();
        difference.name = shown.isForeign() ? "" : shown.name();
        difference.oldId = before == Roster::kNone ? 0 : m_before.wrap(before).id();
        difference.newId = after == Roster::kNone ? 0 : m_after.wrap(after).id();
        m_options.differences(difference);
    }

    const Side& m_before;
    const Side& m_after;
    const DiffOptions& m_options;
    Details m_details;
    DiffResult m_result;
};

} // namespace

DiffResult diff(const Model& before, const Model& after, const DiffOptions& options) {
    const Digests::Rules rules{options.ignored, true};
    // A handle of no instance knows its model all the same.
    ModelState& oldState = *before.wrap({}).state();
    ModelState& newState = *after.wrap({}).state();
    if (&oldState == &newState)
        return DiffResult();
    auto other = std::async(std::launch::async, [&] { return std::make_unique<Side>(newState, rules); });
    const Side oldSide(oldState, rules);
    const std::unique_ptr<Side> newSide = other.get();
    return Comparison(oldSide, *newSide, options).run();
}

} // namespace vnifc
