// What attributes take and refuse by name, beyond the one value per kind of the walk.
#include "support/Files.h"

#include <dictionary/SchemaFixture.h>

#include <IFC4X3/IfcActor.h>
#include <IFC4X3/IfcActorSelect.h>
#include <IFC4X3/IfcCartesianPoint.h>
#include <IFC4X3/IfcMaterialLayer.h>
#include <IFC4X3/IfcMeasureWithUnit.h>
#include <IFC4X3/IfcPerson.h>
#include <IFC4X3/IfcRelAggregates.h>
#include <IFC4X3/IfcSimpleValue.h>
#include <IFC4X3/IfcTriangulatedFaceSet.h>
#include <IFC4X3/IfcUnitAssignment.h>
#include <IFC4X3/IfcWall.h>
#include <VnIfcCore/VnIfcModel.h>
#include <VnIfcCore/VnIfcVariant.h>
#include <VnRx/VrString.h>

using namespace IFC4X3;
using namespace VN_SDAI;

namespace {

using Variants = VnIfcArray<VnIfcVariant>;
using Handles = VnIfcArray<VnDbObjectId>;

class Access : public SchemaTest {
protected:
    Access() : model(schema) {}

    VnIfcModel model;
};

template <class T>
T got(const VnIfcEntityBase& instance, const char* name) {
    VnIfcVariant value;
    EXPECT_TRUE(instance.getAttr(name, value)) << name;
    const T* payload = value.get<T>();
    EXPECT_TRUE(payload) << name;
    return payload ? *payload : T{};
}

} // namespace

TEST_F(Access, NamesMatchWholeAndInAnyCase) {
    IfcWall wall;
    const VnIfcVariant before("kept");
    for (const char* name : {"Name", "NAME", "name", "nAmE"}) {
        EXPECT_TRUE(wall.putAttr(name, name));
        EXPECT_STREQ(got<const char*>(wall, "naMe"), name);
    }
    for (const char* name : {"", "Nam", "Names", "Name ", "NAM%",
                             "\x0e"
                             "ame",
                             "\xce"
                             "ame",
                             "m_Name"}) {
        VnIfcVariant value(before);
        EXPECT_FALSE(wall.getAttr(name, value)) << name;
        EXPECT_TRUE(value == before);
        EXPECT_FALSE(wall.putAttr(name, "new")) << name;
        wall.unsetAttr(name);
        EXPECT_EQ(wall.getName(), "nAmE");
    }
}

TEST_F(Access, HandsOutUnsetValuesAndLiveMembers) {
    IfcMaterialLayer layer;
    const double thickness = got<double>(layer, "LayerThickness");
    EXPECT_NE(thickness, thickness);
    EXPECT_EQ(got<int>(layer, "priority"), Consts::VnIntUnset);
    layer.setName("Brick");
    EXPECT_EQ(got<const char*>(layer, "Name"), layer.getName().constStr()) << "the text itself, not a copy";

    IfcActor actor;
    EXPECT_EQ(got<IfcActorSelect*>(actor, "TheActor"), &actor.getTheActor());
    got<VnIfcSetAggr<VnDbObjectId>*>(actor, "isactingupon")->add(model.create("IfcWall"));
    EXPECT_EQ(actor.getInvIsActingUpon().count(), 1u);
    IfcCartesianPoint point;
    got<VnIfcListAggr<double>*>(point, "Coordinates")->append(1.5);
    EXPECT_TRUE(point.testAttr("coordinates"));
}

