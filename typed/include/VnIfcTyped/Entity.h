#pragma once
#include <VnIfcCore/VnIfcConsts.h>
#include <VnIfcCore/VnIfcEntityBase.h>
#include <VnIfcCore/VnIfcGUID.h>
#include <VnIfcCore/VnIfcListAggr.h>
#include <VnIfcCore/VnIfcLogical.h>
#include <VnIfcCore/VnIfcSetAggr.h>
#include <VnIfcTyped/Rows.h>

namespace VN_SDAI::typed {

struct EntityClass;

/// What can be done with an attribute depends on its kind alone.
enum class AttributeKind : std::uint8_t {
    kString,
    kGuid,
    kReal,
    kInteger,
    kBoolean,
    kLogical,
    kBinary,
    kReference,
    kEnumeration,
    kSelect,
    kAggregate,
    kDerived, ///< a position of the parameter list that a subtype derives: no member
};

/// Whether the schema allows the attribute to be unset.
enum Mark : std::uint8_t { kMandatory = 0, kOptional = 1 };

///@{
/// Bounds of an inverse attribute: "?" and not given.
inline constexpr int kUnbounded = Consts::VnIntUnset;
inline constexpr int kUnset = Consts::VnIntUnset;
///@}

/// One attribute of an entity class: all that the operations of its kind need to know.
struct AttributeRow {
    const char* name;     ///< as declared: "GlobalId"
    const char* typeText; ///< of the dictionary: "IFCLABEL", "set [1:?] of IFCOBJECTDEFINITION"
    const void* type;     ///< enumerations: EnumerationClass; selects and aggregates: operations of the member's type
    std::uint32_t offset; ///< of the member in the instance
    /// What can be done with the attribute.
    AttributeKind kind;
    /// Whether it may be unset.
    Mark mark;
    bool isBinary = false;                    ///< aggregates of BINARY, whose elements stand in double quotes
    std::uint8_t unique = 0;                  ///< bit i: the elements of nesting level i must differ
    VnIfcEntityType* const* target = nullptr; ///< the entity that references must be of
};

/// An inverse attribute; `attribute.typeText` is the entity on the other side in lower case.
struct InverseRow {
    /// Its own row: name, place in the instance and the entity on the other side.
    AttributeRow attribute;
    const char* inverted; ///< the attribute there: "RelatedObjects"
    ///@{
    /// The declared bound of the cardinality; kUnbounded for "?", kUnset where none is given.
    int lower;
    int upper;
    ///@}
};

/// A derived attribute, under its name in the dictionary.
struct DerivedRow {
    const char* name; ///< "Dim", or "ifcedge_edgestart" for a redeclared one
    /// Of the dictionary: "IFCDIMENSIONCOUNT".
    const char* typeText;
    const char* redeclares; ///< "EdgeStart"; empty when it redeclares nothing
    AttributeRow field;     ///< its place in the parameter list, if it redeclares
};

/// Where a forward attribute is entered: in this inverse member of targets that are of this entity.
struct InverseTarget {
    /// The g_pEntityType of the class that has the inverse attribute.
    VnIfcEntityType** entity;
    /// The row there.
    const InverseRow* inverse;
};

/// A forward attribute that inverse attributes of other classes mirror; the first target that fits is taken.
struct InverseLink {
    /// The attribute that holds the reference.
    const AttributeRow* forward;
    /// Where the instance is entered, in order of preference.
    Rows<InverseTarget> targets;
};

/// A rule of the schema: no two instances have the same values in all of these attributes.
struct UniqueRule {
    /// The rule's label in the schema: "UR1".
    const char* label;
    /// The attributes that are unique together.
    Rows<const AttributeRow*> attributes;
};

/// Makes an instance with every attribute unset, outside of any model; the caller owns it.
using EntityFactory = VnIfcEntityBase* (*)();
/// Adds the property objects of an entity's own attributes to a collection, which owns them.
using PropertyCallback = void (*)(VnIfcPropertyCollection*, const VnIfcEntityType*);

/// An entity class as data.
struct EntityClass {
    const char* name;             ///< "IfcWall"
    const char* keyword;          ///< "IFCWALL"
    const EntityClass* supertype; ///< null for a root
    VnIfcEntityType** record;     ///< the class's g_pEntityType
    /// Makes an instance of the class; of an abstract one, too.
    EntityFactory create;
    /// Makes the property objects of the own attributes.
    PropertyCallback properties;
    Rows<AttributeRow> attributes;    ///< own explicit ones
    Rows<InverseRow> inverses;        ///< own
    Rows<DerivedRow> derived;         ///< own
    Rows<const AttributeRow*> fields; ///< the whole parameter list, from the root down
    Rows<VnIfcEntityType**> chain;    ///< the class, then its root, then down towards it
    Rows<InverseLink> links;          ///< own
    Rows<UniqueRule> uniques;         ///< own
    /// ABSTRACT in the schema.
    bool isAbstract;
};

/// What all entity classes of the schema share: each operation once, driven by the class's rows. The rows are those of
/// the instance's own class, also when a base class is named: `wall->IfcRoot::getAttr("PredefinedType", value)` gives
/// the wall's attribute, and `wall->IfcRoot::outFields(filer)` writes the whole wall.
class VNIFC_API Entity : public VnIfcEntityBase {
public:
    /// The rows of the instance's class.
    virtual const EntityClass& entityClass() const noexcept = 0;

