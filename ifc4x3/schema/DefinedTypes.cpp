#include "VnIFC4X3SchemaBuilder.h"

#include <IFC4X3/Dictionary.h>

namespace IFC4X3 {

using namespace VN_SDAI;

void VnIFC4X3SchemaBuilder::addDefinedTypes() {
    m_underlyingTypes.reserve(dictionary::definedTypes.size());
    for (const dictionary::DefinedType& row : dictionary::definedTypes) {
        auto* type = new VnIfcDefinedType(row.name, nullptr, true);
        m_namedTypes.putAt(row.name, type);
        m_underlyingTypes[type] = row.underlying;
    }
}

} // namespace IFC4X3