TEST_F(Access, EnumerationsTakeCodesAndLiterals) {
    constexpr auto kBefore = kIfcWallTypeEnum_SHEAR, kUnset = kIfcWallTypeEnum_UNSET;
    const struct {
        VnIfcVariant offered;
        bool taken;
        IfcWallTypeEnumCode stored;
    } cases[] = {
        {0, true, kIfcWallTypeEnum_MOVABLE},
        {12ul, true, kIfcWallTypeEnum_NOTDEFINED},
        {13, true, kUnset},
        {99, true, kUnset},
        {-1, true, kUnset},
        {(1ul << 32) + 1, true, kUnset},
        {"solidWALL", true, kIfcWallTypeEnum_SOLIDWALL},
        {VnAnsiString("PARAPET"), true, kIfcWallTypeEnum_PARAPET},
        {".PARAPET.", false, kUnset},
        {"UNKNOWN", false, kUnset},
        {VnIfcVariant(static_cast<const char*>(nullptr)), false, kUnset},
        {3.0, false, kBefore},
        {IfcWallTypeEnum(kIfcWallTypeEnum_PARAPET), false, kBefore},
        {VnIfcVariant(), false, kBefore},
    };
    for (const auto& each : cases) {
        VrString text;
        each.offered.toString(text);
        IfcWall wall;
        wall.setPredefinedType(kBefore);
        EXPECT_EQ(wall.putAttr("PredefinedType", each.offered), each.taken) << text.view();
        EXPECT_EQ(wall.getPredefinedType(), each.stored) << text.view();
    }
    EXPECT_EQ(got<IfcWallTypeEnum>(IfcWall(), "predefinedtype"), kUnset);
}

TEST_F(Access, ValuesConvertBeforeTheyAreStored) {
    IfcMaterialLayer layer;
    EXPECT_TRUE(layer.putAttr("LayerThickness", 12));
    EXPECT_EQ(layer.getLayerThickness(), 12.0);
    EXPECT_TRUE(layer.putAttr("LayerThickness", "0.25"));
    EXPECT_EQ(layer.getLayerThickness(), 0.25);
    EXPECT_TRUE(layer.putAttr("IsVentilated", VnIfcBoolean(true)));
    EXPECT_EQ(layer.getIsVentilated(), VnIfcLogical(true));
    EXPECT_TRUE(layer.putAttr("Name", VrString("Müller \\")));
    EXPECT_EQ(layer.getName(), "M\\X2\\00FC\\X0\\ller \\\\");
    EXPECT_FALSE(layer.putAttr("Priority", 12.0));
    EXPECT_FALSE(layer.testAttr("Priority"));
    // An enumeration answers a request for a string with a pointer to its literal, which is not what was asked for.
    EXPECT_FALSE(layer.putAttr("Name", IfcWallTypeEnum(kIfcWallTypeEnum_SHEAR)));
    EXPECT_EQ(layer.getName(), "M\\X2\\00FC\\X0\\ller \\\\");
}

TEST_F(Access, SelectsTakeWhatTheirMembersAre) {
    const VnDbObjectId person = model.create("IfcPerson"), organization = model.create("IfcOrganization");
    IfcActorSelect select;
    ASSERT_TRUE(select.setHandle(person));
    IfcActor actor;
    EXPECT_TRUE(actor.putAttr("TheActor", &select));
    EXPECT_EQ(actor.getTheActor().getHandle(), person);
    EXPECT_TRUE(actor.getTheActor().isIfcPerson());
    EXPECT_TRUE(actor.putAttr("TheActor", organization));
    EXPECT_TRUE(actor.getTheActor().isIfcOrganization());
    EXPECT_TRUE(actor.putAttr("TheActor", select)) << "a select by value";
    EXPECT_TRUE(actor.putAttr("TheActor", const_cast<IfcActorSelect*>(&actor.getTheActor()))) << "itself";
    EXPECT_TRUE(actor.getTheActor().isIfcPerson());

    const VnIfcVariant refused[] = {model.create("IfcWall"), VnDbObjectId(), static_cast<IfcActorSelect*>(nullptr),
                                    "IfcPerson"};
    for (const VnIfcVariant& each : refused)
        EXPECT_FALSE(actor.putAttr("TheActor", each));
    EXPECT_EQ(actor.getTheActor().getHandle(), person);

    IfcSimpleValue simple;
    simple.setIfcReal(2.5);
    IfcMeasureWithUnit measure;
    EXPECT_TRUE(measure.putAttr("ValueComponent", simple)) << "a member that both selects have";
    EXPECT_TRUE(measure.getValueComponent().isIfcReal());
    double value = 0;
    EXPECT_TRUE(measure.getValueComponent().getDouble(value));
    EXPECT_EQ(value, 2.5);
}

