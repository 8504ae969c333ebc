#pragma once
#include <cstddef>

// Attributes and entities that carry meaning, in whatever release has them. Each is looked up once for a class, or for
// a model, and compared by number after that.
namespace vnifc::detail {

// One a line, in alphabetical order.
// clang-format off
#define VNIFC_ATTRIBUTES(X) \
    X(AppliedValue) \
    X(AssignedItems) \
    X(AssociatedTo) \
    X(Axis) \
    X(BoundingBox) \
    X(Category) \
    X(Components) \
    X(ContainedInStructure) \
    X(ContainsElements) \
    X(ContextOfItems) \
    X(ConversionFactor) \
    X(ConversionOffset) \
    X(Coordinates) \
    X(Currency) \
    X(Declares) \
    X(Decomposes) \
    X(DefinedUnit) \
    X(DefinedValues) \
    X(DefinesOccurrence) \
    X(DefinesPropertyOf) \
    X(DefinesType) \
    X(DefiningUnit) \
    X(DefiningValues) \
    X(DirectionRatios) \
    X(Elements) \
    X(EnumerationReference) \
    X(EnumerationValues) \
    X(Exponent) \
    X(ExtendedProperties) \
    X(FillsVoids) \
    X(ForLayerSet) \
    X(ForProfileSet) \
    X(Fraction) \
    X(GlobalId) \
    X(HasAssignments) \
    X(HasAssociatedConstituents) \
    X(HasAssociations) \
    X(HasContext) \
    X(HasFillings) \
    X(HasOpenings) \
    X(HasProjections) \
    X(HasProperties) \
    X(HasPropertySets) \
    X(HasQuantities) \
    X(Identification) \
    X(IsDeclaredBy) \
    X(IsDecomposedBy) \
    X(IsDefinedBy) \
    X(IsGroupedBy) \
    X(IsNestedBy) \
    X(IsTypedBy) \
    X(ItemReference) \
    X(Items) \
    X(LayerAssignment) \
    X(LayerAssignments) \
    X(LayerSetName) \
    X(LayerThickness) \
    X(Location) \
    X(LongName) \
    X(LowerBoundValue) \
    X(MappedRepresentation) \
    X(MappingSource) \
    X(Material) \
    X(MaterialConstituents) \
    X(MaterialLayers) \
    X(MaterialProfiles) \
    X(Materials) \
    X(Name) \
    X(Nests) \
    X(NominalValue) \
    X(ObjectPlacement) \
    X(ObjectTypeOf) \
    X(OwnerHistory) \
    X(PartOfComplex) \
    X(PartOfPset) \
    X(PlacementRelTo) \
    X(Prefix) \
    X(Profile) \
    X(ProjectsElements) \
    X(Properties) \
    X(PropertyDefinitionOf) \
    X(Quantities) \
    X(RefDirection) \
    X(ReferencedSource) \
    X(RelatedBuildingElement) \
    X(RelatedElements) \
    X(RelatedFeatureElement) \
    X(RelatedObjects) \
    X(RelatedOpeningElement) \
    X(RelatingBuildingElement) \
    X(RelatingClassification) \
    X(RelatingContext) \
    X(RelatingElement) \
    X(RelatingGroup) \
    X(RelatingMaterial) \
    X(RelatingObject) \
    X(RelatingOpeningElement) \
    X(RelatingPropertyDefinition) \
    X(RelatingStructure) \
    X(RelatingType) \
    X(RelativePlacement) \
    X(Representation) \
    X(Representations) \
    X(SetPointValue) \
    X(Tag) \
    X(Types) \
    X(Unit) \
    X(UnitComponent) \
    X(UnitType) \
    X(Units) \
    X(UnitsInContext) \
    X(UpperBoundValue) \
    X(ValueComponent) \
    X(VoidsElements)

#define VNIFC_ENTITIES(X) \
    X(IfcAxis2Placement2D) \
    X(IfcAxis2Placement3D) \
    X(IfcBuilding) \
    X(IfcBuildingStorey) \
    X(IfcClassification) \
    X(IfcComplexProperty) \
    X(IfcContextDependentUnit) \
    X(IfcConversionBasedUnit) \
    X(IfcConversionBasedUnitWithOffset) \
    X(IfcDerivedUnit) \
    X(IfcElement) \
    X(IfcElementQuantity) \
    X(IfcExtendedProperties) \
    X(IfcFeatureElement) \
    X(IfcGroup) \
    X(IfcLocalPlacement) \
    X(IfcMaterial) \
    X(IfcMaterialConstituentSet) \
    X(IfcMaterialDefinition) \
    X(IfcMaterialLayer) \
    X(IfcMaterialLayerSet) \
    X(IfcMaterialLayerSetUsage) \
    X(IfcMaterialList) \
    X(IfcMaterialProfile) \
    X(IfcMaterialProfileSet) \
    X(IfcMaterialProfileSetUsage) \
    X(IfcMaterialProperties) \
    X(IfcMonetaryUnit) \
    X(IfcNamedUnit) \
    X(IfcObject) \
    X(IfcObjectDefinition) \
    X(IfcOpeningElement) \
    X(IfcPhysicalComplexQuantity) \
    X(IfcPhysicalQuantity) \
    X(IfcPort) \
    X(IfcPresentationLayerAssignment) \
    X(IfcProduct) \
    X(IfcProfileDef) \
    X(IfcProfileProperties) \
    X(IfcProject) \
    X(IfcProperty) \
    X(IfcPropertyAbstraction) \
    X(IfcPropertyBoundedValue) \
    X(IfcPropertyEnumeratedValue) \
    X(IfcPropertyListValue) \
    X(IfcPropertyReferenceValue) \
    X(IfcPropertySet) \
    X(IfcPropertySetDefinition) \
    X(IfcPropertySetDefinitionSet) \
    X(IfcPropertySingleValue) \
    X(IfcPropertyTableValue) \
    X(IfcRelAggregates) \
    X(IfcRelAssignsToGroup) \
    X(IfcRelAssociatesClassification) \
    X(IfcRelAssociatesMaterial) \
    X(IfcRelContainedInSpatialStructure) \
    X(IfcRelDefinesByProperties) \
    X(IfcRelDefinesByType) \
    X(IfcRelationship) \
    X(IfcRoot) \
    X(IfcSIUnit) \
    X(IfcShapeAspect) \
    X(IfcSite) \
    X(IfcSpatialElement) \
    X(IfcSpatialStructureElement) \
    X(IfcStyledItem) \
    X(IfcSystem) \
    X(IfcTypeObject) \
    X(IfcUnitAssignment)
// clang-format on

/// An attribute by name.
enum class Name : unsigned char {
#define VNIFC_NAME(name) name,
    VNIFC_ATTRIBUTES(VNIFC_NAME)
#undef VNIFC_NAME
};

/// An entity by name.
enum class Entity : unsigned char {
#define VNIFC_NAME(name) name,
    VNIFC_ENTITIES(VNIFC_NAME)
#undef VNIFC_NAME
};

inline constexpr const char* kAttributeNames[] = {
#define VNIFC_NAME(name) #name,
    VNIFC_ATTRIBUTES(VNIFC_NAME)
#undef VNIFC_NAME
};

inline constexpr const char* kEntityNames[] = {
#define VNIFC_NAME(name) #name,
    VNIFC_ENTITIES(VNIFC_NAME)
#undef VNIFC_NAME
};

inline constexpr std::size_t kAttributeCount = sizeof kAttributeNames / sizeof *kAttributeNames;
inline constexpr std::size_t kEntityCount = sizeof kEntityNames / sizeof *kEntityNames;

} // namespace vnifc::detail
