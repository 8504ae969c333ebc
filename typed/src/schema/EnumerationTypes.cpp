#include "SchemaBuilder.h"

#include <VnIfcTyped/Release.h>

namespace VN_SDAI::typed {

void SchemaBuilder::addEnumerations() {
    for (const EnumerationRecord& row : m_release.enumerations) {
        auto typeCode = std::make_unique<VnTypeCode>(VnTypeCodeKind::kEnumeration);
        typeCode->appendParameter(VnAny() << row.name);
        std::list<VnAnsiString> literals;
        for (const char* literal : row.literals) {
            literals.emplace_back(literal);
            typeCode->appendParameter(VnAny() << literal);
        }
        std::unique_ptr<VnIfcEnumerationType> type(new VnIfcEnumerationType(typeCode.release(), std::move(literals)));
        m_namedTypes.putAt(row.name, new VnIfcDefinedType(row.name, type.release(), true));
    }
    // Some enumeration classes have no record, by design; attributes of such a type stay without one.
    for (const EnumerationClass* type : m_release.enumerationClasses)
        if (!m_namedTypes.find(type->name))
            m_typesWithoutRecord.emplace_back(type->name);
}

} // namespace VN_SDAI::typed
