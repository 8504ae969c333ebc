#include "Building.h"

#include <vnifc/Facet.h>
#include <vnifc/Selector.h>

#include <chrono>

namespace vnifc::test {

namespace {

class Selectors : public testing::TestWithParam<std::string> {};
INSTANTIATE_TEST_SUITE_P(Layer, Selectors, testing::ValuesIn(kReleases), [](const auto& each) { return each.param; });

TEST_P(Selectors, Pick) {
    const Model model = buildingOf(GetParam());
    const struct {
        const char* selector;
        Ids expected;
    } kCases[] = {
        {"IfcWall", {4, 7}},
        {"ifcdoor,IfcWall", {4, 6, 7}},
        {"IfcElement, ! IfcWall", {5, 6}},
        {"IfcElement, !IfcWall, !IfcDoor", {5}},
        {"0000000000000000000006", {6}},
        {"#4, 0000000000000000000006, IfcBuilding", {2, 4, 6}},
        {"IfcWall, Name=W", {4}},
        {"IfcWall, Name=\"W\"", {4}},
        {"IfcWall, Name!=W", {7}},
        {"IfcWall, ! Name=W", {7}},
        {"IfcElement, Name=/[A-Z]/", {4, 5, 6}},
        {"IfcElement, Name!=/[A-Z]/", {7}},
        {"IfcElement, Name*=ar", {7}},
        {"IfcElement, Name!*=ar", {4, 5, 6}},
        {"IfcElement, Description=NULL, Name!=NULL", {4, 5, 6, 7}},
        {"IfcBuildingStorey, CompositionType=element", {3}},
        {"IfcBuildingStorey, LongName=1st floor", {3}},
        {"IfcElement, OverallHeight>2000", {6}},
        {"IfcElement, OverallHeight>2.1m", {}},
        {"IfcElement, OverallHeight>=2.1m", {6}},
        {"IfcElement, OverallHeight=210cm", {6}},
        {"IfcElement, OverallHeight<7ft", {6}},
        {"IfcElement, OverallHeight>1kg", {}},
        {"IfcElement, OverallHeight=2.1e+3", {6}},
        {"IfcWall, Pset_WallCommon.FireRating=EI60", {4}},
        {"IfcWall, Pset_WallCommon.FireRating=EI30", {7}},
        {"IfcWall, /Pset_.*Common/.IsExternal=TRUE", {4, 7}},
        {"IfcWall, \"Pset_WallCommon\".\"FireRating\"=/EI[0-9]+/", {4, 7}},
        {"IfcElement, Pset_WallCommon.FireRating=NULL", {5, 6}},
        {"IfcElement, Pset_WallCommon.FireRating!=NULL", {4, 7}},
        {"IfcElement, Pset_WallCommon.Complex.Straße=7", {4}},
        {"IfcElement, Pset_WallCommon.List=2", {4}},
        {"IfcWall, Qto_WallBaseQuantities.NetVolume>=2.5", {4}},
        {"IfcWall, Qto_WallBaseQuantities.NetVolume>2499l", {4}},
        {"IfcWall, Pset_WallCommon./Wid.*/=0.2m", {4}},
        {"type=WT", {4, 7}},
        {"type=0000000000000000000008", {4, 7}},
        {"IfcElement, type=NULL", {5, 6}},
        {"material=Brick", {4, 7, 8}},
        {"material=W200", {4}},
        {"IfcElement, material=NULL", {5, 6}},
        {"classification=21.22", {4, 7, 8}},
        {"IfcWall, classification=/Uni.*/", {4, 7}},
        {"IfcElement, location=First", {4, 5, 6, 7}},
        {"IfcElement, location=B", {4, 5, 6, 7}},
        {"location=B", {3, 4, 5, 6, 7}},
        {"group=S", {4, 6}},
        {"parent=W", {5, 7}},
        {"IfcWall, Name=W + IfcDoor, Name=D", {4, 6}},
        {"IfcWall+IfcWall", {4, 7}},
        {"Name=W", {4}},
        {"IfcMaterial", {62}},
        {"IfcDoor, Name=X", {}},
    };
    for (const auto& [selector, expected] : kCases) {
        if (!hasRegularExpressions() && std::string_view(selector).find('/') != std::string_view::npos)
            continue;
        EXPECT_EQ(idsOf(select(model, selector)), expected) << selector;
    }
}

TEST_P(Selectors, AnswerAFaultWithItsPlace) {
    const Model model = buildingOf(GetParam());
    const struct {
        const char* selector;
        std::size_t column;
        const char* expected;
    } kCases[] = {
        {"", 1, "the name of an attribute"},
        {"IfcWall,", 9, "the name of an attribute"},
        {"IfcWall IfcSlab", 9, "a comma, + or the end"},
        {"IfcWal", 1, "a class of "},
        {"IfcWall, IfcSlap", 10, "a class of "},
        {"IfcWall, Foo", 10, "a class, a GlobalId"},
        {"IfcWall, Nmae=x", 10, "an attribute of "},
        {"IfcWall, Name~x", 10, "a class, a GlobalId"},
        {"IfcWall, Name!x", 14, "one of = !="},
        {"IfcWall, Name=", 15, "a value"},
        {"IfcWall, Name=\"x", 15, "a closing \""},
        {"IfcWall, Name=/x", 15, "a closing /"},
        {"IfcWall, Name>x", 15, "a number"},
        {"IfcWall, Name*=/x/", 16, "text, since"},
        {"IfcWall, Name*=NULL", 16, "text or a number, since"},
        {"IfcWall, \"Pset\"=x", 16, "a dot"},
        {"IfcWall, Pset.=x", 15, "the name of"},
        {"IfcWall, Name=\"x\" y", 19, "a comma"},
    };
    for (const auto& [selector, column, expected] : kCases) {
        SCOPED_TRACE(selector);
        try {
            (void)select(model, selector);
            ADD_FAILURE() << "taken";
        } catch (const SelectorError& error) {
            EXPECT_EQ(error.column(), column) << error.what();
            EXPECT_TRUE(error.expected().starts_with(expected)) << error.what();
        }
    }
    EXPECT_THROW((void)select(model, "#99"), NotFound);
    EXPECT_THROW((void)select(model, "0000000000000000000099"), NotFound);
}

TEST(Selectors, TakeNoLongerForHostilePatterns) {
    if (!hasRegularExpressions()) {
        EXPECT_THROW(Selector("Name=/x/"), SelectorError);
        return;
    }
    Model model = create(kReleases.back());
    model.create("IfcWall", {{"Name", std::string(20000, 'a')}});
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(select(model, "Name=/(a*)*(a|a)*b/").empty());
    EXPECT_FALSE(select(model, "Name=/a{1,1000}.*/").empty());
    EXPECT_THROW(Selector("Name=/(/"), SelectorError);
    EXPECT_THROW(Selector("Name=/((a{1,1000}){1,1000}){1,1000}/"), SelectorError);
    EXPECT_EQ(select(model, "Name=/a+\\/?/").count(), 1u) << "a slash in a pattern goes behind a backslash";
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST_P(Selectors, FacetsShowWhatIsKnown) {
    const Model model = buildingOf(GetParam());
    const struct {
        std::uint64_t id;
        const char* facet;
        const char* words;
    } kCases[] = {
        {4, "id", "4"},
        {4, "class", "IfcWall"},
        {4, "Name", "W"},
        {4, "storey", "First"},
        {6, "building", "B"},
        {4, "type", "WT"},
        {4, "material", "W200, Brick"},
        {7, "material", "Brick"},
        {4, "Pset_WallCommon.FireRating", "EI60"},
        {4, "Pset_WallCommon.List", "1, 2"},
        {4, "site", ""},
        {6, "Pset_WallCommon.FireRating", ""},
        {4, "location", "First, B"},
    };
    for (const auto& [id, facet, words] : kCases)
        EXPECT_EQ(Facet(facet).words(model[id]), words) << facet;
    EXPECT_DOUBLE_EQ(Facet("OverallHeight").quantity(model[6])->in("m"), 2.1);
    EXPECT_FALSE(Facet("Name").quantity(model[6]));
    EXPECT_THROW(Facet("Name x"), SelectorError);
    EXPECT_THROW(Facet("Nmae").check(model), SelectorError);
}

} // namespace

} // namespace vnifc::test
