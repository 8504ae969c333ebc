#include "VnIFC4X3SchemaBuilder.h"

#include <IFC4X3/Dictionary.h>

namespace IFC4X3 {

using namespace VN_SDAI;

void VnIFC4X3SchemaBuilder::addEnumerations() {
    for (const dictionary::EnumerationRecord& row : dictionary::enumerations) {
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
    for (const EnumerationClass* type : dictionary::enumerationClasses)
        if (!m_namedTypes.find(type->name))
            m_typesWithoutRecord.emplace_back(type->name);
}

} // namespace IFC4X3
