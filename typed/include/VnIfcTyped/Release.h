#pragma once
#include <VnIfcCore/VnIfcProperty.h>
#include <VnIfcCore/VnIfcSchema.h>
#include <VnIfcTyped/Entity.h>
#include <VnIfcTyped/Select.h>
#include <VnRx/VnModule.h>

#include <atomic>

/// What a schema module consists of: its release as tables, in the order in which the dictionary is built, and what the
/// modules of all releases do with them.
namespace VN_SDAI::typed {

struct DefinedType {
    const char* name;       ///< "IfcLabel"
    const char* underlying; ///< "string", "ifclengthmeasure"
};

struct EnumerationRecord {
    const char* name; ///< "ifcwalltypeenum"
    Rows<const char*> literals;
};

struct SelectRecord {
    const char* name;          ///< "IfcValue"
    Rows<const char*> members; ///< direct members, upper case
    VnIfcNameType** type;
};

enum class AggregationKind : std::uint8_t { kSet, kList, kArray };

struct AggregationRecord {
    const char* name; ///< "IfcArcIndex", "list [1:?] of IfcActorRole"
    AggregationKind kind;
    int lower;
    int upper;           ///< kUnbounded for "?"
    const char* element; ///< "IfcActorRole", "real", or an inner aggregation's text
    bool named;
};

/// One release of the schema, as its module holds it.
struct Release {
    const char* name; ///< of the schema, and of the namespace of its classes: "IFC4X3_ADD2"
    IfcSchemaMajorVersion majorVersion;
    IfcSchemaMinorVersion minorVersion;
    Rows<const EntityClass*> entities;
    Rows<const SelectClass*> selectClasses;
    Rows<const EnumerationClass*> enumerationClasses;
    Rows<DefinedType> definedTypes;
    Rows<EnumerationRecord> enumerations;
    Rows<SelectRecord> selects;
    Rows<AggregationRecord> aggregations;
};

/// Releases the variant type descriptors that were made for a module's types: the enumerations', the selects', those of
/// aggregates of selects.
VNIFC_API void releaseDescriptors(const Release& release) noexcept;

/// Makes the property object that stands for a whole instance; see vnIfcBuildPropertyForSimple. Entities are told by
/// name, so that it serves every release; `self` is the function that makes the members of a complex one. False, and
/// nothing made, also where the model's access mode forbids reading and where memory is lacking.
VNIFC_API bool buildPropertyForSimple(VnIfcEntityBase* instance, VnIfcProperty*& property, int& code,
                                      bool (*self)(VnIfcEntityBase*, VnIfcProperty*&, int&)) noexcept;

} // namespace VN_SDAI::typed
