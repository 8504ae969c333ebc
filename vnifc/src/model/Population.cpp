#include "Population.h"

namespace vnifc::detail {

using namespace VN_SDAI;

std::shared_ptr<const Population::Handles> Population::all(const VnIfcModel& model) {
    build(model);
    return m_all;
}

void Population::build(const VnIfcModel& model) {
    if (m_all)
        return;
    auto all = std::make_shared<Handles>(model.instances());
    m_kinds.clear();
    m_kinds.reserve(all->size());
    // Neighbours are often of one entity.
    const VnIfcEntityType* last = nullptr;
    std::uint16_t kind = kindOf(nullptr);
    for (const VnDbObjectId& handle : *all) {
        const VnIfcEntityType* type = handle.openObject()->getInstanceType();
        if (type != last) {
            kind = kindOf(type);
            last = type;
        }
        m_kinds.push_back(kind);
        ++m_counts[kind];
    }
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
