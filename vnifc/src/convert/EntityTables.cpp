#include "Tables.h"

// clang-format off
namespace vnifc::conversion {

namespace {

constexpr std::string_view kRenamed = "the entity has another name";
constexpr std::string_view kSpecialCase = "the special case was given up; material usage says the same";
constexpr std::string_view kStyleGone = "styles of doors and windows became types";
constexpr std::string_view kAnnotation = "one entity serves all styled annotation";
constexpr std::string_view kMaterialResource = "material properties became lists of properties";
constexpr std::string_view kProfileResource = "profile properties became lists of properties";
constexpr std::string_view kFixedSet = "property sets of fixed attributes became lists of properties";
constexpr std::string_view kExternal = "relationships of resources became fewer and more general";
constexpr std::string_view kClassification = "classification items and notations became references";
constexpr std::string_view kCurve = "the same curve with its knots written out";
constexpr std::string_view kFaces = "the same faces, each with points of its own";
constexpr std::string_view kMaterialSets = "material sets of that kind came later; the materials are kept";
constexpr std::string_view kDesign = "alignments became nested elements with design parameters";

constexpr std::string_view kAbstract = "the entity was made abstract";

constexpr EntityCase kEntities[] = {
    // Other names
    {"IfcBuildingElement", "IfcBuiltElement", "", kRenamed},
    {"IfcBuiltElement", "IfcBuildingElement", "", kRenamed},
    {"IfcBuildingElementType", "IfcBuiltElementType", "", kRenamed},
    {"IfcBuiltElementType", "IfcBuildingElementType", "", kRenamed},
    {"IfcBuildingSystem", "IfcBuiltSystem", "", kRenamed},
    {"IfcBuiltSystem", "IfcBuildingSystem", "", kRenamed},
    {"Ifc2DCompositeCurve", "IfcCompositeCurve", "", "curves know their dimension themselves"},
    {"IfcElectricDistributionPoint", "IfcElectricDistributionBoard", "", kRenamed},
    {"IfcElectricHeaterType", "IfcSpaceHeaterType", "", kRenamed},
    {"IfcGasTerminalType", "IfcBurnerType", "", kRenamed},
    {"IfcElectricalElement", "IfcDistributionElement", "ObjectType='IfcElectricalElement'", "electrical elements became distribution elements"},
    {"IfcEquipmentElement", "IfcDistributionElement", "ObjectType='IfcEquipmentElement'", "equipment became distribution elements"},
    {"IfcElectricalCircuit", "IfcDistributionCircuit", "PredefinedType=.ELECTRICAL.", kRenamed},
    {"IfcChamferEdgeFeature", "IfcVoidingFeature", "PredefinedType=.CHAMFER.", kRenamed},
    {"IfcRoundedEdgeFeature", "IfcVoidingFeature", "PredefinedType=.EDGE.", kRenamed},
    {"IfcMove", "IfcTask", "PredefinedType=.MOVE.", "moves became tasks of that type"},
    {"IfcOrderAction", "IfcTask", "", "order actions became tasks"},
    {"IfcProjectOrderRecord", "IfcProjectOrder", "", "records of orders became orders"},
    {"IfcScheduleTimeControl", "IfcTaskTime", "", "times of tasks became a resource that the task refers to"},
    {"IfcStructuralLinearActionVarying", "IfcStructuralLinearAction", "", "varying actions take a load configuration"},
    {"IfcStructuralPlanarActionVarying", "IfcStructuralPlanarAction", "", "varying actions take a load configuration"},
    {"IfcGeotechnicalStratum", "IfcSolidStratum", "", "strata had classes of their own"},
    {"IfcSolidStratum", "IfcGeotechnicalStratum", "PredefinedType=.SOLID.", "strata became one entity with types"},
    {"IfcVoidStratum", "IfcGeotechnicalStratum", "PredefinedType=.VOID.", "strata became one entity with types"},
    {"IfcWaterStratum", "IfcGeotechnicalStratum", "PredefinedType=.WATER.", "strata became one entity with types"},
    {"IfcPlant", "IfcGeographicElement", "PredefinedType=.VEGETATION.", "plants became geographic elements of that type"},
    {"IfcProxy", "IfcBuildingElementProxy", "", "proxies of any kind were given up"},
    {"IfcQuantityNumber", "IfcQuantityCount", "", "quantities of that kind came later"},
    {"IfcVehicle", "IfcTransportElement", "", "vehicles became entities of their own"},
    {"IfcVehicleType", "IfcTransportElementType", "", "vehicles became entities of their own"},
    {"IfcMapConversionScaled", "IfcMapConversion", "", "factors for each axis came later"},
    {"IfcTriangulatedIrregularNetwork", "IfcTriangulatedFaceSet", "", "the flags of triangles came later"},

    // Made abstract
    {"IfcProductRepresentation", "IfcProductDefinitionShape", "", kAbstract},
    {"IfcRepresentation", "IfcShapeRepresentation", "", kAbstract},
    {"IfcRepresentationContext", "IfcGeometricRepresentationContext", "", kAbstract},
    {"IfcFacilityPart", "IfcFacilityPartCommon", "", kAbstract},

    // Special cases that were given up
    {"IfcBeamStandardCase", "IfcBeam", "", kSpecialCase},
    {"IfcColumnStandardCase", "IfcColumn", "", kSpecialCase},
    {"IfcDoorStandardCase", "IfcDoor", "", kSpecialCase},
    {"IfcMemberStandardCase", "IfcMember", "", kSpecialCase},
    {"IfcOpeningStandardCase", "IfcOpeningElement", "", kSpecialCase},
    {"IfcPlateStandardCase", "IfcPlate", "", kSpecialCase},
    {"IfcSlabElementedCase", "IfcSlab", "", kSpecialCase},
    {"IfcSlabStandardCase", "IfcSlab", "", kSpecialCase},
    {"IfcWallElementedCase", "IfcWall", "", kSpecialCase},
    {"IfcWindowStandardCase", "IfcWindow", "", kSpecialCase},
    {"IfcRelSpaceBoundary1stLevel", "IfcRelSpaceBoundary", "Name='1stLevel'", "levels of boundaries are told by their names"},
    {"IfcRelSpaceBoundary2ndLevel", "IfcRelSpaceBoundary", "Name='2ndLevel'", "levels of boundaries are told by their names"},

    // Styles and types
    {"IfcDoorStyle", "IfcDoorType", "PredefinedType=.DOOR.", kStyleGone},
    {"IfcWindowStyle", "IfcWindowType", "PredefinedType=.WINDOW.", kStyleGone},
    {"IfcDoorType", "IfcDoorStyle", "ConstructionType=.NOTDEFINED.;Sizeable=.F.", "types of doors are styles"},
    {"IfcWindowType", "IfcWindowStyle", "ConstructionType=.NOTDEFINED.;Sizeable=.F.", "types of windows are styles"},

    // Annotation and presentation
    {"IfcAnnotationCurveOccurrence", "IfcStyledItem", "", kAnnotation},
    {"IfcAnnotationFillAreaOccurrence", "IfcStyledItem", "", kAnnotation},
    {"IfcAnnotationSurfaceOccurrence", "IfcStyledItem", "", kAnnotation},
    {"IfcAnnotationSymbolOccurrence", "IfcStyledItem", "", kAnnotation},
    {"IfcAnnotationTextOccurrence", "IfcStyledItem", "", kAnnotation},
    {"IfcDimensionCurve", "IfcStyledItem", "", kAnnotation},
    {"IfcProjectionCurve", "IfcStyledItem", "", kAnnotation},
    {"IfcTerminatorSymbol", "IfcStyledItem", "", kAnnotation},
    {"IfcDimensionCurveTerminator", "IfcStyledItem", "", kAnnotation},
    {"IfcDraughtingPreDefinedTextFont", "IfcTextStyleFontModel", "FontSize=IFCDESCRIPTIVEMEASURE('medium')", "fonts are given by a model"},

    // Geometry
    {"IfcBezierCurve", "IfcBSplineCurveWithKnots", "", kCurve},
    {"IfcRationalBezierCurve", "IfcRationalBSplineCurveWithKnots", "", kCurve},
    {"IfcTriangulatedFaceSet", "IfcFaceBasedSurfaceModel", "", kFaces},
    {"IfcPolygonalFaceSet", "IfcFaceBasedSurfaceModel", "", kFaces},
    {"IfcIndexedPolyCurve", "IfcPolyline", "", "indexed curves came later"},
    {"IfcAdvancedFace", "IfcFaceSurface", "", "advanced faces came later"},
    {"IfcLinearPlacement", "IfcLocalPlacement", "", "placement along curves came later; the position in space is kept"},
    {"IfcLinearPlacementWithInclination", "IfcLinearPlacement", "", "inclination became a property of the curve"},
    {"IfcLinearSpanPlacement", "IfcLinearPlacement", "", "spans became properties of the curve"},
    {"IfcAlignmentCurve", "IfcGradientCurve", "", kDesign},
    {"IfcConnectionPortGeometry", "IfcConnectionPointGeometry", "", "ports connect in points"},

    // Materials
    {"IfcGeneralMaterialProperties", "IfcMaterialProperties", "Name='Pset_MaterialCommon'", kMaterialResource},
    {"IfcMechanicalMaterialProperties", "IfcMaterialProperties", "Name='Pset_MaterialMechanical'", kMaterialResource},
    {"IfcMechanicalSteelMaterialProperties", "IfcMaterialProperties", "Name='Pset_MaterialSteel'", kMaterialResource},
    {"IfcMechanicalConcreteMaterialProperties", "IfcMaterialProperties", "Name='Pset_MaterialConcrete'", kMaterialResource},
    {"IfcThermalMaterialProperties", "IfcMaterialProperties", "Name='Pset_MaterialThermal'", kMaterialResource},
    {"IfcHygroscopicMaterialProperties", "IfcMaterialProperties", "Name='Pset_MaterialHygroscopic'", kMaterialResource},
    {"IfcOpticalMaterialProperties", "IfcMaterialProperties", "Name='Pset_MaterialOptical'", kMaterialResource},
    {"IfcFuelProperties", "IfcMaterialProperties", "Name='Pset_MaterialFuel'", kMaterialResource},
    {"IfcProductsOfCombustionProperties", "IfcMaterialProperties", "Name='Pset_MaterialCombustion'", kMaterialResource},
    {"IfcWaterProperties", "IfcMaterialProperties", "Name='Pset_MaterialWater'", kMaterialResource},
    {"IfcExtendedMaterialProperties", "IfcMaterialProperties", "", kMaterialResource},
    {"IfcMaterialProperties", "IfcExtendedMaterialProperties", "", kMaterialResource},
    {"IfcMaterialProfileSet", "IfcMaterialList", "", kMaterialSets},
    {"IfcMaterialConstituentSet", "IfcMaterialList", "", kMaterialSets},

    // Profiles
    {"IfcGeneralProfileProperties", "IfcProfileProperties", "Name='Pset_ProfileMechanical'", kProfileResource},
    {"IfcStructuralProfileProperties", "IfcProfileProperties", "Name='Pset_ProfileMechanical'", kProfileResource},
    {"IfcStructuralSteelProfileProperties", "IfcProfileProperties", "Name='Pset_ProfileMechanical'", kProfileResource},
    {"IfcProfileProperties", "IfcGeneralProfileProperties", "", kProfileResource},
    {"IfcRibPlateProfileProperties", "IfcProfileProperties", "Name='Pset_ProfileMechanical'", kProfileResource},
    {"IfcRelAssociatesProfileProperties", "IfcRelAssociatesProfileDef", "", "elements are associated with the profile itself"},
    {"IfcRelAssociatesProfileProperties", "IfcRelAssociatesMaterial", "", "elements get their profile by a material profile set"},

    // Property sets of fixed attributes
    {"IfcElectricalBaseProperties", "IfcPropertySet", "", kFixedSet},
    {"IfcEnergyProperties", "IfcPropertySet", "", kFixedSet},
    {"IfcFluidFlowProperties", "IfcPropertySet", "", kFixedSet},
    {"IfcServiceLifeFactor", "IfcPropertySet", "", kFixedSet},
    {"IfcSoundProperties", "IfcPropertySet", "", kFixedSet},
    {"IfcSoundValue", "IfcPropertySet", "", kFixedSet},
    {"IfcSpaceThermalLoadProperties", "IfcPropertySet", "", kFixedSet},

    // Resources and external references
    {"IfcApprovalPropertyRelationship", "IfcResourceApprovalRelationship", "", kExternal},
    {"IfcPropertyConstraintRelationship", "IfcResourceConstraintRelationship", "", kExternal},
    {"IfcConstraintClassificationRelationship", "IfcExternalReferenceRelationship", "", kExternal},
    {"IfcReferencesValueDocument", "IfcExternalReferenceRelationship", "", kExternal},
    {"IfcTimeSeriesReferenceRelationship", "IfcExternalReferenceRelationship", "", kExternal},
    {"IfcClassificationItem", "IfcClassificationReference", "", kClassification},
    {"IfcClassificationNotation", "IfcClassificationReference", "", kClassification},
    {"IfcEnvironmentalImpactValue", "IfcCostValue", "", "impacts on the environment became values with a category"},

    // Relationships
    {"IfcRelAssignsTasks", "IfcRelAssignsToControl", "", "tasks have their time themselves"},
    {"IfcRelAssignsToProjectOrder", "IfcRelAssignsToControl", "", "orders are controls like others"},
    {"IfcRelSchedulesCostItems", "IfcRelAssignsToControl", "", "cost schedules are controls like others"},
    {"IfcRelOccupiesSpaces", "IfcRelAssignsToActor", "", "occupation became an assignment"},
    {"IfcRelOverridesProperties", "IfcRelDefinesByProperties", "", "properties of the occurrence override those of its type anyway"},
    {"IfcRelConnectsPortToElement", "IfcRelNests", "", "ports of what is no distribution element are nested in it"},
    {"IfcRelConnectsStructuralElement", "IfcRelAssignsToProduct", "", "structural members are assigned to their element"},
    {"IfcRelAdheresToElement", "IfcRelAggregates", "", "surface features are parts of their element"},
    {"IfcRelAssignsToGroupByFactor", "IfcRelAssignsToGroup", "", "factors of groups came later"},
};

// Entities that the target has for others to descend from.
constexpr StandInCase kStandIns[] = {
    {"IfcBuildingElement", "IfcBuildingElementProxy"},
    {"IfcBuildingElementType", "IfcBuildingElementProxyType"},
    {"IfcBuiltElementType", "IfcBuildingElementProxyType"},
    {"IfcElementComponent", "IfcDiscreteAccessory"},
    {"IfcElementComponentType", "IfcDiscreteAccessoryType"},
    {"IfcFeatureElementSubtraction", "IfcOpeningElement"},
    {"IfcFeatureElementAddition", "IfcProjectionElement"},
    {"IfcFeatureElement", "IfcBuildingElementProxy"},
    {"IfcTransportationDevice", "IfcTransportElement"},
    {"IfcTransportationDeviceType", "IfcTransportElementType"},
    {"IfcElement", "IfcBuildingElementProxy"},
    {"IfcElementType", "IfcBuildingElementProxyType"},
    {"IfcFacilityPart", "IfcBuildingStorey"},
    {"IfcFacility", "IfcBuilding"},
    {"IfcSpatialStructureElement", "IfcBuilding"},
    {"IfcSpatialElement", "IfcSpace"},
    {"IfcProduct", "IfcBuildingElementProxy"},
    {"IfcTypeProcess", "IfcTypeObject"},
    {"IfcTypeResource", "IfcTypeObject"},
    {"IfcProcess", "IfcTask"},
    {"IfcControl", "IfcActionRequest"},
    {"IfcStructuralAction", "IfcStructuralLinearAction"},
    {"IfcCoordinateReferenceSystem", "IfcProjectedCRS"},
};

constexpr std::string_view kDate = "dates and times became texts";
constexpr std::string_view kAssigned = "styles are assigned without an instance between";

constexpr InlineCase kInlines[] = {
    {"IfcCalendarDate", "", kDate},
    {"IfcLocalTime", "", kDate},
    {"IfcDateAndTime", "", kDate},
    {"IfcCoordinatedUniversalTimeOffset", "", kDate},
    {"IfcDocumentElectronicFormat", "", "formats became texts"},
    {"IfcClassificationNotationFacet", "", "facets became the identification of their notation"},
    {"IfcClassificationItemRelationship", "", "items refer to the one above them"},
    {"IfcAppliedValueRelationship", "", "values refer to their components"},
    {"IfcApprovalActorRelationship", "", "approvals refer to their actors"},
    {"IfcRelAssociatesAppliedValue", "", "cost items refer to their values"},
    {"IfcPresentationStyleAssignment", "Styles", kAssigned},
    {"IfcAnnotationSurface", "Item", "textures refer to faces"},
    {"IfcTwoDirectionRepeatFactor", "RepeatFactor,SecondRepeatFactor", "factors of repetition became vectors"},
    {"IfcOneDirectionRepeatFactor", "RepeatFactor", "factors of repetition became vectors"},
    {"IfcFillAreaStyleTileSymbolWithStyle", "Symbol", "tiles are styled items"},
    {"IfcMaterialProfileSetUsage", "ForProfileSet", kMaterialSets},
    {"IfcMaterialProfileSetUsageTapering", "ForProfileSet", kMaterialSets},
    {"IfcMaterialProfile", "Material", kMaterialSets},
    {"IfcMaterialProfileWithOffsets", "Material", kMaterialSets},
    {"IfcMaterialConstituent", "Material", kMaterialSets},
    {"IfcSurfaceCurve", "Curve3D", "curves on surfaces came later; the curve in space is kept"},
    {"IfcIntersectionCurve", "Curve3D", "curves on surfaces came later; the curve in space is kept"},
    {"IfcSeamCurve", "Curve3D", "curves on surfaces came later; the curve in space is kept"},
    {"IfcLinearAxisWithInclination", "Directrix", "inclination became a property of the curve"},
    {"IfcCartesianPointList2D", "", kFaces},
    {"IfcCartesianPointList3D", "", kFaces},
    {"IfcIndexedPolygonalFace", "", kFaces},
    {"IfcIndexedPolygonalFaceWithVoids", "", kFaces},
    {"IfcLagTime", "", "lags became numbers"},
    {"IfcTaskTime", "", "times became properties of their task"},
    {"IfcTaskTimeRecurring", "", "times became properties of their task"},
    {"IfcResourceTime", "", "times became properties of their resource"},
    {"IfcEventTime", "", "times became properties of their event"},
    {"IfcAlignmentHorizontalSegment", "", "design parameters became properties of their segment"},
    {"IfcAlignmentVerticalSegment", "", "design parameters became properties of their segment"},
    {"IfcAlignmentCantSegment", "", "design parameters became properties of their segment"},
    {"IfcAlignment2DHorizontal", "", kDesign},
    {"IfcAlignment2DHorizontalSegment", "", kDesign},
    {"IfcAlignment2DVertical", "", kDesign},
    {"IfcAlignment2DVerSegLine", "", kDesign},
    {"IfcAlignment2DVerSegCircularArc", "", kDesign},
    {"IfcAlignment2DVerSegParabolicArc", "", kDesign},
    {"IfcAlignment2DVerSegTransition", "", kDesign},
    {"IfcLineSegment2D", "", kDesign},
    {"IfcCircularArcSegment2D", "", kDesign},
    {"IfcTransitionCurveSegment2D", "", kDesign},
    {"IfcAxis2PlacementLinear", "", "placement along curves came later; the position in space is kept"},
    {"IfcDistanceExpression", "", "distances along a curve became points on it"},
    {"IfcPointByDistanceExpression", "", "points on a curve were distances along it"},
    {"IfcOrientationExpression", "", "orientation became part of the placement"},
};

constexpr RedundantCase kRedundant[] = {
    {"IfcRelAssigns", "RelatedObjectsType", "the related objects say themselves what they are"},
};

constexpr WrapCase kWraps[] = {
    {"IfcPresentationStyleAssignment", "Styles"},
};

} // namespace

std::span<const EntityCase> entityCases() noexcept { return kEntities; }
std::span<const StandInCase> standInCases() noexcept { return kStandIns; }
std::span<const InlineCase> inlineCases() noexcept { return kInlines; }
std::span<const RedundantCase> redundantCases() noexcept { return kRedundant; }
std::span<const WrapCase> wrapCases() noexcept { return kWraps; }

} // namespace vnifc::conversion
