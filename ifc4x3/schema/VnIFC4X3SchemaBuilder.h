#pragma once
#include <VnIfcCore/VnIfcSchemaBuilder.h>

namespace IFC4X3 {

struct EntityClass;

/// Builds the IFC4X3 dictionary from the generated tables. The phases refer to each other by name only, and run in the
/// order in which they stand here.
class VnIFC4X3SchemaBuilder final : public VN_SDAI::VnIfcSchemaBuilder {
public:
    using VnIfcSchemaBuilder::VnIfcSchemaBuilder;

protected:
    void buildSchema() override;

private:
    void addStringTypes();
    void addDefinedTypes();
    void addEnumerations();
    void addEntities();
    void addAttributes(VN_SDAI::VnIfcEntityType& entity, const EntityClass& row);
    void addSelects();
    void addAggregations();
};

} // namespace IFC4X3
