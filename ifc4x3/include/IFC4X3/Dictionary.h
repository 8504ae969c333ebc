#pragma once
#include <IFC4X3/Entity.h>
#include <IFC4X3/Select.h>

/// The schema as tables, in the order in which the dictionary is built. Internal to the module.
namespace IFC4X3::dictionary {

struct DefinedType {
    const char* name;       ///< "IfcLabel"
    const char* underlying; ///< "string", "ifclengthmeasure"
};

struct EnumerationRecord {
    const char* name; ///< "ifcwalltypeenum"
    std::span<const char* const> literals;
};

struct SelectRecord {
    const char* name;                     ///< "IfcValue"
    std::span<const char* const> members; ///< direct members, upper case
    VN_SDAI::VnIfcNameType** type;
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

extern const std::span<const EntityClass* const> entities;
extern const std::span<const SelectClass* const> selectClasses;
extern const std::span<const EnumerationClass* const> enumerationClasses;
extern const std::span<const DefinedType> definedTypes;
extern const std::span<const EnumerationRecord> enumerations;
extern const std::span<const SelectRecord> selects;
extern const std::span<const AggregationRecord> aggregations;

} // namespace IFC4X3::dictionary
