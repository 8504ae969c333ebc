#pragma once
#include <cstddef>

// Attributes and entities that carry meaning, in whatever release has them. Each is looked up once for a class, or for
// a model, and compared by number after that.
namespace vnifc::detail {

#define VNIFC_ATTRIBUTES(X)                                                                                            \
    X(AppliedValue)                                                                                                    \
    X(AssignedItems)                                                                                                   \
    X(Axis) X(BoundingBox) X(Category) X(Components) X(ContainedInStructure) X(ContainsElements) X(ContextOfItems) X(  \
        ConversionFactor) X(ConversionOffset) X(Coordinates) X(Currency) X(Declares) X(Decomposes) X(DefinedUnit)      \
        X(DefinedValues) X(DefinesOccurrence) X(DefinesType) X(DefiningUnit) X(DefiningValues) X(DirectionRatios) X(   \
            Elements) X(EnumerationReference) X(EnumerationValues) X(Exponent) X(ExtendedProperties) X(FillsVoids)     \
            X(ForLayerSet) X(ForProfileSet) X(Fraction) X(GlobalId) X(HasAssignments) X(HasAssociations) X(            \
                HasAssociatedConstituents) X(HasContext) X(HasFillings) X(HasOpenings) X(HasProperties)                \
                X(HasPropertySets) X(HasQuantities) X(Identification) X(IsDecomposedBy) X(IsDefinedBy) X(IsDeclaredBy) \
                    X(IsGroupedBy) X(IsNestedBy) X(IsTypedBy) X(ItemReference) X(Items) X(LayerAssignment) X(          \
                        LayerAssignments) X(LayerSetName) X(LayerThickness) X(Location) X(LongName)                    \
                        X(MappedRepresentation) X(MappingSource) X(Material) X(MaterialConstituents) X(MaterialLayers) \
                            X(MaterialProfiles) X(Materials) X(Name) X(Nests) X(NominalValue) X(ObjectPlacement) X(    \
                                ObjectTypeOf) X(ProjectsElements) X(RelatingElement) X(OwnerHistory) X(PlacementRelTo) \
                                X(Prefix) X(Profile) X(Properties) X(PropertyDefinitionOf) X(DefinesPropertyOf)        \
                                    X(Quantities) X(ReferencedSource) X(RefDirection) X(RelatedBuildingElement)        \
                                        X(RelatedElements) X(RelatedObjects) X(RelatedOpeningElement)                  \
                                            X(RelatingBuildingElement) X(RelatingClassification) X(RelatingContext)    \
                                                X(RelatingGroup) X(RelatingMaterial) X(RelatingObject)                 \
                                                    X(RelatingOpeningElement) X(RelatingPropertyDefinition)            \
                                                        X(RelatingStructure) X(RelatingType) X(RelativePlacement)      \
                                                            X(Representation) X(Representations) X(SetPointValue)      \
                                                                X(UpperBoundValue) X(LowerBoundValue) X(Tag) X(Types)  \
                                                                    X(Unit) X(UnitComponent) X(UnitType) X(Units)      \
                                                                        X(UnitsInContext) X(ValueComponent)            \
                                                                            X(VoidsElements)

#define VNIFC_ENTITIES(X)                                                                                              \
    X(IfcAxis2Placement3D)                                                                                             \
    X(IfcAxis2Placement2D)                                                                                             \
    X(IfcBuilding) X(IfcBuildingStorey) X(IfcComplexProperty) X(IfcContextDependentUnit) X(IfcConversionBasedUnit)     \
        X(IfcConversionBasedUnitWithOffset) X(IfcClassification) X(IfcDerivedUnit) X(IfcElement) X(IfcElementQuantity) \
            X(IfcExtendedProperties) X(IfcFeatureElement) X(IfcGroup) X(IfcLocalPlacement) X(IfcMaterial)              \
                X(IfcMaterialConstituentSet) X(IfcMaterialDefinition) X(IfcMaterialLayer) X(IfcMaterialLayerSet)       \
                    X(IfcMaterialLayerSetUsage) X(IfcMaterialList) X(IfcMaterialProfile) X(IfcMaterialProfileSet)      \
                        X(IfcMaterialProfileSetUsage) X(IfcMaterialProperties) X(IfcMonetaryUnit) X(IfcNamedUnit)      \
                            X(IfcObject) X(IfcObjectDefinition) X(IfcOpeningElement) X(IfcPhysicalComplexQuantity) X(  \
                                IfcPhysicalQuantity) X(IfcPort) X(IfcProduct) X(IfcProfileDef) X(IfcProfileProperties) \
                                X(IfcProject) X(IfcProperty) X(IfcPropertyAbstraction) X(IfcPropertyBoundedValue)      \
                                    X(IfcPropertyEnumeratedValue) X(IfcPropertyListValue) X(IfcPropertyReferenceValue) \
                                        X(IfcPropertySet) X(IfcPropertySetDefinition) X(IfcPropertySetDefinitionSet)   \
                                            X(IfcPropertySingleValue) X(IfcPropertyTableValue) X(IfcRelAggregates)     \
                                                X(IfcRelAssignsToGroup) X(IfcRelAssociatesClassification)              \
                                                    X(IfcRelAssociatesMaterial) X(IfcRelContainedInSpatialStructure)   \
                                                        X(IfcRelDefinesByProperties) X(IfcRelDefinesByType)            \
                                                            X(IfcRelationship) X(IfcRoot) X(IfcSIUnit) X(IfcSite)      \
                                                                X(IfcSpatialElement) X(IfcSpatialStructureElement)     \
                                                                    X(IfcSystem) X(IfcTypeObject) X(IfcUnitAssignment)

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
