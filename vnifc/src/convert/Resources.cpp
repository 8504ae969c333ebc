#include "Computed.h"
#include "Conversion.h"

// Documents, classifications, materials and profiles.
namespace vnifc::conversion {

Value mimeType(Conversion& conversion, const Record&, const Value& value) {
    const Record format = conversion.record(value);
    const std::string_view type = format["MimeContentType"].content();
    const std::string_view subtype = format["MimeSubtype"].content();
    if (!type.empty() || !subtype.empty())
        return Value::string(std::string(type) + (type.empty() || subtype.empty() ? "" : "/") + std::string(subtype));
    return format["FileExtension"].isSet() ? format["FileExtension"] : Value();
}

Value facetText(Conversion& conversion, const Record&, const Value& value) {
    return conversion.record(value)["NotationValue"];
}

Value facetsText(Conversion& conversion, const Record&, const Value& value) {
    std::string text;
    for (const Value& each : value.items) {
        const Record facet = conversion.record(each);
        if (facet["NotationValue"].isSet())
            text.append(text.empty() ? "" : ".").append(facet["NotationValue"].content());
    }
    return text.empty() ? Value() : Value::string(text);
}

/// The materials of constituents or profiles, each once.
Value materialsOf(Conversion& conversion, const Record&, const Value& value) {
    Values found;
    for (const Value& each : value.items) {
        const Value material = conversion.record(each)["Material"];
        if (!material.is(Value::Kind::kReference) || !conversion.typeInTarget(material.number))
            continue;
        bool isNew = true;
        for (const Value& other : found)
            isNew = isNew && other.number != material.number;
        if (isNew)
            found.push_back(material);
    }
    return found.empty() ? Value() : Value::list(std::move(found));
}

/// The profile that profile properties are about.
Value profileOfProperties(Conversion& conversion, const Record&, const Value& value) {
    const Value profile = conversion.record(value)["ProfileDefinition"];
    return profile.is(Value::Kind::kReference) && conversion.typeInTarget(profile.number) ? profile : Value();
}

Value profileSetOfProperties(Conversion& conversion, const Record& record, const Value& value) {
    const Value profile = profileOfProperties(conversion, record, value);
    if (!profile.isSet())
        return {};
    const std::string number = '#' + std::to_string(profile.number);
    return conversion.make("IFCMATERIALPROFILESET($,$,(IFCMATERIALPROFILE($,$,$," + number + ",$,$)),$)");
}

} // namespace vnifc::conversion
