#include <VnIfcCore/VnIfcEntityType.h>
#include <VnIfcCore/VnIfcPropertyCollection.h>
#include <VnIfcCore/VnIfcVariant.h>

#include <iterator>
#include <stdexcept>

namespace VN_SDAI {

// ---- VnIfcProperty

VnIfcProperty::~VnIfcProperty() = default;

VN::ErrorStatus VnIfcProperty::getValue(VnIfcVariant&) const { return VN::eRefused; }

VN::ErrorStatus VnIfcProperty::putValue(const VnIfcVariant&) const { return VN::eRefused; }

bool VnIfcProperty::subProperties(VnIfcPropertyCollection&) const { return false; }

void VnIfcProperty::init(VnAnsiString name, const VnIfcVariantType* type, const VnIfcEntityType* entity) noexcept {
    m_name = std::move(name);
    m_type = type;
    m_entity = entity;
}

bool VnIfcProperty::getText(const VnIfcEntityBase* instance, VrString& text) const {
    VnIfcVariant value;
    return getAttribute(instance, value) == VN::eOk && value.toString(text);
}

// ---- VnIfcPropertyCollection

VnIfcPropertyCollection::VnIfcPropertyCollection() noexcept = default;
VnIfcPropertyCollection::VnIfcPropertyCollection(VnIfcPropertyCollection&&) noexcept = default;
VnIfcPropertyCollection& VnIfcPropertyCollection::operator=(VnIfcPropertyCollection&&) noexcept = default;
VnIfcPropertyCollection::~VnIfcPropertyCollection() = default;

void VnIfcPropertyCollection::add(VnIfcProperty* property) {
    std::unique_ptr<const VnIfcProperty> owned(property);
    if (!owned)
        throw std::invalid_argument("property collection: null property");
    m_properties.push_back(std::move(owned));
}

void VnIfcPropertyCollection::redeclare(VnIfcPropertyCollection&& own) {
    m_properties.reserve(m_properties.size() + own.size());
    for (auto& property : own.m_properties) {
        const std::size_t inherited = indexOf(property->name());
        if (inherited < m_properties.size())
            m_properties[inherited] = std::move(property);
        else
            m_properties.push_back(std::move(property));
    }
    own.m_properties.clear();
}

const VnIfcProperty* VnIfcPropertyCollection::find(std::string_view name) const noexcept {
    const std::size_t index = indexOf(name);
    return index < m_properties.size() ? m_properties[index].get() : nullptr;
}

std::size_t VnIfcPropertyCollection::indexOf(std::string_view name) const noexcept {
    std::size_t index = 0;
    while (index < m_properties.size() && m_properties[index]->name().compareNoCase(name) != 0)
        ++index;
    return index;
}

// ---- VnIfcEntityType

VnIfcPropertyCollection VnIfcEntityType::properties(bool inherited) const {
    VnIfcPropertyCollection own;
    collectProperties(&own);
    if (!inherited || !m_supertype)
        return own;
    VnIfcPropertyCollection all = m_supertype->properties(true);
    all.redeclare(std::move(own));
    return all;
}

} // namespace VN_SDAI
