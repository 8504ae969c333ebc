#include "Population.h"

#include <exchange/WorkSharing.h>

#include <optional>

namespace vnifc::detail {

using namespace VN_SDAI;

namespace {

/// Instances that a thread takes at a time.
constexpr std::size_t kBlock = 16'384;

} // namespace

std::shared_ptr<const Population::Handles> Population::all(const VnIfcModel& model) {
    build(model);
    return m_all;
}

void Population::build(const VnIfcModel& model) {
    if (m_all)
        return;
    auto all = std::make_shared<Handles>(model.instances());
    m_kinds.resize(all->size());
    std::mutex mutex;
    const std::size_t blocks = (all->size() + kBlock - 1) / kBlock;
    shareWork(blocks, threadsFor(0, blocks), {}, [&](unsigned, std::size_t block) {
        std::unordered_map<const VnIfcEntityType*, std::uint16_t> known;
        // Neighbours are often of one entity.
        std::optional<const VnIfcEntityType*> last;
        std::uint16_t kind = 0;
        for (std::size_t i = block * kBlock; i < std::min(all->size(), (block + 1) * kBlock); ++i) {
            const VnIfcEntityType* type = (*all)[i].openObject()->getInstanceType();
            if (type != last) {
                const auto [found, isNew] = known.try_emplace(type);
                if (isNew) {
                    const std::lock_guard lock(mutex);
                    found->second = kindOf(type);
                }
                kind = found->second;
                last = type;
            }
            m_kinds[i] = kind;
        }
        return true;
    });
    for (const std::uint16_t kind : m_kinds)
        ++m_counts[kind];
    m_all = std::move(all);
}

std::uint16_t Population::kindOf(const VnIfcEntityType* type) {
    const auto [found, isNew] = m_known.try_emplace(type, static_cast<std::uint16_t>(m_types.size()));
    if (isNew) {
        m_types.push_back(type);
        m_counts.push_back(0);
    }
    return found->second;
}

void Population::append(const VnDbObjectId& handle) {
    if (!m_all)
        return;
    // Where the largest number is taken, a new one comes in between.
    if (!m_all->empty() && !(m_all->back() < handle))
        return drop();
    if (m_all.use_count() > 1)
        m_all = std::make_shared<Handles>(*m_all);
    m_all->push_back(handle);
    m_kinds.push_back(kindOf(handle.openObject()->getInstanceType()));
    ++m_counts[m_kinds.back()];
}

void Population::drop() noexcept {
    m_all.reset();
    m_kinds.clear();
    m_types.clear();
    m_counts.clear();
    m_known.clear();
}

} // namespace vnifc::detail
