#include "Referrers.h"

#include "ModelState.h"

#include <algorithm>

namespace vnifc::detail {

using namespace VN_SDAI;

namespace {

// Beyond this many numbers for an instance a table of them costs more than it saves.
constexpr std::uint64_t kSparse = 8;

} // namespace

std::size_t Referrers::ordinalOf(const VnDbObjectId& handle) const noexcept {
    if (handle.number() < m_ordinals.size())
        return m_ordinals[handle.number()];
    if (!m_ordinals.empty())
        return m_targets->size();
    const auto found = std::lower_bound(m_targets->begin(), m_targets->end(), handle);
    return found != m_targets->end() && *found == handle ? static_cast<std::size_t>(found - m_targets->begin())
                                                         : m_targets->size();
}

void Referrers::build(ModelState& state) {
    m_targets = state.population.all(state.model());
    const Handles& all = *m_targets;
    const auto count = static_cast<std::uint32_t>(all.size());
    m_ordinals.clear();
    if (count > 0 && all.back().number() / kSparse < count) {
        m_ordinals.assign(all.back().number() + 1, count);
        for (std::uint32_t i = 0; i < count; ++i)
            m_ordinals[all[i].number()] = i;
    }

    // Pairs in the order of the sources; the last place counts references to what is not there.
    std::vector<std::pair<std::uint32_t, std::uint32_t>> edges;
    edges.reserve(std::size_t{count} * 2);
    m_ends.assign(std::size_t{count} + 1, 0);
    std::uint32_t source = 0;
    // The last source of each target tells whether the pair is there already.
    std::vector<std::uint32_t> last(std::size_t{count} + 1, count);
    const auto add = [&](const VnDbObjectId& target) {
        if (target.isNull())
            return;
        const std::size_t ordinal = ordinalOf(target);
        if (std::exchange(last[ordinal], source) == source)
            return;
        edges.emplace_back(static_cast<std::uint32_t>(ordinal), source);
        ++m_ends[ordinal];
    };
    for (; source < count; ++source)
        if (const VnIfcEntityBase* instance = all[source].openObject())
            if (const ClassInfo* info = state.classOf(*instance))
                for (const typed::AttributeRow* row : info->references)
                    forEachHandle(*instance, *row, add);

    std::uint32_t sum = 0;
    for (std::uint32_t& end : m_ends)
        sum += std::exchange(end, sum);
    auto sources = std::make_shared<Handles>(edges.size());
    for (const auto& [target, from] : edges)
        (*sources)[m_ends[target]++] = all[from];
    m_sources = std::move(sources);
}

InstanceRange Referrers::of(ModelState& state, const VnDbObjectId& target) {
    if (!m_sources)
        build(state);
    const std::size_t ordinal = ordinalOf(target);
    if (ordinal == m_targets->size())
        return {};
    const std::size_t begin = ordinal == 0 ? 0 : m_ends[ordinal - 1];
    return {m_sources, std::span(*m_sources).subspan(begin, m_ends[ordinal] - begin), &state};
}

} // namespace vnifc::detail
