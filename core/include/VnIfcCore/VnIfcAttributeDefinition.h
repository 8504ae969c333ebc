#pragma once
#include <VnIfcCore/VnIfcParameterType.h>

namespace VN_SDAI {

/// An attribute of an entity (ISO 10303-22, attribute). Owned by its entity's record.
class VNIFC_API VnIfcAttributeDefinition : public DictionaryInstance {
public:
    /// How the attribute is declared (ISO 10303-11, 9.2.1): with a value of its own, computed, or seen from the other
    /// side of a relation.
    enum class Kind : std::uint8_t { kExplicit, kDerived, kInverse };

    ~VnIfcAttributeDefinition() override;

    /// Which of the derived classes the record is of.
    Kind attributeKind() const noexcept { return m_kind; }
    /// As declared: "GlobalId".
    const VnAnsiString& name() const noexcept { return m_name; }
    /// The attribute's type; of an inverse attribute, the entity on the other side. Null until resolved, and for the
    /// few type names that the dictionary is known to have no record of.
    const VnIfcParameterType* type() const noexcept { return m_type; }
    /// The type's name as registered: "IFCLABEL", "set [1:?] of IFCOBJECTDEFINITION"; of an inverse attribute, the
    /// entity on the other side: "ifcrelassigns".
    const VnAnsiString& typeName() const noexcept { return m_typeName; }
    /// The entity that declares the attribute; null until it is appended to one.
    const VnIfcEntityType* parentEntity() const noexcept { return m_parent; }

protected:
    /// The type is not owned; null until resolved.
    VnIfcAttributeDefinition(Kind kind, VnAnsiString name, const VnIfcParameterType* type,
                             const VnIfcEntityType* parent = nullptr) noexcept
        : m_kind(kind), m_name(std::move(name)), m_type(type), m_parent(parent) {}

private:
    friend class VnIfcEntityType;
    friend class VnIfcSchemaBuilder;

    Kind m_kind;
    VnAnsiString m_name;
    const VnIfcParameterType* m_type;
    VnAnsiString m_typeName;
    const VnIfcEntityType* m_parent;
};

/// An attribute with a value of its own (ISO 10303-22, explicit_attribute).
class VNIFC_API VnIfcExplicitAttributeDefinition : public VnIfcAttributeDefinition {
public:
    /// The type is not owned, and null where it is given by a name that the schema builder resolves.
    VnIfcExplicitAttributeDefinition(VnAnsiString name, const VnIfcParameterType* type, bool optional) noexcept
        : VnIfcAttributeDefinition(Kind::kExplicit, std::move(name), type), m_optional(optional) {}
    ~VnIfcExplicitAttributeDefinition() override;

    /// As given at construction. The IFC4X3 module gives false throughout: whether an attribute may be left out is
    /// known to its entity class, not to this record.
    bool isOptional() const noexcept { return m_optional; }

private:
    bool m_optional;
};

/// A computed attribute (ISO 10303-22, derived_attribute). The dictionary holds its declaration and not its expression.
class VNIFC_API VnIfcDerivedAttributeDefinition : public VnIfcAttributeDefinition {
public:
    /// Type and redeclared attribute are not owned, and null where they are given by names that the schema builder
    /// resolves.
    VnIfcDerivedAttributeDefinition(VnAnsiString name, const VnIfcParameterType* type,
                                    const VnIfcAttributeDefinition* redeclared) noexcept
        : VnIfcAttributeDefinition(Kind::kDerived, std::move(name), type), m_redeclared(redeclared) {}
    ~VnIfcDerivedAttributeDefinition() override;

    /// The inherited attribute that this one redeclares; null when it redeclares nothing.
    const VnIfcAttributeDefinition* redeclaredAttribute() const noexcept { return m_redeclared; }
    /// Its name as registered; empty when it redeclares nothing.
    const VnAnsiString& redeclaredName() const noexcept { return m_redeclaredName; }

private:
    friend class VnIfcSchemaBuilder;

    const VnIfcAttributeDefinition* m_redeclared;
    VnAnsiString m_redeclaredName;
};

/// An attribute that holds the instances referring to this one by an attribute of theirs (ISO 10303-22,
/// inverse_attribute).
class VNIFC_API VnIfcInverseAttributeDefinition : public VnIfcAttributeDefinition {
public:
    /// Cardinalities are Consts::VnIntUnset for "?" and where the declaration gives none. `duplicates`: a BAG, not a
    /// SET.
    VnIfcInverseAttributeDefinition(VnAnsiString name, VnIfcEntityType* owner, const VnIfcParameterType* type,
                                    const VnIfcAttributeDefinition* inverted, int minimum, int maximum,
                                    bool duplicates) noexcept;
    ~VnIfcInverseAttributeDefinition() override;

    /// The attribute there that this one inverts; null until resolved.
    const VnIfcAttributeDefinition* invertedAttribute() const noexcept { return m_inverted; }
    /// Its name as registered.
    const VnAnsiString& invertedName() const noexcept { return m_invertedName; }
    ///@{
    /// The declared bound of the cardinality; Consts::VnIntUnset for "?" and where the declaration gives none.
    int minimum() const noexcept { return m_minimum; }
    int maximum() const noexcept { return m_maximum; }
    ///@}
    /// True when declared as a BAG, in which an instance can stand twice.
    bool duplicates() const noexcept { return m_duplicates; }

private:
    friend class VnIfcSchemaBuilder;

    const VnIfcAttributeDefinition* m_inverted;
    VnAnsiString m_invertedName;
    int m_minimum;
    int m_maximum;
    bool m_duplicates;
};

} // namespace VN_SDAI
