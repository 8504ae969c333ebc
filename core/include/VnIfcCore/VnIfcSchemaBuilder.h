#pragma once
#include <VnIfcCore/VnIfcAggregationType.h>
#include <VnIfcCore/VnIfcEnumerationType.h>
#include <VnIfcCore/VnIfcSchema.h>
#include <VnIfcCore/VnIfcSelectType.h>
#include <VnIfcCore/VnIfcStringType.h>

#include <string>
#include <unordered_map>

namespace VN_SDAI {

/// The names that a derived attribute is registered with.
struct VnIfcDerivedAttributeNames {
    VnAnsiString typeName;       ///< "IFCDIMENSIONCOUNT"
    VnAnsiString redeclaredName; ///< empty when it redeclares nothing
    bool redeclares = false;     ///< `redeclaredName` must be an attribute of a supertype
};

/// The names that an inverse attribute is registered with.
struct VnIfcInverseAttributeNames {
    VnAnsiString entityName;    ///< the entity on the other side: "ifcrelassigns"
    VnAnsiString attributeName; ///< the attribute there that is inverted: "RelatedObjects"
};

/// Fills a schema's dictionary. A schema module derives from it and creates the records, which refer to each other by
/// name; this class then resolves the names. Used once, by one thread.
class VNIFC_API VnIfcSchemaBuilder {
public:
    /// The schema must be fresh and outlive the builder; it takes over the name. Throws std::invalid_argument for null.
    VnIfcSchemaBuilder(VnIfcSchema* schema, const VnAnsiString& name);
    virtual ~VnIfcSchemaBuilder();
    VnIfcSchemaBuilder(const VnIfcSchemaBuilder&) = delete;
    VnIfcSchemaBuilder& operator=(const VnIfcSchemaBuilder&) = delete;

    /// Runs the build step once and resolves, without regard to case, every name that it registered; the records keep
    /// the names as registered. Throws std::logic_error when the schema is not empty, and std::runtime_error that lists
    /// all names without a record; the schema then holds what could be built.
    void build();

protected:
    /// The schema's own step: puts its records into the dictionaries and their names into the maps.
    virtual void buildSchema() = 0;
    /// Sets the version that the schema gives.
    void initSchemaVersion(IfcSchemaMajorVersion majorVersion, IfcSchemaMinorVersion minorVersion) noexcept;

    /// The schema that is filled; not owned, never null.
    VnIfcSchema* m_schema;
    Dictionary& m_namedTypes;     ///< VnIfcDefinedType by type name
    Dictionary& m_anonymousTypes; ///< VnIfcDefinedType by descriptive text
    Dictionary& m_entities;       ///< VnIfcEntityType by upper-case name, supertypes first
    ///@{
    /// The names that a record refers to, to be resolved by build(). Records are owned by the dictionaries.
    std::unordered_map<VnIfcDefinedType*, VnAnsiString> m_underlyingTypes;
    std::unordered_map<VnIfcAggregationType*, VnAnsiString> m_elementTypes;
    std::unordered_map<VnIfcSelectType*, std::vector<VnAnsiString>> m_selectMembers;
    std::unordered_map<VnIfcExplicitAttributeDefinition*, VnAnsiString> m_attributeTypes;
    std::unordered_map<VnIfcDerivedAttributeDefinition*, VnIfcDerivedAttributeNames> m_derivedAttributes;
    std::unordered_map<VnIfcInverseAttributeDefinition*, VnIfcInverseAttributeNames> m_inverseAttributes;
    ///@}
    /// Attribute types that the schema has no record of and that stay unresolved, in any case.
    std::vector<VnAnsiString> m_typesWithoutRecord;

private:
    void checkRecords();
    void resolveDefinedType(VnIfcDefinedType& type);
    void resolveSelect(VnIfcSelectType& type, const VnAnsiString& name);
    void resolveAggregation(VnIfcAggregationType& type, const VnAnsiString& name);
    void resolveEntity(VnIfcEntityType& entity);
    void resolveAttribute(VnIfcExplicitAttributeDefinition& attribute);
    void resolveAttribute(VnIfcDerivedAttributeDefinition& attribute);
    void resolveAttribute(VnIfcInverseAttributeDefinition& attribute);
    void checkNothingLeft();
    const VnIfcParameterType* resolveType(const VnAnsiString& name, std::string_view role, std::string_view owner);
    const VnIfcParameterType* resolveAttributeType(const VnIfcAttributeDefinition& attribute);
    void reportMissing(std::string_view name, std::string_view role, std::string_view owner);
    static std::string pathOf(const VnIfcAttributeDefinition& attribute);

    std::string m_problems;
};

} // namespace VN_SDAI
