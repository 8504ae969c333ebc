#pragma once
#include "ModelState.h"

#include <vnifc/ValueVisitor.h>

// From the members of an instance to values.
namespace vnifc::detail {

/// Walks through the value of an attribute. An aggregate without elements is an empty list with `mayBeEmpty`, and null
/// without.
void visitField(ModelState& state, const VN_SDAI::VnIfcEntityBase& instance, const VN_SDAI::typed::AttributeRow& row,
                bool mayBeEmpty, ValueVisitor& visitor);
/// The same as a value; `info` is null for inverse attributes.
Value valueOf(ModelState& state, const VN_SDAI::VnIfcEntityBase& instance, const VN_SDAI::typed::AttributeRow& row,
              const AttributeInfo* info);

} // namespace vnifc::detail
