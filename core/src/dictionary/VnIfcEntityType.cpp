#include <VnIfcCore/VnIfcEntityType.h>

#include <stdexcept>

namespace VN_SDAI {

VnIfcAttributeDefinition::~VnIfcAttributeDefinition() = default;
VnIfcExplicitAttributeDefinition::~VnIfcExplicitAttributeDefinition() = default;
VnIfcDerivedAttributeDefinition::~VnIfcDerivedAttributeDefinition() = default;
VnIfcInverseAttributeDefinition::~VnIfcInverseAttributeDefinition() = default;
VnIfcEntityType::~VnIfcEntityType() = default;

VnIfcInverseAttributeDefinition::VnIfcInverseAttributeDefinition(VnAnsiString name, VnIfcEntityType* owner,
                                                                 const VnIfcParameterType* type,
                                                                 const VnIfcAttributeDefinition* inverted, int minimum,
                                                                 int maximum, bool duplicates) noexcept
    : VnIfcAttributeDefinition(Kind::kInverse, std::move(name), type, owner), m_inverted(inverted), m_minimum(minimum),
      m_maximum(maximum), m_duplicates(duplicates) {}

VnIfcEntityType::VnIfcEntityType(VnIfcSchema* schema, const char* name, bool independent, Factory factory,
                                 PropertyCallback properties, const VnIfcEntityType* supertype)
    : VnIfcNameType(name), m_schema(schema), m_supertype(supertype), m_factory(factory), m_properties(properties),
      m_independent(independent) {}

VnIfcEntityType* VnIfcEntityType::createEntityType(VnIfcSchema* schema, const char* name, bool independent,
                                                   Factory factory, PropertyCallback properties,
                                                   VnIfcEntityType*& place, const VnIfcEntityType* supertype) {
    auto* record = new VnIfcEntityType(schema, name, independent, factory, properties, supertype);
    record->m_shown.show(place, record);
    return record;
}

bool VnIfcEntityType::isKindOf(const VnIfcEntityType* other) const noexcept {
    if (!other)
        return false;
    const VnIfcEntityType* type = this;
    while (type && type != other)
        type = type->m_supertype;
    return type != nullptr;
}

void VnIfcEntityType::appendAttribute(VnIfcAttributeDefinition* attribute) {
    std::unique_ptr<VnIfcAttributeDefinition> owned(attribute);
    if (!owned)
        throw std::invalid_argument("entity " + std::string(name().view()) + ": null attribute");
    m_owned.push_back(std::move(owned));
    attribute->m_parent = this;
    m_attributes.push_back(attribute);
    switch (attribute->attributeKind()) {
    case VnIfcAttributeDefinition::Kind::kExplicit:
        m_explicit.push_back(static_cast<VnIfcExplicitAttributeDefinition*>(attribute));
        break;
    case VnIfcAttributeDefinition::Kind::kDerived:
        m_derived.push_back(static_cast<VnIfcDerivedAttributeDefinition*>(attribute));
        break;
    case VnIfcAttributeDefinition::Kind::kInverse:
        m_inverse.push_back(static_cast<VnIfcInverseAttributeDefinition*>(attribute));
        break;
    }
}

std::vector<const VnIfcAttributeDefinition*> VnIfcEntityType::allAttributes() const {
    std::vector<const VnIfcAttributeDefinition*> all;
    if (m_supertype)
        all = m_supertype->allAttributes();
    all.insert(all.end(), m_attributes.begin(), m_attributes.end());
    return all;
}

const VnIfcAttributeDefinition* VnIfcEntityType::findAttribute(std::string_view name) const noexcept {
    for (const VnIfcEntityType* type = this; type; type = type->m_supertype)
        for (const VnIfcAttributeDefinition* attribute : type->m_attributes)
            if (attribute->name().compareNoCase(name) == 0)
                return attribute;
    return nullptr;
}

} // namespace VN_SDAI
