#pragma once
#include <VnIfcCore/VnIfcAttributeDefinition.h>
#include <VnIfcCore/VnIfcNameType.h>

namespace VN_SDAI {

namespace typed {
struct EntityClass;
}

/// An entity of a schema (ISO 10303-22, entity_definition) and its link to the class of its instances.
class VNIFC_API VnIfcEntityType : public VnIfcNameType {
public:
    /// Makes a new instance, outside of any model; the caller owns it.
    using Factory = VnIfcEntityBase* (*)();
    /// Fills a collection with the property objects of an entity's own attributes.
    using PropertyCallback = void (*)(VnIfcPropertyCollection*, const VnIfcEntityType*);

    /// Makes a record, which the caller owns until it goes into the schema's entity dictionary. `place` shows it while
    /// it lives. `independent`: instances may stand on their own, not only where another instance refers to them.
    /// `supertype` is null for a root entity.
    static VnIfcEntityType* createEntityType(VnIfcSchema* schema, const char* name, bool independent, Factory factory,
                                             PropertyCallback properties, VnIfcEntityType*& place,
                                             const VnIfcEntityType* supertype);
    ~VnIfcEntityType() override;

    /// The schema that owns the record.
    VnIfcSchema* schema() const noexcept { return m_schema; }
    /// True when instances may stand on their own, not only where another instance refers to them.
    bool isIndependent() const noexcept { return m_independent; }
    /// ABSTRACT in the schema. The factory makes instances of such entities all the same.
    bool isAbstract() const noexcept { return m_abstract; }
    /// Called while the dictionary is built.
    void setAbstract(bool isAbstract) noexcept { m_abstract = isAbstract; }
    /// The rows of the class that instances of the entity have: what can be done with each attribute, and how
    /// (VnIfcTyped/Entity.h). Null for an entity without such a class.
    const typed::EntityClass* entityClass() const noexcept { return m_entityClass; }
    /// Called while the dictionary is built; the rows must outlive the record.
    void setEntityClass(const typed::EntityClass* entityClass) noexcept { m_entityClass = entityClass; }
    VnTypeCodeKind kind() const noexcept override { return VnTypeCodeKind::kEntity; }
    /// Null for a root entity.
    const VnIfcEntityType* supertype() const noexcept { return m_supertype; }
    /// The direct subtypes in the order of the dictionary; empty until the schema is built.
    std::span<const VnIfcEntityType* const> subtypes() const noexcept { return m_subtypes; }
    /// True for this very record and for any of its subtypes, direct or not.
    bool isKindOf(const VnIfcEntityType* other) const noexcept;
    /// As isKindOf, but false for this very record.
    bool isSubtypeOf(const VnIfcEntityType* other) const noexcept { return other != this && isKindOf(other); }

    /// A new instance with every attribute unset, outside of any model; the caller owns it.
    VnIfcEntityBase* create() const { return m_factory(); }
    /// Adds the property objects of the entity's own attributes.
    void collectProperties(VnIfcPropertyCollection* collection) const { m_properties(collection, this); }
    /// The property objects of the entity's own attributes, with `inherited` after those of its supertypes from the
    /// root down; a redeclared attribute stands once, in the place of the inherited one. Made anew by every call, so
    /// that the caller may keep it: ask once for an entity, not once for an instance. Include
    /// VnIfcPropertyCollection.h.
    VnIfcPropertyCollection properties(bool inherited) const;

    /// Appends an attribute and owns it from then on.
    void appendAttribute(VnIfcAttributeDefinition* attribute);
    /// The entity's own attributes, in the order in which they were appended.
    std::span<const VnIfcAttributeDefinition* const> attributes() const noexcept { return m_attributes; }
    ///@{
    /// The entity's own attributes of one kind, in the order in which they were appended.
    std::span<const VnIfcExplicitAttributeDefinition* const> explicitAttributes() const noexcept { return m_explicit; }
    std::span<const VnIfcDerivedAttributeDefinition* const> derivedAttributes() const noexcept { return m_derived; }
    std::span<const VnIfcInverseAttributeDefinition* const> inverseAttributes() const noexcept { return m_inverse; }
    ///@}
    /// All attributes, inherited ones first, from the root down.
    std::vector<const VnIfcAttributeDefinition*> allAttributes() const;
    /// The attribute of that name, in any case, of this entity or else of the nearest supertype that has one; null when
    /// there is none.
    const VnIfcAttributeDefinition* findAttribute(std::string_view name) const noexcept;

private:
    friend class VnIfcSchemaBuilder;
    VnIfcEntityType(VnIfcSchema* schema, const char* name, bool independent, Factory factory,
                    PropertyCallback properties, const VnIfcEntityType* supertype);

    VnIfcSchema* m_schema;
    const VnIfcEntityType* m_supertype;
    Factory m_factory;
    PropertyCallback m_properties;
    bool m_independent;
    bool m_abstract = false;
    const typed::EntityClass* m_entityClass = nullptr;
    std::vector<const VnIfcEntityType*> m_subtypes;
    std::vector<std::unique_ptr<VnIfcAttributeDefinition>> m_owned;
    std::vector<const VnIfcAttributeDefinition*> m_attributes;
    std::vector<const VnIfcExplicitAttributeDefinition*> m_explicit;
    std::vector<const VnIfcDerivedAttributeDefinition*> m_derived;
    std::vector<const VnIfcInverseAttributeDefinition*> m_inverse;
    VnIfcShownIn<VnIfcEntityType> m_shown;
};

} // namespace VN_SDAI
