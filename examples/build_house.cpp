// Builds a two-storey house through the typed classes and writes it as an IFC4X3_ADD2 file.
// Usage: build_house OUT.ifc
//
// Lengths are in metres, the unit that the project declares. x runs along the south wall, y to the north, z up.

#include <IFC4X3_ADD2/IfcApplication.h>
#include <IFC4X3_ADD2/IfcAxis2Placement3D.h>
#include <IFC4X3_ADD2/IfcBuilding.h>
#include <IFC4X3_ADD2/IfcBuildingStorey.h>
#include <IFC4X3_ADD2/IfcCartesianPoint.h>
#include <IFC4X3_ADD2/IfcDerivedUnit.h>
#include <IFC4X3_ADD2/IfcDerivedUnitElement.h>
#include <IFC4X3_ADD2/IfcDirection.h>
#include <IFC4X3_ADD2/IfcDoor.h>
#include <IFC4X3_ADD2/IfcElementQuantity.h>
#include <IFC4X3_ADD2/IfcExtrudedAreaSolid.h>
#include <IFC4X3_ADD2/IfcGeometricRepresentationSubContext.h>
#include <IFC4X3_ADD2/IfcLocalPlacement.h>
#include <IFC4X3_ADD2/IfcMaterial.h>
#include <IFC4X3_ADD2/IfcMaterialLayer.h>
#include <IFC4X3_ADD2/IfcMaterialLayerSet.h>
#include <IFC4X3_ADD2/IfcMaterialLayerSetUsage.h>
#include <IFC4X3_ADD2/IfcOpeningElement.h>
#include <IFC4X3_ADD2/IfcOrganization.h>
#include <IFC4X3_ADD2/IfcOwnerHistory.h>
#include <IFC4X3_ADD2/IfcPerson.h>
#include <IFC4X3_ADD2/IfcPersonAndOrganization.h>
#include <IFC4X3_ADD2/IfcPolyline.h>
#include <IFC4X3_ADD2/IfcProductDefinitionShape.h>
#include <IFC4X3_ADD2/IfcProject.h>
#include <IFC4X3_ADD2/IfcPropertySet.h>
#include <IFC4X3_ADD2/IfcPropertySingleValue.h>
#include <IFC4X3_ADD2/IfcQuantityArea.h>
#include <IFC4X3_ADD2/IfcQuantityLength.h>
#include <IFC4X3_ADD2/IfcQuantityVolume.h>
#include <IFC4X3_ADD2/IfcRectangleProfileDef.h>
#include <IFC4X3_ADD2/IfcRelAggregates.h>
#include <IFC4X3_ADD2/IfcRelAssociatesMaterial.h>
#include <IFC4X3_ADD2/IfcRelContainedInSpatialStructure.h>
#include <IFC4X3_ADD2/IfcRelDeclares.h>
#include <IFC4X3_ADD2/IfcRelDefinesByProperties.h>
#include <IFC4X3_ADD2/IfcRelDefinesByType.h>
#include <IFC4X3_ADD2/IfcRelFillsElement.h>
#include <IFC4X3_ADD2/IfcRelVoidsElement.h>
#include <IFC4X3_ADD2/IfcSIUnit.h>
#include <IFC4X3_ADD2/IfcShapeRepresentation.h>
#include <IFC4X3_ADD2/IfcSite.h>
#include <IFC4X3_ADD2/IfcSlab.h>
#include <IFC4X3_ADD2/IfcUnitAssignment.h>
#include <IFC4X3_ADD2/IfcWall.h>
#include <IFC4X3_ADD2/IfcWallType.h>
#include <IFC4X3_ADD2/Module.h>
#include <VnIfcCore/VnIfcModel.h>

#include <iostream>

using namespace IFC4X3_ADD2;
using namespace VN_SDAI;

