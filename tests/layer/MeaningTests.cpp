#include "Building.h"

#include <vnifc/Placement.h>
#include <vnifc/Properties.h>
#include <vnifc/Relations.h>

#include <cmath>

namespace vnifc::test {

namespace {

class Meaning : public testing::TestWithParam<std::string> {};
INSTANTIATE_TEST_SUITE_P(Layer, Meaning, testing::ValuesIn(kReleases), [](const auto& each) { return each.param; });

TEST_P(Meaning, TellsWhereThingsAre) {
    const Model model = buildingOf(GetParam());
    EXPECT_EQ(model.errors(), 0u) << model.findings()[0].text();
    const struct {
        const char* what;
        Instance found;
        std::uint64_t expected;
    } kCases[] = {
        {"container of a wall", container(model[4]), 3},
        {"container of a part", container(model[7]), 3},
        {"container of what fills an opening", container(model[6]), 3},
        {"container of a storey", container(model[3]), 2},
        {"container of a project", container(model[1]), 0},
        {"storey of a door", storey(model[6]), 3},
        {"storey of a storey", storey(model[3]), 3},
        {"storey of a building", storey(model[2]), 0},
        {"building of a part", building(model[7]), 2},
        {"site", site(model[4]), 0},
        {"whole of a part", whole(model[7]), 4},
        {"whole of a wall", whole(model[4]), 0},
        {"parent of a door", parent(model[6]), 5},
        {"parent of an opening", parent(model[5]), 4},
        {"type", typeOf(model[7]), 8},
        {"type of a door", typeOf(model[6]), 0},
        {"project", model.project(), 1},
    };
    for (const auto& [what, found, expected] : kCases)
        EXPECT_EQ(found.id(), expected) << what;
    EXPECT_EQ(idsOf(parts(model[4])), Ids{7});
    EXPECT_EQ(idsOf(contents(model[3])), Ids{4});
    EXPECT_EQ(idsOf(occurrences(model[8])), (Ids{4, 7}));
    EXPECT_EQ(idsOf(groups(model[6])), Ids{80});
    EXPECT_EQ(idsOf(systems(model[6])), Ids{80});
    EXPECT_EQ(idsOf(members(model[80])), (Ids{4, 6}));
    EXPECT_THROW((void)storey(Instance()), NotFound);
}

TEST_P(Meaning, ShowsTheSpatialStructureOnce) {
    Model model = buildingOf(GetParam());
    // A circle: the building is a part of its own storey.
    model.create("IfcRelAggregates", {{"RelatingObject", model[3]}, {"RelatedObjects", {model[2]}}});
    const std::vector<SpatialNode> nodes = spatialStructure(model);
    ASSERT_EQ(nodes.size(), 3u);
    EXPECT_EQ(nodes[2].instance, model[3]);
    EXPECT_EQ(nodes[2].level, 2u);
    EXPECT_EQ(idsOf(nodes[2].elements), (Ids{4, 7}));
    EXPECT_EQ(idsOf(elementsOutside(model, nodes)), Ids{6}) << "a door in an opening is contained by nobody itself";
    const std::vector<SpatialNode> top = spatialStructure(model, 1);
    ASSERT_EQ(top.size(), 2u);
    EXPECT_EQ(idsOf(top[1].elements), (Ids{3, 4, 7})) << "what is deeper belongs to the node above";
}

TEST_P(Meaning, ReadsPropertiesAndWhichPrevail) {
    const Model model = buildingOf(GetParam());
    const Instance wall = model[4];
    const std::vector<PropertySet> sets = propertySets(wall);
    ASSERT_EQ(sets.size(), 3u);
    EXPECT_EQ(sets[0].owner, wall);
    EXPECT_EQ(sets[2].owner, model[8]);
    EXPECT_TRUE(sets[2].properties[0].isOverridden) << "the wall has a FireRating of its own";
    EXPECT_FALSE(sets[2].properties[1].isOverridden);
    EXPECT_EQ(sets[0].properties[3].values.size(), 2u) << "both bounds";
    const struct {
        std::uint64_t object;
        const char* path;
        Value value;
    } kCases[] = {
        {4, "Pset_WallCommon.FireRating", typed("IfcLabel", "EI60")},
        {7, "Pset_WallCommon.FireRating", typed("IfcLabel", "EI30")},
        {4, "Pset_WallCommon.IsExternal", typed("IfcBoolean", true)},
        {4, "Pset_WallCommon.Height.Max", typed("IfcLengthMeasure", 8.0)},
        {4, "Pset_WallCommon.Range", {typed("IfcReal", 1.0), typed("IfcReal", 3.0)}},
        {4, "Pset_WallCommon.List", {typed("IfcInteger", 1), typed("IfcInteger", 2)}},
        {4, "Pset_WallCommon.Complex.Straße", typed("IfcInteger", 7)},
        {4, "Qto_WallBaseQuantities.NetVolume", 2.5},
        {4, "Pset_WallCommon.Nothing", nullptr},
        {4, "Pset_WallCommon", nullptr},
        {8, "Pset_WallCommon.FireRating", typed("IfcLabel", "EI30")},
        {6, "Pset_WallCommon.FireRating", nullptr},
    };
    for (const auto& [object, path, value] : kCases)
        EXPECT_EQ(propertyValue(model[object], path), value) << path;
}

TEST_P(Meaning, KnowsTheUnitsOfValues) {
    const Model model = buildingOf(GetParam());
    const Instance wall = model[4];
    const auto siOf = [&](const char* path) { return property(wall, path)->values.front().quantity()->si(); };
    EXPECT_DOUBLE_EQ(siOf("Pset_WallCommon.Width"), 0.2) << "the project's unit";
    EXPECT_DOUBLE_EQ(siOf("Pset_WallCommon.Height.Max"), 8 * 0.3048) << "the property's own unit";
    EXPECT_DOUBLE_EQ(siOf("Qto_WallBaseQuantities.NetVolume"), 2.5);
    EXPECT_DOUBLE_EQ(quantity(model[6], "OverallHeight")->in("m"), 2.1);
    EXPECT_FALSE(quantity(model[4], "Name"));
    EXPECT_EQ(projectUnit(model, "IfcPositiveLengthMeasure"), model[51]);
    EXPECT_EQ(projectUnit(model, "areaunit"), Instance());
    EXPECT_EQ(signOf(model[51]), "mm");
    EXPECT_EQ(signOf(model[53]), "EUR");
    EXPECT_EQ(messageOf<BadValue>([&] { Unit{model[53]}; }).substr(0, 33), "the unit #53 IFCMONETARYUNIT has ");
    Instance unit = model[51];
    unit.set("Prefix", nullptr);
    EXPECT_DOUBLE_EQ(quantity(model[6], "OverallHeight")->si(), 2100) << "what is remembered follows changes";
    Instance measure = model[56];
    measure.set("UnitComponent", model[54]);
    EXPECT_THROW(Unit{model[54]}, BadValue) << "a unit that is converted from itself";
}

TEST_P(Meaning, ReadsMaterialsAndClassifications) {
    const Model model = buildingOf(GetParam());
    const Material own = material(model[4]), ofType = material(model[7]);
    EXPECT_EQ(own.definition, model[63]);
    EXPECT_EQ(own.kind, MaterialKind::kLayers);
    EXPECT_TRUE(own.isUsage);
    EXPECT_FALSE(own.isOfType);
    EXPECT_EQ(own.name, "W200");
    ASSERT_EQ(own.parts.size(), 1u);
    EXPECT_EQ(own.parts[0].name, "Brick");
    EXPECT_EQ(own.parts[0].thickness, 200.0);
    EXPECT_EQ(ofType.kind, MaterialKind::kSingle);
    EXPECT_TRUE(ofType.isOfType);
    EXPECT_EQ(ofType.parts[0].material, model[62]);
    EXPECT_FALSE(material(model[6]));
    const std::vector<Classification> found = classifications(model[4]);
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].identification, "21.22");
    EXPECT_EQ(found[0].name, "Wall");
    EXPECT_EQ(found[0].system, "Uniclass");
}

