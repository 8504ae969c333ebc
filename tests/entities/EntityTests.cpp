// Instances as C++ objects: what a new one holds, copies, type tests, typed accessors.
#include "exchange/Support.h"

#include <IFC4X3/AllEntities.h>
#include <VnIfcCore/VnIfcSchema.h>

#include <type_traits>

using namespace VN_SDAI;
using namespace IFC4X3;
using namespace exchange;

static_assert(sizeof(VnDbObjectId) == 8 && sizeof(VnIfcLogical) == 4 && sizeof(VnIfcBoolean) == 4);
static_assert(sizeof(IfcWallTypeEnum) == 4 && sizeof(IfcNullStyle) == 4 && sizeof(IfcDerivedUnitEnum) == 4);
static_assert(sizeof(IfcUnit) == 32 && sizeof(IfcValue) == 32 && sizeof(IfcSegmentIndexSelect) == 32);
static_assert(std::is_base_of_v<IfcRoot, IfcActor> && std::is_base_of_v<IfcObject, IfcActor>);
static_assert(std::is_base_of_v<VnIfcEntityBase, IfcCartesianPoint> && !std::is_base_of_v<IfcRoot, IfcCartesianPoint>);

namespace {

class EntityTest : public testing::Test {
protected:
    EntityTest() : model(schema()) {}

    VnIfcModel model;
};

} // namespace

TEST_F(EntityTest, EveryNewInstanceOfEveryClassIsUnset) {
    for (std::size_t i = 0; i < schema()->entityCount(); ++i) {
        const VnIfcEntityType& type = *schema()->entityAt(i);
        const std::unique_ptr<VnIfcEntityBase> instance(type.create());
        EXPECT_EQ(instance->getInstanceType(), &type);
        EXPECT_TRUE(instance->objectId().isNull() && !instance->owningModel());
        for (const VnIfcAttributeDefinition* attribute : type.allAttributes())
            EXPECT_FALSE(instance->testAttr(attribute->name()))
                << type.name().view() << '.' << attribute->name().view();
    }
}

TEST_F(EntityTest, TheUnsetValueOfEachKind) {
    const IfcMaterialLayer layer;
    EXPECT_TRUE(layer.getMaterial().isNull() && !layer.Material());
    EXPECT_NE(layer.getLayerThickness(), layer.getLayerThickness());
    EXPECT_EQ(layer.getIsVentilated().code(), 3u);
    EXPECT_EQ(layer.getName(), Consts::VnStringUnset);
    EXPECT_EQ(layer.getName().length(), Consts::VnStringUnsetLength);
    EXPECT_EQ(layer.getPriority(), 0x7fffffff);
    EXPECT_TRUE(layer.getInvToMaterialLayerSet().isNull());
    EXPECT_EQ(IfcFaceBound().getOrientation().code(), 2u);
    EXPECT_EQ(IfcWall().getPredefinedType().code(), 13u);
    EXPECT_EQ(IfcWall().getGlobalId(), VnIfcGUID());
    EXPECT_EQ(IfcActor().getTheActor()._d(), 3);
    EXPECT_EQ(IfcActor().getTheActor().kind(), VnTypeCodeKind::kNone);
    EXPECT_TRUE(IfcCartesianPoint().getCoordinates().isNil() && IfcActor().getInvIsActingUpon().isNil());
}

TEST_F(EntityTest, TypeTestsKnowTheChainOfSupertypesAndIgnoreCase) {
    const IfcActor actor;
    const struct {
        const char* name;
        const VnIfcEntityType* type;
        bool isKind;
        bool isInstance;
    } cases[] = {
        {"IFCACTOR", IfcActor::g_pEntityType, true, true},
        {"IfcActor", IfcActor::g_pEntityType, true, true},
        {"ifcroot", IfcRoot::g_pEntityType, true, false},
        {"IfcObjectDefinition", IfcObjectDefinition::g_pEntityType, true, false},
        {"IfcObject", IfcObject::g_pEntityType, true, false},
        {"IfcOccupant", IfcOccupant::g_pEntityType, false, false},
        {"IfcProduct", IfcProduct::g_pEntityType, false, false},
        {"IfcActo", nullptr, false, false},
        {"", nullptr, false, false},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(actor.isKindOf(test.name), test.isKind) << test.name;
        EXPECT_EQ(actor.isInstanceOf(test.name), test.isInstance) << test.name;
        EXPECT_EQ(actor.isKindOf(test.type), test.isKind) << test.name;
        EXPECT_EQ(actor.isInstanceOf(test.type), test.isInstance) << test.name;
    }
    const char* noName = nullptr;
    EXPECT_FALSE(actor.isKindOf(noName) || actor.isInstanceOf(noName));
    EXPECT_TRUE(IfcOccupant().isKindOf(IfcActor::g_pEntityType));
}

