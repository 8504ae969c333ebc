#include <VnIfcCore/VnIfcAggregationType.h>
#include <VnIfcCore/VnIfcDefinedType.h>
#include <VnIfcCore/VnIfcEnumerationType.h>
#include <VnIfcCore/VnIfcSelectType.h>

#include <iterator>

namespace VN_SDAI {

DictionaryInstance::~DictionaryInstance() = default;
VnTypeCode::~VnTypeCode() = default;
VnIfcParameterType::~VnIfcParameterType() = default;
VnIfcSimpleType::~VnIfcSimpleType() = default;
VnIfcStringType::~VnIfcStringType() = default;
VnIfcNameType::~VnIfcNameType() = default;
VnIfcDefinedType::~VnIfcDefinedType() = default;
VnIfcEnumerationType::~VnIfcEnumerationType() = default;
VnIfcSelectType::~VnIfcSelectType() = default;
VnIfcIntegerBound::~VnIfcIntegerBound() = default;
VnIfcAggregationType::~VnIfcAggregationType() = default;
VnIfcSetType::~VnIfcSetType() = default;
VnIfcListType::~VnIfcListType() = default;
VnIfcArrayType::~VnIfcArrayType() = default;

void VnIfcParameterType::type(VnTypeCode* typeCode) { m_typeCode.reset(typeCode); }

// The underlying record is in safe hands before the name is copied, which can fail.
VnIfcDefinedType::VnIfcDefinedType(const char* name, DictionaryInstance* underlying, bool ownsUnderlying)
    : VnIfcDefinedType(name, std::unique_ptr<DictionaryInstance>(ownsUnderlying ? underlying : nullptr), underlying) {}

VnIfcDefinedType::VnIfcDefinedType(const char* name, std::unique_ptr<DictionaryInstance> owned,
                                   const DictionaryInstance* underlying)
    : VnIfcNameType(name), m_owned(std::move(owned)),
      m_underlying(dynamic_cast<const VnIfcParameterType*>(underlying)) {}

VnTypeCodeKind VnIfcDefinedType::kind() const noexcept {
    return m_underlying ? m_underlying->kind() : VnTypeCodeKind::kNone;
}

VnIfcEnumerationType::VnIfcEnumerationType(VnTypeCode* typeCode, std::list<VnAnsiString> literals) {
    VnIfcParameterType::type(typeCode);
    m_literals.assign(std::move_iterator(literals.begin()), std::move_iterator(literals.end()));
}

VnIfcAggregationType::VnIfcAggregationType(const VnIfcParameterType* elementType, VnIfcIntegerBound* lower,
                                           VnIfcIntegerBound* upper)
    : m_lower(lower), m_upper(upper), m_elementType(elementType) {
    if (!m_lower)
        m_lower = std::make_unique<VnIfcIntegerBound>();
    if (!m_upper)
        m_upper = std::make_unique<VnIfcIntegerBound>();
}

} // namespace VN_SDAI
