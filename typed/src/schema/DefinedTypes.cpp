#include "SchemaBuilder.h"

#include <VnIfcTyped/Release.h>

namespace VN_SDAI::typed {

void SchemaBuilder::addDefinedTypes() {
    m_underlyingTypes.reserve(m_release.definedTypes.size());
    for (const DefinedType& row : m_release.definedTypes) {
        auto* type = new VnIfcDefinedType(row.name, nullptr, true);
        m_namedTypes.putAt(row.name, type);
        m_underlyingTypes[type] = row.underlying;
    }
}

} // namespace VN_SDAI::typed
