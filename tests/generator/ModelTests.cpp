#include "Support.h"
#include "Totals.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <optional>
#include <sstream>

namespace expgen {
namespace {

/// The project's schema, resolved once for all tests.
class SchemaModel : public ::testing::Test {
protected:
    static void SetUpTestSuite() { s_model = test::resolveProjectSchema(); }
    static void TearDownTestSuite() { s_model.reset(); }

    static const Entity& entity(std::string_view name) { return *s_model->findEntity(name); }
    static std::vector<std::string> explicits(std::string_view name) {
        std::vector<std::string> result;
        for (const ExplicitAttribute& attribute : entity(name).explicits)
            result.push_back(attribute.name + " " + attributeTypeText(attribute.type));
        return result;
    }
    static std::vector<std::string> inverses(std::string_view name) {
        std::vector<std::string> result;
        for (const InverseAttribute& inverse : entity(name).inverses) {
            result.push_back(inverse.name + " [" + inverse.layer.lower.text + ":" + inverse.layer.upper.text + "] " +
                             lower(inverse.target->name) + "." + inverse.owner->explicits[inverse.attribute].name);
        }
        return result;
    }

    static inline std::optional<Model> s_model;
};

using Texts = std::vector<std::string>;

TEST(Totals, NameWhatIsOffWithExpectedAndFound) {
    const Release release =
        readRelease("release.txt", "name T\nmodule M\npackage p\ntitle t\nversion a b\n"
                                   "total explicit attributes 2\ntotal entities 1\ntotal wheels 4\n");
    EXPECT_EQ(wrongTotals(test::resolveText("ENTITY A; x : REAL; END_ENTITY;"), release),
              (Texts{"explicit attributes: expected 2, found 1", "\"wheels\" is nothing that is counted"}));
}

TEST_F(SchemaModel, BoundsHaveTheKnownFrequencies) {
    std::map<std::string, int> aggregations;
    for (const Aggregation& aggregation : s_model->aggregations) {
        const char* const kinds[] = {"array", "bag", "list", "set"};
        const Layer& layer = aggregation.layer;
        const std::string upper = layer.upper.value ? std::to_string(*layer.upper.value) : "?";
        ++aggregations[std::string(kinds[static_cast<int>(layer.kind)]) + " " + layer.lower.text + ":" + upper];
    }
    const std::map<std::string, int> expected{{"set 0:?", 73},  {"set 1:?", 53}, {"list 1:?", 53}, {"set 0:1", 31},
                                              {"list 2:?", 11}, {"list 3:3", 7}, {"array 0:?", 6}, {"list 2:2", 5},
                                              {"set 1:1", 5},   {"list 3:?", 3}, {"array 1:2", 2}, {"list 3:4", 2},
                                              {"list 1:2", 2},  {"list 2:3", 2}, {"set 1:2", 2},   {"list 0:?", 1},
                                              {"list 1:3", 1},  {"set 1:5", 1},  {"set 2:?", 1}};
    EXPECT_EQ(aggregations, expected);

    std::map<std::string, int> cardinalities;
    for (const Entity& owner : s_model->entities)
        for (const InverseAttribute& inverse : owner.inverses)
            ++cardinalities[inverse.hasBounds ? inverse.layer.lower.text + ":" + inverse.layer.upper.text : "none"];
    const std::map<std::string, int> expectedCardinalities{
        {"0:?", 107}, {"0:1", 39}, {"1:?", 7}, {"1:1", 5}, {"none", 5}};
    EXPECT_EQ(cardinalities, expectedCardinalities);
}

TEST_F(SchemaModel, AttributesUseTheKnownTypes) {
    std::map<std::string, int> uses;
    for (const Entity& owner : s_model->entities)
        for (const ExplicitAttribute& attribute : owner.explicits)
            ++uses[attributeTypeText(attribute.type)];
    const std::pair<const char*, int> commonest[] = {{"IFCLABEL", 146},        {"IFCPOSITIVELENGTHMEASURE", 128},
                                                     {"IFCLENGTHMEASURE", 52}, {"IFCBOOLEAN", 50},
                                                     {"IFCTEXT", 44},          {"IFCDATETIME", 32}};
    for (const auto& [text, count] : commonest)
        EXPECT_EQ(uses[text], count) << text;
    EXPECT_EQ(entity("IfcDocumentInformation").explicits.size() + entity("IfcDocumentInformation").inverses.size(),
              21u);
}

TEST_F(SchemaModel, EntitiesAreAsDeclared) {
    EXPECT_EQ(explicits("IfcRoot"), (Texts{"GlobalId IFCGLOBALLYUNIQUEID", "OwnerHistory IFCOWNERHISTORY",
                                           "Name IFCLABEL", "Description IFCTEXT"}));
    EXPECT_EQ(entity("IfcRoot").explicits[0].type.kind, Kind::kGuid);
    EXPECT_EQ(
        inverses("IfcObjectDefinition"),
        (Texts{"HasAssignments [0:?] ifcrelassigns.RelatedObjects", "Nests [0:1] ifcrelnests.RelatedObjects",
               "IsNestedBy [0:?] ifcrelnests.RelatingObject", "HasContext [0:1] ifcreldeclares.RelatedDefinitions",
               "IsDecomposedBy [0:?] ifcrelaggregates.RelatingObject",
               "Decomposes [0:1] ifcrelaggregates.RelatedObjects",
               "HasAssociations [0:?] ifcrelassociates.RelatedObjects"}));
    EXPECT_EQ(explicits("IfcRelAggregates"),
              (Texts{"RelatingObject IFCOBJECTDEFINITION", "RelatedObjects set [1:?] of IFCOBJECTDEFINITION"}));
    EXPECT_FALSE(entity("IfcRelationship").hasProperties());
    EXPECT_FALSE(entity("IfcCartesianPointList").hasProperties());
    EXPECT_EQ(explicits("IfcAlignment2DCant"),
              (Texts{"Segments list [1:?] of IFCALIGNMENT2DCANTSEGMENT", "RailHeadDistance IFCPOSITIVELENGTHMEASURE"}));
    EXPECT_EQ(inverses("IfcAlignment2DHorizontal"), (Texts{"ToAlignmentCurve [1:?] ifcalignmentcurve.Horizontal"}));
    EXPECT_EQ(inverses("IfcAlignment2DVertical"), (Texts{"ToAlignmentCurve [1:1] ifcalignmentcurve.Vertical"}));
}

TEST_F(SchemaModel, RedeclaredPositionsStayInTheParameterList) {
    const Entity& edge = entity("IfcOrientedEdge");
    ASSERT_EQ(edge.fields.size(), 4u);
    EXPECT_TRUE(edge.fields[0].isDerived && edge.fields[1].isDerived);
    EXPECT_EQ(edge.fields[1].index, 1u);
    EXPECT_EQ(edge.fields[2].owner, &edge);
    EXPECT_FALSE(entity("IfcEdge").fields[0].isDerived);
    EXPECT_EQ(entity("IfcEdgeCurve").fields[0].owner, &entity("IfcEdge"));
}

TEST_F(SchemaModel, RecordsAreBuiltInTheKnownOrder) {
    const char* const first[] = {"IfcRoot",
                                 "IfcRelationship",
                                 "IfcRelConnects",
                                 "IfcRelSpaceBoundary",
                                 "IfcRelSpaceBoundary1stLevel",
                                 "IfcRelSpaceBoundary2ndLevel",
                                 "IfcObjectDefinition",
                                 "IfcObject",
                                 "IfcProduct",
                                 "IfcControl",
                                 "IfcActionRequest"};
    for (std::size_t i = 0; i < std::size(first); ++i)
        EXPECT_EQ(s_model->entityOrder[i]->name, first[i]);
    std::map<const Entity*, std::size_t> places;
    for (const Entity* placed : s_model->entityOrder) {
        EXPECT_TRUE(placed->supertype == nullptr || places.contains(placed->supertype)) << placed->name;
        EXPECT_TRUE(places.emplace(placed, places.size()).second) << placed->name;
    }

    EXPECT_EQ(s_model->selectOrder.front()->name, "IfcHatchLineDistanceSelect");
    EXPECT_EQ(s_model->selectOrder.back()->name, "IfcTransportElementTypeSelect");
    EXPECT_EQ(s_model->definedTypeOrder.front()->name, "IfcModulusOfLinearSubgradeReactionMeasure");
    EXPECT_EQ(s_model->enumerationRecords.front().name, "IfcActionRequestTypeEnum");
    EXPECT_EQ(s_model->enumerationRecords.back().name, "IfcNullStyle");

    const std::vector<Aggregation>& aggregations = s_model->aggregations;
    EXPECT_EQ(aggregations[3].name, "IfcComplexNumber");
    EXPECT_EQ(aggregations[3].element, "real");
    EXPECT_EQ(aggregations[5].name, "array [0:UUpper] of array [0:VUpper] of IfcCartesianPoint");
    EXPECT_EQ(aggregations[5].element, "array [0:VUpper] of IfcCartesianPoint");
    EXPECT_TRUE(std::is_sorted(aggregations.begin() + 5, aggregations.end(),
                               [](const Aggregation& a, const Aggregation& b) { return a.name < b.name; }));
    const auto named = [&](std::string_view name) {
        return std::any_of(aggregations.begin() + 5, aggregations.end(),
                           [name](const Aggregation& a) { return a.name == name; });
    };
    EXPECT_TRUE(named("list [3:4] of integer"));
    EXPECT_TRUE(named("set [0:1] of IfcIndexedColourMap"));
}

TEST_F(SchemaModel, SelectsAreFlattenedInOrder) {
    const Select& value = *s_model->findSelect("IfcValue");
    EXPECT_EQ(value.members, (Texts{"IfcDerivedMeasureValue", "IfcMeasureValue", "IfcSimpleValue"}));
    ASSERT_EQ(value.leaves.size(), 108u);
    EXPECT_EQ(value.leaves[0].name, "IfcAbsorbedDoseMeasure");
    EXPECT_EQ(value.leaves[94].name, "IfcBinary");
    EXPECT_EQ(value.leaves[102].name, "IfcLogical");
    EXPECT_EQ(s_model->findSelect("IfcSimpleValue")->leaves[10].type.kind, Kind::kReal);
}

TEST_F(SchemaModel, EnumerationClassesAndRecordsDifferAsKnown) {
    const auto namesOf = [](const std::vector<Enumeration>& enumerations) {
        Texts names;
        for (const Enumeration& enumeration : enumerations)
            names.push_back(enumeration.name);
        std::sort(names.begin(), names.end());
        return names;
    };
    const Texts classes = namesOf(s_model->enumerations);
    const Texts records = namesOf(s_model->enumerationRecords);
    Texts withoutRecord;
    Texts withoutClass;
    std::set_difference(classes.begin(), classes.end(), records.begin(), records.end(), back_inserter(withoutRecord));
    std::set_difference(records.begin(), records.end(), classes.begin(), classes.end(), back_inserter(withoutClass));
    EXPECT_EQ(withoutRecord, Texts{"IfcTransitionCurveType"});
    EXPECT_EQ(withoutClass, (Texts{"IfcAlignmentCantSegmentTypeEnum", "IfcAlignmentHorizontalSegmentTypeEnum",
                                   "IfcAlignmentVerticalSegmentTypeEnum", "IfcGeotechnicalStratumTypeEnum",
                                   "IfcKerbTypeEnum", "IfcPavementTypeEnum", "IfcRailwayTypeEnum", "IfcRoadTypeEnum",
                                   "IfcTransportElementTypeEnum", "IfcVehicleTypeEnum", "IfcVirtualElementTypeEnum"}));
}

TEST_F(SchemaModel, ExactlyTheKnownEntitiesLinkToInverses) {
    std::istringstream names(
        "Alignment2DCant Alignment2DHorizontal Alignment2DVertical AlignmentCurve ApprovalRelationship "
        "ClassificationReference ComplexProperty ComplexPropertyTemplate CompositeCurve CoordinateOperation "
        "DocumentInformationRelationship DocumentReference ExternalReferenceRelationship "
        "GeometricRepresentationSubContext Grid IndexedColourMap IndexedTextureMap LibraryReference "
        "LinearAxisWithInclination LinearPositioningElement MappedItem MaterialConstituentSet "
        "MaterialDefinitionRepresentation MaterialLayerSet MaterialProfileSet MaterialProperties MaterialRelationship"
        " Organization OrganizationRelationship Person PersonAndOrganization PhysicalComplexQuantity PolygonalFaceSet"
        " PresentationLayerAssignment Product ProductRepresentation ProfileProperties PropertyDependencyRelationship "
        "PropertySet PropertySetTemplate RelAggregates RelAssigns RelAssignsToActor RelAssignsToControl "
        "RelAssignsToGroup RelAssignsToProcess RelAssignsToProduct RelAssignsToResource RelAssociates "
        "RelAssociatesApproval RelAssociatesClassification RelAssociatesDocument RelAssociatesLibrary "
        "RelAssociatesMaterial RelConnectsElements RelConnectsPorts RelConnectsPortToElement "
        "RelConnectsStructuralActivity RelConnectsStructuralMember RelConnectsWithRealizingElements "
        "RelContainedInSpatialStructure RelCoversBldgElements RelCoversSpaces RelDeclares RelDefinesByObject "
        "RelDefinesByProperties RelDefinesByTemplate RelDefinesByType RelFillsElement RelFlowControlElements "
        "RelInterferesElements RelNests RelPositions RelProjectsElement RelReferencedInSpatialStructure RelSequence "
        "RelServicesBuildings RelSpaceBoundary RelSpaceBoundary1stLevel RelSpaceBoundary2ndLevel RelVoidsElement "
        "Representation RepresentationMap ResourceApprovalRelationship ResourceConstraintRelationship ShapeAspect "
        "StructuralAnalysisModel StructuralResultGroup StyledItem SurfaceStyleWithTextures TextureCoordinate "
        "TextureMap TypeObject VirtualGridIntersection ");
    Texts expected;
    for (std::string name; names >> name;)
        expected.push_back("Ifc" + name);
    Texts found;
    for (const Entity& candidate : s_model->entities)
        if (!candidate.links.empty())
            found.push_back(candidate.name);
    std::sort(expected.begin(), expected.end());
    std::sort(found.begin(), found.end());
    EXPECT_EQ(found, expected);

    const Link& objects = entity("IfcRelDefinesByProperties").links[0];
    ASSERT_EQ(objects.targets.size(), 2u);
    EXPECT_EQ(objects.targets[0].entity->name, "IfcContext");
    EXPECT_EQ(objects.targets[1].entity->name, "IfcObject");
}

} // namespace
} // namespace expgen
