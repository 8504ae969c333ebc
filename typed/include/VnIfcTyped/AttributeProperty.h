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
    VN::ErrorStatus getAttribute(const VnIfcEntityBase* instance, VnIfcVariant& value) const override;
    VN::ErrorStatus putAttribute(VnIfcEntityBase* instance, const VnIfcVariant& value) const override;
    int kind() const noexcept override { return kAttribute; }

protected:
    /// Which attribute of which class.
    struct Attribute {
        /// The class that declares it.
        const EntityClass& type;
        /// Its row in that class.
        const AttributeRow& row;
        /// Where the row stands.
        AttributePart part;
    };

    AttributeProperty() noexcept = default;
    /// The attribute that the property is for.
    virtual Attribute attribute() const noexcept = 0;
    /// Initialises a property, which is on the heap, and adds it to a collection; `record` is the entity's record in
    /// the dictionary.
    static void add(VnIfcPropertyCollection& collection, AttributeProperty* property, const VnIfcEntityType* record);
};

/// The property class of one attribute of the entity class E. They have names of their own: IfcRootGlobalIdProperty.
template <class E, AttributePart part, std::size_t index>
class AttributePropertyOf final : public AttributeProperty {
public:
    /// Makes the property and adds it to a collection, which owns it. `record` is the entity's record in the
    /// dictionary.
    static void addTo(VnIfcPropertyCollection& collection, const VnIfcEntityType* record) {
        add(collection, new AttributePropertyOf, record);
    }

protected:
    Attribute attribute() const noexcept override {
        if constexpr (part == AttributePart::kExplicit)
            return {E::s_class, E::s_rows[index], part};
        else if constexpr (part == AttributePart::kInverse)
            return {E::s_class, E::s_inverses[index].attribute, part};
        else
            return {E::s_class, E::s_derived[index].field, part};
    }
};

} // namespace VN_SDAI::typed
