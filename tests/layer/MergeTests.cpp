#include "Building.h"

#include <vnifc/Diff.h>
#include <vnifc/Merge.h>
#include <vnifc/Properties.h>

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

TEST_P(Merges, RefuseOtherUnitsAndReleases) {
    Model target = buildingOf(GetParam());
    Model metres = otherBuilding(GetParam());
    metres[51].unset("Prefix");
    const std::string message = messageOf<BadValue>([&] { merge(target, metres); });
    EXPECT_NE(message.find("LENGTHUNIT is m, expected mm"), std::string::npos) << message;
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
}

} // namespace

} // namespace vnifc::test
