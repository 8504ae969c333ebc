#pragma once
#include <vnifc/Ranges.h>

namespace vnifc {

/// Is told what a value is made of, part by part: for programs that print or compare values without a copy of each.
class VNIFC_LAYER_API ValueVisitor {
public:
    virtual ~ValueVisitor();

    virtual void null() {}
    virtual void boolean(bool) {}
    /// UNKNOWN of LOGICAL.
    virtual void unknown() {}
    virtual void integer(std::int64_t) {}
    virtual void real(double) {}
    /// UTF-8 but for bytes that are none; and the digits of BINARY. Valid during the call.
    virtual void text(std::string_view) {}
    /// Of an enumeration, without dots.
    virtual void literal(std::string_view) {}
    /// Whether there is such an instance is another matter.
    virtual void instance(const Instance&) {}
    /// Returns how many of the elements it wants to be told.
    virtual std::size_t beginList(std::size_t count) { return count; }
    virtual void endList() {}
    /// What a select holds other than an instance, with the name of its type in upper case.
    virtual void beginTyped(std::string_view) {}
    virtual void endTyped() {}
};

/// Walks through a value.
VNIFC_LAYER_API void visitValue(const Value& value, ValueVisitor& visitor);
/// Walks through the value of an attribute, without making one of it.
VNIFC_LAYER_API void visitValue(const Instance& instance, const Attribute& attribute, ValueVisitor& visitor);

} // namespace vnifc
