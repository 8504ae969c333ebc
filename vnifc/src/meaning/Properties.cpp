#include "ProjectUnits.h"
#include "PropertyReader.h"

#include <VnIfcCore/VnIfcText.h>

#include <set>

namespace vnifc {

using detail::AttributeInfo;
using detail::Entity;
using detail::ModelState;
using detail::Name;
using VN_SDAI::VnIfcEntityBase;

namespace detail {

namespace {

/// The first type that a value names.
std::string typeIn(const Value& value) {
    if (const auto* typed = std::get_if<Typed>(&value.variant()))
        return typed->type();
    const auto* list = std::get_if<Value::List>(&value.variant());
    for (const Value& element : list ? *list : Value::List())
        if (std::string type = typeIn(element); !type.empty())
            return type;
    return {};
}

/// The number of attributes that are none of the properties of such a set.
std::size_t inheritedCount(ModelState& state, const VnIfcEntityBase& set) {
    for (const Entity base : {Entity::IfcRoot, Entity::IfcMaterialProperties, Entity::IfcProfileProperties})
        if (state.is(set, base))
            return state.classOf(*state.type(base)).attributes.size();
    return 0;
}

} // namespace

bool meansText(std::string_view exchangeText, std::string_view utf8) {
    if (exchangeText.find('\\') == std::string_view::npos)
        return exchangeText == utf8;
    std::string buffer;
    return VN_SDAI::vnDecodeText(exchangeText, buffer) == utf8;
}

bool hasPropertiesAsAttributes(ModelState& state, const VnIfcEntityBase& set) {
    if (state.is(set, Entity::IfcPropertySetDefinition))
        return !state.is(set, Entity::IfcPropertySet) && !state.is(set, Entity::IfcElementQuantity);
    const bool isOfResource =
        state.is(set, Entity::IfcMaterialProperties) || state.is(set, Entity::IfcProfileProperties);
    return isOfResource && !state.has(set, Name::Properties) && !state.has(set, Name::ExtendedProperties);
}

std::vector<PropertySet> PropertyReader::read(VnIfcEntityBase& object) {
    std::vector<PropertySet> sets;
    std::set<std::pair<std::string, std::string>> own;
    forEachSet(m_state, object, [&](VnIfcEntityBase& owner, VnIfcEntityBase& set) {
        if (!m_known.insert(&set).second)
            return;
        PropertySet& added = sets.emplace_back(
            PropertySet{m_state.wrap(set), m_state.text(set, Name::Name), m_state.wrap(owner), propertiesIn(set, 0)});
        for (Property& property : added.properties) {
            if (&owner == &object)
                own.emplace(added.name, property.name);
            else
                property.isOverridden = own.contains({added.name, property.name});
        }
    });
    return sets;
}

std::vector<Property> PropertyReader::propertiesIn(const VnIfcEntityBase& instance, unsigned nesting) {
    if (hasPropertiesAsAttributes(m_state, instance))
        return attributesIn(instance);
    std::vector<Property> properties;
    forEachMember(m_state, instance,
                  [&](VnIfcEntityBase& member) { properties.push_back(propertyOf(member, nesting)); });
    return properties;
}

Property PropertyReader::propertyOf(VnIfcEntityBase& instance, unsigned nesting) {
    Property property;
    property.instance = m_state.wrap(instance);
    property.name = m_state.text(instance, Name::Name);
    property.kind = kindOf(instance);
    property.values = valuesIn(instance);
    if (nesting < kMaxNesting && m_known.insert(&instance).second)
        property.parts = propertiesIn(instance, nesting + 1);
    return property;
}

PropertyKind PropertyReader::kindOf(const VnIfcEntityBase& property) const {
    static constexpr std::pair<Entity, PropertyKind> kKinds[] = {
        {Entity::IfcPropertySingleValue, PropertyKind::kSingle},
        {Entity::IfcPropertyEnumeratedValue, PropertyKind::kEnumerated},
        {Entity::IfcPropertyBoundedValue, PropertyKind::kBounded},
        {Entity::IfcPropertyListValue, PropertyKind::kList},
        {Entity::IfcPropertyTableValue, PropertyKind::kTable},
        {Entity::IfcPropertyReferenceValue, PropertyKind::kReference},
        {Entity::IfcComplexProperty, PropertyKind::kComplex},
        {Entity::IfcPhysicalComplexQuantity, PropertyKind::kComplex},
        {Entity::IfcPhysicalQuantity, PropertyKind::kQuantity}};
    for (const auto& [entity, kind] : kKinds)
        if (m_state.is(property, entity))
            return kind;
    return PropertyKind::kOther;
}

/// The properties of a set whose attributes are its properties.
std::vector<Property> PropertyReader::attributesIn(const VnIfcEntityBase& set) {
    const std::size_t inherited = inheritedCount(m_state, set);
    std::vector<Property> properties;
    for (const AttributeInfo& attribute : m_state.classOf(set)->attributes) {
        if (attribute.position < inherited || attribute.isDerived ||
            !VN_SDAI::typed::testField(static_cast<const VN_SDAI::typed::Entity&>(set), *attribute.row))
            continue;
        Property& property = properties.emplace_back();
        property.name = attribute.row->name;
        property.kind = PropertyKind::kAttribute;
        property.values.push_back(valueIn(set, attribute));
    }
    return properties;
}

std::vector<PropertyValue> PropertyReader::valuesIn(const VnIfcEntityBase& property) {
    std::vector<PropertyValue> values;
    const ClassInfo* info = m_state.classOf(property);
    if (!info)
        return values;
    for (const AttributeInfo& attribute : info->attributes) {
        const std::string_view name = attribute.row->name;
        const bool isValue = name.ends_with("Value") || name.ends_with("Values") || name == "PropertyReference";
        if (isValue && VN_SDAI::typed::testField(static_cast<const VN_SDAI::typed::Entity&>(property), *attribute.row))
            values.push_back(valueIn(property, attribute));
    }
    return values;
}

PropertyValue PropertyReader::valueIn(const VnIfcEntityBase& instance, const AttributeInfo& attribute) {
    PropertyValue result;
    result.attribute = attribute.row->name;
    result.value = m_state.wrap(instance)[attribute.row->name];
    result.type = typeIn(result.value);
    if (result.type.empty())
        result.type = upperNameOf(attribute.type);
    const Name unit = result.attribute == "DefiningValues"  ? Name::DefiningUnit
                      : result.attribute == "DefinedValues" ? Name::DefinedUnit
                                                            : Name::Unit;
    const VnIfcEntityBase* own = m_state.target(instance, unit);
    result.hasOwnUnit = own != nullptr;
    if (const VnIfcEntityBase* found = own ? own : m_state.units().find(result.type))
        result.unit = m_state.wrap(*found);
    return result;
}

namespace {

VnIfcEntityBase* memberNamed(ModelState& state, const VnIfcEntityBase& owner, std::string_view name) {
    VnIfcEntityBase* found = nullptr;
    forEachMember(state, owner, [&](VnIfcEntityBase& member) {
        if (!found && meansText(state.rawText(member, Name::Name), name))
            found = &member;
    });
    return found;
}

} // namespace

std::optional<Property> propertyIn(ModelState& state, VnIfcEntityBase& set, std::string_view path) {
    PropertyReader reader(state);
    if (hasPropertiesAsAttributes(state, set)) {
        for (Property& property : reader.attributesIn(set))
            if (sameName(property.name, path))
                return std::move(property);
        return std::nullopt;
    }
    // A name may have a dot in it: the longest that there is, is meant.
    const VnIfcEntityBase* owner = &set;
    while (owner) {
        if (VnIfcEntityBase* found = memberNamed(state, *owner, path))
            return reader.propertyOf(*found);
        const VnIfcEntityBase* next = nullptr;
        for (std::size_t dot = path.rfind('.'); dot != path.npos && dot > 0 && !next; dot = path.rfind('.', dot - 1)) {
            next = memberNamed(state, *owner, path.substr(0, dot));
            if (next)
                path.remove_prefix(dot + 1);
        }
        owner = next;
    }
    return std::nullopt;
}

} // namespace detail

// ---- Public

std::optional<Quantity> PropertyValue::quantity() const {
    const std::optional<double> number = value.get<double>();
    if (!number || !unit)
        return std::nullopt;
    return Quantity{*number, Unit(unit)};
}

Value Property::value() const {
    static constexpr std::string_view kFirst[] = {"NominalValue",  "EnumerationValues", "ListValues",
                                                  "SetPointValue", "DefinedValues",     "PropertyReference"};
    for (const std::string_view attribute : kFirst)
        for (const PropertyValue& each : values)
            if (each.attribute == attribute)
                return each.value;
    if (kind == PropertyKind::kBounded) {
        Value::List bounds(2);
        for (const PropertyValue& each : values)
            bounds[each.attribute == "UpperBoundValue" ? 1 : 0] = each.value;
        return values.empty() ? Value() : Value(std::move(bounds));
    }
    return values.empty() ? Value() : values.front().value;
}

std::vector<PropertySet> propertySets(const Instance& object) {
    VnIfcEntityBase& opened = detail::opened(object);
    return detail::PropertyReader(detail::stateOf(object)).read(opened);
}

std::optional<Property> property(const Instance& object, std::string_view path) {
    VnIfcEntityBase& opened = detail::opened(object);
    ModelState& state = detail::stateOf(object);
    std::optional<Property> found;
    detail::forEachSet(state, opened, [&](VnIfcEntityBase&, VnIfcEntityBase& set) {
        const std::string_view name = state.rawText(set, Name::Name);
        for (std::size_t dot = path.find('.'); dot != path.npos && !found; dot = path.find('.', dot + 1))
            if (detail::meansText(name, path.substr(0, dot)))
                found = detail::propertyIn(state, set, path.substr(dot + 1));
    });
    return found;
}

Value propertyValue(const Instance& object, std::string_view path) {
    const std::optional<Property> found = property(object, path);
    return found ? found->value() : Value();
}

} // namespace vnifc
