#include "Instances.h"

#include "Commands.h"
#include "Inverse.h"
#include "Values.h"

#include <VnIfcCore/VnIfcAggregationType.h>
#include <VnIfcCore/VnIfcGUID.h>
#include <VnIfcCore/VnIfcSchema.h>
#include <VnRx/VrString.h>
#include <vnifc/Rules.h>

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <unordered_map>

namespace vnifc::tool {

using namespace VN_SDAI;

namespace {

bool mayBeEmpty(const VnIfcParameterType* type) {
    if (const auto* named = dynamic_cast<const VnIfcDefinedType*>(type))
        type = named->underlyingType();
    const auto* aggregation = dynamic_cast<const VnIfcAggregationType*>(type);
    return aggregation && !aggregation->lowerBound().isUnbounded() && aggregation->lowerBound().value() == 0;
}

std::vector<Attribute> collectAttributes(const VnIfcEntityType& entity) {
    std::vector<Attribute> attributes;
    std::vector<const VnIfcAttributeDefinition*> definitions, redeclared;
    for (const VnIfcAttributeDefinition* each : entity.allAttributes()) {
        if (each->attributeKind() == VnIfcAttributeDefinition::Kind::kExplicit)
            definitions.push_back(each);
        if (const auto* derived = dynamic_cast<const VnIfcDerivedAttributeDefinition*>(each))
            redeclared.push_back(derived->redeclaredAttribute());
    }
    for (const VnIfcAttributeDefinition* each : definitions)
        attributes.push_back({&each->name(), each->type(), static_cast<unsigned>(attributes.size()),
                              std::ranges::find(redeclared, each) != redeclared.end(), mayBeEmpty(each->type())});
    return attributes;
}

void writeAttributes(JsonWriter& json, const VnIfcEntityBase& instance, bool describe) {
    JsonValues plain(json);
    DescribedJsonValues described(json);
    VnIfcVariant value;
    for (const Attribute& attribute : attributesOf(*instance.getInstanceType())) {
        if (attribute.isDerived || !instance.getAttr(*attribute.name, value))
            continue;
        json.key(*attribute.name);
        visitValue(value, describe ? described : plain, attribute.mayBeEmpty);
    }
}

/// The number in "#12" or "12"; false for anything else.
bool readNumber(std::string_view address, std::uint64_t& number) {
    if (address.starts_with('#'))
        address.remove_prefix(1);
    const char* const end = address.data() + address.size();
    const auto [stop, error] = std::from_chars(address.data(), end, number);
    return error == std::errc() && stop == end;
}

} // namespace

const std::vector<Attribute>& attributesOf(const VnIfcEntityType& entity) {
    static std::unordered_map<const VnIfcEntityType*, std::vector<Attribute>> known;
    const auto [found, isNew] = known.try_emplace(&entity);
    if (isNew)
        found->second = collectAttributes(entity);
    return found->second;
}

const Attribute* findAttribute(const VnIfcEntityType& entity, std::string_view name) {
    const auto& attributes = attributesOf(entity);
    const auto found =
        std::ranges::find_if(attributes, [&](const Attribute& each) { return each.name->compareNoCase(name) == 0; });
    return found == attributes.end() ? nullptr : &*found;
}

std::string keywordOf(const VnIfcEntityBase& instance) {
    if (const VnIfcEntityType* type = instance.getInstanceType())
        return std::string(type->name().view());
    const auto& foreign = dynamic_cast<const VnIfcForeignInstance&>(instance);
    if (!foreign.keyword().isEmpty())
        return std::string(foreign.keyword().view());
    return foreign.isList() ? "(complex)" : "(malformed)";
}

std::string textOf(const VnIfcEntityBase& instance, const VnAnsiString& attribute) {
    VnIfcVariant value;
    VrString text;
    if (instance.testAttr(attribute) && instance.getAttr(attribute, value))
        value.toString(text);
    return std::string(text.view());
}

std::string nameOf(const VnIfcEntityBase& instance) {
    static const VnAnsiString kName("Name");
    return textOf(instance, kName);
}

VnIfcEntityBase& instanceAt(const VnIfcModel& model, std::string_view address) {
    std::uint64_t number = 0;
    VnDbObjectId handle;
    if (readNumber(address, number))
        handle = model.find(number);
    else if (address.size() <= VnIfcGUID::kLength)
        handle = model.findByGlobalId(address);
    if (VnIfcEntityBase* instance = handle.openObject())
        return *instance;
    throw Failure(kNotThere, fmt::format("there is no instance {}", address));
}

EntityFilter::EntityFilter(const VnIfcModel& model, const std::string& entity, bool withSubtypes)
    : m_keyword(entity), m_type(model.schema()->entity(entity)), m_withSubtypes(withSubtypes) {
    bool isKnown = m_type != nullptr;
    if (!isKnown)
        model.forEach([&](const VnIfcEntityBase& each) { isKnown = isKnown || matches(each); });
    if (!isKnown)
        throw Failure(kNotThere, fmt::format("neither {} nor the file has an entity \"{}\"",
                                             model.schema()->name().constStr(), entity));
}

bool EntityFilter::matches(const VnIfcEntityBase& instance) const {
    if (!m_type)
        return instance.isInstanceOf(m_keyword.c_str());
    return m_withSubtypes ? instance.isKindOf(m_type) : instance.isInstanceOf(m_type);
}

namespace {

/// By attribute; what follows the last one has no name.
void writeKept(JsonWriter& json, const VnIfcEntityBase& instance) {
    const auto texts = instance.keptTexts();
    if (texts.empty())
        return;
    const std::vector<Attribute>& attributes = attributesOf(*instance.getInstanceType());
    json.key("kept");
    json.beginObject();
    for (const auto& [position, text] : texts) {
        json.key(position < attributes.size() ? attributes[position].name->view() : std::string_view());
        json.string(text);
    }
    json.endObject();
}

} // namespace

namespace {

void writeRuleValue(JsonWriter& json, const RuleValue& value) {
    using Kind = RuleValue::Kind;
    switch (value.kind) {
    case Kind::kIndeterminate:
        return json.null();
    case Kind::kInteger:
        // Exact as far as JSON's readers are.
        return json.number(static_cast<double>(value.integer));
    case Kind::kReal:
        return json.number(value.real);
    case Kind::kString:
    case Kind::kBinary:
    case Kind::kEnumeration:
        return json.string(value.text);
    case Kind::kLogical:
    case Kind::kInstance:
        if (value.kind == Kind::kLogical && value.integer != 1)
            return json.boolean(value.integer == 2);
        return json.string(value.toText());
    case Kind::kConstructed:
        json.beginObject();
        json.key("type");
        json.string(value.type);
        for (std::size_t i = 0; i < value.items.size(); ++i) {
            json.key(value.names[i]);
            writeRuleValue(json, value.items[i]);
        }
        return json.endObject();
    case Kind::kAggregate:
        json.beginArray();
        for (const RuleValue& item : value.items)
            writeRuleValue(json, item);
        return json.endArray();
    }
}

void writeDerived(JsonWriter& json, const VnIfcEntityBase& instance, const Rules& rules) {
    json.key("derived");
    json.beginObject();
    for (const std::string& name : rules.derivedAttributes(instance)) {
        json.key(name);
        writeRuleValue(json, rules.derived(instance, name));
    }
    json.endObject();
}

} // namespace

void writeInstance(JsonWriter& json, const VnIfcEntityBase& instance, InstanceDetail detail) {
    json.beginObject();
    json.key("id");
    json.number(instance.objectId().number());
    json.key("type");
    json.string(keywordOf(instance));
    if (instance.getInstanceType()) {
        json.key("attributes");
        json.beginObject();
        writeAttributes(json, instance, detail.describe);
        json.endObject();
        writeKept(json, instance);
        if (detail.inverses) {
            json.key("inverse");
            writeInverses(json, instance, detail.describe);
        }
        if (detail.derived)
            writeDerived(json, instance, *detail.derived);
    } else {
        json.key("parameters");
        json.string(dynamic_cast<const VnIfcForeignInstance&>(instance).parameters());
    }
    json.endObject();
}

} // namespace vnifc::tool
