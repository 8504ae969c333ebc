#pragma once
#include <VnIfcCore/VnIfcSchemaBuilder.h>

namespace VN_SDAI::typed {

struct EntityClass;
struct Release;

/// Builds the dictionary of a release from its tables. The phases refer to each other by name only, and run in the
/// order in which they stand here.
class VNIFC_API SchemaBuilder : public VnIfcSchemaBuilder {
public:
    /// Both must outlive the builder.
    SchemaBuilder(VnIfcSchema* schema, const Release& release);

protected:
    void buildSchema() override;

private:
    void addStringTypes();
    void addDefinedTypes();
    void addEnumerations();
    void addEntities();
    void addAttributes(VnIfcEntityType& entity, const EntityClass& row);
    void addSelects();
    void addAggregations();

    const Release& m_release;
};

} // namespace VN_SDAI::typed
