#pragma once
#include <VnIfcCore/VnIfcModel.h>

#include <cstdint>
#include <limits>
#include <vector>

namespace vnifc::detail {

/// The instances of a model, numbered from 0 on in ascending order of their ids, so that what is found out about each
/// stands in a vector. Good until instances are created.
class Roster {
public:
    static constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();

    explicit Roster(const VN_SDAI::VnIfcModel& model);

    std::uint32_t size() const noexcept { return static_cast<std::uint32_t>(m_handles.size()); }
    const VN_SDAI::VnDbObjectId& handle(std::uint32_t ordinal) const noexcept { return m_handles[ordinal]; }
    VN_SDAI::VnIfcEntityBase& instance(std::uint32_t ordinal) const noexcept {
        return *m_handles[ordinal].openObject();
    }
    /// kNone for a null handle and one without an instance.
    std::uint32_t ordinalOf(const VN_SDAI::VnDbObjectId& handle) const noexcept {
        return handle.isNull() ? kNone : ordinalOf(handle.number());
    }
    std::uint32_t ordinalOf(std::uint64_t number) const noexcept {
        if (m_ordinals.empty())
            return search(number);
        return number < m_ordinals.size() ? m_ordinals[number] : kNone;
    }

private:
    std::uint32_t search(std::uint64_t number) const noexcept;

    std::vector<VN_SDAI::VnDbObjectId> m_handles;
    std::vector<std::uint32_t> m_ordinals; ///< by number; empty where numbers are sparse
};

} // namespace vnifc::detail
