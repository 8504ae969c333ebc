#include "Conversion.h"

#include <map>

// Values that the target has no attribute for become properties, where the instance may have such.
namespace vnifc::conversion {

using namespace VN_SDAI;

namespace {

const PropertyCase* propertyCaseFor(const EntityType& entity, std::string_view attribute) noexcept {
    for (const PropertyCase& each : propertyCases())
        if (vnEqualNoCase(each.attribute, attribute) && isNamed(entity, each.entity))
            return &each;
    return nullptr;
}

const RedundantCase* redundantCaseFor(const EntityType& entity, std::string_view attribute) noexcept {
    for (const RedundantCase& each : redundantCases())
        if (vnEqualNoCase(each.attribute, attribute) && isNamed(entity, each.entity))
            return &each;
    return nullptr;
}

} // namespace

void Conversion::keepRest(const Record& record, Draft& draft) {
    struct Property {
        std::string text;
        Rest rest;
    };
    std::map<std::string, std::vector<Property>> sets;
    const std::string ownSet =
        "Attributes of " + std::string(record.layout->name) + " in " + std::string(m_source.name());
    for (const Rest& rest : m_rest) {
        const Field& field = record.layout->fields[rest.position];
        m_attribute = m_targetAttribute = field.name;
        const PropertyCase* line = propertyCaseFor(*record.layout->entity, field.name);
        if (const RedundantCase* redundant = redundantCaseFor(*record.layout->entity, field.name)) {
            tell(ConvertKind::kAbsorbed, field.name, shown(record.values[rest.position]), "", redundant->reason);
            continue;
        }
        std::string text = propertyOf(line ? line->property : field.name, record.values[rest.position], field.type);
        if (text.empty())
            tell(ConvertKind::kLostValue, field.name, shown(record.values[rest.position]), "", rest.reason);
        else
            sets[line && !line->set.empty() ? std::string(line->set) : ownSet].push_back({std::move(text), rest});
    }
    for (const auto& [set, properties] : sets) {
        std::string texts;
        for (const Property& each : properties)
            texts += (texts.empty() ? "" : ",") + each.text;
        const bool isKept = keepProperties(draft, set, texts);
        for (const Property& each : properties) {
            const Field& field = record.layout->fields[each.rest.position];
            tell(isKept ? ConvertKind::kKeptAsProperty : ConvertKind::kLostValue, field.name,
                 shown(record.values[each.rest.position]), isKept ? set : std::string(), each.rest.reason);
        }
    }
}

/// The text of a property with that value; empty when it cannot be one.
std::string Conversion::propertyOf(std::string_view name, const Value& value, const Type* from) {
    const std::size_t before = m_outcome->findings.size();
    const std::size_t made = m_outcome->created.size();
    Value kept = value;
    const Type* values = m_target.schema().namedType("IfcValue");
    const Type* references = m_target.schema().namedType("IfcObjectReferenceSelect");
    const std::string head = "('" + std::string(name) + "',$,";
    std::string text;
    if (value.is(Value::Kind::kList)) {
        const VnIfcAggregationType* list = asAggregation(from);
        bool fits = !kept.items.empty();
        for (Value& each : kept.items)
            fits = fits && each.isSet() && fit(each, list ? list->elementType() : nullptr, values) &&
                   each.is(Value::Kind::kTyped);
        if (fits)
            text = "IFCPROPERTYLISTVALUE" + head + textOf(kept) + ",$)";
    } else if (value.is(Value::Kind::kReference)) {
        // Of what the target does not allow there, the instance would only seem to be referred to.
        const EntityType* type = typeInTarget(value.number);
        if (type && mayReferTo(references, *type))
            text = "IFCPROPERTYREFERENCEVALUE" + head + "$," + textOf(kept) + ")";
        else if (std::string complex = complexPropertyOf(name, value); !complex.empty())
            text = std::move(complex);
        else if (!type && fit(kept, from, values) && kept.is(Value::Kind::kTyped))
            text = "IFCPROPERTYSINGLEVALUE" + head + textOf(kept) + ",$)";
    } else if (fit(kept, from, values) && kept.is(Value::Kind::kTyped)) {
        text = "IFCPROPERTYSINGLEVALUE" + head + textOf(kept) + ",$)";
    }
    forget(before); // that the value has a type now is not worth telling
    if (text.empty())
        m_outcome->created.resize(made);
    return text;
}

/// The text of a complex property that says what the instance says; empty when it has nothing that can be a property.
/// For instances that stand in others, and for the points and directions that these refer to.
std::string Conversion::complexPropertyOf(std::string_view name, const Value& value) {
    const Record inner = record(value);
    const std::size_t i = find(value.number);
    const bool stands = inner.layout && (m_instances[i].plan->mapping.way == Mapping::Way::kInlined ||
                                         (m_depth > 0 && inner.layout->fields.size() == 1));
    if (!stands || m_depth == kDeepest)
        return {};
    ++m_depth;
    std::string properties;
    for (std::size_t k = 0; k < inner.layout->fields.size(); ++k) {
        const Field& field = inner.layout->fields[k];
        if (!inner.values[k].isSet())
            continue;
        const std::string text = propertyOf(field.name, inner.values[k], field.type);
        if (text.empty())
            tellPartLost(inner.values[k], "what it refers to cannot be a property");
        else
            properties += (properties.empty() ? "" : ",") + text;
    }
    --m_depth;
    if (properties.empty())
        return {};
    return "IFCCOMPLEXPROPERTY('" + std::string(name) + "',$,'" + std::string(inner.layout->name) + "',(" + properties +
           "))";
}

/// Puts properties where such an instance has them; false when it can have none.
bool Conversion::keepProperties(Draft& draft, std::string_view set, const std::string& properties) {
    const auto append = [&](Value& place, const Value& items) {
        if (!place.is(Value::Kind::kList))
            place = Value::list({});
        place.items.insert(place.items.end(), items.items.begin(), items.items.end());
        return true;
    };
    for (const std::string_view name : {"Properties", "HasProperties", "ExtendedProperties"})
        if (Value* place = draft.find(name))
            return append(*place, make('(' + properties + ')'));
    const std::string named = "'" + std::string(set) + "',$,(" + properties + ")";
    const std::string setText = "IFCPROPERTYSET(@guid,@owner," + named + ')';
    if (isNamed(*draft.layout->entity, "IfcObject"))
        return make("IFCRELDEFINESBYPROPERTIES(@guid,@owner,$,$,(@self)," + setText + ')').isSet();
    if (isNamed(*draft.layout->entity, "IfcTypeObject"))
        return append(*draft.find("HasPropertySets"), make('(' + setText + ')'));
    for (const auto& [entity, holder] : {std::pair{"IfcProfileDef", "IfcProfileProperties"},
                                         std::pair{"IfcMaterialDefinition", "IfcMaterialProperties"}}) {
        const EntityType* type = m_target.concrete(holder);
        if (type && isNamed(*draft.layout->entity, entity) &&
            m_target.layout(*type).find("Properties") != Layout::kNone)
            return make(std::string(m_target.layout(*type).keyword) + '(' + named + ",@self)").isSet();
    }
    return false;
}

} // namespace vnifc::conversion
