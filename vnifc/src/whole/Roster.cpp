#include "Roster.h"

#include <algorithm>

namespace vnifc::detail {

using namespace VN_SDAI;

namespace {

// Beyond this many numbers for an instance a table of them costs more than it saves.
constexpr std::uint64_t kSparse = 16;

} // namespace

Roster::Roster(const VnIfcModel& model) : m_handles(model.instances()) {
    if (m_handles.empty() || m_handles.back().number() / kSparse >= m_handles.size())
        return;
    m_ordinals.assign(m_handles.back().number() + 1, kNone);
    for (std::uint32_t i = 0; i < size(); ++i)
        m_ordinals[m_handles[i].number()] = i;
}

std::uint32_t Roster::search(std::uint64_t number) const noexcept {
    const auto found = std::ranges::lower_bound(m_handles, number, {}, &VnDbObjectId::number);
    return found != m_handles.end() && found->number() == number ? static_cast<std::uint32_t>(found - m_handles.begin())
                                                                 : kNone;
}

} // namespace vnifc::detail
