#include <exchange/AggregateFields.h>

namespace IFC4X3 {

using VN_SDAI::VnTypeCodeKind;

bool readSelectAggregate(VN_SDAI::VnIfcAggr& aggregate, VN_SDAI::VnSpfFilerBase& filer) {
    aggregate.clear();
    switch (aggregate.elementKind()) {
    case VnTypeCodeKind::kReal:
        return readElements<double>(aggregate, filer);
    case VnTypeCodeKind::kInteger:
        return readElements<int>(aggregate, filer);
    case VnTypeCodeKind::kEntity:
        return readElements<VN_SDAI::VnDbObjectId>(aggregate, filer);
    default:
        return false;
    }
}

void writeSelectAggregate(const VN_SDAI::VnIfcAggr& aggregate, VN_SDAI::VnSpfFilerBase& filer) {
    switch (aggregate.elementKind()) {
    case VnTypeCodeKind::kReal:
        return writeElements<double>(aggregate, filer, false);
    case VnTypeCodeKind::kInteger:
        return writeElements<int>(aggregate, filer, false);
    case VnTypeCodeKind::kEntity:
        return writeElements<VN_SDAI::VnDbObjectId>(aggregate, filer, false);
    default:
        return filer.wrChar('$');
    }
}

} // namespace IFC4X3
