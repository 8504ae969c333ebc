#include <types/Descriptors.h>

#include <IFC4X3/Descriptors.h>
#include <IFC4X3/Dictionary.h>

namespace IFC4X3 {

constinit std::atomic<std::size_t> descriptorCount{0};

std::size_t livingDescriptors() noexcept { return descriptorCount; }

std::wstring aggregateName(const char* prefix, const char* select, const char* suffix) {
    const std::string name = std::string(prefix).append(Select::kSchemaName).append("::").append(select).append(suffix);
    return {name.begin(), name.end()};
}

void releaseEnumerationDescriptors() noexcept {
    for (const EnumerationClass* type : dictionary::enumerationClasses)
        type->descriptor->release();
}

void releaseSelectDescriptors() noexcept {
    for (const SelectClass* type : dictionary::selectClasses) {
        type->descriptors.value->release();
        type->descriptors.pointer->release();
    }
}

void releaseAggregateDescriptors() noexcept {
    for (const SelectClass* type : dictionary::selectClasses) {
        if (!type->descriptors.array)
            continue;
        type->descriptors.array->release();
        type->descriptors.aggregate->release();
    }
}

} // namespace IFC4X3