    bool getAttr(const VnAnsiString& name, VnIfcVariant& value) const override;
    bool putAttr(const VnAnsiString& name, const VnIfcVariant& value) override;
    using VnIfcEntityBase::testAttr;
    bool testAttr(const VnAnsiString& name) const override;
    void unsetAttr(const VnAnsiString& name) override;
    VN::ErrorStatus inFields(VnSpfFilerBase* filer) override;
    VN::ErrorStatus outFields(VnSpfFilerBase* filer) const override;
    void setInverseCounterParts() override;
    bool listInverseCounterParts(VnIfcInverseList& list) const override;
    void enterInverse(const void* inverse, const VnDbObjectId& referrer) override;
    /// Leaves inverse attributes as they are; what removes entries is the model.
    void resetInverseCounterParts() override;
    void leaveInverseCounterParts() override;
    bool isInstanceOf(const VnIfcEntityType* type) const override;
    bool isInstanceOf(const char* name) const override;
    bool isKindOf(const VnIfcEntityType* type) const override;
    bool isKindOf(const char* name) const override;
    void counterParts(std::vector<VnDbObjectId>& targets) const override;
    void enterCounterPart(const VnDbObjectId& target) override;
    void clearInverses() override;
    bool forgetReferrer(const VnDbObjectId& referrer) override;
    bool settleSelects() override;
    const VnIfcGUID* globalId() const noexcept override;
    void check(VnIfcCheck& check) const override;
    bool uniqueValues(const void* rule, std::string& values) const override;
    std::string uniqueAttributes(const void* rule) const override;

    /// To be told after a member was changed through its row, so that a text kept from the file gives way to it.
    void fieldChanged(unsigned position) noexcept { touched(position); }

protected:
    Entity() = default;
    ///@{
    /// A copy belongs to no model; assignment leaves identity alone.
    Entity(const Entity&) = default;
    Entity& operator=(const Entity&) = default;
    ///@}

private:
    friend class AttributeProperty;
};

/// The instance that a handle stands for, opened for reading, if it is of class E; null otherwise.
template <class E>
E* openAs(const VnDbObjectId& handle) {
    VnIfcEntityBase* instance = handle.openObject();
    return instance && instance->isKindOf(E::g_pEntityType) ? static_cast<E*>(instance) : nullptr;
}

} // namespace VN_SDAI::typed
