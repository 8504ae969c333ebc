#include <VnIfcCore/VnIfcSimpleProperty.h>

#include <VnIfcCore/VnIfcComplexProperty.h>
#include <VnIfcCore/VnIfcEntityBase.h>
#include <VnIfcCore/VnIfcLogical.h>
#include <VnIfcCore/VnIfcPropertyCollection.h>
#include <VnIfcCore/VnIfcQuantityClusterProperty.h>
#include <VnIfcCore/VnIfcVariantTypeSelect.h>

#include <stdexcept>

namespace VN_SDAI {

namespace {

/// The instance of a property, open as long as this object lives.
class Opened {
public:
    Opened(const VnDbObjectId& handle, OpenMode mode) : m_handle(handle), m_instance(handle.openObject(mode)) {}
    ~Opened() {
        if (m_instance)
            m_handle.close();
    }
    Opened(const Opened&) = delete;
    Opened& operator=(const Opened&) = delete;

    VnIfcEntityBase* get() const noexcept { return m_instance; }

private:
    const VnDbObjectId& m_handle;
    VnIfcEntityBase* m_instance;
};

/// The select in a variant; null when it holds something else.
VnIfcSelect* selectIn(const VnIfcVariant& value) {
    const bool isSelect = value.type() && value.type()->isSelect();
    const auto* type = isSelect ? dynamic_cast<const VnIfcSelectVariantType*>(value.type()) : nullptr;
    return type ? type->selectIn(value) : nullptr;
}

template <class T, class Taken>
bool take(VnIfcSelect& select, VN::ErrorStatus (VnIfcSelect::*set)(Taken), const VnIfcVariant& value) {
    T converted{};
    if (!value.getAs(converted))
        return false;
    return (select.*set)(converted) == VN::eOk;
}

/// Gives the chosen member of a select a new value.
bool take(VnIfcSelect& select, const VnIfcVariant& value) {
    switch (select.kind()) {
    case VnTypeCodeKind::kString:
        return take<VnAnsiString>(select, &VnIfcSelect::setString, value);
    case VnTypeCodeKind::kBinary:
        return take<VnAnsiString>(select, &VnIfcSelect::setBINARY, value);
    case VnTypeCodeKind::kInteger:
        return take<int>(select, &VnIfcSelect::setInt32, value);
    case VnTypeCodeKind::kReal:
        return take<double>(select, &VnIfcSelect::setDouble, value);
    case VnTypeCodeKind::kBoolean:
        return take<VnIfcBoolean>(select, &VnIfcSelect::setBoolean, value);
    case VnTypeCodeKind::kLogical:
        return take<VnIfcLogical>(select, &VnIfcSelect::setLogical, value);
    default:
        return false;
    }
}

} // namespace

// ---- VnIfcSimpleProperty

VnIfcSimpleProperty::VnIfcSimpleProperty(const VnDbObjectId& object, std::vector<VnAnsiString> attributes)
    : m_object(object), m_attributes(std::move(attributes)) {
    if (m_attributes.empty())
        throw std::invalid_argument("simple property: no attribute");
}

VnIfcSimpleProperty::~VnIfcSimpleProperty() = default;

bool VnIfcSimpleProperty::isFor(const VnIfcEntityBase* instance) const {
    return instance && (!entity() || instance->isKindOf(entity()));
}

VN::ErrorStatus VnIfcSimpleProperty::getAttribute(const VnIfcEntityBase* instance, VnIfcVariant& value) const {
    return isFor(instance) && instance->getAttr(m_attributes.front(), value) ? VN::eOk : VN::eRefused;
}

VN::ErrorStatus VnIfcSimpleProperty::putAttribute(VnIfcEntityBase* instance, const VnIfcVariant& value) const {
    if (!isFor(instance) || value.isNull())
        return VN::eRefused;
    return instance->putAttr(m_attributes.front(), value) ? VN::eOk : VN::eRefused;
}

VN::ErrorStatus VnIfcSimpleProperty::getValue(VnIfcVariant& value) const {
    const Opened opened(m_object, kForRead);
    VnIfcVariant held;
    if (m_attributes.size() != 1 || getAttribute(opened.get(), held) != VN::eOk)
        return VN::eRefused;
    if (const VnIfcSelect* select = selectIn(held)) {
        VnIfcVariant chosen;
        select->toVariant(chosen);
        held = std::move(chosen);
    }
    value = std::move(held);
    return VN::eOk;
}

VN::ErrorStatus VnIfcSimpleProperty::putValue(const VnIfcVariant& value) const {
    const Opened opened(m_object, kForWrite);
    if (m_attributes.size() != 1 || !isFor(opened.get()) || value.isNull())
        return VN::eRefused;
    const bool isTaken = putAttribute(opened.get(), value) == VN::eOk || putChosen(*opened.get(), value);
    return isTaken ? VN::eOk : VN::eRefused;
}

bool VnIfcSimpleProperty::putChosen(VnIfcEntityBase& instance, const VnIfcVariant& value) const {
    VnIfcVariant held;
    if (!instance.getAttr(m_attributes.front(), held) || !selectIn(held))
        return false;
    // A copy, so that the instance notices the change and keeps its value if this one is refused.
    VnIfcVariant copy;
    if (!held.type()->createVariant(copy) || !VnIfcSelect::_subFromValueType(held, *selectIn(copy)))
        return false;
    return take(*selectIn(copy), value) && instance.putAttr(m_attributes.front(), copy);
}

bool VnIfcSimpleProperty::subProperties(VnIfcPropertyCollection& parts) const {
    if (m_attributes.size() == 1)
        return false;
    for (const VnAnsiString& attribute : m_attributes) {
        auto part = std::make_unique<VnIfcSimpleProperty>(m_object, std::vector<VnAnsiString>{attribute});
        part->init(attribute, type(), entity());
        parts.add(part.release());
    }
    return true;
}

// ---- VnIfcComplexProperty

VnIfcComplexProperty::VnIfcComplexProperty(const VnDbObjectId& object, VnAnsiString members, Builder builder)
    : VnIfcSimpleProperty(object, {std::move(members)}), m_builder(builder) {}

VnIfcComplexProperty::~VnIfcComplexProperty() = default;

VN::ErrorStatus VnIfcComplexProperty::getValue(VnIfcVariant&) const { return VN::eRefused; }

VN::ErrorStatus VnIfcComplexProperty::putValue(const VnIfcVariant&) const { return VN::eRefused; }

bool VnIfcComplexProperty::subProperties(VnIfcPropertyCollection& parts) const {
    const Opened opened(object(), kForRead);
    VnIfcVariant held;
    VnIfcArray<VnDbObjectId> members;
    if (getAttribute(opened.get(), held) != VN::eOk || !held.getAs(members))
        return false;
    for (const VnDbObjectId& member : members) {
        VnIfcProperty* property = nullptr;
        int code = 0;
        const Opened openedMember(member, kForRead);
        m_builder(openedMember.get(), property, code);
        if (property)
            parts.add(property);
    }
    return true;
}

// ---- VnIfcQuantityClusterProperty

VnIfcQuantityClusterProperty::VnIfcQuantityClusterProperty(const VnDbObjectId& object, const VnAnsiString& attribute)
    : VnIfcSimpleProperty(object, {attribute}) {}

VnIfcQuantityClusterProperty::~VnIfcQuantityClusterProperty() = default;

} // namespace VN_SDAI