TEST_P(Meaning, ComputesPlacements) {
    Model model = buildingOf(GetParam());
    const Matrix4 matrix = placement(model[4]);
    // x of the wall is y of the storey: of RefDirection only what is perpendicular to the axis counts.
    const auto point = matrix.apply({10, 20, 30});
    EXPECT_DOUBLE_EQ(point[0], 1000 - 20);
    EXPECT_DOUBLE_EQ(point[1], 2000 + 10);
    EXPECT_DOUBLE_EQ(point[2], 3000 + 30);
    EXPECT_EQ(placement(model[2]).rows, Matrix4().rows) << "no placement is the project's own";
    model[11].set("PlacementRelTo", model[13]);
    EXPECT_EQ(messageOf<BadValue>([&] { (void)placement(model[4]); }),
              "the placement #13 IFCLOCALPLACEMENT cannot be computed: its chain runs in a circle or has no end");
    model[11].set("PlacementRelTo", model.create("IfcGridPlacement"));
    EXPECT_NE(messageOf<BadValue>([&] { (void)placement(model[4]); }).find("only local placements are supported"),
              std::string::npos);
}

TEST(Units, AreConverted) {
    const struct {
        double value;
        const char* from;
        const char* to;
        double expected;
    } kCases[] = {{1, "mm", "m", 1e-3},    {1, "mm2", "m²", 1e-6},     {1, "mm²", "cm^2", 1e-2},
                  {1, "m3", "l", 1000},    {20, "°C", "K", 293.15},    {212, "°F", "°C", 100},
                  {1, "kWh", "kJ", 0},     {1, "kW*h", "kJ", 3600},    {1, "W/(m²·K)", "kW/(m2*K)", 1e-3},
                  {36, "km/h", "m/s", 10}, {1, "in", "mm", 25.4},      {180, "°", "rad", 3.141592653589793},
                  {1, "1/s", "Hz", 1},     {1, "N·m-1", "kN/m", 1e-3}, {1, "t", "kg", 1000},
                  {5, "degC/m", "K/m", 5}, {1, "µm", "um", 1}};
    for (const auto& [value, from, to, expected] : kCases) {
        if (expected == 0) {
            EXPECT_THROW(Unit{from}, BadValue) << from;
        } else
            EXPECT_NEAR(convert(value, Unit(from), Unit(to)), expected, std::abs(expected) * 1e-12) << from;
    }
    EXPECT_EQ(messageOf<BadValue>([] { convert(1, Unit("m"), Unit("s")); }),
              "cannot convert m to s: the dimensions differ");
    for (const char* broken : {"", "x", "m/", "m^", "(m", "m)", "m99999999999", "m·", "2m"})
        EXPECT_THROW(Unit{broken}, BadValue) << broken;
    EXPECT_THROW(Unit{std::string(100000, '(')}, BadValue) << "no depth without end";
}

