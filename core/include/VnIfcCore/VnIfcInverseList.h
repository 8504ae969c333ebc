#pragma once
#include <VnIfcCore/VnDbObjectId.h>

#include <vector>

namespace VN_SDAI {

/// What instances are to enter into inverse attributes of others, in parts that several threads enter at once: one
/// target is in one part only, and in each part entries are in the order in which they were added.
class VnIfcInverseList {
public:
    struct Entry {
        VnIfcEntityBase* target;
        const void* inverse; ///< what the target knows its inverse attribute by
        VnDbObjectId referrer;
    };

    explicit VnIfcInverseList(std::size_t parts) : m_parts(parts) {}

    void add(const VnDbObjectId& target, VnIfcEntityBase& instance, const void* inverse, const VnDbObjectId& referrer) {
        // Targets that lie near each other are in one part, so that threads keep out of each other's way.
        const auto page = reinterpret_cast<std::uintptr_t>(target.slot()) / VnIfcSlotPages::kPageSize;
        m_parts[page % m_parts.size()].push_back({&instance, inverse, referrer});
    }
    const std::vector<Entry>& part(std::size_t index) const noexcept { return m_parts[index]; }
    /// Keeps its memory.
    void clear() noexcept {
        for (std::vector<Entry>& part : m_parts)
            part.clear();
    }

private:
    std::vector<std::vector<Entry>> m_parts;
};

} // namespace VN_SDAI
