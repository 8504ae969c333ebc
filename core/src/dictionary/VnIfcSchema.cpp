#include <VnIfcCore/VnIfcSchema.h>

namespace VN_SDAI {

VnIfcSchema::VnIfcSchema() {
    using enum VnTypeCodeKind;
    for (const auto& [name, kind] : {std::pair{"integer", kInteger},
                                     {"real", kReal},
                                     {"number", kReal},
                                     {"boolean", kBoolean},
                                     {"logical", kLogical},
                                     {"binary", kBinary}})
        m_simpleTypes.putAt(name, new VnIfcSimpleType(kind));
    m_simpleTypes.putAt("string", new VnIfcStringType);
}

VnIfcSchema::~VnIfcSchema() = default;

const VnIfcNameType* VnIfcSchema::namedType(std::string_view name) const noexcept {
    if (DictionaryInstance* type = m_namedTypes.find(name))
        return static_cast<VnIfcDefinedType*>(type);
    return entity(name);
}

const VnIfcParameterType* VnIfcSchema::type(std::string_view name) const noexcept {
    if (const VnIfcNameType* type = namedType(name))
        return type;
    if (DictionaryInstance* type = m_anonymousTypes.find(name))
        return static_cast<VnIfcDefinedType*>(type);
    return static_cast<VnIfcSimpleType*>(m_simpleTypes.find(name));
}

} // namespace VN_SDAI