TEST(Units, OfModelsAreReadInEveryForm) {
    const Model model = openText(
        fileOf(kReleases.back(),
               "#1=IFCSIUNIT(*,.THERMODYNAMICTEMPERATUREUNIT.,$,.KELVIN.);\n"
               "#2=IFCMEASUREWITHUNIT(IFCREAL(0.5),#1);\n#3=IFCDIMENSIONALEXPONENTS(0,0,0,0,1,0,0);\n"
               "#4=IFCCONVERSIONBASEDUNITWITHOFFSET(#3,.THERMODYNAMICTEMPERATUREUNIT.,'HALF',#2,100.);\n"
               "#5=IFCDERIVEDUNIT((#6,#7),.USERDEFINED.,'x');\n#6=IFCDERIVEDUNITELEMENT(#8,1);\n"
               "#7=IFCDERIVEDUNITELEMENT(#9,-2);\n#8=IFCSIUNIT(*,.FORCEUNIT.,.KILO.,.NEWTON.);\n"
               "#9=IFCSIUNIT(*,.LENGTHUNIT.,.CENTI.,.METRE.);\n#10=IFCSIUNIT(*,.AREAUNIT.,.MILLI.,.SQUARE_METRE.);\n"
               "#11=IFCSIUNIT(*,.MASSUNIT.,.KILO.,.GRAM.);\n"
               "#12=IFCCONTEXTDEPENDENTUNIT(#3,.USERDEFINED.,'box');\n"));
    EXPECT_DOUBLE_EQ(Unit(model[4]).toSi(20), 110);
    EXPECT_DOUBLE_EQ(Unit(model[4]).fromSi(110), 20);
    EXPECT_DOUBLE_EQ(Unit(model[5]).toSi(1), 1e7);
    EXPECT_EQ(Unit(model[5]).sign(), "kN/cm²");
    EXPECT_EQ(Unit(model[5]).dimension(), Unit("Pa").dimension());
    EXPECT_DOUBLE_EQ(Unit(model[10]).toSi(1), 1e-6);
    EXPECT_DOUBLE_EQ(Unit(model[11]).toSi(1), 1);
    EXPECT_THROW(Unit{model[12]}, BadValue);
}

} // namespace

} // namespace vnifc::test