TEST_F(EntityTest, SettersAndGettersOfEachKind) {
    auto* history = model.create<IfcOwnerHistory>();
    auto* wall = model.create<IfcWall>();
    model.setMode(sdaiReadOnly); // a setter checks nothing
    wall->setGlobalId("0YvctVUKr0kugbFTf53O9L");
    wall->setOwnerHistory(history->objectId());
    wall->setName("n");
    wall->setPredefinedType(kIfcWallTypeEnum_SHEAR);
    history->setCreationDate(5);
    history->setChangeAction(kIfcChangeActionEnum_ADDED);
    EXPECT_EQ(wall->getGlobalId().view(), "0YvctVUKr0kugbFTf53O9L");
    EXPECT_EQ(wall->OwnerHistory(), history);
    EXPECT_EQ(wall->getPredefinedType(), kIfcWallTypeEnum_SHEAR);
    wall->setOwnerHistory(wall->objectId());
    EXPECT_EQ(wall->OwnerHistory(), nullptr) << "a reference to an instance of another class";
    EXPECT_EQ(wall->getOwnerHistory(), wall->objectId());

    auto* relation = model.create<IfcRelAggregates>();
    relation->setRelatedObjects({wall->objectId(), history->objectId(), wall->objectId()});
    ASSERT_EQ(relation->getRelatedObjects().count(), 2u);
    EXPECT_EQ(relation->getRelatedObjects()[0], history->objectId()) << "in ascending order of numbers";
    auto* points = model.create<IfcCartesianPointList3D>();
    points->setCoordList({{1., 2., 3.}, {}});
    EXPECT_EQ(points->getCoordList()[0][2], 3.);
    relation->setRelatedObjects({});
    EXPECT_FALSE(relation->testAttr("RelatedObjects"));
}

TEST_F(EntityTest, CopiesHoldEverythingButTheIdentity) {
    auto* organization = model.create<IfcOrganization>();
    auto* actor = model.create<IfcActor>();
    actor->setName("a");
    IfcActorSelect select;
    select.setIfcOrganization(organization);
    actor->setTheActor(select);
    auto* layer = model.create<IfcMaterialLayer>();
    auto* layers = model.create<IfcMaterialLayerSet>();
    layers->setMaterialLayers({layer->objectId()});
    model.setInverseCounterParts();

    const IfcActor copy(*actor);
    EXPECT_TRUE(copy.objectId().isNull());
    EXPECT_EQ(copy.getName(), "a");
    EXPECT_TRUE(copy.getTheActor().isIfcOrganization());
    const IfcMaterialLayer layerCopy(*layer);
    EXPECT_EQ(layerCopy.getInvToMaterialLayerSet(), layers->objectId()) << "inverse attributes are copied too";

    auto* other = model.create<IfcMaterialLayer>();
    const VnDbObjectId own = other->objectId();
    other->setName("other");
    *layer = *other;
    EXPECT_EQ(layer->getName(), "other");
    EXPECT_TRUE(layer->getInvToMaterialLayerSet().isNull()) << "and overwritten";
    EXPECT_NE(layer->objectId(), own);

    const IfcMaterialLayerSet setCopy(*layers);
    layers->setMaterialLayers({});
    EXPECT_EQ(setCopy.getMaterialLayers().count(), 1u) << "a copy shares nothing";
}

TEST_F(EntityTest, BinaryIsPassedOverByTheFieldsAndTheNextFieldIsRead) {
    Reading reading(fileOf("#1=IFCBLOBTEXTURE(.T.,.F.,'m',$,$,'PNG' , /* x */ \"0123456789ABCDEF\" );\n"));
    EXPECT_EQ(reading.codes(), "binary");
    EXPECT_EQ(reading.as<IfcBlobTexture>(1).getRasterFormat(), "PNG");
    EXPECT_TRUE(reading.as<IfcBlobTexture>(1).getRasterCode().isUnset());
    const IfcBlobTexture copy(reading.as<IfcBlobTexture>(1));
    model.append(std::make_unique<IfcBlobTexture>(copy));
    EXPECT_NE(model.writeText().find("#1=IFCBLOBTEXTURE(.T.,.F.,'m',$,$,'PNG',\"\");\n"), std::string::npos)
        << "the kept text belongs to the instance that was read";
}
