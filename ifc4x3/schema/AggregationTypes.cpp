#include "VnIFC4X3SchemaBuilder.h"

#include <IFC4X3/Dictionary.h>

namespace IFC4X3 {

using namespace VN_SDAI;

namespace {

std::unique_ptr<VnIfcIntegerBound> bound(int value) {
    return value == kUnbounded ? std::make_unique<VnIfcIntegerBound>() : std::make_unique<VnIfcIntegerBound>(value);
}

std::unique_ptr<VnIfcAggregationType> aggregation(const dictionary::AggregationRecord& row) {
    std::unique_ptr<VnIfcIntegerBound> lower = bound(row.lower);
    std::unique_ptr<VnIfcIntegerBound> upper = bound(row.upper);
    auto typeCode = std::make_unique<VnTypeCode>(VnTypeCodeKind::kAggregation);
    std::unique_ptr<VnIfcAggregationType> type;
    switch (row.kind) {
    case dictionary::AggregationKind::kSet:
        type.reset(new VnIfcSetType(nullptr, lower.release(), upper.release()));
        break;
    case dictionary::AggregationKind::kList:
        type.reset(new VnIfcListType(nullptr, lower.release(), upper.release(), false));
        break;
    case dictionary::AggregationKind::kArray:
        type.reset(new VnIfcArrayType(nullptr, lower.release(), upper.release(), false, false));
        break;
    }
    type->type(typeCode.release());
    return type;
}

} // namespace

void VnIFC4X3SchemaBuilder::addAggregations() {
    m_elementTypes.reserve(dictionary::aggregations.size());
    for (const dictionary::AggregationRecord& row : dictionary::aggregations) {
        std::unique_ptr<VnIfcAggregationType> type = aggregation(row);
        VnIfcAggregationType* key = type.get();
        Dictionary& types = row.named ? m_namedTypes : m_anonymousTypes;
        types.putAt(row.name, new VnIfcDefinedType(row.name, type.release(), true));
        m_elementTypes[key] = row.element;
    }
}

} // namespace IFC4X3
