#pragma once
#include "ModelState.h"

// From values to the members of an instance, and from what people type to values.
namespace vnifc::detail {

/// Stores a value, null to unset; inverse attributes follow. Throws BadValue, with the attribute unchanged, when it
/// does not fit.
void store(ModelState& state, VN_SDAI::VnIfcEntityBase& instance, const AttributeInfo& attribute, const Value& value);
/// The value of an attribute that somebody means by a text; see Instance::parse.
Value parse(ModelState& state, const VN_SDAI::VnIfcEntityBase& instance, const AttributeInfo& attribute,
            std::string_view text);

/// Takes an instance out of inverse attributes while it is changed, and puts it back after that.
class Unmirrored {
public:
    Unmirrored(ModelState& state, VN_SDAI::VnIfcEntityBase& instance, bool isMirrored)
        : m_instance(state.hasInverses && isMirrored ? &instance : nullptr) {
        if (m_instance)
            m_instance->leaveInverseCounterParts();
    }
    ~Unmirrored() {
        if (m_instance)
            m_instance->setInverseCounterParts();
    }
    Unmirrored(const Unmirrored&) = delete;
    Unmirrored& operator=(const Unmirrored&) = delete;

private:
    VN_SDAI::VnIfcEntityBase* m_instance;
};

/// "#12 IFCWALL.Name", for messages.
std::string placeOf(const VN_SDAI::VnIfcEntityBase& instance, const AttributeInfo& attribute);

} // namespace vnifc::detail
