#include "PropertySets.h"

#include "Instances.h"
#include "Inverse.h"
#include "Units.h"
#include "Values.h"

#include <VnIfcCore/VnIfcSchema.h>

#include <algorithm>
#include <cctype>
#include <set>
#include <unordered_set>

namespace vnifc::tool {

using namespace VN_SDAI;

namespace {

/// Remembers the first type that a value names.
class FirstType final : public ValueVisitor {
public:
    std::string take() { return std::move(m_type); }
    void beginTyped(std::string_view type) override {
        if (m_type.empty())
            m_type = type;
    }

private:
    std::string m_type;
};

std::string typeIn(const VnIfcVariant& value) {
    FirstType visitor;
    visitValue(value, visitor);
    return visitor.take();
}

/// The members of a set or of a property that gathers others.
Instances membersOf(const VnIfcEntityBase& instance) {
    Instances members;
    for (const char* attribute : {"HasProperties", "Quantities", "Properties", "HasQuantities"})
        std::ranges::copy(targetsOf(instance, attribute), std::back_inserter(members));
    return members;
}

/// Reads the sets of one object.
class Reader {
public:
    explicit Reader(const VnIfcModel& model) : m_units(model) {}

    std::vector<PropertySet> read(const VnIfcEntityBase& object);

private:
    // No file of a person nests as deep; the stack of a program ends somewhere.
    static constexpr unsigned kMaxNesting = 64;

    void addSets(const VnIfcEntityBase& owner, const Instances& definitions);
    std::vector<Property> propertiesIn(const VnIfcEntityBase& instance, unsigned nesting = 0);
    std::vector<Property> attributesIn(const VnIfcEntityBase& set) const;
    std::vector<PropertyValue> valuesIn(const VnIfcEntityBase& property) const;
    PropertyValue valueIn(const VnIfcEntityBase& instance, const Attribute& attribute) const;
    void markOverridden(const VnIfcEntityBase& object);

    ProjectUnits m_units;
    std::unordered_set<const VnIfcEntityBase*> m_known; ///< sets and gathering properties, against circles
    std::vector<PropertySet> m_sets;
};

std::vector<PropertySet> Reader::read(const VnIfcEntityBase& object) {
    if (object.isKindOf("IfcPropertySetDefinition") || object.isKindOf("IfcExtendedProperties"))
        addSets(object, {&object});
    for (const VnIfcEntityBase* relation : targetsOf(object, "IsDefinedBy"))
        addSets(object, targetsOf(*relation, "RelatingPropertyDefinition"));
    addSets(object, targetsOf(object, "HasPropertySets"));
    if (object.isKindOf("IfcMaterialDefinition") || object.isKindOf("IfcProfileDef"))
        addSets(object, targetsOf(object, "HasProperties"));
    // In IFC2X3 the relation to the type stands among those to property sets.
    Instances toTypes = targetsOf(object, "IsTypedBy");
    std::ranges::copy_if(targetsOf(object, "IsDefinedBy"), std::back_inserter(toTypes),
                         [](const VnIfcEntityBase* relation) { return relation->isKindOf("IfcRelDefinesByType"); });
    for (const VnIfcEntityBase* relation : toTypes)
        for (const VnIfcEntityBase* type : targetsOf(*relation, "RelatingType"))
            addSets(*type, targetsOf(*type, "HasPropertySets"));
    markOverridden(object);
    return std::move(m_sets);
}

void Reader::addSets(const VnIfcEntityBase& owner, const Instances& definitions) {
    for (const VnIfcEntityBase* set : definitions)
        if (m_known.insert(set).second)
            m_sets.push_back({set, &owner, propertiesIn(*set)});
}

/// True for sets whose attributes are their properties, as those of doors and windows. IFC2X3 has no supertype for
/// them.
bool hasPropertiesAsAttributes(const VnIfcEntityBase& set) {
    return set.isKindOf("IfcPropertySetDefinition") && !set.isKindOf("IfcPropertySet") &&
           !set.isKindOf("IfcElementQuantity");
}

std::vector<Property> Reader::propertiesIn(const VnIfcEntityBase& instance, unsigned nesting) {
    if (hasPropertiesAsAttributes(instance))
        return attributesIn(instance);
    std::vector<Property> properties;
    for (const VnIfcEntityBase* member : membersOf(instance)) {
        Property& property = properties.emplace_back(Property{member, nameOf(*member), valuesIn(*member), {}});
        if (nesting < kMaxNesting && m_known.insert(member).second)
            property.parts = propertiesIn(*member, nesting + 1);
    }
    return properties;
}

/// The properties of a set whose attributes are its properties.
std::vector<Property> Reader::attributesIn(const VnIfcEntityBase& set) const {
    const std::size_t inherited = attributesOf(*set.getInstanceType()->schema()->entity("IfcRoot")).size();
    std::vector<Property> properties;
    for (const Attribute& attribute : attributesOf(*set.getInstanceType()))
        if (attribute.position >= inherited && set.testAttr(*attribute.name))
            properties.push_back({nullptr, std::string(attribute.name->view()), {valueIn(set, attribute)}, {}});
    return properties;
}

std::vector<PropertyValue> Reader::valuesIn(const VnIfcEntityBase& property) const {
    std::vector<PropertyValue> values;
    if (!property.getInstanceType())
        return values;
    for (const Attribute& attribute : attributesOf(*property.getInstanceType())) {
        const std::string_view name = *attribute.name;
        const bool isValue = name.ends_with("Value") || name.ends_with("Values") || name == "PropertyReference";
        if (isValue && property.testAttr(*attribute.name))
            values.push_back(valueIn(property, attribute));
    }
    return values;
}

PropertyValue Reader::valueIn(const VnIfcEntityBase& instance, const Attribute& attribute) const {
    PropertyValue result{attribute.name, {}, {}};
    instance.getAttr(*attribute.name, result.value);
    result.type = typeIn(result.value);
    if (const auto* type = dynamic_cast<const VnIfcNameType*>(attribute.type); type && result.type.empty())
        for (const char c : type->name().view())
            result.type += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    const std::string_view name = *attribute.name;
    const Instances own = targetsOf(instance, name == "DefiningValues"  ? "DefiningUnit"
                                              : name == "DefinedValues" ? "DefinedUnit"
                                                                        : "Unit");
    result.hasOwnUnit = !own.empty();
    result.unit = result.hasOwnUnit ? own.front() : m_units.find(result.type);
    return result;
}

void Reader::markOverridden(const VnIfcEntityBase& object) {
    std::set<std::pair<std::string, std::string>> own;
    for (PropertySet& set : m_sets)
        for (Property& property : set.properties)
            if (set.owner == &object)
                own.emplace(nameOf(*set.instance), property.name);
            else
                property.isOverridden = own.contains({nameOf(*set.instance), property.name});
}

} // namespace

std::vector<PropertySet> propertySetsOf(const VnIfcModel& model, const VnIfcEntityBase& object) {
    return Reader(model).read(object);
}

} // namespace vnifc::tool
