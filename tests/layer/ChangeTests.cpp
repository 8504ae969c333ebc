// Changes of meaning: what is changed says so afterwards, and nothing else says anything new.
#include "Building.h"

#include <vnifc/Change.h>
#include <vnifc/Properties.h>
#include <vnifc/Relations.h>

#include <VnIfcCore/VnIfcCheck.h>

#include <map>

namespace vnifc::test {

namespace {

class Changes : public testing::TestWithParam<std::string> {
protected:
    void SetUp() override { m_before = faults(); }

    /// How many findings of which kind a check of the written file has, but for the owner histories that IFC2X3 demands
    /// and the building does not have.
    std::map<std::string, int> faults() const {
        std::map<std::string, int> counts;
        Model again = openText(m_model.text(), {.release = GetParam()});
        again.core().setInverseCounterParts();
        VN_SDAI::VnIfcCheck(again.core(), [&](const Finding& finding) { ++counts[finding.code]; }).run();
        counts.erase("mandatory");
        return counts;
    }
    void expectSound() const {
        EXPECT_EQ(faults(), m_before);
        const Model again = openText(m_model.text(), {.release = GetParam()});
        for (const Instance instance : m_model.all())
            for (const Attribute attribute : instance.attributes())
                EXPECT_EQ(attribute.value().toString(), again[instance.id()][attribute.name()].toString());
        for (const Instance object : m_model.instances("IfcObjectDefinition")) {
            EXPECT_EQ(idsOf(parts(object)), idsOf(parts(again[object.id()])));
            EXPECT_EQ(container(object).id(), container(again[object.id()]).id());
            EXPECT_EQ(typeOf(object).id(), typeOf(again[object.id()]).id());
            EXPECT_EQ(material(object).definition.id(), material(again[object.id()]).definition.id());
        }
    }
    std::string rating(std::uint64_t id) const {
        return propertyValue(m_model[id], "Pset_WallCommon.FireRating").toString(TextForm::kPlain);
    }

