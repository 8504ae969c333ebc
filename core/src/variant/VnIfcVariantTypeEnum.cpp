#include "Names.h"

#include <VnIfcCore/VnIfcEnumDescription.h>
#include <VnIfcCore/VnIfcVariant.h>
#include <VnIfcCore/VnIfcVariantTypeEnum.h>
#include <VnRx/VrString.h>

namespace VN_SDAI {

namespace {

std::uint32_t codeAt(const void* value) noexcept { return *static_cast<const std::uint32_t*>(value); }

} // namespace

VnIfcVariantTypeEnumBase::VnIfcVariantTypeEnumBase(std::string_view schema, std::string_view name,
                                                   std::span<const char* const> literals)
    : VnIfcVariantType(wideName(schema, "::", name).c_str(), sizeof(std::uint32_t)), m_literals(literals) {
    const std::string prefix = std::string(schema).append("::k").append(name).append("_");
    const auto add = [&](std::string_view literal) {
        m_names.append(std::make_unique<VnAnsiString>(prefix + std::string(literal)));
    };
    for (const char* literal : m_literals)
        add(literal);
    add("UNSET");
}

VnIfcVariantTypeEnumBase::~VnIfcVariantTypeEnumBase() = default;

bool VnIfcVariantTypeEnumBase::subEqualTo(const void* left, const void* right) const {
    return codeAt(left) == codeAt(right);
}

bool VnIfcVariantTypeEnumBase::subToValueType(const VnIfcVariantType& target, const VnIfcVariant& source,
                                              VnIfcVariant& result) const {
    const auto isTarget = [&target]<class T>(std::type_identity<T>) {
        return &target == &VnIfcVariantType::Desc<T>::value();
    };
    const std::uint32_t code = codeAt(source.payload());
    const bool isUnset = code >= m_literals.size();
    if (isTarget(std::type_identity<VnAnsiString>()) || isTarget(std::type_identity<const char*>()) ||
        (isTarget(std::type_identity<VnIfcEnumDescription>()) && !isUnset))
        result = VnIfcVariant(literalOf(code));
    else if (isTarget(std::type_identity<unsigned long>()))
        result = VnIfcVariant(static_cast<unsigned long>(code));
    else if (isTarget(std::type_identity<int>()))
        result = VnIfcVariant(static_cast<int>(code));
    else
        return false;
    return true;
}

bool VnIfcVariantTypeEnumBase::subToString(VrString& text, const void* value, StringFormat) const {
    if (!value)
        return false;
    text.assign(literalOf(codeAt(value)));
    return true;
}

bool VnIfcVariantTypeEnumBase::createVariant(VnIfcVariant& value) const {
    const auto unset = static_cast<std::uint32_t>(m_literals.size());
    value = VnIfcVariant(*this, &unset);
    return true;
}

} // namespace VN_SDAI