TEST_F(Access, AggregatesTakeAllOrNothing) {
    const VnDbObjectId wall = model.create("IfcWall"), unit = model.create("IfcSIUnit");
    IfcCartesianPoint point;
    EXPECT_TRUE(point.putAttr("Coordinates", VnIfcArray<double>{1, 2}));
    EXPECT_TRUE(point.putAttr("Coordinates", Variants{1, 2.5, "3."}));
    const auto coordinates = [&] {
        return std::vector<double>(point.getCoordinates().begin(), point.getCoordinates().end());
    };
    EXPECT_EQ(coordinates(), (std::vector<double>{1, 2.5, 3}));
    const VnIfcVariant refused[] = {VnIfcArray<int>{1}, Variants{1, "x"}, Handles{wall},
                                    got<VnIfcListAggr<double>*>(point, "Coordinates"), 1.0};
    for (const VnIfcVariant& each : refused)
        EXPECT_FALSE(point.putAttr("Coordinates", each));
    EXPECT_EQ(coordinates(), (std::vector<double>{1, 2.5, 3}));
    EXPECT_TRUE(point.putAttr("Coordinates", Variants()));
    EXPECT_FALSE(point.testAttr("Coordinates"));

    IfcRelAggregates relation;
    EXPECT_TRUE(relation.putAttr("RelatedObjects", Handles{wall, unit, wall}));
    EXPECT_EQ(relation.getRelatedObjects().count(), 2u);

    IfcTriangulatedFaceSet faces;
    EXPECT_TRUE(faces.putAttr("CoordIndex", VnIfcArray<VnIfcArray<int>>{{1, 2, 3}, {}}));
    EXPECT_TRUE(faces.putAttr("CoordIndex", Variants{VnIfcArray<int>{1, 2, 3}, Variants{4, "5"}}));
    EXPECT_FALSE(faces.putAttr("CoordIndex", Variants{VnIfcArray<int>{9}, Variants{4, 2.5}}));
    EXPECT_FALSE(faces.putAttr("CoordIndex", VnIfcArray<int>{1, 2, 3}));
    VrString text;
    VnIfcVariant value;
    EXPECT_TRUE(faces.getAttr("CoordIndex", value) && value.toString(text, StringFormat::kExchange));
    EXPECT_EQ(text, "((1,2,3),(4,5))");

    IfcUnitAssignment units;
    IfcUnit chosen;
    ASSERT_TRUE(chosen.setHandle(unit));
    EXPECT_TRUE(units.putAttr("Units", VnIfcArray<IfcUnit>{chosen}));
    EXPECT_TRUE(units.putAttr("Units", Variants{chosen, unit, &chosen}));
    EXPECT_TRUE(units.putAttr("Units", Handles{unit}));
    EXPECT_FALSE(units.putAttr("Units", Handles{unit, wall}));
    EXPECT_FALSE(units.putAttr("Units", Variants{unit, wall}));
    ASSERT_EQ(units.getUnits().count(), 1u);
    EXPECT_TRUE(units.getUnits()[0].isIfcNamedUnit());
}

TEST_F(Access, ANewValueReplacesTheTextKeptFromTheFile) {
    ASSERT_TRUE(model.readText(vnifc::test::fileOf("IFC4X3", "#1=IFCWALL('x',$,12,$,$,$,$,$,.NOSUCHTYPE.);\n")));
    VnIfcEntityBase& wall = *model.find(1).openObject();
    EXPECT_FALSE(wall.putAttr("Name", model.find(1)));
    EXPECT_FALSE(wall.putAttr("PredefinedType", 2.5));
    EXPECT_NE(model.writeText().find("$,12,$,$,$,$,$,.NOSUCHTYPE.)"), std::string::npos)
        << "refused values change nothing";
    EXPECT_TRUE(wall.putAttr("Name", "new"));
    EXPECT_FALSE(wall.putAttr("PredefinedType", "OTHER"));
    EXPECT_NE(model.writeText().find("$,'new',$,$,$,$,$,$)"), std::string::npos) << model.writeText();
}
