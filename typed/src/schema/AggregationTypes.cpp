#include "SchemaBuilder.h"

#include <VnIfcTyped/Release.h>

namespace VN_SDAI::typed {

namespace {

std::unique_ptr<VnIfcIntegerBound> bound(int value) {
    return value == kUnbounded ? std::make_unique<VnIfcIntegerBound>() : std::make_unique<VnIfcIntegerBound>(value);
}

std::unique_ptr<VnIfcAggregationType> aggregation(const AggregationRecord& row) {
    std::unique_ptr<VnIfcIntegerBound> lower = bound(row.lower);
    std::unique_ptr<VnIfcIntegerBound> upper = bound(row.upper);
    auto typeCode = std::make_unique<VnTypeCode>(VnTypeCodeKind::kAggregation);
    std::unique_ptr<VnIfcAggregationType> type;
    switch (row.kind) {
    case AggregationKind::kSet:
        type.reset(new VnIfcSetType(nullptr, lower.release(), upper.release()));
        break;
    case AggregationKind::kList:
        type.reset(new VnIfcListType(nullptr, lower.release(), upper.release(), false));
        break;
    case AggregationKind::kArray:
        type.reset(new VnIfcArrayType(nullptr, lower.release(), upper.release(), false, false));
        break;
    }
    type->type(typeCode.release());
    return type;
}

} // namespace

void SchemaBuilder::addAggregations() {
    m_elementTypes.reserve(m_release.aggregations.size());
    for (const AggregationRecord& row : m_release.aggregations) {
        std::unique_ptr<VnIfcAggregationType> type = aggregation(row);
        VnIfcAggregationType* key = type.get();
        Dictionary& types = row.named ? m_namedTypes : m_anonymousTypes;
        types.putAt(row.name, new VnIfcDefinedType(row.name, type.release(), true));
        m_elementTypes[key] = row.element;
    }
}

} // namespace VN_SDAI::typed
