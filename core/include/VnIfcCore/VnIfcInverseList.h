#pragma once
#include <VnIfcCore/VnDbObjectId.h>

#include <vector>

namespace VN_SDAI {

/// What instances are to enter into inverse attributes of others that another thread may be changing, in parts that
/// several threads enter at once: one target is in one part only.
class VnIfcInverseList {
public:
    /// One instance to be entered into an inverse attribute.
    struct Entry {
        /// The instance whose inverse attribute it is; owned by the model.
        VnIfcEntityBase* target;
        const void* inverse; ///< what the target knows its inverse attribute by
        /// The instance to be entered there.
        VnDbObjectId referrer;
    };

    /// `parts` must not be 0.
    explicit VnIfcInverseList(std::size_t parts) : m_parts(parts) {}

    /// True for targets that no other thread changes meanwhile: they need not be listed.
    bool owns(const VnDbObjectId& target) const noexcept {
        return target.number() >= m_first && target.number() <= m_last;
    }
    /// Lists an entry. `instance` is what `target` opens to.
    void add(const VnDbObjectId& target, VnIfcEntityBase& instance, const void* inverse, const VnDbObjectId& referrer) {
        // Targets that lie near each other are in one part, so that threads keep out of each other's way.
        const auto page = reinterpret_cast<std::uintptr_t>(target.slot()) / VnIfcSlotPages::kPageSize;
        m_parts[page % m_parts.size()].push_back({&instance, inverse, referrer});
    }
    /// The entries of one part; the index must be below the number of parts.
    const std::vector<Entry>& part(std::size_t index) const noexcept { return m_parts[index]; }
    /// Empties the list, which keeps its memory, and makes it own the targets with those numbers.
    void restart(std::uint64_t first, std::uint64_t last) noexcept {
        m_first = first;
        m_last = last;
        for (std::vector<Entry>& part : m_parts)
            part.clear();
    }

private:
    std::vector<std::vector<Entry>> m_parts;
    std::uint64_t m_first = 0;
    std::uint64_t m_last = 0;
};

} // namespace VN_SDAI
