#include <VnIfcCore/VnIfcVariant.h>
#include <VnRx/VrString.h>

#include <vector>

namespace VN_SDAI {

VnIfcVariantTypeLocker& vnifcGetVaraintTypeLocker() noexcept {
    static VnIfcVariantTypeLocker locker;
    return locker;
}

// ---- VnIfcVariantTypeSlot

namespace {

/// Keeps a descriptor that is never released in reach, so that checks for leaks tell it from a lost one.
void keepForever(const VnIfcVariantType* descriptor) {
    static auto& all = *new std::vector<const VnIfcVariantType*>;
    const VnIfcAutoLocker guard(vnifcGetVaraintTypeLocker());
    all.push_back(descriptor);
}

} // namespace

const VnIfcVariantType& VnIfcVariantTypeSlot::make() {
    if (!m_isLocked)
        return createAndPublish();
    const VnIfcAutoLocker guard(vnifcGetVaraintTypeLocker());
    const VnIfcVariantType* type = m_type.load(std::memory_order_acquire);
    return type ? *type : createAndPublish();
}

const VnIfcVariantType& VnIfcVariantTypeSlot::createAndPublish() {
    VnIfcVariantType* const made = m_create();
    ++*m_living;
    // Where there is no lock, a later store wins; the earlier descriptor stays, for its users have its address.
    if (const VnIfcVariantType* earlier = m_type.exchange(made, std::memory_order_acq_rel))
        keepForever(earlier);
    return *made;
}

void VnIfcVariantTypeSlot::release() noexcept {
    const VnIfcVariantType* type = m_type.exchange(nullptr, std::memory_order_acq_rel);
    if (!type)
        return;
    delete type;
    --*m_living;
}

// ---- VnIfcVariantType

VnIfcVariantType::~VnIfcVariantType() = default;

bool VnIfcVariantType::subEqualTo(const void* left, const void* right) const {
    return std::memcmp(left, right, m_size) == 0;
}

bool VnIfcVariantType::subToValueType(const VnIfcVariantType&, const VnIfcVariant&, VnIfcVariant&) const {
    return false;
}

bool VnIfcVariantType::subFromValueType(const VnIfcVariant&, VnIfcVariant&) const { return false; }

bool VnIfcVariantType::subToString(VrString&, const void*, StringFormat) const { return false; }

bool VnIfcVariantType::toValueType(const VnIfcVariantType& target, const VnIfcVariant& source,
                                   VnIfcVariant& result) const {
    if (source.type() != this)
        return false;
    if (&target != this)
        return subToValueType(target, source, result);
    result = source;
    return true;
}

bool VnIfcVariantType::fromValueType(const VnIfcVariant& source, VnIfcVariant& result) const {
    if (source.isNull())
        return false;
    if (source.type() != this)
        return subFromValueType(source, result);
    result = source;
    return true;
}

bool VnIfcVariantType::toString(VrString& text, const VnIfcVariant& value, StringFormat format) const {
    return value.type() == this && subToString(text, value.payload(), format);
}

VnAnsiString VnIfcVariantType::typePath(const VnIfcVariant& value) const {
    return value.type() == this ? subTypePath(value) : VnAnsiString();
}

VnAnsiString VnIfcVariantType::subTypePath(const VnIfcVariant&) const { return {}; }

bool VnIfcVariantType::createVariant(VnIfcVariant& value) const {
    if (!m_storage)
        return false;
    value = VnIfcVariant(*this, nullptr);
    return true;
}

} // namespace VN_SDAI
