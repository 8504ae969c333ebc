#pragma once
#include <VnIfcCore/VnIfcProperty.h>

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

namespace VN_SDAI {

/// Properties in the order in which they were added. Owns them.
class VNIFC_API VnIfcPropertyCollection {
public:
    /// Without properties.
    VnIfcPropertyCollection() noexcept;
    ///@{
    /// Takes the properties, which stay where they are, so that pointers to them stay good.
    VnIfcPropertyCollection(VnIfcPropertyCollection&&) noexcept;
    VnIfcPropertyCollection& operator=(VnIfcPropertyCollection&&) noexcept;
    ///@}
    ~VnIfcPropertyCollection();

    /// Owns the property from then on. Throws std::invalid_argument for null.
    void add(VnIfcProperty* property);
    /// Adds the properties of a subtype: one of the same name, in any case, takes the place of the inherited one.
    void redeclare(VnIfcPropertyCollection&& own);

    /// The first property of that name, in any case; null when there is none.
    const VnIfcProperty* find(std::string_view name) const noexcept;
    ///@{
    /// How many properties there are.
    std::size_t size() const noexcept { return m_properties.size(); }
    bool isEmpty() const noexcept { return m_properties.empty(); }
    ///@}
    /// The property at an index below size(); no range check.
    const VnIfcProperty& operator[](std::size_t index) const noexcept { return *m_properties[index]; }
    ///@{
    /// The owning pointers in the order of the properties; none is null.
    auto begin() const noexcept { return m_properties.begin(); }
    auto end() const noexcept { return m_properties.end(); }
    ///@}

private:
    std::size_t indexOf(std::string_view name) const noexcept;

    std::vector<std::unique_ptr<const VnIfcProperty>> m_properties;
};

} // namespace VN_SDAI
