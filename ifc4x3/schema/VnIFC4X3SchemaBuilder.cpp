#include "VnIFC4X3SchemaBuilder.h"

#include <IFC4X3/Dictionary.h>

namespace IFC4X3 {

void VnIFC4X3SchemaBuilder::buildSchema() {
    initSchemaVersion(VN_SDAI::IfcSchemaMajorVersion::kIfc4, VN_SDAI::IfcSchemaMinorVersion::kThree);
    m_namedTypes.reserve(dictionary::definedTypes.size() + dictionary::enumerations.size() +
                         dictionary::selects.size() + dictionary::aggregations.size());
    m_anonymousTypes.reserve(dictionary::aggregations.size());
    addStringTypes();
    addDefinedTypes();
    addEnumerations();
    addEntities();
    addSelects();
    addAggregations();
}

} // namespace IFC4X3
