#include "Building.h"

#include <vnifc/Change.h>
#include <vnifc/Diff.h>
#include <vnifc/Extract.h>
#include <vnifc/Optimise.h>
#include <vnifc/Selector.h>

#include <VnIfcCore/VnIfcCheck.h>

#include <algorithm>
#include <functional>
#include <set>

namespace vnifc::test {

namespace {

/// "changed #4 attribute Name: W -> V", a line for each detail; what was added or removed has one.
std::vector<std::string> differences(const Model& before, const Model& after, DiffOptions options = {}) {
    std::vector<std::string> lines;
    options.differences = [&](const Difference& difference) {
        const bool isAdded = difference.kind == Difference::Kind::kAdded;
        const std::string id = " #" + std::to_string(isAdded ? difference.newId : difference.oldId) + ' ';
        if (difference.kind != Difference::Kind::kChanged)
            lines.push_back((isAdded ? "added" : "removed") + id + difference.entity);
        for (const DiffDetail& detail : difference.details)
            lines.push_back("changed" + id + std::string(nameOf(detail.aspect)) + ' ' + detail.path + ": " +
                            detail.before + " -> " + detail.after);
    };
    const DiffResult result = diff(before, after, options);
    EXPECT_EQ(result.isEqual(), lines.empty());
    return lines;
}

using Lines = std::vector<std::string>;

/// What check finds wrong, without places: code, attribute and what was found, which names instances that stay.
std::multiset<std::string> faultsOf(Model& model) {
    model.core().setInverseCounterParts();
    std::multiset<std::string> faults;
    VN_SDAI::VnIfcCheck check(model.core(), [&](const Finding& finding) {
        faults.insert('#' + std::to_string(finding.instance) + ' ' + finding.code + ' ' +
                      std::string(finding.attribute));
    });
    check.run();
    return faults;
}

Lines newFaults(const std::multiset<std::string>& before, const std::multiset<std::string>& after) {
    Lines added;
    std::ranges::set_difference(after, before, std::back_inserter(added));
    return added;
}

class WholeModels : public testing::TestWithParam<std::string> {};
INSTANTIATE_TEST_SUITE_P(Layer, WholeModels, testing::ValuesIn(kReleases), [](const auto& each) { return each.param; });

TEST_P(WholeModels, DiffTellsWhatWasChanged) {
    const struct {
        const char* what;
        std::function<void(Model&)> change;
        Lines expected;
    } kCases[] = {
        {"nothing", [](Model&) {}, {}},
        {"attribute", [](Model& m) { m[4].set("Name", "Straße"); }, {"changed #4 attribute Name: W -> Straße"}},
        {"unset", [](Model& m) { m[6].unset("OverallWidth"); }, {"changed #6 attribute OverallWidth: 900 -> "}},
        {"empty is not unset",
         [](Model& m) { m[6].set("Description", ""); },
         {"changed #6 attribute Description:  -> ''"}},
        {"within the tolerance", [](Model& m) { m[6].set("OverallWidth", 900.0000000001); }, {}},
        {"beyond it",
         [](Model& m) { m[6].set("OverallWidth", 900.00001); },
         {"changed #6 attribute OverallWidth: 900 -> 900.00001"}},
        {"property of one object",
         [](Model& m) { m[41].set("NominalValue", typed("IfcLabel", "EI90")); },
         {"changed #4 property Pset_WallCommon.FireRating: EI60 -> EI90"}},
        {"property of a type",
         [](Model& m) { m[31].set("NominalValue", typed("IfcLabel", "EI90")); },
         {"changed #8 property Pset_WallCommon.FireRating: EI30 -> EI90"}},
        {"type of a value",
         [](Model& m) { m[41].set("NominalValue", typed("IfcText", "EI60")); },
         {"changed #4 property Pset_WallCommon.FireRating: IFCLABEL('EI60') -> IFCTEXT('EI60')"}},
        {"quantity",
         [](Model& m) { m[59].set("VolumeValue", 3.0); },
         {"changed #4 property Qto_WallBaseQuantities.NetVolume: 2.5 -> 3"}},
        {"property gone",
         [](Model& m) {
             m[40].set("HasProperties", Value{m[41], m[42], m[43], m[44], m[45]});
         },
         {"changed #4 property Pset_WallCommon.Complex: IfcComplexProperty 'Complex' -> "}},
        {"container",
         [](Model& m) { m[22].set("RelatingStructure", m[2]); },
         {"changed #4 container : IfcBuildingStorey 'First' 0000000000000000000003 -> IfcBuilding 'B' "
          "0000000000000000000002"}},
        {"type",
         [](Model& m) { m[26].set("RelatedObjects", Value{m[7]}); },
         {"changed #4 type : IfcWallType 'WT' 0000000000000000000008 -> "}},
        {"material",
         [](Model& m) { m[62].set("Name", "Stone"); },
         {"changed #4 material ForLayerSet.MaterialLayers[1].Material.Name: Brick -> Stone",
          "changed #8 material Name: Brick -> Stone"}},
        {"deep in what has no GlobalId",
         [](Model& m) {
             m[17].set("DirectionRatios", Value{0.0, 0.0, 1.0});
         },
         {"changed #4 attribute ObjectPlacement.RelativePlacement.Axis.DirectionRatios[3]: 2 -> 1"}},
        {"removed", [](Model& m) { m.erase(m[7]); }, {"removed #7 IfcWall"}},
        {"added", [](Model& m) { m.create("IfcSlab"); }, {"added #91 IfcSlab"}},
        {"what nothing refers to", [](Model& m) { m.create("IfcDirection"); }, {}},
        {"GlobalIds of relations and sets",
         [](Model& m) {
             m[40].set("GlobalId", "1111111111111111111111");
             m[48].set("GlobalId", "2222222222222222222222");
         },
         {}},
    };
    const Model before = buildingOf(GetParam());
    for (const auto& [what, change, expected] : kCases) {
        SCOPED_TRACE(what);
        Model after = buildingOf(GetParam());
        change(after);
        EXPECT_EQ(differences(before, after), expected);
    }
}

TEST_P(WholeModels, DiffDoesNotDependOnNumbersOrderAndEncoding) {
    const std::string text =
        fileOf(GetParam(), "#1=IFCCARTESIANPOINT((0.,0.));\n#2=IFCCARTESIANPOINT((1.,0.));\n"
                           "#3=IFCPOLYLINE((#1,#2));\n"
                           "#4=IFCPROPERTYSET('0000000000000000000001',$,'Stra\\X\\DFe',$,(#5,#6));\n"
                           "#5=IFCPROPERTYSINGLEVALUE('a',$,IFCREAL(0.),$);\n"
                           "#6=IFCPROPERTYSINGLEVALUE('b',$,IFCREAL(2.),$);\n");
    const std::string other =
        fileOf(GetParam(), "#9=IFCPROPERTYSINGLEVALUE('b',$,IFCREAL(2.0E0),$);\n"
                           "#40=IFCPROPERTYSINGLEVALUE('a',$,IFCREAL(-0.),$);\n"
                           "#7=IFCPROPERTYSET('0000000000000000000001',$,'Stra\\X2\\00DF\\X0\\e',$,(#9,#40));\n");
    const OpenOptions options{.release = GetParam()};
    EXPECT_EQ(differences(openText(text, options), openText(other, options)), Lines());
}

TEST_P(WholeModels, DiffFindsStylesAndLeavesOutWhatIsIgnored) {
    const auto fileWith = [&](const char* colour) {
        return openText(fileOf(GetParam(), "#1=IFCPROJECT('0000000000000000000001',$,'P',$,$,$,$,(#2),$);\n"
                                           "#2=IFCGEOMETRICREPRESENTATIONCONTEXT($,'Model',3,1.E-5,#3,$);\n"
                                           "#3=IFCAXIS2PLACEMENT3D(#4,$,$);\n#4=IFCCARTESIANPOINT((0.,0.,0.));\n"
                                           "#5=IFCSTYLEDITEM(#4,(),'" +
                                               std::string(colour) + "');\n"),
                        {.release = GetParam()});
    };
    EXPECT_EQ(differences(fileWith("red"), fileWith("red")), Lines());
    EXPECT_EQ(differences(fileWith("red"), fileWith("blue")),
              (Lines{"removed #5 IfcStyledItem", "added #5 IfcStyledItem"}));
    DiffOptions options;
    options.ignored = {"NAME"};
    EXPECT_EQ(differences(fileWith("red"), fileWith("blue"), options), Lines());
}

TEST_P(WholeModels, ExtractBringsWhatObjectsNeed) {
    const Ids wall{1,  2,  3,  4,  5,  6,  7,  8,  11, 12, 13, 14, 15, 16, 17, 18, 20, 21, 22,
                   23, 24, 25, 26, 30, 31, 32, 40, 41, 42, 43, 44, 45, 46, 47, 48, 49, 50, 51,
                   52, 53, 54, 55, 56, 58, 59, 60, 61, 62, 63, 64, 65, 70, 71, 72, 90};
    const struct {
        const char* selector;
        Ids expected;
    } kCases[] = {
        {"#3", {1, 2, 3, 11, 12, 14, 20, 21, 50, 51, 52, 53, 90}},
        {"#6", {1, 6, 12, 14, 50, 51, 52, 53, 90}},
        {"#4", wall},
        {"IfcOpeningElement", {}},
    };
    for (const auto& [selector, expected] : kCases) {
        SCOPED_TRACE(selector);
        Model model = buildingOf(GetParam());
        const auto before = faultsOf(model);
        const std::size_t size = model.size();
        const ExtractResult result = extract(model, select(model, selector).toVector());
        EXPECT_EQ(result.kept, model.size());
        EXPECT_EQ(result.removed, size - model.size());
        if (!expected.empty()) {
            EXPECT_EQ(idsOf(model.all()), expected);
        }
        EXPECT_EQ(newFaults(before, faultsOf(model)), Lines());
        EXPECT_EQ(model.text().find("#81="), std::string::npos) << "the group was not picked";
    }
    Model model = buildingOf(GetParam());
    extract(model, select(model, "#7").toVector());
    EXPECT_EQ(model[26]["RelatedObjects"], (Value{model[4], model[7]})) << "a part hangs from its whole";
    EXPECT_FALSE(model.find(6)) << "but the door in that belongs to nobody who was picked";
    EXPECT_TRUE(model.find(5));
    Model group = buildingOf(GetParam());
    extract(group, select(group, "IfcSystem").toVector());
    EXPECT_TRUE(group.find(6) && group.find(81)) << "a group brings what it gathers";
    Model stranger = buildingOf(GetParam());
    EXPECT_THROW(static_cast<void>(extract(stranger, std::vector{group[1]})), BadValue);
}

TEST_P(WholeModels, ExtractBringsWhatHasToReferToSomething) {
    // Nothing refers to the curve of a segment, or to the product that stands at a placement; both are wanted there.
    Model model =
        openText(fileOf(GetParam(),
                        "#1=IFCPROJECT('0000000000000000000001',$,'P',$,$,$,$,(#2),$);\n"
                        "#2=IFCGEOMETRICREPRESENTATIONCONTEXT($,'Model',3,1.E-5,#3,$);\n"
                        "#3=IFCAXIS2PLACEMENT3D(#4,$,$);\n#4=IFCCARTESIANPOINT((0.,0.,0.));\n"
                        "#7=IFCBUILDINGELEMENTPROXY('0000000000000000000007',$,$,$,$,#20,#8,$,$);\n"
                        "#8=IFCPRODUCTDEFINITIONSHAPE($,$,(#9));\n#9=IFCSHAPEREPRESENTATION(#2,$,$,(#10));\n"
                        "#10=IFCCOMPOSITECURVESEGMENT(.CONTINUOUS.,.T.,#13);\n"
                        "#11=IFCCOMPOSITECURVE((#10,#12),.F.);\n#12=IFCCOMPOSITECURVESEGMENT(.CONTINUOUS.,.T.,#13);\n"
                        "#13=IFCPOLYLINE((#4,#4));\n#14=IFCCOMPOSITECURVE((#10),.F.);\n"
                        "#20=IFCLOCALPLACEMENT(#21,#3);\n#21=IFCLOCALPLACEMENT($,#3);\n"
                        "#22=IFCSLAB('0000000000000000000022',$,$,$,$,#21,$,$,$);\n"
                        "#23=IFCSLAB('0000000000000000000023',$,$,$,$,#20,$,$,$);\n"),
                 {.release = GetParam()});
    const auto before = faultsOf(model);
    extract(model, select(model, "#7").toVector());
    EXPECT_EQ(newFaults(before, faultsOf(model)), Lines());
    EXPECT_TRUE(model.find(11) && model.find(12)) << "with all its segments";
    EXPECT_FALSE(model.find(14)) << "one curve is enough";
    EXPECT_EQ(static_cast<bool>(model.find(22)), GetParam() == "IFC2X3") << "later releases do not want it";
    EXPECT_FALSE(model.find(23)) << "something stands there already";
}

TEST_P(WholeModels, OptimiseMergesAndKeepsApart) {
    const std::string root = "#1=IFCPROJECT('0000000000000000000001',$,'P',$,$,$,$,(#2),$);\n"
                             "#2=IFCGEOMETRICREPRESENTATIONCONTEXT($,'Model',3,1.E-5,#3,$);\n"
                             "#3=IFCAXIS2PLACEMENT3D(#4,$,$);\n#4=IFCCARTESIANPOINT((0.,0.,0.));\n";
    const std::string shape = "#8=IFCPRODUCTDEFINITIONSHAPE($,$,(#9));\n#7=IFCBUILDINGELEMENTPROXY("
                              "'0000000000000000000007',$,$,$,$,$,#8,$,$);\n"
                              "#9=IFCSHAPEREPRESENTATION(#2,$,$,(";
    const struct {
        const char* what;
        std::string lines;
        Ids gone;
    } kCases[] = {
        {"equal points, and what refers to them",
         shape + "#10,#11));\n#10=IFCPOLYLINE((#4,#12));\n"
                 "#11=IFCPOLYLINE((#14,#13));\n"
                 "#12=IFCCARTESIANPOINT((1.,0.,0.));\n"
                 "#13=IFCCARTESIANPOINT((1.,0.,0.));\n"
                 "#14=IFCCARTESIANPOINT((0.,0.,-0.));\n",
         {13, 14}},
        {"a list of different elements",
         shape + "#10));\n#10=IFCPOLYLOOP((#11,#12,#13));\n"
                 "#11=IFCCARTESIANPOINT((1.,0.,0.));\n"
                 "#12=IFCCARTESIANPOINT((1.,0.,0.));\n"
                 "#13=IFCCARTESIANPOINT((2.,0.,0.));\n",
         {}},
        {"what styles are about",
         shape + "#10,#11));\n#10=IFCCARTESIANPOINT((1.,0.,0.));\n"
                 "#11=IFCCARTESIANPOINT((1.,0.,0.));\n#12=IFCSTYLEDITEM(#10,(),'red');\n"
                 "#13=IFCSTYLEDITEM(#11,(),'blue');\n",
         {}},
        {"what nothing refers to",
         "#10=IFCPOLYLINE((#11,#11));\n#11=IFCCARTESIANPOINT((1.,0.,0.));\n"
         "#12=IFCSTYLEDITEM(#11,(),'red');\n",
         {10, 11, 12}},
        {"what has text",
         shape + "#10,#11));\n#10=IFCCARTESIANPOINT('no list');\n#11=IFCCARTESIANPOINT('no list');\n"
                 "#12=IFCFOO(#13);\n#13=IFCCARTESIANPOINT((0.,0.,0.));\n",
         {}},
        {"objects",
         "#10=IFCPROPERTYSET('0000000000000000000010',$,$,$,(#12));\n"
         "#11=IFCPROPERTYSET('0000000000000000000010',$,$,$,(#13));\n"
         "#12=IFCPROPERTYSINGLEVALUE('a',$,$,$);\n#13=IFCPROPERTYSINGLEVALUE('a',$,$,$);\n",
         {13}},
    };
    for (const auto& [what, lines, gone] : kCases) {
        SCOPED_TRACE(what);
        const OpenOptions options{.release = GetParam()};
        const Model before = openText(fileOf(GetParam(), root + lines), options);
        Model after = openText(fileOf(GetParam(), root + lines), options);
        const OptimiseResult result = optimise(after);
        Ids expected = idsOf(before.all());
        std::erase_if(expected, [&gone = gone](std::uint64_t id) { return std::ranges::find(gone, id) != gone.end(); });
        EXPECT_EQ(idsOf(after.all()), expected);
        EXPECT_EQ(result.kept, after.size());
        EXPECT_EQ(result.merged + result.removed, gone.size());
        EXPECT_EQ(differences(before, after), Lines());
    }
    Model model = openText(fileOf(GetParam(), root + kCases[5].lines), {.release = GetParam()});
    optimise(model, {.unusedObjects = true});
    EXPECT_EQ(idsOf(model.all()), (Ids{1, 2, 3, 4}));
}

/// Changes something of as many kinds as the model has, and returns what a comparison should say.
Lines changeSome(Model& model) {
    Lines expected;
    std::set<std::string_view> known;
    for (Instance object : model.instances("IfcObject")) {
        // Each GlobalId of some real files stands for several objects.
        if (!known.insert(object.type()).second || object.globalId().empty() || object.keptText("Name"))
            continue;
        const std::string place = "changed #" + std::to_string(object.id()) + ' ';
        object.set("Name", "Anders \u00e9\u4e2d");
        expected.push_back(place + "attribute Name -> Anders \u00e9\u4e2d");
        if (!object.is("IfcElement"))
            continue;
        setProperty(object, "Pset_Of_This_Test.Number", 7.5);
        expected.push_back(place + "property Pset_Of_This_Test.Number -> 7.5");
    }
    return expected;
}

/// What must hold for any file: of real ones those that take a few seconds.
TEST(WholeModelsOfOthers, KeepWhatTheySay) {
    constexpr std::uintmax_t kLargest = 600000;
    std::size_t count = 0;
    const std::vector<std::filesystem::path> files = readableCorpusFiles();
    if (files.empty())
        GTEST_SKIP() << "no files of other programs here";
    for (const std::filesystem::path& file : files) {
        if (std::filesystem::file_size(file) >= kLargest)
            continue;
        SCOPED_TRACE(file.filename().string());
        ++count;
        Model before = open(file);
        const auto faults = faultsOf(before);
        EXPECT_EQ(differences(before, open(file)), Lines());

        Model smaller = open(file);
        optimise(smaller);
        EXPECT_EQ(differences(before, openText(smaller.text(), {.release = std::string(smaller.release())})), Lines());

        for (const char* const picked : {"IfcElement", "IfcSpatialStructureElement", "IfcDoor"}) {
            SCOPED_TRACE(picked);
            Model part = open(file);
            extract(part, part.instances(picked).toVector());
            EXPECT_EQ(newFaults(faults, faultsOf(part)), Lines());
        }

        Model changed = open(file);
        Lines expected = changeSome(changed);
        Lines told = differences(before, openText(changed.text(), {.release = std::string(changed.release())}));
        for (std::string& line : told) // long and empty texts come in words of their own
            if (const std::size_t colon = line.find(": "), arrow = line.rfind(" -> "); colon < arrow)
                line.erase(colon, arrow - colon);
        std::ranges::sort(expected);
        std::ranges::sort(told);
        EXPECT_EQ(told, expected);
    }
    EXPECT_GE(count, builtReleases().size());
}

} // namespace

} // namespace vnifc::test
