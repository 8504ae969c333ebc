#include "SchemaBuilder.h"

#include <VnIfcTyped/Release.h>

namespace VN_SDAI::typed {

SchemaBuilder::SchemaBuilder(VnIfcSchema* schema, const Release& release)
    : VnIfcSchemaBuilder(schema, VnAnsiString(release.name)), m_release(release) {}

void SchemaBuilder::buildSchema() {
    initSchemaVersion(m_release.majorVersion, m_release.minorVersion);
    m_namedTypes.reserve(m_release.definedTypes.size() + m_release.enumerations.size() + m_release.selects.size() +
                         m_release.aggregations.size());
    m_anonymousTypes.reserve(m_release.aggregations.size());
    addStringTypes();
    addDefinedTypes();
    addEnumerations();
    addEntities();
    addSelects();
    addAggregations();
}

} // namespace VN_SDAI::typed
