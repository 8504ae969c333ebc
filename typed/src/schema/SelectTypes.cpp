#include "SchemaBuilder.h"

#include <VnIfcTyped/Release.h>

namespace VN_SDAI::typed {

void SchemaBuilder::addSelects() {
    m_selectMembers.reserve(m_release.selects.size());
    for (const SelectRecord& row : m_release.selects) {
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

} // namespace VN_SDAI::typed
