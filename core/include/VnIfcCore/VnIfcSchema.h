#pragma once
#include <VnIfcCore/Dictionary.h>
#include <VnIfcCore/VnIfcDefinedType.h>
#include <VnIfcCore/VnIfcEntityType.h>

namespace VN_SDAI {

/// A schema at run time (ISO 10303-22, schema_definition): its name, version and dictionary, all of which it owns.
/// Filled by a VnIfcSchemaBuilder, constant afterwards and then safe to use from several threads.
class VNIFC_API VnIfcSchema {
public:
    /// An empty schema, to be filled by a VnIfcSchemaBuilder.
    VnIfcSchema();
    virtual ~VnIfcSchema();
    VnIfcSchema(const VnIfcSchema&) = delete;
    VnIfcSchema& operator=(const VnIfcSchema&) = delete;

    /// "IFC4X3".
    const VnAnsiString& name() const noexcept { return m_name; }
    ///@{
    /// The version as the builder set it.
    IfcSchemaMajorVersion majorVersion() const noexcept { return m_majorVersion; }
    IfcSchemaMinorVersion minorVersion() const noexcept { return m_minorVersion; }
    ///@}

    /// Defined types, enumerations, selects and aggregations that have a name: VnIfcDefinedType records.
    const Dictionary& namedTypes() const noexcept { return m_namedTypes; }
    /// Types known by a descriptive text, "list [1:?] of IfcActorRole": VnIfcDefinedType records.
    const Dictionary& anonymousTypes() const noexcept { return m_anonymousTypes; }
    /// VnIfcEntityType records under their upper-case names, supertypes before their subtypes.
    const Dictionary& entities() const noexcept { return m_entities; }

    /// The entity of that name, in any case; null when there is none.
    VnIfcEntityType* entity(std::string_view name) const noexcept {
        return static_cast<VnIfcEntityType*>(m_entities.find(name));
    }
    /// The number of entities in the dictionary.
    std::size_t entityCount() const noexcept { return m_entities.size(); }
    /// `index` must be below entityCount.
    VnIfcEntityType* entityAt(std::size_t index) const noexcept {
        return static_cast<VnIfcEntityType*>(m_entities.entries()[index].instance.get());
    }
    /// The defined type, enumeration, select, named aggregation or entity of that name, in any case; null when there is
    /// none.
    const VnIfcNameType* namedType(std::string_view name) const noexcept;
    /// As namedType, and simple types ("real") and anonymous types as well.
    const VnIfcParameterType* type(std::string_view name) const noexcept;

private:
    friend class VnIfcSchemaBuilder;

    VnAnsiString m_name;
    IfcSchemaMajorVersion m_majorVersion = IfcSchemaMajorVersion::kUnknown;
    IfcSchemaMinorVersion m_minorVersion = IfcSchemaMinorVersion::kZero;
    Dictionary m_simpleTypes;
    Dictionary m_namedTypes;
    Dictionary m_anonymousTypes;
    Dictionary m_entities;
};

} // namespace VN_SDAI
