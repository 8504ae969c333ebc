#pragma once
#include <VnIfcCore/VnIfcSimpleProperty.h>

namespace VN_SDAI {

/// Stands for an instance that is a quantity: its value is a number of the attribute that is named after it.
class VNIFC_API VnIfcQuantityClusterProperty : public VnIfcSimpleProperty {
public:
    /// `object` is null for an instance outside of a model; `attribute` is the one that holds the number.
    VnIfcQuantityClusterProperty(const VnDbObjectId& object, const VnAnsiString& attribute);
    ~VnIfcQuantityClusterProperty() override;
};

} // namespace VN_SDAI
