#include "DictionaryPage.h"
#include "pages/Json.h"
#include "pages/Page.h"

#include <VnIfcCore/VnIfcAggregationType.h>
#include <VnIfcCore/VnIfcEnumerationType.h>
#include <VnIfcCore/VnIfcFile.h>
#include <VnIfcCore/VnIfcSchema.h>
#include <VnIfcCore/VnIfcSelectType.h>
#include <VnIfcTyped/Entity.h>

#include <vnifc/Error.h>
#include <vnifc/Report.h>
#include <vnifc/version.h>

namespace vnifc {

namespace {

using namespace VN_SDAI;
using detail::Json;

std::string_view nameOf(const VnIfcEntityType& entity) { return entity.entityClass()->name; }

/// The dictionary's records of attributes say nothing of OPTIONAL; the rows of the class do.
bool isOptional(const VnIfcEntityType& entity, const VnAnsiString& attribute) {
    for (const typed::AttributeRow& row : entity.entityClass()->attributes)
        if (attribute == row.name)
            return row.mark == typed::kOptional;
    return false;
}

void writeAttribute(Json& json, const VnIfcEntityType& entity, const VnIfcAttributeDefinition& attribute) {
    json.begin('{').key("name").put(attribute.name().view());
    if (const auto* derived = dynamic_cast<const VnIfcDerivedAttributeDefinition*>(&attribute)) {
        json.key("kind").put("derived").key("type").put(derived->typeName().view());
        json.key("redeclares").put(derived->redeclaredName().view());
    } else if (const auto* inverse = dynamic_cast<const VnIfcInverseAttributeDefinition*>(&attribute)) {
        json.key("kind").put("inverse").key("type").put(inverse->typeName().view());
        json.key("inverts").put(inverse->invertedName().view());
    } else {
        json.key("kind").put("explicit").key("type").put(attribute.typeName().view());
        json.key("optional").put(isOptional(entity, attribute.name()) ? 1 : 0);
    }
    json.end('}');
}

void writeEntity(Json& json, const VnIfcEntityType& entity) {
    json.begin('{').key("kind").put("entity").key("name").put(nameOf(entity));
    json.key("abstract").put(entity.isAbstract() ? 1 : 0);
    json.key("supertype").put(entity.supertype() ? nameOf(*entity.supertype()) : std::string_view());
    json.key("attributes").begin('[');
    for (const VnIfcAttributeDefinition* attribute : entity.attributes())
        writeAttribute(json, entity, *attribute);
    json.end(']').end('}');
}

void writeNames(Json& json, std::string_view key, std::span<const VnAnsiString> names) {
    json.key(key).begin('[');
    for (const VnAnsiString& name : names)
        json.put(name.view());
    json.end(']');
}

std::string boundText(const VnIfcIntegerBound& bound) {
    return bound.isUnbounded() ? "?" : std::to_string(bound.value());
}

std::string aggregationText(const VnIfcAggregationType& type) {
    std::string kind = "array";
    if (dynamic_cast<const VnIfcSetType*>(&type))
        kind = "set";
    else if (dynamic_cast<const VnIfcListType*>(&type))
        kind = "list";
    return kind + " [" + boundText(type.lowerBound()) + ":" + boundText(type.upperBound()) + "] of " +
           std::string(type.elementTypeName().view());
}

void writeType(Json& json, const VnIfcDefinedType& type) {
    const VnIfcParameterType* beneath = type.underlyingType();
    json.begin('{').key("name").put(type.name().view()).key("kind");
    if (!type.underlyingName().isEmpty()) {
        json.put("type").key("type").put(type.underlyingName().view());
    } else if (const auto* enumeration = dynamic_cast<const VnIfcEnumerationType*>(beneath)) {
        json.put("enumeration");
        writeNames(json, "literals", enumeration->literals());
    } else if (const auto* select = dynamic_cast<const VnIfcSelectType*>(beneath)) {
        json.put("select");
        writeNames(json, "members", select->memberNames());
    } else if (const auto* aggregation = dynamic_cast<const VnIfcAggregationType*>(beneath)) {
        json.put("type").key("type").put(aggregationText(*aggregation));
    } else {
        const auto* string = dynamic_cast<const VnIfcStringType*>(beneath);
        const std::string width = string && string->width() > 0 ? " (" + std::to_string(string->width()) + ")" : "";
        json.put("type").key("type").put("STRING" + width + (string && string->isFixed() ? " FIXED" : ""));
    }
    json.end('}');
}

} // namespace

std::string dictionaryPage(std::string_view release) {
    const VnIfcFile file = vnCreateFile(release); // keeps the module
    if (!file)
        throw FileError("cannot show the dictionary of " + std::string(release) + ": " + file.result().message);
    const VnIfcSchema& schema = *file.model().schema();
    Json json;
    json.begin('{').key("release").put(file.release()->name).key("title").put(file.release()->title);
    json.key("program").put("vnifc " + std::string(version())).key("records").begin('[');
    for (const auto& entry : schema.entities())
        writeEntity(json, dynamic_cast<const VnIfcEntityType&>(*entry.instance));
    for (const auto& entry : schema.namedTypes())
        if (const auto* type = dynamic_cast<const VnIfcDefinedType*>(&*entry.instance))
            writeType(json, *type);
    json.end(']').end('}');
    return detail::pageWith(detail::kDictionaryPage, {{"dictionary", json.take()}});
}

} // namespace vnifc
