#pragma once
#include "JsonWriter.h"

#include <VnIfcCore/VnIfcEntityType.h>
#include <VnIfcCore/VnIfcModel.h>

#include <string>
#include <string_view>
#include <vector>

namespace vnifc {
class Rules;
}

namespace vnifc::tool {

/// An explicit attribute as instances of one entity have it.
struct Attribute {
    const VN_SDAI::VnAnsiString* name;
    const VN_SDAI::VnIfcParameterType* type; ///< null for the few types that the dictionary does not have
    unsigned position;                       ///< in the parameter list, from 0
    bool isDerived;                          ///< redeclared so by the entity or a supertype: there is no value
    bool mayBeEmpty;                         ///< an aggregate for which having no elements is a value
};

/// All explicit attributes of an entity in the order of the parameter list, which begins with inherited ones. Valid as
/// long as the schema; one thread at a time.
const std::vector<Attribute>& attributesOf(const VN_SDAI::VnIfcEntityType& entity);

/// The explicit attribute of that name, in any case; null when there is none.
const Attribute* findAttribute(const VN_SDAI::VnIfcEntityType& entity, std::string_view name);

/// The entity's name; of an instance without a class its keyword as it stands in the file, "(complex)", or
/// "(malformed)" where there is none.
std::string keywordOf(const VN_SDAI::VnIfcEntityBase& instance);

/// The value of an attribute as text for people, in UTF-8; empty when it is unset or there is none.
std::string textOf(const VN_SDAI::VnIfcEntityBase& instance, const VN_SDAI::VnAnsiString& attribute);

/// The same for the attribute Name.
std::string nameOf(const VN_SDAI::VnIfcEntityBase& instance);

/// The instance that a user means by "#12", "12" or a GlobalId. Throws Failure when there is none.
VN_SDAI::VnIfcEntityBase& instanceAt(const VN_SDAI::VnIfcModel& model, std::string_view address);

/// The instances of one entity, or those without a class that have its keyword.
class EntityFilter {
public:
    /// `entity` in any case. Throws Failure when neither schema nor model know it.
    EntityFilter(const VN_SDAI::VnIfcModel& model, const std::string& entity, bool withSubtypes);

    bool matches(const VN_SDAI::VnIfcEntityBase& instance) const;
    /// Null when the schema does not have the entity.
    const VN_SDAI::VnIfcEntityType* type() const noexcept { return m_type; }

private:
    std::string m_keyword;
    const VN_SDAI::VnIfcEntityType* m_type;
    bool m_withSubtypes;
};

/// What is written of an instance beside its attributes.
struct InstanceDetail {
    bool describe = false; ///< references come with keyword and name of what they refer to
    bool inverses = false;
    const Rules* derived = nullptr; ///< how derived attributes are computed; null: without them
};

/// Writes an instance as an object: id, type, the attributes by name, and what is kept as text because they cannot hold
/// it, if there is such; of one without a class, the text of its parameters.
void writeInstance(JsonWriter& json, const VN_SDAI::VnIfcEntityBase& instance, InstanceDetail detail = {});

} // namespace vnifc::tool
