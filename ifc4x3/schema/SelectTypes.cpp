#include "VnIFC4X3SchemaBuilder.h"

#include <IFC4X3/Dictionary.h>

namespace IFC4X3 {

using namespace VN_SDAI;

void VnIFC4X3SchemaBuilder::addSelects() {
    m_selectMembers.reserve(dictionary::selects.size());
    for (const dictionary::SelectRecord& row : dictionary::selects) {
        auto typeCode = std::make_unique<VnTypeCode>(VnTypeCodeKind::kSelect);
        typeCode->appendParameter(VnAny() << row.name);
        std::vector<VnAnsiString> members(row.members.begin(), row.members.end());
        std::unique_ptr<VnIfcSelectType> select(new VnIfcSelectType(typeCode.release()));
        VnIfcSelectType* key = select.get();
        auto* type = new VnIfcDefinedType(row.name, select.release(), true);
        m_namedTypes.putAt(row.name, type);
        m_selectMembers[key] = std::move(members);
        type->showIn(*row.type);
    }
}

} // namespace IFC4X3
