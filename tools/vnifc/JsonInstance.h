#pragma once
#include "JsonWriter.h"

#include <vnifc/Rules.h>
#include <vnifc/ValueVisitor.h>

namespace vnifc::tool {

/// Writes values as JSON.
class JsonValues : public ValueVisitor {
public:
    explicit JsonValues(JsonWriter& json) noexcept : m_json(json) {}

    void null() override { m_json.null(); }
    void boolean(bool value) override { m_json.boolean(value); }
    void unknown() override { m_json.string("UNKNOWN"); }
    void integer(std::int64_t value) override { m_json.number(value); }
    void real(double value) override { m_json.number(value); }
    void text(std::string_view utf8) override { m_json.string(utf8); }
    void literal(std::string_view literal) override { m_json.string(literal); }
    void instance(const Instance& instance) override;
    std::size_t beginList(std::size_t count) override;
    void endList() override { m_json.endArray(); }
    void beginTyped(std::string_view type) override;
    void endTyped() override { m_json.endObject(); }

protected:
    /// Adds to the object that stands for an instance.
    virtual void describe(JsonWriter&, const Instance&) {}

private:
    JsonWriter& m_json;
};

/// As JsonValues, with keyword and name of the instances that are referred to.
class DescribedJsonValues final : public JsonValues {
public:
    using JsonValues::JsonValues;

protected:
    void describe(JsonWriter& json, const Instance& instance) override;
};

/// What is written of an instance beside its attributes.
struct InstanceDetail {
    bool describe = false; ///< references come with keyword and name of what they refer to
    bool inverses = false;
    bool referrers = false;
    const Rules* derived = nullptr; ///< compute the derived attributes; null for none
};

/// Writes an instance as an object: id, type, the attributes by name, and what is kept as text because they cannot hold
/// it, if there is such; of one without a class, the text of its parameters.
void writeInstance(JsonWriter& json, const Instance& instance, InstanceDetail detail = {});

} // namespace vnifc::tool
