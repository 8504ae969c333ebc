#pragma once
#include <VnIfcCore/VnIfcModel.h>
#include <base/PageMemory.h>

#include <memory>
#include <span>
#include <unordered_map>
#include <vector>

namespace vnifc::detail {

/// The instances of a model with their entities, for ranges: made in one pass when somebody asks.
class Population {
public:
    using Handles = std::vector<VN_SDAI::VnDbObjectId>;

    /// All instances, ascending; some of them may have been erased meanwhile.
    std::shared_ptr<const Handles> all(const VN_SDAI::VnIfcModel& model);
    /// The entities that instances have; null stands for having none. The kind of an instance is its index in them.
    std::span<const VN_SDAI::VnIfcEntityType* const> types() const noexcept { return m_types; }
    /// Of each of the instances of all().
    std::span<const std::uint16_t> kinds() const noexcept { return m_kinds; }
    /// Those whose entity fulfils `matches(const VnIfcEntityType*)`, which is asked once an entity; null stands for
    /// instances without a class.
    template <class Matches>
    std::shared_ptr<const Handles> select(const VN_SDAI::VnIfcModel& model, Matches matches) {
        build(model);
        std::vector<char> wanted(m_types.size());
        std::size_t count = 0;
        for (std::size_t i = 0; i < m_types.size(); ++i)
            if ((wanted[i] = static_cast<char>(matches(m_types[i]))))
                count += m_counts[i];
        auto handles = std::make_shared<Handles>();
        if (count == 0)
            return handles;
        handles->reserve(count);
        for (std::size_t i = 0; i < m_kinds.size(); ++i)
            if (wanted[m_kinds[i]])
                handles->push_back((*m_all)[i]);
        return handles;
    }
    void append(const VN_SDAI::VnDbObjectId& handle);
    void drop() noexcept;

private:
    void build(const VN_SDAI::VnIfcModel& model);
    std::uint16_t kindOf(const VN_SDAI::VnIfcEntityType* type);

    std::shared_ptr<Handles> m_all;
    VN_SDAI::PageVector<std::uint16_t> m_kinds;
    std::vector<const VN_SDAI::VnIfcEntityType*> m_types;
    std::vector<std::size_t> m_counts;
    std::unordered_map<const VN_SDAI::VnIfcEntityType*, std::uint16_t> m_known;
};

} // namespace vnifc::detail
