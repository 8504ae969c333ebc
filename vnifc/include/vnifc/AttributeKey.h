#pragma once
#include <vnifc/Export.h>

#include <VnIfcCore/VnIfcEntityType.h>
#include <VnIfcTyped/Entity.h>

#include <string_view>

namespace vnifc {

/// The name of an attribute, looked up once for an entity (Model::key). Reads and stores without comparing names, for
/// instances of that entity and its subtypes. A small value; good as long as the model that gave it.
class VNIFC_LAYER_API AttributeKey {
public:
    /// No attribute.
    AttributeKey() noexcept = default;

    explicit operator bool() const noexcept { return m_row != nullptr; }
    /// As declared: "OverallWidth".
    std::string_view name() const noexcept { return m_row ? m_row->name : ""; }
    /// The entity that the name was looked up for: "IfcDoor".
    std::string_view entity() const noexcept;

private:
    friend class Instance;
    friend class Model;

    bool fits(const VN_SDAI::VnIfcEntityBase& instance) const noexcept {
        const VN_SDAI::VnIfcEntityType* type = instance.getInstanceType();
        return type && m_row && (type == m_type || type->isKindOf(m_type));
    }

    const VN_SDAI::typed::AttributeRow* m_row = nullptr;
    const VN_SDAI::VnIfcEntityType* m_type = nullptr;
    unsigned m_position = 0;
    std::uint32_t m_offset = 0;
    VN_SDAI::typed::AttributeKind m_kind = VN_SDAI::typed::AttributeKind::kDerived;
};

} // namespace vnifc
