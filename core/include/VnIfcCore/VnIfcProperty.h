#pragma once
#include <VnIfcCore/VnAnsiString.h>
#include <VnIfcCore/VnIfcTypes.h>

class VrString;

namespace VN_SDAI {

class VnIfcVariantType;

/// Reads and writes something of an instance for a host that does not know the instance's class: one attribute, or the
/// value of an instance that is a property or quantity itself. Strings pass in the form of an exchange file
/// (ISO 10303-21); getText gives people's text. One that refers to a descriptor lives no longer than the schema.
class VNIFC_API VnIfcProperty {
public:
    /// What kind() returns.
    enum Kind : int {
        kAttribute = 1, ///< of an attribute of all instances of entity()
        kSimple = 2,    ///< of one instance, a VnIfcSimpleProperty
    };

    VnIfcProperty(const VnIfcProperty&) = delete;
    VnIfcProperty& operator=(const VnIfcProperty&) = delete;

    virtual ~VnIfcProperty();
    /// One of Kind.
    virtual int kind() const noexcept = 0;
    /// Gives what the attribute holds, set or not. eRefused, and `value` as it was, when the instance is null or not of
    /// entity().
    virtual VN::ErrorStatus getAttribute(const VnIfcEntityBase* instance, VnIfcVariant& value) const = 0;
    /// Sets the attribute. eRefused, and the instance as it was, when the instance is null or not of entity(), when the
    /// value is null or not taken, and when the attribute cannot be written at all.
    virtual VN::ErrorStatus putAttribute(VnIfcEntityBase* instance, const VnIfcVariant& value) const = 0;
    /// The value of the property's own instance; eRefused where there is none.
    virtual VN::ErrorStatus getValue(VnIfcVariant& value) const;
    /// Sets the value of the property's own instance; eRefused, and the instance as it was, where there is none or the
    /// value is not taken.
    virtual VN::ErrorStatus putValue(const VnIfcVariant& value) const;
    /// Adds the properties that this one is made of; false, and nothing added, when it is not made of any.
    virtual bool subProperties(VnIfcPropertyCollection& parts) const;

    /// To be called once, before use. `type` is the descriptor of what getAttribute gives.
    void init(VnAnsiString name, const VnIfcVariantType* type, const VnIfcEntityType* entity) noexcept;
    /// Of the attribute: "GlobalId".
    const VnAnsiString& name() const noexcept { return m_name; }
    /// The descriptor of what getAttribute gives, as given to init; not owned.
    const VnIfcVariantType* type() const noexcept { return m_type; }
    /// The entity whose instances the property is for.
    const VnIfcEntityType* entity() const noexcept { return m_entity; }

    /// The attribute as text for people: strings decoded, the empty text when unset. False, and `text` as it was, where
    /// getAttribute refuses.
    bool getText(const VnIfcEntityBase* instance, VrString& text) const;

protected:
    VnIfcProperty() noexcept = default;

private:
    VnAnsiString m_name;
    const VnIfcVariantType* m_type = nullptr;
    const VnIfcEntityType* m_entity = nullptr;
};

} // namespace VN_SDAI
