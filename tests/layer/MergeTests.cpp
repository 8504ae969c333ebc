#include "Building.h"

#include <vnifc/Diff.h>
#include <vnifc/Merge.h>
#include <vnifc/Placement.h>
#include <vnifc/Properties.h>
#include <vnifc/Relations.h>

#include <array>
#include <cmath>
#include <map>

namespace vnifc::test {

namespace {

class Merges : public testing::TestWithParam<std::string> {};
INSTANTIATE_TEST_SUITE_P(Layer, Merges, testing::ValuesIn(kReleases), [](const auto& each) { return each.param; });

/// The building with other GlobalIds.
Model otherBuilding(const std::string& release) {
    Model model = buildingOf(release);
    for (Instance each : model.instances("IfcRoot"))
        each.set("GlobalId", "1" + each.globalId().substr(1));
    return model;
}

std::size_t count(const Model& model, const char* entity) { return model.instances(entity).count(); }

TEST_P(Merges, GiveOneProjectWithAllObjects) {
    Model target = buildingOf(GetParam());
    const Model other = otherBuilding(GetParam());
    const MergeResult result = merge(target, other);
    EXPECT_EQ(result.renamed, 0U);
    EXPECT_EQ(count(target, "IfcProject"), 1U);
    EXPECT_EQ(count(target, "IfcGeometricRepresentationContext"), 1U) << "equal contexts become one";
    EXPECT_EQ(count(target, "IfcUnitAssignment"), 1U);
    EXPECT_EQ(count(target, "IfcWall"), 4U);
    EXPECT_EQ(count(target, "IfcBuilding"), 2U);
    for (const Instance& relation : target.instances("IfcRelAggregates"))
        EXPECT_TRUE(relation["RelatingObject"].as<Instance>());
    const Instance wall = target.at("1000000000000000000004");
    EXPECT_EQ(propertyValue(wall, "Pset_WallCommon.FireRating"), Value(typed("IFCLABEL", "EI60")));
    // What was there is as it was.
    const DiffResult kept = diff(buildingOf(GetParam()), target);
    EXPECT_EQ(kept.removed, 0U);
    EXPECT_EQ(kept.changed, 0U);
    // And all of the other one is there but for its project.
    EXPECT_LE(diff(other, target).removed, 1U);
}

TEST_P(Merges, MakeStoreysOfTheSameNameOne) {
    Model target = buildingOf(GetParam());
    merge(target, otherBuilding(GetParam()), {.equalStoreys = true});
    EXPECT_EQ(count(target, "IfcBuilding"), 1U);
    EXPECT_EQ(count(target, "IfcBuildingStorey"), 1U);
    EXPECT_EQ(count(target, "IfcRelContainedInSpatialStructure"), 2U);
    for (const Instance& relation : target.instances("IfcRelContainedInSpatialStructure"))
        EXPECT_EQ(relation["RelatingStructure"], Value(target[3]));
    EXPECT_EQ(count(target, "IfcRelAggregates"), 4U) << "a storey is a part of one building";
}

TEST_P(Merges, ShareWhatIsTheSameAndTellOfStolenGlobalIds) {
    Model target = buildingOf(GetParam());
    const std::size_t size = target.size();
    EXPECT_EQ(merge(target, buildingOf(GetParam())).added, 0U) << "everything is there already";
    EXPECT_EQ(target.size(), size);

    Model other = buildingOf(GetParam());
    other[4].set("Name", "another wall");
    std::vector<std::string> told;
    const MergeResult result =
        merge(target, other, {.renamed = [&](const std::string& line) { told.push_back(line); }});
    EXPECT_EQ(result.renamed, 1U);
    ASSERT_EQ(told.size(), 1U);
    EXPECT_NE(told[0].find("0000000000000000000004"), std::string::npos) << told[0];
    EXPECT_EQ(target[4].name(), "W");
}

/// The corner of the wall and some of its numbers, in SI units.
std::vector<double> extentsOf(const Instance& wall, const Model& model) {
    std::vector<double> numbers;
    const double unit = Unit(projectUnit(model, "LENGTHUNIT")).factor();
    for (const double coordinate : placement(wall).apply({0, 0, 0}))
        numbers.push_back(coordinate * unit);
    for (const char* path : {"Pset_WallCommon.Width", "Pset_WallCommon.Height.Max"})
        numbers.push_back(property(wall, path)->values[0].quantity()->si());
    numbers.push_back(*material(wall).parts[0].thickness * unit);
    numbers.push_back(quantity(storey(wall), "Elevation")->si());
    return numbers;
}

TEST_P(Merges, BringValuesToTheUnitsOfTheFirst) {
    // A building in metres: what says 200 is as long as two hundred of them. The foot is told in millimetres all the
    // same.
    const auto metres = [] {
        Model model = otherBuilding(GetParam());
        const Instance millimetre = model.copy(model[51]);
        model[56].set("UnitComponent", millimetre);
        model[51].unset("Prefix");
        return model;
    };
    const char* const wall = "1000000000000000000004";
    const Model before = metres();
    Model target = buildingOf(GetParam());
    const std::vector<double> there = extentsOf(target[4], target);
    const MergeResult result = merge(target, before);
    EXPECT_GT(result.converted, 5U);
    EXPECT_EQ(extentsOf(target.at(wall), target), extentsOf(before.at(wall), before));
    EXPECT_EQ(extentsOf(target[4], target), there);
    EXPECT_EQ(count(target, "IfcGeometricRepresentationContext"), 2U) << "their precisions differ";
    EXPECT_EQ(before.text(), metres().text()) << "what is merged from stays as it is";
    Model moved = buildingOf(GetParam());
    EXPECT_GT(merge(moved, metres()).converted, 5U);
    EXPECT_EQ(extentsOf(moved.at(wall), moved), extentsOf(before.at(wall), before));
    // And the other way round.
    Model large = metres();
    merge(large, buildingOf(GetParam()));
    EXPECT_EQ(extentsOf(large.at("0000000000000000000004"), large), there);
}

TEST_P(Merges, RefuseOtherReleasesAndUnitsThatOnlyOneHas) {
    Model target = buildingOf(GetParam());
    for (const std::string& release : kReleases)
        if (release != GetParam()) {
            const Model foreign = buildingOf(release);
            EXPECT_THROW(merge(target, foreign), BadValue);
        }
    const Model empty = vnifc::create(GetParam());
    EXPECT_THROW(merge(target, empty), BadValue);
    EXPECT_EQ(target.text(), buildingOf(GetParam()).text()) << "and nothing is changed";

    // A kind of unit that only the other one declares comes along.
    Model more = otherBuilding(GetParam());
    const Instance area =
        more.create("IfcSIUnit", {{"UnitType", Literal{"AREAUNIT"}}, {"Name", Literal{"SQUARE_METRE"}}});
    more[50].set("Units", Value{more[51], more[52], more[53], area});
    merge(target, more);
    EXPECT_EQ(target[50]["Units"].as<std::vector<Instance>>().size(), 4U);
    // Not where values would get a unit that they never had.
    Model without = buildingOf(GetParam());
    without[50].set("Units", Value{without[51], without[53]});
    for (const bool isTarget : {false, true}) {
        Model other = otherBuilding(GetParam());
        const std::string message =
            messageOf<BadValue>([&] { isTarget ? merge(without, other) : merge(other, without); });
        EXPECT_NE(message.find("#59 IFCQUANTITYVOLUME.VolumeValue: "), std::string::npos) << message;
        EXPECT_NE(message.find("declares no unit of kind VOLUMEUNIT"), std::string::npos) << message;
    }
}

/// A project in metres, radians and kelvins, or in millimetres, degrees and degrees Celsius, with further instances.
Model projectOf(const std::string& release, bool isSmall, const std::string& lines) {
    const std::string length = isSmall ? ".MILLI." : "$", heat = isSmall ? ".DEGREE_CELSIUS." : ".KELVIN.";
    const std::string money = release == "IFC2X3" ? (isSmall ? ".EUR." : ".USD.") : (isSmall ? "'EUR'" : "'USD'");
    return openText(fileOf(release, "#1=IFCPROJECT('0000000000000000000001',$,'P',$,$,$,$,(#2),#10);\n"
                                    "#2=IFCGEOMETRICREPRESENTATIONCONTEXT($,'Model',3," +
                                        std::string(isSmall ? "0.01" : "1.E-5") +
                                        ",#3,$);\n#3=IFCAXIS2PLACEMENT3D(#4,$,$);\n#4=IFCCARTESIANPOINT((0.,0.,0.));\n"
                                        "#10=IFCUNITASSIGNMENT((#11,#" +
                                        (isSmall ? "17" : "12") + ",#13,#14));\n#11=IFCSIUNIT(*,.LENGTHUNIT.," +
                                        length +
                                        ",.METRE.);\n#12=IFCSIUNIT(*,.PLANEANGLEUNIT.,$,.RADIAN.);\n"
                                        "#13=IFCSIUNIT(*,.THERMODYNAMICTEMPERATUREUNIT.,$," +
                                        heat + ");\n#14=IFCMONETARYUNIT(" + money +
                                        ");\n#15=IFCDIMENSIONALEXPONENTS(0,0,0,0,0,0,0);\n"
                                        "#16=IFCMEASUREWITHUNIT(IFCPLANEANGLEMEASURE(0.0174532925199433),#12);\n"
                                        "#17=IFCCONVERSIONBASEDUNIT(#15,.PLANEANGLEUNIT.,'DEGREE',#16);\n" +
                                        lines),
                    {.release = release});
}

TEST_P(Merges, ConvertEveryKindOfValueOnce) {
    const struct {
        const char* large; ///< in metres, radians and kelvins
        const char* small; ///< in millimetres, degrees and degrees Celsius
    } kCases[] = {
        {"IFCCARTESIANPOINT((1.,0.29,-0.5))", "IFCCARTESIANPOINT((1000.,290.,-500.))"},
        {"IFCDIRECTION((0.,0.5))", "IFCDIRECTION((0.,0.5))"},
        {"IFCVECTOR(#8,2.)", "IFCVECTOR(#8,2000.)"},
        {"IFCCIRCLE(#7,2.)", "IFCCIRCLE(#7,2000.)"},
        {"IFCTRIMMEDCURVE(#5,(IFCPARAMETERVALUE(3.14159265358979)),(#4),.T.,.PARAMETER.)",
         "IFCTRIMMEDCURVE(#5,(IFCPARAMETERVALUE(180.)),(#4),.T.,.PARAMETER.)"},
        {"IFCTRIMMEDCURVE(#6,(IFCPARAMETERVALUE(3.)),(#4),.T.,.PARAMETER.)",
         "IFCTRIMMEDCURVE(#6,(IFCPARAMETERVALUE(3.)),(#4),.T.,.PARAMETER.)"},
        {"IFCPROPERTYSINGLEVALUE('a',$,IFCPOSITIVELENGTHMEASURE(0.1),$)",
         "IFCPROPERTYSINGLEVALUE('a',$,IFCPOSITIVELENGTHMEASURE(100.),$)"},
        {"IFCPROPERTYSINGLEVALUE('a',$,IFCLENGTHMEASURE(0.1),#20)",
         "IFCPROPERTYSINGLEVALUE('a',$,IFCLENGTHMEASURE(0.1),#20)"},
        {"IFCPROPERTYSINGLEVALUE('a',$,IFCREAL(0.1),$)", "IFCPROPERTYSINGLEVALUE('a',$,IFCREAL(0.1),$)"},
        {"IFCPROPERTYSINGLEVALUE('a',$,IFCPLANEANGLEMEASURE(1.5707963267949),$)",
         "IFCPROPERTYSINGLEVALUE('a',$,IFCPLANEANGLEMEASURE(90.0000000000002),$)"},
        {"IFCPROPERTYSINGLEVALUE('a',$,IFCTHERMODYNAMICTEMPERATUREMEASURE(293.15),$)",
         "IFCPROPERTYSINGLEVALUE('a',$,IFCTHERMODYNAMICTEMPERATUREMEASURE(20.),$)"},
        {"IFCPROPERTYSINGLEVALUE('a',$,IFCPARAMETERVALUE(3.),$)",
         "IFCPROPERTYSINGLEVALUE('a',$,IFCPARAMETERVALUE(3.),$)"},
        {"IFCPROPERTYLISTVALUE('a',$,(IFCLENGTHMEASURE(1.),IFCLABEL('1.'),IFCINTEGER(1)),$)",
         "IFCPROPERTYLISTVALUE('a',$,(IFCLENGTHMEASURE(1000.),IFCLABEL('1.'),IFCINTEGER(1)),$)"},
        {"IFCPROPERTYENUMERATEDVALUE('a',$,(IFCLENGTHMEASURE(1.)),#21)",
         "IFCPROPERTYENUMERATEDVALUE('a',$,(IFCLENGTHMEASURE(1.)),#21)"},
        {"IFCPROPERTYENUMERATEDVALUE('a',$,(IFCLENGTHMEASURE(1.)),$)",
         "IFCPROPERTYENUMERATEDVALUE('a',$,(IFCLENGTHMEASURE(1000.)),$)"},
        {"IFCMEASUREWITHUNIT(IFCLENGTHMEASURE(1.),#20)", "IFCMEASUREWITHUNIT(IFCLENGTHMEASURE(1.),#20)"},
        {"IFCCARTESIANTRANSFORMATIONOPERATOR3D($,$,#4,2.,$)", "IFCCARTESIANTRANSFORMATIONOPERATOR3D($,$,#4,2.,$)"},
        {"IFCREVOLVEDAREASOLID(#9,#3,#22,3.14159265358979)", "IFCREVOLVEDAREASOLID(#9,#3,#22,180.)"},
        {"IFCRECTANGULARTRIMMEDSURFACE(#23,1.,2.,3.,4.,.T.,.T.)",
         "IFCRECTANGULARTRIMMEDSURFACE(#23,1000.,2000.,3000.,4000.,.T.,.T.)"},
    };
    const std::string shared = "#5=IFCCIRCLE(#7,1.);\n#6=IFCLINE(#4,#19);\n#7=IFCAXIS2PLACEMENT2D(#4,$);\n"
                               "#8=IFCDIRECTION((1.,0.));\n#9=IFCRECTANGLEPROFILEDEF(.AREA.,$,#7,1.,1.);\n"
                               "#19=IFCVECTOR(#8,1.);\n#20=IFCSIUNIT(*,.LENGTHUNIT.,.CENTI.,.METRE.);\n"
                               "#21=IFCPROPERTYENUMERATION('e',(IFCLENGTHMEASURE(1.)),#20);\n"
                               "#22=IFCAXIS1PLACEMENT(#4,$);\n#23=IFCPLANE(#3);\n";
    std::string lines = shared;
    std::uint64_t id = 100;
    for (const auto& [large, small] : kCases)
        lines += '#' + std::to_string(id++) + '=' + large + ";\n";
    Model model = projectOf(GetParam(), false, lines);
    const Model like = projectOf(GetParam(), true, "");
    EXPECT_GT(convertUnits(model, like), 0U);
    id = 100;
    for (const auto& [large, small] : kCases) {
        EXPECT_EQ(model[id].toString(), '#' + std::to_string(id) + '=' + small + ';');
        ++id;
    }
    EXPECT_EQ(model[2]["Precision"], Value(0.01));
    for (const char* kind : {"LENGTHUNIT", "PLANEANGLEUNIT", "THERMODYNAMICTEMPERATUREUNIT", "MONETARYUNIT"})
        EXPECT_EQ(signOf(projectUnit(model, kind)), signOf(projectUnit(like, kind)));
    const std::string text = model.text();
    EXPECT_EQ(convertUnits(model, like), 0U) << "the units are the same now";
    EXPECT_EQ(model.text(), text);
    // There and back.
    convertUnits(model, projectOf(GetParam(), false, ""));
    EXPECT_EQ(model[100]["Coordinates"], (Value{1.0, 0.29, -0.5}));
    EXPECT_EQ(model[2]["Precision"], Value(1e-5));
}

TEST_P(Merges, RefuseWhatCannotBeConverted) {
    const struct {
        const char* line;
        const char* message;
    } kCases[] = {
        {"#9=IFCPROPERTYSINGLEVALUE('a',$,IFCMONETARYMEASURE(1.),$);\n",
         "#9 IFCPROPERTYSINGLEVALUE.NominalValue: values in USD cannot be converted to EUR"},
        {"#9=IFCGNOME(1.);\n", "#9 IFCGNOME has no class in"},
        {"#9=IFCVECTOR(#8,'long 7');\n", "#9 IFCVECTOR.Magnitude: what is kept as text cannot be brought"},
        {"#9=IFCPROPERTYSINGLEVALUE('a',$,IFCLENGTHMEASURE('1.'),$);\n", "NominalValue: what is kept as text"},
        {"#8=IFCCYLINDRICALSURFACE(#3,1.);\n#9=IFCPCURVE(#8,#7);\n#7=IFCPOLYLINE((#4,#4));\n", "#9 IFCPCURVE: "},
        {"#8=IFCCOMPOSITECURVE((),.F.);\n#9=IFCTRIMMEDCURVE(#8,(IFCPARAMETERVALUE(1.)),(#4),.T.,.PARAMETER.);\n",
         "#9 IFCTRIMMEDCURVE.Trim1: it cannot be told"},
    };
    const Model like = projectOf(GetParam(), true, "");
    for (const auto& [line, message] : kCases) {
        if (std::string_view(message).find("IFCPCURVE") != std::string_view::npos && !like.hasEntity("IfcPcurve"))
            continue;
        Model model = projectOf(GetParam(), false, line);
        const std::string text = model.text();
        const std::string told = messageOf<BadValue>([&] { convertUnits(model, like); });
        EXPECT_NE(told.find(message), std::string::npos) << told;
        EXPECT_EQ(model.text(), text) << "nothing is changed";
        Model target = projectOf(GetParam(), true, "");
        EXPECT_THROW(merge(target, model), BadValue);
        EXPECT_EQ(target.text(), like.text());
    }
    // None of these matters where the units are the same.
    Model target = projectOf(GetParam(), true, "");
    EXPECT_NO_THROW(merge(target, projectOf(GetParam(), true, "#9=IFCGNOME(1.);\n")));
}

/// Where products are, in metres; products whose placement is of another kind are left out.
std::map<std::uint64_t, std::array<double, 3>> placesIn(const Model& model) {
    const Instance unit = projectUnit(model, "LENGTHUNIT");
    const double factor = unit ? Unit(unit).factor() : 1;
    std::map<std::uint64_t, std::array<double, 3>> places;
    for (const Instance& product : model.instances("IfcProduct"))
        try {
            std::array<double, 3> place = placement(product).apply({0, 0, 0});
            for (double& coordinate : place)
                coordinate *= factor;
            places.emplace(product.id(), place);
        } catch (const BadValue&) {
        }
    return places;
}

TEST(MergesOfOthers, LeaveEverythingWhereItIs) {
    std::size_t converted = 0, refused = 0;
    const std::vector<std::filesystem::path> files = readableCorpusFiles();
    if (files.empty())
        GTEST_SKIP() << "no files of other programs here";
    for (const std::filesystem::path& file : files) {
        SCOPED_TRACE(file.filename().string());
        const Model before = open(file);
        Model after = open(file);
        const auto places = placesIn(before);
        std::uint64_t count = 0;
        try {
            // One of the two is another system than that of the file.
            for (const bool isSmall : {true, false})
                count += convertUnits(after, projectOf(std::string(before.release()), isSmall, ""));
        } catch (const BadValue& error) {
            ++refused;
            continue;
        }
        EXPECT_GT(count, 0U);
        ++converted;
        const auto moved = placesIn(after);
        ASSERT_EQ(moved.size(), places.size());
        for (const auto& [id, place] : places)
            for (std::size_t i = 0; i < 3; ++i)
                EXPECT_NEAR(moved.at(id)[i], place[i], 1e-9 * (1 + std::abs(place[i]))) << id;
        try {
            convertUnits(after, before);
        } catch (const BadValue&) {
            continue;
        }
        DiffOptions options;
        options.ignored = {"UnitsInContext"};
        // What has no GlobalId counts by all that it says, to the last digit.
        options.differences = [](const Difference& difference) {
            EXPECT_EQ(difference.globalId, "") << (difference.details.empty() ? "" : difference.details.front().path);
        };
        diff(before, after, options);
    }
    EXPECT_GT(converted, refused);
}

} // namespace

} // namespace vnifc::test