namespace {

using Handles = VnIfcArray<VnDbObjectId>;

struct Vector {
    double x, y, z;
};

struct Layer {
    const char* material;
    double thickness;
};

/// An exterior wall as planned: where its outer face begins, which way it runs, and how far. Seen from above the walls
/// go round the house to the left, so that the house is on their y side; each ends where the next one stands across.
struct Side {
    const char* name;
    Vector corner;
    Vector direction;
    double length;
};

constexpr const char* kTimeStamp = "2024-05-01T12:00:00Z";
constexpr int kTime = 1714564800; // the same, in seconds since 1970

constexpr double kHouseLength = 10;
constexpr double kHouseWidth = 8;
constexpr double kStoreyHeight = 3;
constexpr double kSlabThickness = 0.25;
constexpr double kWallHeight = kStoreyHeight - kSlabThickness;
constexpr Layer kWallLayers[] = {{"Facing brick", 0.125}, {"Mineral wool", 0.125}, {"Concrete block", 0.25}};
constexpr double kWallThickness = kWallLayers[0].thickness + kWallLayers[1].thickness + kWallLayers[2].thickness;
constexpr double kDoorWidth = 1;
constexpr double kDoorHeight = 2.125;
constexpr double kDoorPanel = 0.0625;
constexpr double kDoorFromCorner = 4;

constexpr Side kSides[] = {
    {"South wall", {0, 0, 0}, {1, 0, 0}, kHouseLength - kWallThickness},
    {"East wall", {kHouseLength, 0, 0}, {0, 1, 0}, kHouseWidth - kWallThickness},
    {"North wall", {kHouseLength, kHouseWidth, 0}, {-1, 0, 0}, kHouseLength - kWallThickness},
    {"West wall", {0, kHouseWidth, 0}, {0, -1, 0}, kHouseWidth - kWallThickness},
};

/// A value of the select S that is an instance.
template <class S>
S select(const VnDbObjectId& instance) {
    S value;
    value.setHandle(instance);
    return value;
}

template <class S>
VnIfcArray<S> selects(const Handles& instances) {
    VnIfcArray<S> values;
    for (const VnDbObjectId& instance : instances)
        values.append(select<S>(instance));
    return values;
}

/// A model in the making, and what nearly every instance in it refers to.
class Draft {
public:
    explicit Draft(VnIfcModel& model) : m_model(model) {}

    template <class E>
    E* make() {
        return m_model.create<E>();
    }

    /// For subtypes of IfcRoot. Relations need no name.
    template <class E>
    E* makeRoot() {
        E* root = make<E>();
        root->setGlobalId(nextGlobalId());
        root->setOwnerHistory(ownerHistory);
        return root;
    }
    template <class E>
    E* makeRoot(const char* name) {
        E* root = makeRoot<E>();
        root->setName(name);
        return root;
    }

    VnDbObjectId ownerHistory;
    VnDbObjectId bodyContext;
    VnDbObjectId axisContext;
    VnDbObjectId up;

private:
    /// Counted, so that the file is the same each time; a real application takes VnIfcGUID::create().
    VnIfcGUID nextGlobalId() {
        ++m_count;
        return VnIfcGUID::fromBytes({0x6b, 0x1c, 0x5e, 0x93, 0x2f, 0x47, 0x8d, 0x0a, 0xb2, 0x74, 0x19, 0xe8, 0x5d, 0xc3,
                                     static_cast<std::uint8_t>(m_count >> 8), static_cast<std::uint8_t>(m_count)});
    }

