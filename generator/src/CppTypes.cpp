#include "CppTypes.h"

namespace expgen {
namespace {

// "?" as a template argument of the bounded aggregates.
constexpr int kUnboundedArgument = 65536;

bool isUnbounded(const Layer& layer) { return layer.lower.value == 0 && !layer.upper.value; }

std::string aggregateType(const Layer& layer, const std::string& element) {
    const std::string name = layer.kind == AggregateKind::kSet || layer.kind == AggregateKind::kBag
                                 ? "VN_SDAI::VnIfcSetAggr"
                                 : "VN_SDAI::VnIfcListAggr";
    if (isUnbounded(layer))
        return name + "<" + element + ">";
    return name + "Bounded<" + element + ", " + std::to_string(layer.lower.value.value_or(0)) + ", " +
           std::to_string(layer.upper.value.value_or(kUnboundedArgument)) + ">";
}

} // namespace

std::string valueType(const Type& type) {
    switch (type.kind) {
    case Kind::kBoolean:
        return "VN_SDAI::VnIfcBoolean";
    case Kind::kEntity:
        return "VN_SDAI::VnDbObjectId";
    case Kind::kEnumeration:
    case Kind::kSelect:
        return type.name;
    case Kind::kGuid:
        return "VN_SDAI::VnIfcGUID";
    case Kind::kInteger:
        return "int";
    case Kind::kLogical:
        return "VN_SDAI::VnIfcLogical";
    case Kind::kReal:
        return "double";
    case Kind::kBinary:
    case Kind::kString:
        break;
    }
    return "VN_SDAI::VnAnsiString";
}

std::string memberType(const Type& type) {
    const std::string element = valueType(type);
    if (type.layers.empty())
        return element;
    if (type.layers.size() == 1)
        return aggregateType(type.layers[0], element);
    // Bounds of nested lists are kept nowhere, so that one class serves them all.
    return "VN_SDAI::VnIfcListAggrCompound<VN_SDAI::VnIfcListAggr<" + element + ">>";
}

std::string arrayType(const Type& type) {
    std::string result = valueType(type);
    for (std::size_t i = 0; i < type.layers.size(); ++i)
        result = "VN_SDAI::VnIfcArray<" + result + ">";
    return result;
}

std::string unsetInitialiser(const Type& type) {
    if (type.isAggregate())
        return "";
    switch (type.kind) {
    case Kind::kBinary:
    case Kind::kString:
        return "{VN_SDAI::VnUnsetText}";
    case Kind::kReal:
        return " = VN_SDAI::Consts::VnRealUnset";
    case Kind::kInteger:
        return " = VN_SDAI::Consts::VnIntUnset";
    default:
        return "";
    }
}

std::string boundText(const Bound& bound) { return bound.value ? std::to_string(*bound.value) : "kUnbounded"; }

} // namespace expgen
