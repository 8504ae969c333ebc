#pragma once
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// A small reader of the schemas' declarations (ISO 10303-11) that shares nothing with the generator and the
/// dictionary, so that it can bear witness.
namespace declared {

/// A level of an aggregate.
struct Layer {
    std::string kind; ///< "array", "list", "set"
    std::string lower;
    std::string upper; ///< "?", a number, or the name of an attribute
    bool isUnique = false;
};

struct Type {
    std::vector<Layer> layers; ///< outermost first
    std::string name;          ///< of the innermost element as it stands there: "IfcLabel", "STRING"
    std::string width;         ///< of STRING and BINARY; empty when there is none
    bool isFixed = false;
};

struct Explicit {
    std::string name;
    Type type;
    bool isOptional = false;
};

struct Derived {
    std::string name;
    Type type;
    std::string redeclaredIn; ///< the entity after SELF\; empty when nothing is redeclared
};

struct Inverse {
    std::string name;
    std::vector<Layer> layers; ///< at most one
    std::string entity;
    std::string attribute;
};

struct Entity {
    std::string name;
    std::string supertype; ///< empty for a root
    bool isAbstract = false;
    std::vector<Explicit> explicits;
    std::vector<Derived> derived;
    std::vector<Inverse> inverses;
};

/// A declaration of a type.
struct Named {
    enum Kind { kDefined, kEnumeration, kSelect };

    std::string name;
    Kind kind = kDefined;
    Type underlying;                ///< of a defined type
    std::vector<std::string> items; ///< literals of an enumeration, members of a select
};

/// A position of a parameter list.
struct Parameter {
    const Entity* entity; ///< that declares it
    const Explicit* attribute;
    bool isDerived; ///< a subtype derives it, so that "*" stands there
};

/// The declarations of one release.
class Schema {
public:
    /// Throws std::runtime_error where the text is not of the form that the declarations have.
    explicit Schema(const std::filesystem::path& file);
    Schema(const Schema&) = delete;
    Schema& operator=(const Schema&) = delete;

    const std::string& name() const { return m_name; }
    /// In the text's order.
    const std::vector<Named>& types() const { return m_types; }
    const std::vector<Entity>& entities() const { return m_entities; }

    /// By name in any case; null when there is none.
    const Entity* entity(std::string_view name) const;
    const Named* type(std::string_view name) const;

    /// The whole parameter list of an entity, from the root down.
    std::vector<Parameter> parameters(const Entity& entity) const;
    /// True when `name`, in any case, is the entity or one of its supertypes.
    bool isKindOf(const Entity& entity, std::string_view name) const;
    /// The entity, its supertype and so on up to the root.
    std::vector<const Entity*> upwards(const Entity& entity) const;
    /// The type with all names of defined types replaced by what they stand for: what is left is simple, an
    /// enumeration, a select or an entity.
    Type resolved(Type type) const;
    /// The same, but only as far as names stand for aggregates.
    Type withoutAggregateNames(Type type) const;

private:
    std::string m_name;
    std::vector<Named> m_types;
    std::vector<Entity> m_entities;
    std::map<std::string, std::size_t> m_typeIndex;
    std::map<std::string, std::size_t> m_entityIndex;
};

std::string upper(std::string_view text);
std::string lower(std::string_view text);

/// The declarations of a release by its schema's name, "IFC4X3_ADD2", or of the tests' own "TOY". Read once.
const Schema& schemaNamed(std::string_view name);

} // namespace declared
