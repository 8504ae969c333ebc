#include "Computed.h"

// clang-format off
namespace vnifc::conversion {

namespace {

constexpr std::string_view kRenamedAttribute = "the attribute has another name";
constexpr std::string_view kTyped = "the kind of an element became its predefined type";
constexpr std::string_view kIdentified = "identifiers became one attribute of all processes, controls and references";
constexpr std::string_view kUserWord = "one attribute takes the user's word for all kinds";
constexpr std::string_view kTrimmed = "the shape has a flange of its own below";
constexpr std::string_view kDesignOfAlignment = "alignments became nested elements with design parameters";
constexpr std::string_view kOnCurve = "placement along a curve became a point on it with axes";

constexpr AttributeCase kAttributes[] = {
    // Identifiers
    {"IfcActionRequest", "RequestID", "Identification", nullptr, kIdentified},
    {"IfcAsset", "AssetID", "Identification", nullptr, kIdentified},
    {"IfcConstructionResource", "ResourceIdentifier", "Identification", nullptr, kIdentified},
    {"IfcCostSchedule", "ID", "Identification", nullptr, kIdentified},
    {"IfcDocumentInformation", "DocumentId", "Identification", nullptr, kIdentified},
    {"IfcExternalReference", "ItemReference", "Identification", nullptr, kIdentified},
    {"IfcOrganization", "Id", "Identification", nullptr, kIdentified},
    {"IfcPermit", "PermitID", "Identification", nullptr, kIdentified},
    {"IfcPerson", "Id", "Identification", nullptr, kIdentified},
    {"IfcProcedure", "ProcedureID", "Identification", nullptr, kIdentified},
    {"IfcProjectOrder", "ID", "Identification", nullptr, kIdentified},
    {"IfcSpaceProgram", "SpaceProgramIdentifier", "Identification", nullptr, kIdentified},
    {"IfcTask", "TaskId", "Identification", nullptr, kIdentified},
    {"IfcWorkControl", "Identifier", "Identification", nullptr, kIdentified},

    // Kinds of elements
    {"IfcBuildingElementProxy", "CompositionType", "PredefinedType", nullptr, kTyped},
    {"IfcElectricDistributionPoint", "DistributionPointFunction", "PredefinedType", nullptr, kTyped},
    {"IfcInventory", "InventoryType", "PredefinedType", nullptr, kTyped},
    {"IfcProcedure", "ProcedureType", "PredefinedType", nullptr, kTyped},
    {"IfcRamp", "ShapeType", "PredefinedType", nullptr, kTyped},
    {"IfcReinforcingBar", "BarRole", "PredefinedType", nullptr, kTyped},
    {"IfcRoof", "ShapeType", "PredefinedType", nullptr, kTyped},
    {"IfcSpace", "InteriorOrExteriorSpace", "PredefinedType", nullptr, kTyped},
    {"IfcStair", "ShapeType", "PredefinedType", nullptr, kTyped},
    {"IfcTransportElement", "OperationType", "PredefinedType", nullptr, kTyped},
    {"IfcWindowStyle", "OperationType", "PartitioningType", nullptr, "operation of windows became their partitioning"},
    {"IfcWindowType", "PartitioningType", "OperationType", nullptr, "operation of windows became their partitioning"},
    {"IfcWorkControl", "WorkControlType", "PredefinedType", nullptr, kTyped},
    {"IfcProcedure", "UserDefinedProcedureType", "ObjectType", nullptr, kUserWord},
    {"IfcWorkControl", "UserDefinedControlType", "ObjectType", nullptr, kUserWord},
    {"IfcElectricDistributionPoint", "UserDefinedFunction", "ObjectType", nullptr, kUserWord},

    // Other names
    {"IfcApproval", "ApprovalDateTime", "TimeOfApproval", nullptr, kRenamedAttribute},
    {"IfcApproval", "ApprovalLevel", "Level", nullptr, kRenamedAttribute},
    {"IfcApproval", "ApprovalQualifier", "Qualifier", nullptr, kRenamedAttribute},
    {"IfcApproval", "ApprovalStatus", "Status", nullptr, kRenamedAttribute},
    {"IfcApprovalPropertyRelationship", "ApprovedProperties", "RelatedResourceObjects", nullptr, kRenamedAttribute},
    {"IfcApprovalPropertyRelationship", "Approval", "RelatingApproval", nullptr, kRenamedAttribute},
    {"IfcApprovalRelationship", "RelatedApproval", "RelatedApprovals", nullptr, "several approvals may be related"},
    {"IfcAsymmetricIShapeProfileDef", "FilletRadius", "BottomFlangeFilletRadius", nullptr, kTrimmed},
    {"IfcAsymmetricIShapeProfileDef", "FlangeThickness", "BottomFlangeThickness", nullptr, kTrimmed},
    {"IfcAsymmetricIShapeProfileDef", "OverallWidth", "BottomFlangeWidth", nullptr, kTrimmed},
    {"IfcBoundaryEdgeCondition", "LinearStiffnessByLengthX", "TranslationalStiffnessByLengthX", nullptr, kRenamedAttribute},
    {"IfcBoundaryEdgeCondition", "LinearStiffnessByLengthY", "TranslationalStiffnessByLengthY", nullptr, kRenamedAttribute},
    {"IfcBoundaryEdgeCondition", "LinearStiffnessByLengthZ", "TranslationalStiffnessByLengthZ", nullptr, kRenamedAttribute},
    {"IfcBoundaryFaceCondition", "LinearStiffnessByAreaX", "TranslationalStiffnessByAreaX", nullptr, kRenamedAttribute},
    {"IfcBoundaryFaceCondition", "LinearStiffnessByAreaY", "TranslationalStiffnessByAreaY", nullptr, kRenamedAttribute},
    {"IfcBoundaryFaceCondition", "LinearStiffnessByAreaZ", "TranslationalStiffnessByAreaZ", nullptr, kRenamedAttribute},
    {"IfcBoundaryNodeCondition", "LinearStiffnessX", "TranslationalStiffnessX", nullptr, kRenamedAttribute},
    {"IfcBoundaryNodeCondition", "LinearStiffnessY", "TranslationalStiffnessY", nullptr, kRenamedAttribute},
    {"IfcBoundaryNodeCondition", "LinearStiffnessZ", "TranslationalStiffnessZ", nullptr, kRenamedAttribute},
    {"IfcClassification", "Location", "Specification", nullptr, kRenamedAttribute},
    {"IfcClassificationItem", "ItemOf", "ReferencedSource", nullptr, kRenamedAttribute},
    {"IfcClassificationItem", "Title", "Name", nullptr, kRenamedAttribute},
    {"IfcClassificationItem", "Notation", "Identification", facetText, "notations became identifications"},
    {"IfcClassificationNotation", "NotationFacets", "Identification", facetsText, "notations became identifications"},
    {"IfcConnectionPortGeometry", "LocationAtRelatingElement", "PointOnRelatingElement", locationOfPlacement, "ports connect in points"},
    {"IfcConnectionPortGeometry", "LocationAtRelatedElement", "PointOnRelatedElement", locationOfPlacement, "ports connect in points"},
    {"IfcConstraintClassificationRelationship", "ClassifiedConstraint", "RelatedResourceObjects", nullptr, kRenamedAttribute},
    {"IfcConstraintClassificationRelationship", "RelatedClassifications", "RelatingReference", nullptr, kRenamedAttribute},
    {"IfcCostValue", "CostType", "Category", nullptr, kRenamedAttribute},
    {"IfcCurveStyleFontAndScaling", "CurveFont", "CurveStyleFont", nullptr, kRenamedAttribute},
    {"IfcEnvironmentalImpactValue", "ImpactType", "Name", nullptr, kRenamedAttribute},
    {"IfcExtendedMaterialProperties", "ExtendedProperties", "Properties", nullptr, kRenamedAttribute},
    {"IfcMaterialProperties", "Properties", "ExtendedProperties", nullptr, kRenamedAttribute},
    {"IfcMaterialRelationship", "Expression", "MaterialExpression", nullptr, kRenamedAttribute},
    {"IfcProfileProperties", "ProfileName", "Name", nullptr, kRenamedAttribute},
    {"IfcProperty", "Description", "Specification", nullptr, kRenamedAttribute},
    {"IfcPropertyConstraintRelationship", "RelatedProperties", "RelatedResourceObjects", nullptr, kRenamedAttribute},
    {"IfcQuantityNumber", "NumberValue", "CountValue", nullptr, "quantities of that kind came later"},
    {"IfcReferencesValueDocument", "ReferencedDocument", "RelatingReference", nullptr, kRenamedAttribute},
    {"IfcReferencesValueDocument", "ReferencingValues", "RelatedResourceObjects", nullptr, kRenamedAttribute},
    {"IfcRelAdheresToElement", "RelatingElement", "RelatingObject", nullptr, kRenamedAttribute},
    {"IfcRelAdheresToElement", "RelatedSurfaceFeatures", "RelatedObjects", nullptr, kRenamedAttribute},
    {"IfcRelConnectsPortToElement", "RelatedElement", "RelatingObject", nullptr, "ports are nested in their element"},
    {"IfcRelConnectsPortToElement", "RelatingPort", "RelatedObjects", nullptr, "ports are nested in their element"},
    {"IfcRelConnectsStructuralElement", "RelatedStructuralMember", "RelatedObjects", nullptr, kRenamedAttribute},
    {"IfcRelConnectsStructuralElement", "RelatingElement", "RelatingProduct", nullptr, kRenamedAttribute},
    {"IfcRelCoversSpaces", "RelatedSpace", "RelatingSpace", nullptr, kRenamedAttribute},
    {"IfcStairFlight", "NumberOfRiser", "NumberOfRisers", nullptr, kRenamedAttribute},
    {"IfcStructuralCurveConnection", "Axis", "AxisDirection", nullptr, kRenamedAttribute},
    {"IfcStructuralLoadTemperature", "DeltaT_Constant", "DeltaTConstant", nullptr, kRenamedAttribute},
    {"IfcStructuralLoadTemperature", "DeltaT_Y", "DeltaTY", nullptr, kRenamedAttribute},
    {"IfcStructuralLoadTemperature", "DeltaT_Z", "DeltaTZ", nullptr, kRenamedAttribute},
    {"IfcSubContractResource", "JobDescription", "LongDescription", nullptr, kRenamedAttribute},
    {"IfcSurfaceTexture", "TextureType", "Mode", nullptr, "the kind of a texture became a word"},
    {"IfcTimeSeriesReferenceRelationship", "ReferencedTimeSeries", "RelatedResourceObjects", nullptr, kRenamedAttribute},
    {"IfcTimeSeriesReferenceRelationship", "TimeSeriesReferences", "RelatingReference", nullptr, kRenamedAttribute},
    {"IfcWorkTime", "Finish", "FinishDate", nullptr, kRenamedAttribute},
    {"IfcWorkTime", "Start", "StartDate", nullptr, kRenamedAttribute},

    // Structure: resources
    {"IfcMaterialProfileSet", "MaterialProfiles", "Materials", materialsOf, "material profiles came later; the materials are kept"},
    {"IfcMaterialConstituentSet", "MaterialConstituents", "Materials", materialsOf, "material constituents came later; the materials are kept"},
    {"IfcRelAssociatesProfileProperties", "RelatingProfileProperties", "RelatingProfileDef", profileOfProperties, "elements are associated with the profile itself"},
    {"IfcRelAssociatesProfileProperties", "RelatingProfileProperties", "RelatingMaterial", profileSetOfProperties, "elements get their profile by a material profile set"},

    // Structure: geometry
    {"IfcBezierCurve", "Degree", "KnotMultiplicities", bezierMultiplicities, "the same curve with its knots written out"},
    {"IfcBezierCurve", "Degree", "Knots", bezierKnots, "the same curve with its knots written out"},
    {"IfcTriangulatedFaceSet", "Coordinates,CoordIndex", "FbsmFaces", facesOfTriangles, "the same faces, each with points of its own"},
    {"IfcPolygonalFaceSet", "Coordinates,Faces", "FbsmFaces", facesOfPolygons, "the same faces, each with points of its own"},
    {"IfcIndexedPolyCurve", "Points,Segments", "Points", pointsOfIndexedCurve, "the same points; indexed curves came later"},

    // Structure: alignment and what stands along it
    {"IfcLinearPlacement", "CartesianPosition,RelativePlacement,PlacementMeasuredAlong,Distance,Orientation", "RelativePlacement", positionInSpace, "placement along curves came later; the position in space is kept"},
    {"IfcLinearPlacement", "PlacementMeasuredAlong,Distance,Orientation", "RelativePlacement", axisPlacement, kOnCurve},
    {"IfcLinearPlacement", "RelativePlacement", "Distance", distanceOfPlacement, kOnCurve},
    {"IfcLinearPlacement", "RelativePlacement", "PlacementMeasuredAlong", curveOfPlacement, kOnCurve},
    {"IfcLinearPlacement", "RelativePlacement", "Orientation", orientationOfPlacement, kOnCurve},
    {"IfcLinearPositioningElement", "Axis,Representation", "Representation", alignmentShape, kDesignOfAlignment},
    {"IfcAlignmentCurve", "Horizontal", "BaseCurve", horizontalCurve, kDesignOfAlignment},
    {"IfcAlignmentCurve", "Vertical", "Segments", gradientSegments, kDesignOfAlignment},
};

constexpr LiteralCase kLiterals[] = {
    {"IfcAudioVisualApplianceTypeEnum", "RAILWAY_COMMUNICATION_TERMINAL", "COMMUNICATIONTERMINAL"},
    {"IfcChangeActionEnum", "MODIFIEDADDED", "MODIFIED"},
    {"IfcChangeActionEnum", "MODIFIEDDELETED", "MODIFIED"},
    {"IfcChangeActionEnum", "NOTDEFINED", "NOCHANGE"},
    {"IfcCommunicationsApplianceTypeEnum", "INTELLIGENT_PERIPHERAL", "INTELLIGENTPERIPHERAL"},
    {"IfcCommunicationsApplianceTypeEnum", "IP_NETWORK_EQUIPMENT", "IPNETWORKEQUIPMENT"},
    {"IfcCommunicationsApplianceTypeEnum", "OPTICAL_NETWORK_UNIT", "OPTICALNETWORKUNIT"},
    {"IfcLoadGroupTypeEnum", "LOAD_COMBINATION_GROUP", "LOAD_COMBINATION"},
    {"IfcMarinePartTypeEnum", "STORAGE", "STORAGEAREA"},
    {"IfcMobileTelecommunicationsApplianceTypeEnum", "REMOTE_RADIO_UNIT", "REMOTERADIOUNIT"},
    {"IfcProtectiveDeviceTypeEnum", "EARTHFAILUREDEVICE", "EARTHLEAKAGECIRCUITBREAKER"},
    {"IfcRailwayPartTypeEnum", "DILATATIONSUPERSTRUCTURE", "DILATIONTRACK"},
    {"IfcRailwayPartTypeEnum", "LINESIDESTRUCTURE", "LINESIDE"},
    {"IfcRailwayPartTypeEnum", "LINESIDESTRUCTUREPART", "LINESIDEPART"},
    {"IfcRailwayPartTypeEnum", "PLAINTRACKSUPESTRUCTURE", "PLAINTRACK"},
    {"IfcRailwayPartTypeEnum", "TRACKSTRUCTURE", "TRACK"},
    {"IfcRailwayPartTypeEnum", "TRACKSTRUCTUREPART", "TRACKPART"},
    {"IfcRailwayPartTypeEnum", "TURNOUTSUPERSTRUCTURE", "TURNOUTTRACK"},
    {"IfcRoleEnum", "COMISSIONINGENGINEER", "COMMISSIONINGENGINEER"},
};

constexpr std::string_view kPlacement2D = "IFCAXIS2PLACEMENT2D(IFCCARTESIANPOINT((0.,0.)),$)";
constexpr std::string_view kPlacement3D = "IFCAXIS2PLACEMENT3D(IFCCARTESIANPOINT((0.,0.,0.)),$,$)";
constexpr std::string_view kHistory =
    "?IFCOWNERHISTORY(IFCPERSONANDORGANIZATION(IFCPERSON($,'Unknown',$,$,$,$,$,$),IFCORGANIZATION($,'Unknown',$,$,$),$),"
    "IFCAPPLICATION(IFCORGANIZATION($,'Unknown',$,$,$),'0','Unknown','Unknown'),$,.NOCHANGE.,$,$,$,0)";
constexpr std::string_view kUnknown = "'NOTDEFINED'";
constexpr std::string_view kNumbered = "@number"; // identifiers must differ

// An enumeration without a line gets NOTDEFINED if it has that.
constexpr DefaultCase kDefaults[] = {
    {"IfcActionRequest", "RequestID", kNumbered},
    {"IfcApproval", "Identifier", kNumbered},
    {"IfcApproval", "Name", kUnknown},
    {"IfcApprovalRelationship", "Name", kUnknown},
    {"IfcAsset", "AssetID", kNumbered},
    {"IfcBSplineCurveWithKnots", "KnotSpec", ".PIECEWISE_BEZIER_KNOTS."},
    {"IfcClassification", "Edition", kUnknown},
    {"IfcClassification", "Source", kUnknown},
    {"IfcCompositeCurve", "SelfIntersect", ".F."},
    {"IfcCoordinateReferenceSystem", "Name", kUnknown},
    {"IfcCostSchedule", "ID", kNumbered},
    {"IfcCostValue", "CostType", kUnknown},
    {"IfcDerivedProfileDef", "Operator", "IFCCARTESIANTRANSFORMATIONOPERATOR2D(IFCDIRECTION((-1.,0.)),IFCDIRECTION((0.,1.)),IFCCARTESIANPOINT((0.,0.)),1.)"}, // what mirrors
    {"IfcDocumentInformation", "DocumentId", kNumbered},
    {"IfcFacilityPart", "UsageType", ".NOTDEFINED."},
    {"IfcGeometricRepresentationContext", "CoordinateSpaceDimension", "3"},
    {"IfcGeometricRepresentationContext", "WorldCoordinateSystem", kPlacement3D},
    {"IfcKerb", "Mountable", ".F."},
    {"IfcKerbType", "Mountable", ".F."},
    {"IfcOrganizationRelationship", "Name", kUnknown},
    {"IfcOwnerHistory", "ChangeAction", ".NOCHANGE."},
    {"IfcParameterizedProfileDef", "Position", kPlacement2D},
    {"IfcPavementType", "Flexible", ".F."},
    {"IfcPermit", "PermitID", kNumbered},
    {"IfcProcedure", "ProcedureID", kNumbered},
    {"IfcProfileProperties", "ProfileDefinition", "IFCPROFILEDEF(.AREA.,$)"},
    {"IfcProject", "RepresentationContexts", "?IFCGEOMETRICREPRESENTATIONCONTEXT($,'Model',3,$,IFCAXIS2PLACEMENT3D(IFCCARTESIANPOINT((0.,0.,0.)),$,$),$)"},
    {"IfcProject", "UnitsInContext", "?IFCUNITASSIGNMENT((IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.)))"},
    {"IfcProjectOrder", "ID", kNumbered},
    {"IfcRelAssociatesConstraint", "Intent", kUnknown},
    {"IfcRelSequence", "TimeLag", "0."},
    {"IfcRelSpaceBoundary", "RelatedBuildingElement", "IFCVIRTUALELEMENT(@guid,$,'Virtual boundary',$,$,$,$,$)"},
    {"IfcRoot", "OwnerHistory", kHistory},
    {"IfcSectionedSolidHorizontal", "FixedAxisVertical", ".T."},
    {"IfcSectionedSurface", "FixedAxisVertical", ".T."},
    {"IfcSpatialStructureElement", "CompositionType", ".ELEMENT."},
    {"IfcStructuralAction", "DestabilizingLoad", ".F."},
    {"IfcStructuralCurveConnection", "Axis", "IFCDIRECTION((0.,0.,1.))"},
    {"IfcStructuralCurveConnection", "AxisDirection", "IFCDIRECTION((0.,0.,1.))"},
    {"IfcStructuralCurveMember", "Axis", "IFCDIRECTION((0.,0.,1.))"},
    {"IfcStructuralLinearAction", "PredefinedType", ".CONST."},
    {"IfcStructuralLinearAction", "ProjectedOrTrue", ".TRUE_LENGTH."},
    {"IfcStructuralPlanarAction", "PredefinedType", ".CONST."},
    {"IfcStructuralPlanarAction", "ProjectedOrTrue", ".TRUE_LENGTH."},
    {"IfcSurfaceCurveSweptAreaSolid", "EndParam", "", endParameter},
    {"IfcSurfaceCurveSweptAreaSolid", "StartParam", "0."},
    {"IfcSweptAreaSolid", "Position", kPlacement3D},
    {"IfcSweptDiskSolid", "EndParam", "", endParameter},
    {"IfcSweptDiskSolid", "StartParam", "0."},
    {"IfcSweptSurface", "Position", kPlacement3D},
    {"IfcTable", "Name", kUnknown},
    {"IfcTableRow", "IsHeading", ".F."},
    {"IfcTask", "IsMilestone", ".F."},
    {"IfcTask", "TaskId", kNumbered},
    {"IfcTextStyleFontModel", "FontFamily", "=Name"},
    {"IfcWorkControl", "Identifier", kNumbered},
    {"IfcDoorStyle", "OperationType", ".NOTDEFINED."},
    {"IfcDoorStyle", "ParameterTakesPrecedence", ".F."},
    {"IfcWindowStyle", "ParameterTakesPrecedence", ".F."},
};

constexpr std::string_view kDates = "dates and times became texts";
constexpr std::string_view kDurations = "durations became texts";
constexpr std::string_view kTextDates = "dates and times were instances";

constexpr CoercionCase kCoercions[] = {
    {"IfcCalendarDate", "IfcDate", dateText, kDates},
    {"IfcDateAndTime", "IfcDate", dateText, kDates},
    {"IfcCalendarDate", "IfcDateTime", dateTimeText, kDates},
    {"IfcDateAndTime", "IfcDateTime", dateTimeText, kDates},
    {"IfcLocalTime", "IfcTime", timeText, kDates},
    {"IfcDate", "IfcDateTime", dateTimeOfText, kDates},
    {"IfcDateTime", "IfcDate", dateOfText, kDates},
    {"IfcDate", "IfcCalendarDate", calendarDate, kTextDates},
    {"IfcDateTime", "IfcDateAndTime", dateAndTime, kTextDates},
    {"IfcDate", "IfcDateAndTime", dateAndTime, kTextDates},
    {"IfcDateTime", "IfcCalendarDate", calendarDate, kTextDates},
    {"IfcTime", "IfcLocalTime", localTime, kTextDates},
    {"IfcTimeMeasure", "IfcDuration", durationText, kDurations},
    {"IfcDuration", "IfcTimeMeasure", durationNumber, kDurations},
    {"IfcTimeMeasure", "IfcLagTime", lagTime, "lags became instances"},
    {"IfcLagTime", "IfcTimeMeasure", lagNumber, "lags were numbers"},
    {"IfcDocumentElectronicFormat", "IfcIdentifier", mimeType, "formats became texts"},
    {"IfcDistanceExpression", "IfcPointByDistanceExpression", pointOnCurve, kOnCurve},
    {"IfcDistanceExpression", "IfcAxis2PlacementLinear", placementOnCurve, kOnCurve},
    {"IfcPointByDistanceExpression", "IfcDistanceExpression", distanceOfPoint, kOnCurve},
    {"IfcAxis2PlacementLinear", "IfcDistanceExpression", distanceOfPoint, kOnCurve},
};

constexpr RetypeCase kRetypes[] = {
    {"IfcAreaDensityMeasure", "IfcReal"},
    {"IfcDate", "IfcText"},
    {"IfcDateTime", "IfcText"},
    {"IfcDuration", "IfcText"},
    {"IfcNonNegativeLengthMeasure", "IfcLengthMeasure"},
    {"IfcPositiveInteger", "IfcInteger"},
    {"IfcSoundPowerLevelMeasure", "IfcReal"},
    {"IfcSoundPressureLevelMeasure", "IfcReal"},
    {"IfcTemperatureRateOfChangeMeasure", "IfcReal"},
    {"IfcTime", "IfcText"},
    {"IfcTimeStamp", "IfcInteger"},
    {"IfcURIReference", "IfcText"},
    {"IfcWellKnownTextLiteral", "IfcText"},
};

constexpr FoldCase kFolds[] = {
    {"IfcRelAssignsTasks", "RelatedObjects", "TaskTime", "TimeForTask", "tasks have their time themselves"},
    {"IfcAppliedValueRelationship", "ComponentOfTotal", "Components", "Components", "values refer to their components"},
    {"IfcAppliedValueRelationship", "ComponentOfTotal", "ArithmeticOperator", "ArithmeticOperator", "values refer to their components"},
    {"IfcClassificationItemRelationship", "RelatedItems", "ReferencedSource", "RelatingItem", "items refer to the one above them"},
    {"IfcApprovalActorRelationship", "Approval", "GivingApproval", "Actor", "approvals refer to their actors"},
    {"IfcRelAssociatesAppliedValue", "RelatedObjects", "CostValues", "RelatingAppliedValue", "cost items refer to their values"},
    {"IfcDocumentInformation", "DocumentReferences", "ReferencedDocument", "*", "references know their document"},
    {"IfcDocumentReference", "ReferencedDocument", "DocumentReferences", "*", "documents knew their references"},
    {"IfcLibraryInformation", "LibraryReference", "ReferencedLibrary", "*", "references know their library"},
    {"IfcLibraryReference", "ReferencedLibrary", "LibraryReference", "*", "libraries knew their references"},
};

constexpr CopyCase kCopies[] = {
    {"IfcObjectPlacement", "IFCLOCALPLACEMENT(@value,IFCAXIS2PLACEMENT3D(IFCCARTESIANPOINT((0.,0.,0.)),$,$))"},
    {"IfcProductDefinitionShape", "IFCPRODUCTDEFINITIONSHAPE(@value.Name,@value.Description,@value.Representations)"},
    {"IfcShapeRepresentation", "IFCSHAPEREPRESENTATION(@value.ContextOfItems,@value.RepresentationIdentifier,@value.RepresentationType,@value.Items)"},
    {"IfcStyledRepresentation", "IFCSTYLEDREPRESENTATION(@value.ContextOfItems,@value.RepresentationIdentifier,@value.RepresentationType,@value.Items)"},
    {"IfcTopologyRepresentation", "IFCTOPOLOGYREPRESENTATION(@value.ContextOfItems,@value.RepresentationIdentifier,@value.RepresentationType,@value.Items)"},
};

constexpr RequiredCase kRequired[] = {
    {"IfcPort", "ContainedIn", "IFCRELCONNECTSPORTTOELEMENT(@guid,@owner,$,$,@self,@whole)", "ports are connected to their element, not nested"},
    {"IfcSurfaceFeature", "AdheresToElement", "IFCRELADHERESTOELEMENT(@guid,@owner,$,$,@whole,(@self))", "surface features adhere to their element"},
    {"IfcTimeSeries", "HasExternalReference", "IFCEXTERNALREFERENCERELATIONSHIP($,$,IFCDOCUMENTREFERENCE($,'NOTDEFINED',$,$,$),(@self))", "time series have an external reference"},
    {"IfcObjectPlacement", "PlacesObject", "IFCANNOTATION(@guid,@owner,'Placement',$,$,@self,$)", "a placement places a product"},
};

constexpr PropertyCase kProperties[] = {
    {"IfcTransportElement", "CapacityByWeight", "Pset_TransportElementCommon", "CapacityWeight"},
    {"IfcTransportElement", "CapacityByNumber", "Pset_TransportElementCommon", "CapacityPeople"},
    {"IfcGeneralProfileProperties", "PhysicalWeight", "", "MassPerLength"},
    {"IfcSpaceProgram", "StandardRequiredArea", "Pset_SpaceProgram", "StandardRequiredArea"},
    {"IfcSpaceProgram", "MaxRequiredArea", "Pset_SpaceProgram", "MaxRequiredArea"},
    {"IfcSpaceProgram", "MinRequiredArea", "Pset_SpaceProgram", "MinRequiredArea"},
};

} // namespace

std::span<const AttributeCase> attributeCases() noexcept { return kAttributes; }
std::span<const LiteralCase> literalCases() noexcept { return kLiterals; }
std::span<const DefaultCase> defaultCases() noexcept { return kDefaults; }
std::span<const CoercionCase> coercionCases() noexcept { return kCoercions; }
std::span<const RetypeCase> retypeCases() noexcept { return kRetypes; }
std::span<const FoldCase> foldCases() noexcept { return kFolds; }
std::span<const CopyCase> copyCases() noexcept { return kCopies; }
std::span<const RequiredCase> requiredCases() noexcept { return kRequired; }
std::span<const PropertyCase> propertyCases() noexcept { return kProperties; }

} // namespace vnifc::conversion
