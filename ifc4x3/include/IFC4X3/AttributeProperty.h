#pragma once
#include <IFC4X3/Entity.h>
#include <VnIfcCore/VnIfcProperty.h>

#include <cstddef>

namespace IFC4X3 {

/// Where an attribute of an entity stands among its own ones.
enum class AttributePart : std::uint8_t {
    kExplicit,   ///< in s_rows
    kRedeclared, ///< in s_derived: a derived attribute in place of an inherited explicit one
    kInverse,    ///< in s_inverses
};

/// What the property classes of all attributes share. Values are of the attribute's own type, and no other is taken:
/// strings as VnAnsiString, selects and enumerations as their classes, aggregates as VnIfcArray of their elements. What
/// cannot be written, inverse and redeclared attributes, is given as getAttr does. A model's access mode does not
/// count.
class IFC4X3_API AttributeProperty : public VN_SDAI::VnIfcProperty {
public:
    int kind() const noexcept override { return kAttribute; }

protected:
    AttributeProperty() noexcept = default;
    /// Initialises the property, which is on the heap, and adds it to a collection.
    static void add(VN_SDAI::VnIfcPropertyCollection& collection, AttributeProperty* property, const EntityClass& type,
                    const AttributeRow& row, AttributePart part, const VN_SDAI::VnIfcEntityType* record);

    VN::ErrorStatus read(const AttributeRow& row, const VN_SDAI::VnIfcEntityBase* instance,
                         VN_SDAI::VnIfcVariant& value) const;
    VN::ErrorStatus write(const AttributeRow& row, VN_SDAI::VnIfcEntityBase* instance,
                          const VN_SDAI::VnIfcVariant& value) const;
    /// As getAttr, but for the access mode.
    VN::ErrorStatus readByName(const char* name, const VN_SDAI::VnIfcEntityBase* instance,
                               VN_SDAI::VnIfcVariant& value) const;
};

/// The property class of one attribute of the entity class E. They have names of their own: IfcRootGlobalIdProperty.
template <class E, AttributePart part, std::size_t index>
class AttributePropertyOf final : public AttributeProperty {
public:
    VN::ErrorStatus getAttribute(const VN_SDAI::VnIfcEntityBase* instance,
                                 VN_SDAI::VnIfcVariant& value) const override {
        if constexpr (part == AttributePart::kExplicit)
            return read(row(), instance, value);
        else
            return readByName(row().name, instance, value);
    }
    VN::ErrorStatus putAttribute([[maybe_unused]] VN_SDAI::VnIfcEntityBase* instance,
                                 [[maybe_unused]] const VN_SDAI::VnIfcVariant& value) const override {
        if constexpr (part == AttributePart::kExplicit)
            return write(row(), instance, value);
        else
            return VN::eRefused;
    }

    /// Adds a new property to a collection; `record` is the entity's record in the dictionary.
    static void addTo(VN_SDAI::VnIfcPropertyCollection& collection, const VN_SDAI::VnIfcEntityType* record) {
        add(collection, new AttributePropertyOf, E::s_class, row(), part, record);
    }

private:
    static const AttributeRow& row() noexcept {
        if constexpr (part == AttributePart::kExplicit)
            return E::s_rows[index];
        else if constexpr (part == AttributePart::kInverse)
            return E::s_inverses[index].attribute;
        else
            return E::s_derived[index].field;
    }
};

} // namespace IFC4X3
