#include <exchange/AggregateFields.h>

namespace VN_SDAI::typed {

bool readSelectAggregate(VnIfcAggr& aggregate, VnSpfFilerBase& filer) {
    aggregate.clear();
    switch (aggregate.elementKind()) {
    case VnTypeCodeKind::kReal:
        return readElements<double>(aggregate, filer);
    case VnTypeCodeKind::kInteger:
        return readElements<int>(aggregate, filer);
    case VnTypeCodeKind::kEntity:
        return readElements<VnDbObjectId>(aggregate, filer);
    default:
        return false;
    }
}

void writeSelectAggregate(const VnIfcAggr& aggregate, VnSpfFilerBase& filer) {
    switch (aggregate.elementKind()) {
    case VnTypeCodeKind::kReal:
        return writeElements<double>(aggregate, filer, false);
    case VnTypeCodeKind::kInteger:
        return writeElements<int>(aggregate, filer, false);
    case VnTypeCodeKind::kEntity:
        return writeElements<VnDbObjectId>(aggregate, filer, false);
    default:
        return filer.wrChar('$');
    }
}

} // namespace VN_SDAI::typed
