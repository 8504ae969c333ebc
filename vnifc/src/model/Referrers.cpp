#include "Referrers.h"

#include "../whole/References.h"

#include <exchange/WorkSharing.h>

#include <algorithm>

namespace vnifc::detail {

using namespace VN_SDAI;

namespace {

// Beyond this many numbers for an instance a table of them costs more than it saves.
constexpr std::uint64_t kSparse = 8;

// Instances that a thread takes at a time.
constexpr std::uint32_t kBlock = 131'072;

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

    const std::size_t blocks = (std::size_t{count} + kBlock - 1) / kBlock;
    std::vector<Edges> edges(blocks);
    std::vector<const ClassInfo*> classes;
    for (const VnIfcEntityType* type : state.population.types())
        classes.push_back(type ? &state.classOf(*type) : nullptr);
    shareWork(blocks, threadsFor(0, blocks), {}, [&](unsigned, std::size_t block) {
        const auto begin = static_cast<std::uint32_t>(block * kBlock);
        edges[block] = edgesOf(state, classes, begin, std::min(count, begin + kBlock));
        return true;
    });

    m_ends.assign(count, 0);
    std::size_t sum = 0;
    for (const Edges& block : edges) {
        for (const Edge& edge : block)
            ++m_ends[edge.target];
        sum += block.size();
    }
    auto sources = std::make_shared<PageVector<VnDbObjectId>>(sum);
    sum = 0;
    for (std::uint32_t& end : m_ends)
        sum += std::exchange(end, static_cast<std::uint32_t>(sum));
    for (Edges& block : edges) {
        for (const Edge& edge : block)
            (*sources)[m_ends[edge.target]++] = all[edge.source];
        Edges().swap(block);
    }
    m_sources = std::move(sources);
}

Referrers::Edges Referrers::edgesOf(ModelState& state, const std::vector<const ClassInfo*>& classes,
                                    std::uint32_t begin, std::uint32_t end) const {
    Edges edges;
    edges.reserve(std::size_t{end - begin} * 2);
    for (std::uint32_t source = begin; source < end; ++source) {
        const VnIfcEntityBase* instance = (*m_targets)[source].openObject();
        if (!instance)
            continue;
        const std::size_t first = edges.size();
        const auto add = [&](const VnDbObjectId& target) {
            const std::size_t ordinal = target.isNull() ? m_targets->size() : ordinalOf(target);
            if (ordinal < m_targets->size())
                edges.push_back({static_cast<std::uint32_t>(ordinal), source});
        };
        if (const ClassInfo* info = classes[state.population.kinds()[source]])
            for (const typed::AttributeRow* row : info->references)
                forEachHandle(*instance, *row, add);
        if (hasText(*instance))
            forEachText(*instance, [&](std::string_view text) {
                forEachTextReference(
                    text, [&](std::size_t, std::size_t, std::uint64_t number) { add(state.model().find(number)); });
            });
        // Who refers twice is a referrer once.
        if (edges.size() > first + 1) {
            const auto mine = edges.begin() + static_cast<std::ptrdiff_t>(first);
            std::sort(mine, edges.end(), [](const Edge& a, const Edge& b) { return a.target < b.target; });
            edges.erase(
                std::unique(mine, edges.end(), [](const Edge& a, const Edge& b) { return a.target == b.target; }),
                edges.end());
        }
    }
    return edges;
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
