#include "Annotations.h"

#include <string_view>

namespace vnifc::detail {

using namespace VN_SDAI;

namespace {

struct About {
    std::string_view entity; ///< subtypes included
    std::string_view attribute;
};

// Of all releases; names that a release lacks do not matter. Relationships between resources follow below.
constexpr About kAbout[] = {
    {"IfcStyledItem", "Item"},
    {"IfcPresentationLayerAssignment", "AssignedItems"},
    {"IfcMaterialDefinitionRepresentation", "RepresentedMaterial"},
    {"IfcMaterialProperties", "Material"},
    {"IfcProfileProperties", "ProfileDefinition"},
    {"IfcShapeAspect", "PartOfProductDefinitionShape"},
    {"IfcGeometricRepresentationSubContext", "ParentContext"},
    {"IfcCoordinateOperation", "SourceCRS"},
    {"IfcWellKnownText", "CoordinateReferenceSystem"},
    {"IfcTextureCoordinate", "Maps"},
    {"IfcIndexedTextureMap", "MappedTo"},
    {"IfcIndexedColourMap", "MappedTo"},
    {"IfcReferencesValueDocument", "ReferencingValues"},
};

constexpr std::string_view kRelationship = "Relationship";

bool isKindOf(const typed::EntityClass& type, std::string_view name) {
    for (const typed::EntityClass* each = &type; each; each = each->supertype)
        if (each->name == name)
            return true;
    return false;
}

/// IfcApprovalRelationship, IfcExternalReferenceRelationship: relationships without a GlobalId.
bool isResourceRelationship(const typed::EntityClass& type) {
    return std::string_view(type.name).ends_with(kRelationship) && !isKindOf(type, "IfcRoot");
}

} // namespace

const std::vector<const typed::AttributeRow*>& Annotations::lookUp(const ClassInfo& info) {
    const auto [found, isNew] = m_rows.try_emplace(&info);
    if (!isNew)
        return found->second;
    for (const About& about : kAbout)
        if (isKindOf(info.rows, about.entity))
            if (const AttributeInfo* attribute = info.findExplicit(about.attribute))
                found->second.push_back(attribute->row);
    if (isResourceRelationship(info.rows))
        found->second = info.references;
    return found->second;
}

} // namespace vnifc::detail
