#include <VnIfcTyped/Release.h>

namespace VN_SDAI::typed {

namespace {

void releaseIfAny(VnIfcVariantTypeSlot* slot) noexcept {
    if (slot)
        slot->release();
}

} // namespace

void releaseDescriptors(const Release& release) noexcept {
    for (const EnumerationClass* type : release.enumerationClasses)
        type->descriptor->release();
    for (const SelectClass* type : release.selectClasses) {
        type->descriptors.value->release();
        type->descriptors.pointer->release();
    }
    for (const SelectClass* type : release.selectClasses) {
        releaseIfAny(type->descriptors.array);
        releaseIfAny(type->descriptors.aggregate);
    }
}

} // namespace VN_SDAI::typed
