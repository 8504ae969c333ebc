#include "JsonInstance.h"
#include "Messages.h"
#include "WholeModel.h"

#include <fmt/format.h>
#include <vnifc/Properties.h>

#include <algorithm>

namespace vnifc::tool {

namespace {

std::string described(const Instance& instance) { return Value(instance).toString(TextForm::kDescribed); }

/// A value for people, without the signs that a file needs: text as it is, lists with commas.
std::string inWords(const PropertyValue& value) {
    std::string words =
        value.value.kind() == Value::Kind::kInstance ? described(value.value.as<Instance>()) : value.value.toString();
    if (value.unit)
        words += ' ' + signOf(value.unit) + (value.hasOwnUnit ? " (own unit)" : "");
    return words;
}

std::string inWords(const Property& property) {
    if (property.values.size() == 1)
        return inWords(property.values.front());
    std::vector<std::string> values;
    for (const PropertyValue& value : property.values)
        values.push_back(fmt::format("{} {}", value.attribute, inWords(value)));
    return fmt::format("{}", fmt::join(values, "; "));
}

/// In characters.
std::size_t widthOf(std::string_view utf8) {
    return static_cast<std::size_t>(std::ranges::count_if(utf8, [](char c) { return (c & 0xC0) != 0x80; }));
}

void printProperties(const std::vector<Property>& properties, std::size_t indent) {
    std::size_t nameWidth = 0, valueWidth = 0;
    for (const Property& property : properties) {
        nameWidth = std::max(nameWidth, widthOf(property.name));
        // A long text is no reason to send the types of all others out of sight.
        valueWidth = std::max(valueWidth, std::min<std::size_t>(widthOf(inWords(property)), 40));
    }
    for (const Property& property : properties) {
        const std::string type = property.values.empty() ? "" : property.values.front().type;
        std::string line =
            fmt::format("{:{}}{:<{}}  {:<{}}  {}{}", "", indent, printable(property.name), nameWidth,
                        printable(inWords(property)), valueWidth, type, property.isOverridden ? " (overridden)" : "");
        line.erase(line.find_last_not_of(' ') + 1);
        fmt::print("{}\n", line);
        printProperties(property.parts, indent + 2);
    }
}

void printText(const Instance& object, const std::vector<PropertySet>& sets) {
    fmt::print("{}\n", printable(described(object)));
    for (const PropertySet& set : sets) {
        const std::string keyword(set.instance.keyword());
        const std::string kind = set.name.empty() ? "" : ' ' + keyword;
        const std::string from = set.owner == object ? "" : ", from its type " + described(set.owner);
        fmt::print("\n{} (#{}{}{})\n", printable(set.name.empty() ? keyword : set.name), set.instance.id(), kind,
                   printable(from));
        printProperties(set.properties, 2);
    }
    if (sets.empty())
        fmt::print("no property sets\n");
}

/// Writes objects with keyword and name.
class PropertyWriter {
public:
    explicit PropertyWriter(JsonWriter& json) : m_json(json), m_plain(json), m_described(json) {}

    void write(const Instance& object, const std::vector<PropertySet>& sets) {
        begin(object, object.name());
        list("sets", sets, [this](const PropertySet& set) { write(set); });
        m_json.endObject();
    }

private:
    template <class Elements, class Write>
    void list(const char* key, const Elements& elements, Write write) {
        m_json.key(key);
        m_json.beginArray();
        for (const auto& element : elements)
            write(element);
        m_json.endArray();
    }

    void begin(const Instance& instance, const std::string& name) {
        m_json.beginObject();
        m_json.key("id");
        instance ? m_json.number(instance.id()) : m_json.null();
        m_json.key("type");
        instance ? m_json.string(instance.keyword()) : m_json.null();
        m_json.key("name");
        name.empty() ? m_json.null() : m_json.string(name);
    }

    void write(const PropertySet& set) {
        begin(set.instance, set.name);
        m_json.key("from");
        m_described.instance(set.owner);
        list("properties", set.properties, [this](const Property& property) { write(property); });
        m_json.endObject();
    }

    void write(const Property& property) {
        begin(property.instance, property.name);
        m_json.key("overridden");
        m_json.boolean(property.isOverridden);
        list("values", property.values, [this](const PropertyValue& value) { write(value); });
        list("properties", property.parts, [this](const Property& part) { write(part); });
        m_json.endObject();
    }

    void write(const PropertyValue& value) {
        m_json.beginObject();
        m_json.key("attribute");
        m_json.string(value.attribute);
        m_json.key("value");
        visitValue(value.value, m_plain);
        m_json.key("unit");
        value.unit ? writeUnit(value) : m_json.null();
        m_json.endObject();
    }

    void writeUnit(const PropertyValue& value) {
        m_json.beginObject();
        m_json.key("sign");
        m_json.string(signOf(value.unit));
        m_json.key("ref");
        m_json.number(value.unit.id());
        m_json.key("from");
        m_json.string(value.hasOwnUnit ? "property" : "project");
        m_json.endObject();
    }

    JsonWriter& m_json;
    JsonValues m_plain;
    DescribedJsonValues m_described;
};

void printJson(const Instance& object, const std::vector<PropertySet>& sets) {
    Output output(writeToStandardOutput);
    JsonWriter json(output);
    PropertyWriter(json).write(object, sets);
    json.newLine();
    output.flush();
}

} // namespace

ExitCode props(const ReadFlags& flags, const std::string& address, bool json) {
    const Model model = openModel(flags);
    const Instance object = model.at(address);
    (json ? printJson : printText)(object, propertySets(object));
    return exitCodeOf(model);
}

} // namespace vnifc::tool
