#pragma once
#include <VnIfcCore/VnIfcProperty.h>
#include <VnIfcTyped/Entity.h>

#include <cstddef>

namespace VN_SDAI::typed {

/// Where an attribute of an entity stands among its own ones.
enum class AttributePart : std::uint8_t {
    kExplicit,   ///< in s_rows
    kRedeclared, ///< in s_derived: a derived attribute in place of an inherited explicit one
    kInverse,    ///< in s_inverses
};

/// What the property classes of all attributes share. Values are of the attribute's own type, and no other is taken:
/// strings as VnAnsiString, selects and enumerations as their classes, aggregates as VnIfcArray of their elements.
/// Redeclared attributes are given and taken as getAttr and putAttr do; inverse ones cannot be written. A model's
/// access mode does not count.
class VNIFC_API AttributeProperty : public VnIfcProperty {
public:
    int kind() const noexcept override { return kAttribute; }

protected:
    AttributeProperty() noexcept = default;
    /// Initialises the property, which is on the heap, and adds it to a collection.
    static void add(VnIfcPropertyCollection& collection, AttributeProperty* property, const EntityClass& type,
                    const AttributeRow& row, AttributePart part, const VnIfcEntityType* record);

    VN::ErrorStatus read(const AttributeRow& row, const VnIfcEntityBase* instance, VnIfcVariant& value) const;
    VN::ErrorStatus write(const AttributeRow& row, VnIfcEntityBase* instance, const VnIfcVariant& value) const;
    /// As getAttr and putAttr, but for the access mode.
    VN::ErrorStatus readByName(const char* name, const VnIfcEntityBase* instance, VnIfcVariant& value) const;
    VN::ErrorStatus writeByName(const char* name, VnIfcEntityBase* instance, const VnIfcVariant& value) const;
};

/// The property class of one attribute of the entity class E. They have names of their own: IfcRootGlobalIdProperty.
template <class E, AttributePart part, std::size_t index>
class AttributePropertyOf final : public AttributeProperty {
public:
    VN::ErrorStatus getAttribute(const VnIfcEntityBase* instance, VnIfcVariant& value) const override {
        if constexpr (part == AttributePart::kExplicit)
            return read(row(), instance, value);
        else
            return readByName(row().name, instance, value);
    }
    VN::ErrorStatus putAttribute([[maybe_unused]] VnIfcEntityBase* instance,
                                 [[maybe_unused]] const VnIfcVariant& value) const override {
        if constexpr (part == AttributePart::kExplicit)
            return write(row(), instance, value);
        else if constexpr (part == AttributePart::kRedeclared)
            return writeByName(row().name, instance, value);
        else
            return VN::eRefused;
    }

    /// Adds a new property to a collection; `record` is the entity's record in the dictionary.
    static void addTo(VnIfcPropertyCollection& collection, const VnIfcEntityType* record) {
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

} // namespace VN_SDAI::typed
