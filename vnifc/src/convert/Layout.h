#pragma once
#include <VnIfcCore/VnAscii.h>
#include <VnIfcCore/VnIfcAggregationType.h>
#include <VnIfcCore/VnIfcEntityType.h>
#include <VnIfcCore/VnIfcEnumerationType.h>
#include <VnIfcCore/VnIfcSchema.h>
#include <VnIfcCore/VnIfcSelectType.h>
#include <VnIfcTyped/Entity.h>
#include <VnIfcTyped/Enumeration.h>

#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

/// What conversion asks a schema: parameter lists, types and what belongs to what.
namespace vnifc::conversion {

using EntityType = VN_SDAI::VnIfcEntityType;
using Type = VN_SDAI::VnIfcParameterType;

/// One position of a parameter list.
struct Field {
    std::string_view name;
    const Type* type = nullptr; ///< null for the few types that the dictionary does not have
    const VN_SDAI::typed::AttributeRow* row = nullptr;
    bool isOptional = false;
    bool isDerived = false;

    VN_SDAI::typed::AttributeKind kind() const noexcept { return row->kind; }
    /// The literals of an enumeration as its class has them; null for other kinds. The dictionary of one release has
    /// more than its classes accept.
    const VN_SDAI::typed::EnumerationClass* enumeration() const noexcept {
        return row->kind == VN_SDAI::typed::AttributeKind::kEnumeration
                   ? static_cast<const VN_SDAI::typed::EnumerationClass*>(row->type)
                   : nullptr;
    }
};

/// The parameter list of one entity.
struct Layout {
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

    const EntityType* entity = nullptr;
    std::string_view name;    ///< "IfcWall"
    std::string_view keyword; ///< "IFCWALL"
    std::vector<Field> fields;

    /// The position of an attribute, by its name in any case.
    std::size_t find(std::string_view attribute) const noexcept;
};

/// A schema with the layouts of its entities. One thread at a time.
class Release {
public:
    explicit Release(const VN_SDAI::VnIfcSchema& schema) noexcept : m_schema(schema) {}

    const VN_SDAI::VnIfcSchema& schema() const noexcept { return m_schema; }
    std::string_view name() const noexcept { return m_schema.name().view(); }
    const EntityType* entity(std::string_view name) const noexcept { return m_schema.entity(name); }
    /// The entity if instances of it may be made.
    const EntityType* concrete(std::string_view name) const noexcept;
    const Layout& layout(const EntityType& entity);
    /// The literals that an enumeration in a select has; null for one that no select of a known layout has.
    const VN_SDAI::typed::EnumerationClass* words(std::string_view enumeration) const;

private:
    void learnWords(const EntityType& entity, const Field& field);

    const VN_SDAI::VnIfcSchema& m_schema;
    std::unordered_map<const EntityType*, Layout> m_layouts;
    std::vector<std::pair<std::string, const VN_SDAI::typed::EnumerationClass*>> m_words; ///< few
};

/// "IfcWall".
std::string_view nameOf(const EntityType& entity) noexcept;
/// True when the entity, or one that it descends from, has that name; the name need not exist in the schema.
bool isNamed(const EntityType& entity, std::string_view name) noexcept;

/// The type beneath all names of defined types.
const Type* beneath(const Type* type) noexcept;
/// The name of a defined type, enumeration or select ("IfcLabel"); empty for what has none.
std::string_view nameOf(const Type* type) noexcept;
/// The name of the defined type, or of that of the elements: "IfcLengthMeasure" for lists of it.
std::string_view innermostName(const Type* type) noexcept;
const VN_SDAI::VnIfcSelectType* asSelect(const Type* type) noexcept;
const VN_SDAI::VnIfcAggregationType* asAggregation(const Type* type) noexcept;
/// Whether the field is an aggregate that may have no element.
bool allowsEmpty(const Field& field) noexcept;
const VN_SDAI::VnIfcEnumerationType* asEnumeration(const Type* type) noexcept;
const EntityType* asEntity(const Type* type) noexcept;
/// True when a value of `type` may be a typed value of that name; the member is given back.
const Type* memberNamed(const Type* select, std::string_view name);
/// True when a value of the type may refer to an instance of the entity.
bool mayReferTo(const Type* type, const EntityType& entity);
/// Calls `visit` with each member of a select, those of selects in it instead of them.
void forEachMember(const Type* select, const std::function<void(const Type&)>& visit);

} // namespace vnifc::conversion