    VnIfcModel& m_model;
    unsigned m_count = 0;
};

// ---- who, in which units, in which space

VnDbObjectId makeOwnerHistory(Draft& draft) {
    auto* person = draft.make<IfcPerson>();
    person->setGivenName("Ada");
    person->setFamilyName("Mason");
    auto* organization = draft.make<IfcOrganization>();
    organization->setName("vnifc");
    auto* user = draft.make<IfcPersonAndOrganization>();
    user->setThePerson(person->objectId());
    user->setTheOrganization(organization->objectId());

    auto* application = draft.make<IfcApplication>();
    application->setApplicationDeveloper(organization->objectId());
    application->setVersion("0.1.0");
    application->setApplicationFullName("vnifc example build_house");
    application->setApplicationIdentifier("build_house");

    auto* history = draft.make<IfcOwnerHistory>();
    history->setOwningUser(user->objectId());
    history->setOwningApplication(application->objectId());
    history->setChangeAction(kIfcChangeActionEnum_ADDED);
    history->setLastModifiedDate(kTime);
    history->setCreationDate(kTime);
    return history->objectId();
}

VnDbObjectId makeSiUnit(Draft& draft, IfcUnitEnum type, IfcSIUnitName name) {
    auto* unit = draft.make<IfcSIUnit>();
    unit->setUnitType(type);
    unit->setName(name);
    return unit->objectId();
}

VnDbObjectId makePower(Draft& draft, const VnDbObjectId& unit, int exponent) {
    auto* element = draft.make<IfcDerivedUnitElement>();
    element->setUnit(unit);
    element->setExponent(exponent);
    return element->objectId();
}

VnDbObjectId makeUnits(Draft& draft) {
    const VnDbObjectId metre = makeSiUnit(draft, kIfcUnitEnum_LENGTHUNIT, kIfcSIUnitName_METRE);
    const VnDbObjectId watt = makeSiUnit(draft, kIfcUnitEnum_POWERUNIT, kIfcSIUnitName_WATT);
    const VnDbObjectId kelvin = makeSiUnit(draft, kIfcUnitEnum_THERMODYNAMICTEMPERATUREUNIT, kIfcSIUnitName_KELVIN);
    auto* transmittance = draft.make<IfcDerivedUnit>();
    transmittance->setUnitType(kIfcDerivedUnitEnum_THERMALTRANSMITTANCEUNIT);
    transmittance->setElements({makePower(draft, watt, 1), makePower(draft, metre, -2), makePower(draft, kelvin, -1)});

    auto* units = draft.make<IfcUnitAssignment>();
    units->setUnits(selects<IfcUnit>({
        metre,
        makeSiUnit(draft, kIfcUnitEnum_AREAUNIT, kIfcSIUnitName_SQUARE_METRE),
        makeSiUnit(draft, kIfcUnitEnum_VOLUMEUNIT, kIfcSIUnitName_CUBIC_METRE),
        makeSiUnit(draft, kIfcUnitEnum_PLANEANGLEUNIT, kIfcSIUnitName_RADIAN),
        transmittance->objectId(),
    }));
    return units->objectId();
}

VnDbObjectId makePoint(Draft& draft, const VnIfcArray<double>& coordinates) {
    auto* point = draft.make<IfcCartesianPoint>();
    point->setCoordinates(coordinates);
    return point->objectId();
}

VnDbObjectId makeDirection(Draft& draft, const Vector& v) {
    auto* direction = draft.make<IfcDirection>();
    direction->setDirectionRatios({v.x, v.y, v.z});
    return direction->objectId();
}

/// A coordinate system whose z axis points up; its x axis as given, or along that of the surrounding system.
VnDbObjectId makeAxes(Draft& draft, const Vector& origin, const VnDbObjectId& xAxis = {}) {
    auto* axes = draft.make<IfcAxis2Placement3D>();
    axes->setLocation(makePoint(draft, {origin.x, origin.y, origin.z}));
    if (!xAxis.isNull()) {
        axes->setAxis(draft.up);
        axes->setRefDirection(xAxis);
    }
    return axes->objectId();
}

VnDbObjectId makeSubContext(Draft& draft, const VnDbObjectId& parent, const char* name,
                            IfcGeometricProjectionEnum view) {
    auto* context = draft.make<IfcGeometricRepresentationSubContext>();
    context->setContextIdentifier(name);
    context->setContextType("Model");
    context->setParentContext(parent);
    context->setTargetView(view);
    return context->objectId();
}

IfcProject* makeProject(Draft& draft) {
    draft.ownerHistory = makeOwnerHistory(draft);
    draft.up = makeDirection(draft, {0, 0, 1});

    auto* context = draft.make<IfcGeometricRepresentationContext>();
    context->setContextType("Model");
    context->setCoordinateSpaceDimension(3);
    context->setPrecision(1e-5);
    context->setWorldCoordinateSystem(select<IfcAxis2Placement>(makeAxes(draft, {0, 0, 0})));
    draft.bodyContext = makeSubContext(draft, context->objectId(), "Body", kIfcGeometricProjectionEnum_MODEL_VIEW);
    draft.axisContext = makeSubContext(draft, context->objectId(), "Axis", kIfcGeometricProjectionEnum_GRAPH_VIEW);

    auto* project = draft.makeRoot<IfcProject>("House with a door");
    project->setRepresentationContexts({context->objectId()});
    project->setUnitsInContext(makeUnits(draft));
    return project;
}

// ---- shape

VnDbObjectId makePlacement(Draft& draft, const VnDbObjectId& relativeTo, const Vector& origin,
                           const VnDbObjectId& xAxis = {}) {
    auto* placement = draft.make<IfcLocalPlacement>();
    placement->setPlacementRelTo(relativeTo);
    placement->setRelativePlacement(select<IfcAxis2Placement>(makeAxes(draft, origin, xAxis)));
    return placement->objectId();
}

VnDbObjectId makeRepresentation(Draft& draft, const VnDbObjectId& context, const char* name, const char* type,
                                const VnDbObjectId& item) {
    auto* representation = draft.make<IfcShapeRepresentation>();
    representation->setContextOfItems(context);
    representation->setRepresentationIdentifier(name);
    representation->setRepresentationType(type);
    representation->setItems({item});
    return representation->objectId();
}

/// A solid box: a rectangle, which lies around its centre, extruded upwards.
VnDbObjectId makeBox(Draft& draft, const Vector& corner, const Vector& size) {
    auto* profile = draft.make<IfcRectangleProfileDef>();
    profile->setProfileType(kIfcProfileTypeEnum_AREA);
    profile->setXDim(size.x);
    profile->setYDim(size.y);
    auto* solid = draft.make<IfcExtrudedAreaSolid>();
    solid->setSweptArea(profile->objectId());
    solid->setPosition(makeAxes(draft, {corner.x + size.x / 2, corner.y + size.y / 2, corner.z}));
    solid->setExtrudedDirection(draft.up);
    solid->setDepth(size.z);
    return makeRepresentation(draft, draft.bodyContext, "Body", "SweptSolid", solid->objectId());
}

/// The line along which a wall runs; its layers are measured from there.
VnDbObjectId makeAxisLine(Draft& draft, double length) {
    auto* line = draft.make<IfcPolyline>();
    line->setPoints({makePoint(draft, {0, 0}), makePoint(draft, {length, 0})});
    return makeRepresentation(draft, draft.axisContext, "Axis", "Curve2D", line->objectId());
}

void setShape(Draft& draft, IfcProduct& product, const Handles& representations) {
    auto* shape = draft.make<IfcProductDefinitionShape>();
    shape->setRepresentations(representations);
    product.setRepresentation(shape->objectId());
}

// ---- relations

void aggregate(Draft& draft, const IfcObjectDefinition& whole, const Handles& parts) {
    auto* relation = draft.makeRoot<IfcRelAggregates>();
    relation->setRelatingObject(whole.objectId());
    relation->setRelatedObjects(parts);
}

void contain(Draft& draft, const IfcSpatialElement& structure, const Handles& elements) {
    auto* relation = draft.makeRoot<IfcRelContainedInSpatialStructure>();
    relation->setRelatedElements(elements);
    relation->setRelatingStructure(structure.objectId());
}

void declare(Draft& draft, const IfcContext& context, const Handles& definitions) {
    auto* relation = draft.makeRoot<IfcRelDeclares>();
    relation->setRelatingContext(context.objectId());
    relation->setRelatedDefinitions(selects<IfcDefinitionSelect>(definitions));
}

void defineByType(Draft& draft, const IfcTypeObject& type, const Handles& objects) {
    auto* relation = draft.makeRoot<IfcRelDefinesByType>();
    relation->setRelatedObjects(objects);
    relation->setRelatingType(type.objectId());
}

void defineByProperties(Draft& draft, const IfcPropertySetDefinition& properties, const Handles& objects) {
    auto* relation = draft.makeRoot<IfcRelDefinesByProperties>();
    relation->setRelatedObjects(objects);
    relation->setRelatingPropertyDefinition(select<IfcPropertySetDefinitionSelect>(properties.objectId()));
}

void associateMaterial(Draft& draft, const VnDbObjectId& material, const Handles& objects) {
    auto* relation = draft.makeRoot<IfcRelAssociatesMaterial>();
    relation->setRelatedObjects(selects<IfcDefinitionSelect>(objects));
    relation->setRelatingMaterial(select<IfcMaterialSelect>(material));
}

// ---- materials, properties, quantities

VnDbObjectId makeMaterial(Draft& draft, const char* name) {
    auto* material = draft.make<IfcMaterial>();
    material->setName(name);
    return material->objectId();
}

/// From the outside inwards.
VnDbObjectId makeWallLayers(Draft& draft) {
    Handles layers;
    for (const Layer& planned : kWallLayers) {
        auto* layer = draft.make<IfcMaterialLayer>();
        layer->setMaterial(makeMaterial(draft, planned.material));
        layer->setLayerThickness(planned.thickness);
        layers.append(layer->objectId());
    }
    auto* set = draft.make<IfcMaterialLayerSet>();
    set->setMaterialLayers(layers);
    set->setLayerSetName("Cavity wall");
    return set->objectId();
}

/// The layers follow each other across the wall, beginning at its axis line, which is its outer face.
VnDbObjectId makeLayerUsage(Draft& draft, const VnDbObjectId& layers) {
    auto* usage = draft.make<IfcMaterialLayerSetUsage>();
    usage->setForLayerSet(layers);
    usage->setLayerSetDirection(kIfcLayerSetDirectionEnum_AXIS2);
    usage->setDirectionSense(kIfcDirectionSenseEnum_POSITIVE);
    usage->setOffsetFromReferenceLine(0);
    return usage->objectId();
}

/// The setter says of which type the value is: IfcValue has a member for each measure.
template <class T>
VnDbObjectId makeProperty(Draft& draft, const char* name, void (IfcValue::*setMember)(T), T nominal) {
    IfcValue value;
    (value.*setMember)(std::move(nominal));
    auto* property = draft.make<IfcPropertySingleValue>();
    property->setName(name);
    property->setNominalValue(value);
    return property->objectId();
}

IfcPropertySet* makeWallProperties(Draft& draft) {
    auto* properties = draft.makeRoot<IfcPropertySet>("Pset_WallCommon");
    properties->setHasProperties({
        makeProperty<VnAnsiString>(draft, "Reference", &IfcValue::setIfcIdentifier, "EW-500"),
        makeProperty<VnIfcBoolean>(draft, "IsExternal", &IfcValue::setIfcBoolean, true),
        makeProperty<VnIfcBoolean>(draft, "LoadBearing", &IfcValue::setIfcBoolean, true),
        makeProperty<VnAnsiString>(draft, "FireRating", &IfcValue::setIfcLabel, "REI 90"),
        makeProperty(draft, "ThermalTransmittance", &IfcValue::setIfcThermalTransmittanceMeasure, 0.24),
    });
    return properties;
}

template <class Q>
VnDbObjectId makeQuantity(Draft& draft, const char* name, void (Q::*setValue)(const double&), double value) {
    auto* quantity = draft.make<Q>();
    quantity->setName(name);
    (quantity->*setValue)(value);
    return quantity->objectId();
}

/// The quantities of a wall of which openings take away some of the side.
IfcElementQuantity* makeWallQuantities(Draft& draft, double length, double openingArea) {
    const double footprint = length * kWallThickness;
    const double grossSide = length * kWallHeight;
    const double netSide = grossSide - openingArea;
    auto* quantities = draft.makeRoot<IfcElementQuantity>("Qto_WallBaseQuantities");
    quantities->setQuantities({
        makeQuantity(draft, "Length", &IfcQuantityLength::setLengthValue, length),
        makeQuantity(draft, "Width", &IfcQuantityLength::setLengthValue, kWallThickness),
        makeQuantity(draft, "Height", &IfcQuantityLength::setLengthValue, kWallHeight),
        makeQuantity(draft, "GrossFootprintArea", &IfcQuantityArea::setAreaValue, footprint),
        makeQuantity(draft, "GrossSideArea", &IfcQuantityArea::setAreaValue, grossSide),
        makeQuantity(draft, "NetSideArea", &IfcQuantityArea::setAreaValue, netSide),
        makeQuantity(draft, "GrossVolume", &IfcQuantityVolume::setVolumeValue, grossSide * kWallThickness),
        makeQuantity(draft, "NetVolume", &IfcQuantityVolume::setVolumeValue, netSide * kWallThickness),
    });
    return quantities;
}

// ---- the parts of the house

/// A storey and what is in it.
struct Storey {
    IfcBuildingStorey* storey;
    Handles elements;
};

/// All of one kind, for the relations that they share.
struct Parts {
    Handles walls;
    Handles slabs;
};

IfcWall* addWall(Draft& draft, Storey& storey, const Side& side, double openingArea) {
    auto* wall = draft.makeRoot<IfcWall>(side.name);
    const VnDbObjectId direction = makeDirection(draft, side.direction);
    wall->setObjectPlacement(makePlacement(draft, storey.storey->getObjectPlacement(), side.corner, direction));
    const Vector size{side.length, kWallThickness, kWallHeight};
    setShape(draft, *wall, {makeAxisLine(draft, side.length), makeBox(draft, {0, 0, 0}, size)});
    defineByProperties(draft, *makeWallQuantities(draft, side.length, openingArea), {wall->objectId()});
    storey.elements.append(wall->objectId());
    return wall;
}

/// A slab under the whole house, or over it, whose upper face is at that height above the storey.
IfcSlab* addSlab(Draft& draft, Storey& storey, const char* name, IfcSlabTypeEnum type, double height) {
    auto* slab = draft.makeRoot<IfcSlab>(name);
    slab->setPredefinedType(type);
    slab->setObjectPlacement(makePlacement(draft, storey.storey->getObjectPlacement(), {0, 0, height}));
    setShape(draft, *slab, {makeBox(draft, {0, 0, -kSlabThickness}, {kHouseLength, kHouseWidth, kSlabThickness})});
    storey.elements.append(slab->objectId());
    return slab;
}

/// The opening sticks out on both sides, so that no skin of wall is left over when it is subtracted.
IfcOpeningElement* addOpening(Draft& draft, const IfcWall& wall) {
    constexpr double kSurplus = 0.125;
    auto* opening = draft.makeRoot<IfcOpeningElement>("Door opening");
    opening->setPredefinedType(kIfcOpeningElementTypeEnum_OPENING);
    opening->setObjectPlacement(makePlacement(draft, wall.getObjectPlacement(), {kDoorFromCorner, 0, 0}));
    const Vector size{kDoorWidth, kWallThickness + 2 * kSurplus, kDoorHeight};
    setShape(draft, *opening, {makeBox(draft, {0, -kSurplus, 0}, size)});

    auto* relation = draft.makeRoot<IfcRelVoidsElement>();
    relation->setRelatingBuildingElement(wall.objectId());
    relation->setRelatedOpeningElement(opening->objectId());
    return opening;
}

void addDoor(Draft& draft, Storey& storey, const IfcOpeningElement& opening) {
    auto* door = draft.makeRoot<IfcDoor>("Front door");
    door->setOverallHeight(kDoorHeight);
    door->setOverallWidth(kDoorWidth);
    door->setPredefinedType(kIfcDoorTypeEnum_DOOR);
    door->setOperationType(kIfcDoorTypeOperationEnum_SINGLE_SWING_LEFT);
    door->setObjectPlacement(makePlacement(draft, opening.getObjectPlacement(), {0, 0, 0}));
    const Vector corner{0, (kWallThickness - kDoorPanel) / 2, 0};
    setShape(draft, *door, {makeBox(draft, corner, {kDoorWidth, kDoorPanel, kDoorHeight})});
    storey.elements.append(door->objectId());

    auto* relation = draft.makeRoot<IfcRelFillsElement>();
    relation->setRelatingOpeningElement(opening.objectId());
    relation->setRelatedBuildingElement(door->objectId());
}

Storey makeStorey(Draft& draft, const IfcBuilding& building, const char* name, double elevation) {
    auto* storey = draft.makeRoot<IfcBuildingStorey>(name);
    storey->setCompositionType(kIfcElementCompositionEnum_ELEMENT);
    storey->setElevation(elevation);
    storey->setObjectPlacement(makePlacement(draft, building.getObjectPlacement(), {0, 0, elevation}));
    return {storey, {}};
}

IfcBuildingStorey* addGroundFloor(Draft& draft, const IfcBuilding& building, Parts& parts) {
    Storey storey = makeStorey(draft, building, "Ground floor", 0);
    parts.slabs.append(addSlab(draft, storey, "Base slab", kIfcSlabTypeEnum_BASESLAB, 0)->objectId());
    for (const Side& side : kSides) {
        const bool hasDoor = &side == &kSides[0];
        const IfcWall* wall = addWall(draft, storey, side, hasDoor ? kDoorWidth * kDoorHeight : 0);
        parts.walls.append(wall->objectId());
        if (hasDoor)
            addDoor(draft, storey, *addOpening(draft, *wall));
    }
    contain(draft, *storey.storey, storey.elements);
    return storey.storey;
}

IfcBuildingStorey* addUpperFloor(Draft& draft, const IfcBuilding& building, Parts& parts) {
    Storey storey = makeStorey(draft, building, "Upper floor", kStoreyHeight);
    parts.slabs.append(addSlab(draft, storey, "Floor slab", kIfcSlabTypeEnum_FLOOR, 0)->objectId());
    for (const Side& side : kSides)
        parts.walls.append(addWall(draft, storey, side, 0)->objectId());
    parts.slabs.append(addSlab(draft, storey, "Roof slab", kIfcSlabTypeEnum_ROOF, kStoreyHeight)->objectId());
    contain(draft, *storey.storey, storey.elements);
    return storey.storey;
}

IfcSite* makeSite(Draft& draft) {
    auto* site = draft.makeRoot<IfcSite>("Site");
    site->setObjectPlacement(makePlacement(draft, {}, {0, 0, 0}));
    site->setCompositionType(kIfcElementCompositionEnum_ELEMENT);
    site->setRefLatitude({52, 31, 12});
    site->setRefLongitude({13, 24, 18});
    site->setRefElevation(34);
    return site;
}

IfcBuilding* makeBuilding(Draft& draft, const IfcSite& site) {
    auto* building = draft.makeRoot<IfcBuilding>("House");
    building->setObjectPlacement(makePlacement(draft, site.getObjectPlacement(), {0, 0, 0}));
    building->setCompositionType(kIfcElementCompositionEnum_ELEMENT);
    return building;
}

void describeWalls(Draft& draft, const IfcProject& project, const Handles& walls) {
    auto* type = draft.makeRoot<IfcWallType>("Cavity wall 500");
    type->setPredefinedType(kIfcWallTypeEnum_SOLIDWALL);
    declare(draft, project, {type->objectId()});
    defineByType(draft, *type, walls);
    defineByProperties(draft, *makeWallProperties(draft), walls);

    const VnDbObjectId layers = makeWallLayers(draft);
    associateMaterial(draft, layers, {type->objectId()});
    associateMaterial(draft, makeLayerUsage(draft, layers), walls);
}

void buildHouse(VnIfcModel& model) {
    Draft draft(model);
    const IfcProject* project = makeProject(draft);
    const IfcSite* site = makeSite(draft);
    const IfcBuilding* building = makeBuilding(draft, *site);
    Parts parts;
    const IfcBuildingStorey* ground = addGroundFloor(draft, *building, parts);
    const IfcBuildingStorey* upper = addUpperFloor(draft, *building, parts);
    aggregate(draft, *project, {site->objectId()});
    aggregate(draft, *site, {building->objectId()});
    aggregate(draft, *building, {ground->objectId(), upper->objectId()});
    describeWalls(draft, *project, parts.walls);
    associateMaterial(draft, makeMaterial(draft, "Reinforced concrete"), parts.slabs);
}

VnIfcHeader makeHeader() {
    VnIfcHeader header = VnIfcHeader::standard("IFC4X3_ADD2", "house.ifc", kTimeStamp);
    header.set("FILE_DESCRIPTION", "('ViewDefinition [DesignTransferView]'),'2;1'");
    return header;
}

VnIfcFileResult writeHouse(const VnIfcSchema* schema, const char* path) {
    VnIfcModel model(schema);
    model.header() = makeHeader();
    buildHouse(model);
    return model.writeFile(path);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: build_house OUT.ifc\n";
        return 2;
    }
    const VnModule module(vnIfc4x3Add2Module());
    const VnIfcFileResult written = writeHouse(module.schema(), argv[1]);
    if (!written) {
        std::cerr << written.message << '\n';
        return 1;
    }
    std::cout << argv[1] << ": " << written.bytes << " bytes\n";
}
