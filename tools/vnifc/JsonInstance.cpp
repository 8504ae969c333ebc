#include "JsonInstance.h"

#include <vnifc/References.h>

namespace vnifc::tool {

void JsonValues::instance(const Instance& instance) {
    m_json.beginObject();
    m_json.key("ref");
    m_json.number(instance.id());
    describe(m_json, instance);
    m_json.endObject();
}

std::size_t JsonValues::beginList(std::size_t count) {
    m_json.beginArray();
    return count;
}

void JsonValues::beginTyped(std::string_view type) {
    m_json.beginObject();
    m_json.key("type");
    m_json.string(type);
    m_json.key("value");
}

void DescribedJsonValues::describe(JsonWriter& json, const Instance& instance) {
    json.key("type");
    instance ? json.string(instance.keyword()) : json.null();
    const std::string name = instance ? instance.name() : std::string();
    json.key("name");
    name.empty() ? json.null() : json.string(name);
}

namespace {

void writeAttributes(JsonWriter& json, const Instance& instance, JsonValues& values) {
    json.beginObject();
    for (const Attribute& attribute : instance.attributes()) {
        if (attribute.isDerived())
            continue;
        json.key(attribute.name());
        visitValue(instance, attribute, values);
    }
    json.endObject();
}

/// By attribute; what follows the last one has no name.
void writeKept(JsonWriter& json, const Instance& instance) {
    const auto texts = instance.keptTexts();
    if (texts.empty())
        return;
    json.key("kept");
    json.beginObject();
    for (const auto& [attribute, text] : texts) {
        json.key(attribute);
        json.string(text);
    }
    json.endObject();
}

/// Numbers by attribute, or with `describe` references with keyword and name.
void writeInverses(JsonWriter& json, const Instance& instance, bool describe) {
    DescribedJsonValues described(json);
    json.beginObject();
    for (const InverseAttribute& inverse : inverseAttributes(instance)) {
        json.key(inverse.name);
        json.beginArray();
        for (const Instance& target : inverse.instances)
            describe ? described.instance(target) : json.number(target.id());
        json.endArray();
    }
    json.endObject();
}

void writeReferrers(JsonWriter& json, const Instance& instance) {
    DescribedJsonValues described(json);
    json.beginArray();
    for (const Reference& reference : referencesTo(instance)) {
        json.beginObject();
        json.key("from");
        described.instance(reference.from);
        json.key("attribute");
        reference.attribute.empty() ? json.null() : json.string(reference.attribute);
        json.key("position");
        json.beginArray();
        for (const std::size_t index : reference.position)
            json.number(std::uint64_t{index});
        json.endArray();
        json.key("text");
        json.boolean(reference.isInText);
        json.endObject();
    }
    json.endArray();
}

void writeRuleValue(JsonWriter& json, const RuleValue& value) {
    using Kind = RuleValue::Kind;
    switch (value.kind) {
    case Kind::kIndeterminate:
        return json.null();
    case Kind::kInteger:
        return json.number(value.integer);
    case Kind::kReal:
        return json.number(value.real);
    case Kind::kString:
    case Kind::kBinary:
    case Kind::kEnumeration:
        return json.string(value.text);
    case Kind::kLogical:
        return value.integer == 1 ? json.string(value.toText()) : json.boolean(value.integer == 2);
    case Kind::kInstance:
        json.beginObject();
        json.key("ref");
        json.number(std::uint64_t{value.instance.number()});
        return json.endObject();
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

void writeDerived(JsonWriter& json, const Instance& instance, const Rules& rules) {
    json.beginObject();
    for (const std::string& name : rules.derivedAttributes(instance)) {
        json.key(name);
        writeRuleValue(json, rules.derived(instance, name));
    }
    json.endObject();
}

} // namespace

void writeInstance(JsonWriter& json, const Instance& instance, InstanceDetail detail) {
    JsonValues plain(json);
    DescribedJsonValues described(json);
    json.beginObject();
    json.key("id");
    json.number(instance.id());
    json.key("type");
    json.string(instance.keyword());
    if (instance.isForeign()) {
        json.key("parameters");
        json.string(instance.foreignText());
    } else {
        json.key("attributes");
        writeAttributes(json, instance, detail.describe ? described : plain);
        writeKept(json, instance);
    }
    if (detail.inverses && !instance.isForeign()) {
        json.key("inverse");
        writeInverses(json, instance, detail.describe);
    }
    if (detail.referrers) {
        json.key("referrers");
        writeReferrers(json, instance);
    }
    if (detail.derived) {
        json.key("derived");
        writeDerived(json, instance, *detail.derived);
    }
    json.endObject();
}

} // namespace vnifc::tool
