#pragma once
#include <VnIfcCore/VnDbObjectId.h>
#include <VnIfcCore/VnIfcProperty.h>

#include <vector>

namespace VN_SDAI {

/// Stands for a whole instance that is a property or a quantity. Its value is in one attribute of the instance, or it
/// has several values, each in an attribute of its own, which are its sub-properties. Access goes by the attributes'
/// names, so that a model's access mode counts: what it refuses is thrown as VnIfcException.
class VNIFC_API VnIfcSimpleProperty : public VnIfcProperty {
public:
    /// `object` is null for an instance outside of a model: such a property reads and writes given instances only.
    /// `attributes` are those that hold the values, at least one.
    VnIfcSimpleProperty(const VnDbObjectId& object, std::vector<VnAnsiString> attributes);
    ~VnIfcSimpleProperty() override;

    int kind() const noexcept override { return kSimple; }
    /// The attribute that holds the value, as the instance gives it by name; the first one where there are several.
    VN::ErrorStatus getAttribute(const VnIfcEntityBase* instance, VnIfcVariant& value) const override;
    VN::ErrorStatus putAttribute(VnIfcEntityBase* instance, const VnIfcVariant& value) const override;
    /// The value itself, out of the select where it is in one; null when nothing is chosen there. eRefused when the
    /// instance is gone, and when there are several values.
    VN::ErrorStatus getValue(VnIfcVariant& value) const override;
    /// Takes what the attribute takes; in a select also a value of the member that is chosen, or one that converts to
    /// it, so that a measure stays of its type.
    VN::ErrorStatus putValue(const VnIfcVariant& value) const override;
    bool subProperties(VnIfcPropertyCollection& parts) const override;

    /// The instance that it stands for; null for one outside of a model.
    const VnDbObjectId& object() const noexcept { return m_object; }

protected:
    /// The attributes that hold the values; at least one.
    const std::vector<VnAnsiString>& attributes() const noexcept { return m_attributes; }

private:
    bool isFor(const VnIfcEntityBase* instance) const;
    bool putChosen(VnIfcEntityBase& instance, const VnIfcVariant& value) const;

    VnDbObjectId m_object;
    std::vector<VnAnsiString> m_attributes;
};

} // namespace VN_SDAI
