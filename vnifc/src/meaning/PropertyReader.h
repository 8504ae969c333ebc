#pragma once
#include "../model/ModelState.h"

#include <vnifc/Properties.h>

#include <unordered_set>

namespace vnifc::detail {

/// Calls `visit(owner, set)` for each set of an object, then for those of its type; what is no set is left out.
template <class Visit>
void forEachSet(ModelState& state, VN_SDAI::VnIfcEntityBase& object, Visit visit);
/// Calls `visit(VnIfcEntityBase& type)` for the types of an object; in real files there is one.
template <class Visit>
void forEachType(ModelState& state, const VN_SDAI::VnIfcEntityBase& object, Visit visit);
/// Calls `visit(VnIfcEntityBase&)` for the members of a set, or of a property that gathers others.
template <class Visit>
void forEachMember(ModelState& state, const VN_SDAI::VnIfcEntityBase& owner, Visit visit);
/// True for sets whose attributes are their properties, as those of doors and windows. IFC2X3 has no supertype for
/// them.
bool hasPropertiesAsAttributes(ModelState& state, const VN_SDAI::VnIfcEntityBase& set);

/// True when a text as it stands in memory means that one in UTF-8.
bool meansText(std::string_view exchangeText, std::string_view utf8);

/// A property of a set by its name, or a part of a complex one by several with dots.
std::optional<Property> propertyIn(ModelState& state, VN_SDAI::VnIfcEntityBase& set, std::string_view path);

/// Reads the sets of one object.
class PropertyReader {
public:
    explicit PropertyReader(ModelState& state) : m_state(state) {}

    std::vector<PropertySet> read(VN_SDAI::VnIfcEntityBase& object);
    /// The property of an instance, with its parts.
    Property propertyOf(VN_SDAI::VnIfcEntityBase& instance, unsigned nesting = 0);
    std::vector<Property> attributesIn(const VN_SDAI::VnIfcEntityBase& set);
    PropertyValue valueIn(const VN_SDAI::VnIfcEntityBase& instance, const AttributeInfo& attribute);

private:
    // No file of a person nests as deep; the stack of a program ends somewhere.
    static constexpr unsigned kMaxNesting = 64;

    std::vector<Property> propertiesIn(const VN_SDAI::VnIfcEntityBase& instance, unsigned nesting);
    std::vector<PropertyValue> valuesIn(const VN_SDAI::VnIfcEntityBase& property);
    PropertyKind kindOf(const VN_SDAI::VnIfcEntityBase& property) const;

    ModelState& m_state;
    std::unordered_set<const VN_SDAI::VnIfcEntityBase*> m_known; ///< sets and gathering properties, against circles
};

// ---- Implementation

template <class Visit>
void forEachMember(ModelState& state, const VN_SDAI::VnIfcEntityBase& owner, Visit visit) {
    for (const Name name :
         {Name::HasProperties, Name::Quantities, Name::Properties, Name::HasQuantities, Name::ExtendedProperties})
        state.forEachTarget(owner, name, visit);
}

template <class Visit>
void forEachType(ModelState& state, const VN_SDAI::VnIfcEntityBase& object, Visit visit) {
    // In IFC2X3 the relation to the type stands among those to property sets.
    for (const Name name : {Name::IsTypedBy, Name::IsDefinedBy})
        state.forEachTarget(object, name, [&](VN_SDAI::VnIfcEntityBase& relation) {
            if (state.is(relation, Entity::IfcRelDefinesByType))
                state.forEachTarget(relation, Name::RelatingType, visit);
        });
}

template <class Visit>
void forEachSet(ModelState& state, VN_SDAI::VnIfcEntityBase& object, Visit visit) {
    state.needInverses();
    const auto own = [&](VN_SDAI::VnIfcEntityBase& set) { visit(object, set); };
    if (state.is(object, Entity::IfcPropertySetDefinition) || state.is(object, Entity::IfcExtendedProperties))
        own(object);
    state.forEachTarget(object, Name::IsDefinedBy, [&](VN_SDAI::VnIfcEntityBase& relation) {
        state.forEachTarget(relation, Name::RelatingPropertyDefinition, own);
    });
    state.forEachTarget(object, Name::HasPropertySets, own);
    const bool isResource = state.is(object, Entity::IfcMaterialDefinition) || state.is(object, Entity::IfcProfileDef);
    if (isResource)
        state.forEachTarget(object, Name::HasProperties, own);
    // IFC2X3 has the relation from the properties to their material or profile only one way.
    if ((isResource || state.is(object, Entity::IfcMaterial)) && !state.has(object, Name::HasProperties))
        for (const Instance& referrer : state.referrers.of(state, object.objectId())) {
            VN_SDAI::VnIfcEntityBase& set = *referrer.core().openObject();
            if (state.is(set, Entity::IfcMaterialProperties) || state.is(set, Entity::IfcProfileProperties))
                own(set);
        }
    forEachType(state, object, [&](VN_SDAI::VnIfcEntityBase& type) {
        state.forEachTarget(type, Name::HasPropertySets, [&](VN_SDAI::VnIfcEntityBase& set) { visit(type, set); });
    });
}

} // namespace vnifc::detail
