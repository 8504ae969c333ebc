#pragma once
#include "JsonWriter.h"

#include <VnIfcCore/VnIfcLogical.h>
#include <VnIfcCore/VnIfcVariant.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace vnifc::tool {

/// Visits what a value is made of, part by part.
class ValueVisitor {
public:
    virtual ~ValueVisitor() = default;

    virtual void unset() {}
    /// BOOLEAN and LOGICAL; never unset.
    virtual void logical(VN_SDAI::VnIfcLogical) {}
    virtual void integer(int) {}
    virtual void real(double) {}
    /// STRING, decoded to UTF-8 but for bytes that are no UTF-8; and the digits of BINARY.
    virtual void text(std::string_view) {}
    /// Of an enumeration, without dots.
    virtual void literal(std::string_view) {}
    /// Never null; whether there is such an instance is another matter.
    virtual void reference(const VN_SDAI::VnDbObjectId&) {}
    /// Returns how many of the elements it wants to visit.
    virtual std::uint32_t beginList(std::uint32_t count) { return count; }
    virtual void endList() {}
    /// What a select holds other than an instance, with the name of its type.
    virtual void beginTyped(std::string_view) {}
    virtual void endTyped() {}
};

/// Walks through a value of an attribute, of whatever kind that is. An aggregate without elements is an empty list
/// where the attribute's type allows that, and unset where it does not.
void visitValue(const VN_SDAI::VnIfcVariant& value, ValueVisitor& visitor, bool mayBeEmpty = false);

/// The form of keywords.
std::string upperCase(std::string_view name);

/// Writes values as JSON.
class JsonValues : public ValueVisitor {
public:
    explicit JsonValues(JsonWriter& json) noexcept : m_json(json) {}

    void unset() override { m_json.null(); }
    void logical(VN_SDAI::VnIfcLogical value) override;
    void integer(int value) override { m_json.number(value); }
    void real(double value) override { m_json.number(value); }
    void text(std::string_view utf8) override { m_json.string(utf8); }
    void literal(std::string_view literal) override { m_json.string(literal); }
    void reference(const VN_SDAI::VnDbObjectId& handle) override;
    std::uint32_t beginList(std::uint32_t count) override;
    void endList() override { m_json.endArray(); }
    void beginTyped(std::string_view type) override;
    void endTyped() override { m_json.endObject(); }

protected:
    /// Adds to the object that stands for a reference.
    virtual void describe(JsonWriter&, const VN_SDAI::VnDbObjectId&) {}

private:
    JsonWriter& m_json;
};

/// As JsonValues, with keyword and name of the instances that are referred to.
class DescribedJsonValues final : public JsonValues {
public:
    using JsonValues::JsonValues;

protected:
    void describe(JsonWriter& json, const VN_SDAI::VnDbObjectId& handle) override;
};

/// A value in words, close to its form in a file: text decoded, references with keyword and name of the instance, long
/// lists cut.
std::string wordsOf(const VN_SDAI::VnIfcVariant& value, bool mayBeEmpty = false);

/// A value as JSON text: equal for equal values, whatever the form in which a file gives them.
std::string jsonOf(const VN_SDAI::VnIfcVariant& value);

} // namespace vnifc::tool
