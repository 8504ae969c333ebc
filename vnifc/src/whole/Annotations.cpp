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

/// IfcApprovalRelationship, IfcExternalReferenceRelationship: relationships without a GlobalId.
bool isResourceRelationship(const ClassInfo& info) {
    return std::string_view(info.rows.name).ends_with(kRelationship) && !info.is("IfcRoot");
}

} // namespace

const std::vector<const typed::AttributeRow*>& Annotations::lookUp(const ClassInfo& info) {
    const auto [found, isNew] = m_rows.try_emplace(&info);
    if (!isNew)
        return found->second;
    for (const About& about : kAbout)
        if (info.is(about.entity))
            if (const AttributeInfo* attribute = info.findExplicit(about.attribute))
                found->second.push_back(attribute->row);
    if (isResourceRelationship(info))
        found->second = info.references;
    return found->second;
}

} // namespace vnifc::detail
