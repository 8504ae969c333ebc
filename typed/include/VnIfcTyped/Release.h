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

/// A name for another type, as the dictionary has it.
struct DefinedType {
    const char* name;       ///< "IfcLabel"
    const char* underlying; ///< "string", "ifclengthmeasure"
};

/// An enumeration, as the dictionary has it.
struct EnumerationRecord {
    const char* name; ///< "ifcwalltypeenum"
    /// Upper case, in declared order.
    Rows<const char*> literals;
};

/// A select, as the dictionary has it.
struct SelectRecord {
    const char* name;          ///< "IfcValue"
    Rows<const char*> members; ///< direct members, upper case
    /// Shows the record to the select's class while the schema lives; null when it has no class.
    VnIfcNameType** type;
};

/// SET, LIST or ARRAY.
enum class AggregationKind : std::uint8_t { kSet, kList, kArray };

/// An aggregation, named or not, as the dictionary has it.
struct AggregationRecord {
    const char* name; ///< "IfcArcIndex", "list [1:?] of IfcActorRole"
    /// Which aggregation it is.
    AggregationKind kind;
    /// The lower bound; of an ARRAY, the first index.
    int lower;
    int upper;           ///< kUnbounded for "?"
    const char* element; ///< "IfcActorRole", "real", or an inner aggregation's text
    /// True for a defined type, false for the type of an attribute or element.
    bool named;
};

/// One release of the schema, as its module holds it.
struct Release {
    const char* name; ///< of the schema, and of the namespace of its classes: "IFC4X3_ADD2"
    ///@{
    /// The version that the schema gives.
    IfcSchemaMajorVersion majorVersion;
    IfcSchemaMinorVersion minorVersion;
    ///@}
    /// The entity classes, supertypes before their subtypes.
    Rows<const EntityClass*> entities;
    ///@{
    /// The classes, whose descriptors the module releases.
    Rows<const SelectClass*> selectClasses;
    Rows<const EnumerationClass*> enumerationClasses;
    ///@}
    ///@{
    /// The dictionary's records.
    Rows<DefinedType> definedTypes;
    Rows<EnumerationRecord> enumerations;
    Rows<SelectRecord> selects;
    Rows<AggregationRecord> aggregations;
    ///@}
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
