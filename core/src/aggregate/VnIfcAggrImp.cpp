#include <VnIfcCore/VnIfcListAggr.h>
#include <VnIfcCore/VnIfcSetAggr.h>

namespace VN_SDAI {

VnIfcAggrImp* VnIfcAggrImp::allocate(std::size_t capacity) const {
    if (capacity > kMaxCount)
        throw std::length_error("too many elements for an aggregate");
    VnStorage storage;
    void* memory = vnAllocate(sizeof(VnIfcAggrImp) + capacity * elementSize(), storage);
    VnIfcAggrHead head;
    head.capacity = static_cast<std::uint32_t>(capacity) & kMaxCount;
    head.storage = static_cast<std::uint32_t>(storage) & 3;
    return stamp(memory, head);
}

std::size_t VnIfcAggrImp::grownCapacity() const {
    const std::size_t now = capacity();
    // The refusal of a full aggregate is left to allocate.
    return now == kMaxCount ? now + 1 : std::min<std::size_t>(2 * now + 1, kMaxCount);
}

void VnIfcAggrImp::sortUnique(std::vector<const void*>& elements, bool (*less)(const void*, const void*)) {
    std::stable_sort(elements.begin(), elements.end(), less);
    // In ascending order, the left of two neighbours is less than the right one or equal to it.
    const auto equal = [less](const void* left, const void* right) { return !less(left, right); };
    elements.erase(std::unique(elements.begin(), elements.end(), equal), elements.end());
}

template class VnIfcAggrImpOf<VnDbObjectId>;
template class VnIfcAggrImpOf<double>;
template class VnIfcAggrImpOf<int>;
template class VnIfcAggrImpOf<VnAnsiString>;
template class VnIfcAggrImpOf<VnIfcListAggr<VnDbObjectId>>;
template class VnIfcAggrImpOf<VnIfcListAggr<double>>;
template class VnIfcAggrImpOf<VnIfcListAggr<int>>;

template class VnIfcUnOrderedAggrImp<VnDbObjectId>;
template class VnIfcUnOrderedAggrImp<double>;
template class VnIfcUnOrderedAggrImp<int>;
template class VnIfcUnOrderedAggrImp<VnAnsiString>;

template class VnIfcOrderedAggrImp<VnDbObjectId>;
template class VnIfcOrderedAggrImp<double>;
template class VnIfcOrderedAggrImp<int>;
template class VnIfcOrderedAggrImp<VnAnsiString>;
template class VnIfcOrderedAggrImp<VnIfcListAggr<VnDbObjectId>>;
template class VnIfcOrderedAggrImp<VnIfcListAggr<double>>;
template class VnIfcOrderedAggrImp<VnIfcListAggr<int>>;

} // namespace VN_SDAI