    Model m_model = buildingOf(GetParam());
    std::map<std::string, int> m_before;
};

INSTANTIATE_TEST_SUITE_P(Layer, Changes, testing::ValuesIn(kReleases), [](const auto& each) { return each.param; });

TEST_P(Changes, APropertyOfTheObjectItself) {
    const Instance wall = m_model[4];
    const std::size_t count = m_model.size();
    EXPECT_EQ(setProperty(wall, "Pset_WallCommon.FireRating", "EI90"), 1u);
    EXPECT_EQ(setProperty(wall, "Pset_WallCommon.FireRating", "EI90"), 0u) << "it says so already";
    EXPECT_EQ(rating(4), "EI90");
    EXPECT_EQ(setProperty(wall, "Qto_WallBaseQuantities.NetVolume", 3.25), 1u);
    EXPECT_EQ(propertyValue(wall, "Qto_WallBaseQuantities.NetVolume").get<double>(), 3.25);
    EXPECT_EQ(m_model.size(), count) << "nothing new was needed";
    EXPECT_EQ(setProperty(wall, "Pset_WallCommon.FireRating", Value()), 1u);
    EXPECT_TRUE(m_model[41]["NominalValue"].isNull());
    expectSound();
}

TEST_P(Changes, APropertyOfTheTypeIsOverridden) {
    EXPECT_EQ(setProperty(m_model[7], "Pset_WallCommon.FireRating", "EI120"), 1u);
    EXPECT_EQ(rating(7), "EI120");
    EXPECT_EQ(rating(8), "EI30");
    EXPECT_EQ(rating(4), "EI60");
    expectSound();
}

TEST_P(Changes, WhatIsSharedIsSplit) {
    m_model[48].set("RelatedObjects", {m_model[4], m_model[6], m_model[7]});
    m_model[30].set("HasProperties", {m_model[41], m_model[32]});
    EXPECT_EQ(setProperty(std::vector{m_model[6], m_model[7]}, "Pset_WallCommon.FireRating", "EI90"), 2u);
    EXPECT_EQ(rating(6), "EI90");
    EXPECT_EQ(rating(7), "EI90");
    EXPECT_EQ(rating(4), "EI60") << "it shared the set";
    EXPECT_EQ(rating(8), "EI60") << "its set shared the property";
    EXPECT_EQ(propertySets(m_model[6]).front().instance, propertySets(m_model[7]).front().instance)
        << "one copy for both";
    expectSound();
}

TEST_P(Changes, WhatIsMissingIsAdded) {
    EXPECT_EQ(setProperty(m_model.instances("IfcElement"), "Pset_New.Störung", true), 4u);
    for (const Instance element : m_model.instances("IfcElement"))
        EXPECT_EQ(propertyValue(element, "Pset_New.Störung").get<bool>(), true) << element;
    EXPECT_EQ(setProperty(m_model[6], "Qto_New.Depth", typed("IfcLengthMeasure", 2.5)), 1u);
    EXPECT_EQ(propertyValue(m_model[6], "Qto_New.Depth").get<double>(), 2.5);
    EXPECT_EQ(setProperty(m_model[8], "Pset_New.OfType", 7), 1u);
    EXPECT_EQ(propertyValue(m_model[7], "Pset_New.OfType").get<int>(), 7);
    expectSound();
}

TEST_P(Changes, WhatCannotBeIsRefused) {
    const std::string before = m_model.text();
    EXPECT_NE(messageOf<BadValue>([&] { setProperty(m_model[4], "FireRating", "x"); }).find("FireRating"),
              std::string::npos);
    EXPECT_NE(messageOf<BadValue>([&] { setProperty(m_model[6], "Qto_New.Depth", 2.5); }).find("IfcLengthMeasure"),
              std::string::npos);
    messageOf<BadValue>([&] { setProperty(m_model[14], "Pset_New.P", 1); });
    messageOf<NotFound>([&] { setProperty(Instance(), "Pset_New.P", 1); });
    messageOf<BadValue>([&] { assignContainer(std::vector{m_model[4]}, m_model[8]); });
    messageOf<BadValue>([&] { assignType(std::vector{m_model[4]}, m_model[3]); });
    messageOf<BadValue>([&] { assignMaterial(std::vector{m_model[14]}, m_model[62]); });
    const Model other = buildingOf(GetParam());
    messageOf<BadValue>([&] { assignContainer(std::vector{m_model[4]}, other[3]); });
    EXPECT_EQ(m_model.text(), before);
}

TEST_P(Changes, ContainerTypeAndMaterial) {
    assignContainer(std::vector{m_model[6], m_model[4]}, m_model[2]);
    EXPECT_EQ(container(m_model[6]).id(), 2u);
    EXPECT_EQ(container(m_model[4]).id(), 2u);
    EXPECT_FALSE(m_model.find(22)) << "it contains nothing any more";
    assignContainer(std::vector{m_model[4]}, Instance());
    EXPECT_FALSE(container(m_model[4]));
    assignType(std::vector{m_model[4]}, Instance());
    EXPECT_EQ(idsOf(occurrences(m_model[8])), Ids{7});
    assignType(std::vector{m_model[4]}, m_model[8]);
    EXPECT_EQ(idsOf(occurrences(m_model[8])), (Ids{4, 7}));
    assignMaterial(std::vector{m_model[6], m_model[4]}, m_model[62]);
    EXPECT_EQ(material(m_model[6]).definition.id(), 62u);
    EXPECT_EQ(material(m_model[4]).definition.id(), 62u);
    EXPECT_EQ(material(m_model[8]).definition.id(), 62u);
    expectSound();
}

TEST_P(Changes, AnObjectGoesWithAllThatOnlyItUsed) {
    EXPECT_GT(remove(m_model[4]), 10u);
    for (const std::uint64_t gone : {4, 5, 7, 13, 15, 16, 17, 18, 22, 23, 24, 25, 40, 41, 44, 46, 47, 48, 49, 59, 63})
        EXPECT_FALSE(m_model.find(gone)) << gone;
    for (const std::uint64_t stays : {1, 2, 3, 6, 8, 11, 12, 14, 30, 31, 50, 51, 62, 65, 80, 81})
        EXPECT_TRUE(m_model.find(stays)) << stays;
    EXPECT_EQ(m_model.find(26), Instance()) << "the type has no occurrence any more";
    EXPECT_EQ(idsOf(members(m_model[80])), Ids{6});
    for (const Instance instance : m_model.all())
        for (const Instance used : instance.references())
            EXPECT_TRUE(used) << instance;
    expectSound();
}

} // namespace

} // namespace vnifc::test
