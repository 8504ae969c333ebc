#include "DictionaryRecord.h"

#include <VnIfcCore/VnIfcAggregationType.h>
#include <VnIfcCore/VnIfcConsts.h>
#include <VnIfcCore/VnIfcEnumerationType.h>
#include <VnIfcCore/VnIfcSelectType.h>
#include <VnIfcTyped/Entity.h>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <stdexcept>

namespace vnifc::tool {

using namespace VN_SDAI;
using Json = nlohmann::ordered_json;

namespace {

Json text(const VnAnsiString& name) { return std::string(name.view()); }

Json textOrNull(const VnAnsiString& name) { return name.isEmpty() ? Json() : text(name); }

Json texts(std::span<const VnAnsiString> names) {
    Json list = Json::array();
    for (const VnAnsiString& name : names)
        list.push_back(text(name));
    return list;
}

Json bound(const VnIfcIntegerBound& bound) { return bound.isUnbounded() ? Json() : Json(bound.value()); }

Json cardinality(int value) { return value == Consts::VnIntUnset ? Json() : Json(value); }

const char* nameOfKind(const VnIfcAggregationType& type) {
    if (dynamic_cast<const VnIfcSetType*>(&type))
        return "set";
    return dynamic_cast<const VnIfcListType*>(&type) ? "list" : "array";
}

/// The dictionary's records of attributes say nothing of OPTIONAL; the rows of the class do.
bool isOptional(const VnIfcEntityType& entity, const VnAnsiString& attribute) {
    for (const typed::AttributeRow& row : entity.entityClass()->attributes)
        if (attribute == row.name)
            return row.mark == typed::kOptional;
    return false;
}

Json recordOf(const VnIfcEntityType& entity, const VnIfcAttributeDefinition& attribute) {
    Json json{{"name", text(attribute.name())}};
    if (const auto* derived = dynamic_cast<const VnIfcDerivedAttributeDefinition*>(&attribute)) {
        json["kind"] = "derived";
        json["type"] = text(derived->typeName());
        json["redeclares"] = textOrNull(derived->redeclaredName());
    } else if (const auto* inverse = dynamic_cast<const VnIfcInverseAttributeDefinition*>(&attribute)) {
        json["kind"] = "inverse";
        json["entity"] = text(inverse->typeName());
        json["attribute"] = text(inverse->invertedName());
        json["lower"] = cardinality(inverse->minimum());
        json["upper"] = cardinality(inverse->maximum());
    } else {
        json["kind"] = "explicit";
        json["type"] = text(attribute.typeName());
        json["optional"] = isOptional(entity, attribute.name());
    }
    return json;
}

} // namespace

std::string versionOf(const VnIfcSchema& schema) {
    return fmt::format("{}.{}", static_cast<int>(schema.majorVersion()), static_cast<int>(schema.minorVersion()));
}

Json recordOf(const VnIfcDefinedType& type) {
    Json json{{"name", text(type.name())}};
    const VnIfcParameterType* beneath = type.underlyingType();
    if (!type.underlyingName().isEmpty()) {
        json["kind"] = "defined";
        json["underlying"] = text(type.underlyingName());
    } else if (const auto* enumeration = dynamic_cast<const VnIfcEnumerationType*>(beneath)) {
        json["kind"] = "enumeration";
        json["literals"] = texts(enumeration->literals());
    } else if (const auto* select = dynamic_cast<const VnIfcSelectType*>(beneath)) {
        json["kind"] = "select";
        json["members"] = texts(select->memberNames());
    } else if (const auto* aggregation = dynamic_cast<const VnIfcAggregationType*>(beneath)) {
        json["kind"] = "aggregation";
        json["aggregation"] = nameOfKind(*aggregation);
        json["lower"] = bound(aggregation->lowerBound());
        json["upper"] = bound(aggregation->upperBound());
        json["element"] = text(aggregation->elementTypeName());
    } else if (const auto* string = dynamic_cast<const VnIfcStringType*>(beneath)) {
        json["kind"] = "string";
        json["fixed"] = string->isFixed();
        json["width"] = string->width();
    } else {
        throw std::logic_error("the dictionary has a type of unknown kind: " + std::string(type.name().view()));
    }
    return json;
}

Json recordOf(const VnIfcEntityType& entity) {
    Json json{{"name", text(entity.name())}};
    json["supertype"] = entity.supertype() ? text(entity.supertype()->name()) : Json();
    json["abstract"] = entity.isAbstract();
    json["attributes"] = Json::array();
    for (const VnIfcAttributeDefinition* attribute : entity.attributes())
        json["attributes"].push_back(recordOf(entity, *attribute));
    return json;
}

} // namespace vnifc::tool
