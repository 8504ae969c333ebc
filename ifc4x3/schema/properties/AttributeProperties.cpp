#include <entities/EntityTables.h>

namespace IFC4X3 {

// No property objects yet: the core's property framework comes with access by name.
void addProperties(const EntityClass&, VN_SDAI::VnIfcPropertyCollection*, const VN_SDAI::VnIfcEntityType*) {}

}  // namespace IFC4X3
