#include <VnIfcCore/VnIfcVariant.h>
#include <VnIfcCore/VnIfcVariantTypeAggregate.h>

namespace VN_SDAI {

namespace {

void*& heapValue(void* payload) noexcept { return *static_cast<void**>(payload); }

void* heapCopy(const VnIfcVariantType& type, const void* source) {
    const IVnIfcVariantTypeObjectAllocator& allocator = *type.objectMemAllocator();
    return source ? allocator.copy(source) : allocator.create();
}

} // namespace

constinit const VnIfcVariantStorage vnIfcHeapStorage{
    .emplace = [](const VnIfcVariantType& type, void* payload,
                  const void* value) { heapValue(payload) = heapCopy(type, value); },
    .copy = [](const VnIfcVariantType& type, void* payload,
               const void* source) { heapValue(payload) = heapCopy(type, *static_cast<void* const*>(source)); },
    .destroy = [](const VnIfcVariantType& type,
                  void* payload) noexcept { type.objectMemAllocator()->destroy(heapValue(payload)); },
    .onHeap = true};

VnIfcVariant::VnIfcVariant(const VnIfcVariantType& type, const void* value) : m_type(&type) {
    if (type.storage())
        type.storage()->emplace(type, m_payload, value);
    else if (value)
        std::memcpy(m_payload, value, type.size());
}

void VnIfcVariant::copyPayload(const VnIfcVariant& other) {
    if (m_type && m_type->storage())
        m_type->storage()->copy(*m_type, m_payload, other.m_payload);
    else
        std::memcpy(m_payload, other.m_payload, sizeof m_payload);
}

void VnIfcVariant::setHeapStorageValue(const void* source) {
    void* const copy = heapCopy(*m_type, source);
    m_type->objectMemAllocator()->destroy(std::exchange(heapValue(m_payload), copy));
}

bool VnIfcVariant::convertTo(const VnIfcVariantType& target, VnIfcVariant& result) const {
    if (!m_type)
        return false;
    return m_type->toValueType(target, *this, result) || target.fromValueType(*this, result);
}

bool VnIfcVariant::toString(VrString& text, StringFormat format) const {
    return m_type && m_type->toString(text, *this, format);
}

bool operator==(const VnIfcVariant& left, const VnIfcVariant& right) {
    if (left.m_type != right.m_type)
        return false;
    return !left.m_type || left.m_type->subEqualTo(left.payload(), right.payload());
}

VnIfcVariant vnStorable(const VnIfcVariant& value) {
    VnIfcVariant storable;
    if (value.isNull())
        return storable;
    if (value.type()->enumeration()) {
        value.convertTo(VnIfcVariantType::Desc<unsigned long>::value(), storable);
        return storable;
    }
    const auto* list = dynamic_cast<const VnIfcAggrPtrVariantType*>(value.type());
    if (list && list->arrayType() && value.convertTo(*list->arrayType(), storable))
        return storable;
    return value;
}

} // namespace VN_SDAI
