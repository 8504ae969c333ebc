#include "Process.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <sstream>

namespace vnifc::test {

namespace {

using nlohmann::json;
using testing::IsSubstring;

/// Three errors, of two kinds, and a warning.
std::string brokenFile() {
    static const std::string file = makeModel("broken.ifc", "#1=IFCCIRCLE($,1.);\n"
                                                            "#2=IFCCIRCLE(#4,$);\n"
                                                            "#3=IFCWALL('bad',$,$,$,$,$,$,$,.SOLIDWALL.);\n"
                                                            "#4=IFCAXIS2PLACEMENT2D(#5,$);\n"
                                                            "#5=IFCCARTESIANPOINT((0.,0.));\n"
                                                            "#6=(IFCPLANE(#4)IFCSURFACE());\n");
    return file;
}

TEST(Check, PeopleGetALineForEachFindingAndASummary) {
    const Outcome outcome = runTool({"check", brokenFile()});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.err.starts_with("vnifc: rules are not checked; ")) << outcome.err;
    EXPECT_EQ(std::ranges::count(outcome.err, '\n'), 1) << outcome.err;
    const std::string file = brokenFile();
    EXPECT_PRED_FORMAT2(IsSubstring, file + ":8:1: error: #1 IFCCIRCLE.Position: expected a value, ", outcome.out);
    EXPECT_PRED_FORMAT2(IsSubstring, file + ":13:4: warning: #6: expected a simple instance", outcome.out);
    EXPECT_TRUE(outcome.out.ends_with(file + ": errors 3, warnings 1, remarks 0\n"
                                             "         2  error    mandatory\n"
                                             "         1  error    globalid\n"
                                             "         1  warning  complex-instance\n"))
        << outcome.out;
}

TEST(Check, ProgramsGetAnObjectForEachFindingAndASummary) {
    std::vector<json> lines;
    std::istringstream out(runTool({"check", "--json", brokenFile()}).out);
    for (std::string line; std::getline(out, line);)
        lines.push_back(json::parse(line));
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(lines[0]["code"], "complex-instance"); // the reader's findings come first
    EXPECT_EQ(lines[1], json({{"severity", "error"},
                              {"code", "mandatory"},
                              {"file", brokenFile()},
                              {"line", 8},
                              {"column", 1},
                              {"id", 1},
                              {"keyword", "IFCCIRCLE"},
                              {"attribute", "Position"},
                              {"found", "$"},
                              {"expected", lines[1]["expected"]}}));
    EXPECT_EQ(lines[4], json::parse(R"({"summary":{"error":3,"warning":1,"info":0,)"
                                    R"("kinds":{"mandatory":2,"globalid":1,"complex-instance":1}}})"));
}

/// "#id attribute code: found", one line for each error that belongs to an instance.
std::string errorsIn(const std::string& file) {
    std::istringstream out(runTool({"check", "--json", "--level=error", file}).out);
    std::string errors;
    for (std::string line; std::getline(out, line);) {
        const json each = json::parse(line);
        if (!each.contains("id"))
            continue;
        const auto text = [&](const char* key) { return each[key].is_null() ? "-" : each[key].get<std::string>(); };
        errors += '#' + std::to_string(each["id"].get<int>()) + ' ' + text("attribute") + ' ' + text("code") + ": " +
                  text("found") + '\n';
    }
    return errors;
}

TEST(Check, EveryKindOfErrorNamesItsInstanceAndAttribute) {
    const std::string guid = "YvctVUKr0kugbFTf53O9L";
    const std::string opening = "#1=IFCOPENINGELEMENT('0" + guid + "',$,$,$,$,$,$,$,$);\n";
    const std::string wall = "#1=IFCWALL('0" + guid + "',$,$,$,$,$,$,$,$);\n";
    const struct {
        std::string instances;
        const char* errors;
    } cases[] = {
        {"#1=IFCCARTESIANPOINT((1.,2.,3.,4.));\n", "#1 Coordinates bounds: 4 elements\n"},
        {"#1=IFCCARTESIANPOINTLIST3D(((1.,2.,3.),(1.,2.)),$);\n", "#1 CoordList bounds: 2 elements\n"},
        {"#1=IFCCARTESIANPOINT((1.));\n#2=IFCVECTOR(#1,1.);\n", "#2 Orientation wrong-type: #1 IFCCARTESIANPOINT\n"},
        {"#1=IFCCARTESIANPOINT((1.));\n#2=IFCPOLYLOOP((#1,#1,#1));\n", "#2 Polygon unique-elements: equal elements\n"},
        {"#1=IFCPROPERTYENUMERATION('n',(IFCLABEL('a'),IFCLABEL('a')),$);\n",
         "#1 EnumerationValues unique-elements: equal elements\n"},
        {"#1=IFCINDEXEDPOLYGONALFACEWITHVOIDS((1,2,3),((1,2,3),(1,2,3)));\n"
         "#2=IFCINDEXEDPOLYGONALFACEWITHVOIDS((1,2,3),((1,2,2)));\n#3=IFCPOLYGONALFACESET(#4,$,(#1,#2),$);\n"
         "#4=IFCCARTESIANPOINTLIST3D(((1.,2.,3.)),$);\n",
         "#2 InnerCoordIndices unique-elements: equal elements\n"},
        {"#1=IFCSTRUCTURALLOADCONFIGURATION('n',(#2),((1.),(1.,1.),(1.)));\n#2=IFCSTRUCTURALLOADTEMPERATURE($,$,$,$);\n"
         "#3=IFCSTRUCTURALLOADCONFIGURATION('n',(#2),((1.,2.),(1.),(2.,1.)));\n",
         "#1 Locations unique-elements: equal elements\n"},
        {"#1=IFCPROPERTYSINGLEVALUE('x',$,#2,$);\n#2=IFCCARTESIANPOINT((1.));\n",
         "#1 NominalValue select-type: #2 IFCCARTESIANPOINT\n"},
        {"#1=IFCREPRESENTATIONITEM();\n", "#1 - abstract: IFCREPRESENTATIONITEM\n"},
        {wall + "#2=IFCWALL('0" + guid + "',$,$,$,$,$,$,$,$);\n", "#2 GlobalId unique: the value of #1\n"},
        {"#1=IFCORGANIZATION($,'o',$,$,$);\n#2=IFCAPPLICATION(#1,'1','n','a');\n#3=IFCAPPLICATION(#1,'1','n','b');\n",
         "#3 ApplicationFullName,Version unique: the value of #2\n"},
        {"#1=IFCORGANIZATION($,'o',$,$,$);\n#2=IFCAPPLICATION(#1,'1','n1','a');\n#3=IFCAPPLICATION(#1,'11','n','b');\n",
         ""},
        {"#1=IFCPOLYLOOP((#2,#3));\n#3=IFCCARTESIANPOINT((1.));\n",
         "#1 Polygon dangling-reference: #2\n#1 Polygon bounds: 2 elements\n"},
        {"#1=IFCPOLYLOOP($);\n#2=IFCPERSON('p',$,$,(),$,$,$,$);\n", "#1 Polygon mandatory: $\n"},
        {"#1=IFCPOLYLOOP(());\n", "#1 Polygon mandatory: $\n"},
        // Nobody refers to it; or what does so has no class, or stands in a text that does not fit.
        {opening, "#1 VoidsElements inverse-bounds: 0 instances\n"},
        {opening + "#2=IFCRELGNAWS(#1);\n", "#2 - unknown-keyword: IFCRELGNAWS\n"},
        {opening + "#2=IFCPERSON('p','q',(#1),$,$,$,$,$);\n", "#2 GivenName wrong-kind: (#1)\n"},
        // The inverse attribute holds one relation only.
        {wall + "#2=IFCSITE('1" + guid + "',$,$,$,$,$,$,$,$,$,$,$,$,$);\n" + "#3=IFCRELCONTAINEDINSPATIALSTRUCTURE('2" +
             guid + "',$,$,$,(#1),#2);\n" + "#4=IFCRELCONTAINEDINSPATIALSTRUCTURE('3" + guid + "',$,$,$,(#1),#2);\n",
         "#3 RelatedElements inverse-bounds: #1 IFCWALL, to which #4 refers as well\n"},
    };
    for (const auto& [instances, errors] : cases)
        EXPECT_EQ(errorsIn(makeModel("kinds.ifc", instances)), errors) << instances;
}

// Rules of a supertype hold, and over instances as over texts.
TEST(Check, UniqueRulesOfAllLevels) {
    EXPECT_EQ(errorsIn(makeModel("unique.ifc",
                                 "#1=IFCMATERIAL('m');\n#2=IFCMATERIAL('m');\n"
                                 "#3=IFCMECHANICALSTEELMATERIALPROPERTIES(#1,$,$,$,$,$,$,$,$,$,$,$,$);\n"
                                 "#4=IFCMECHANICALSTEELMATERIALPROPERTIES(#2,$,$,$,$,$,$,$,$,$,$,$,$);\n"
                                 "#5=IFCMECHANICALCONCRETEMATERIALPROPERTIES(#1,$,$,$,$,$,$,$,$,$,$,$);\n"
                                 "#6=IFCGENERALMATERIALPROPERTIES(#1,$,$,$);\n",
                                 "IFC2X3")),
              "#5 Material unique: the value of #3\n");
}

TEST(Check, LevelAndLimitHideLinesAndNothingElse) {
    const struct {
        std::vector<std::string> arguments;
        std::ptrdiff_t lines;
    } cases[] = {
        {{"--level", "info"}, 4 + 1 + 3},
        {{"--level", "error"}, 3 + 1 + 2},
        {{"--limit", "1"}, 3 + 1 + 3},
        {{"--quiet"}, 1 + 3},
        {{"--limit", "1", "--level", "error"}, 2 + 1 + 2},
    };
    for (const auto& [arguments, lines] : cases) {
        std::vector<std::string> all{"check", brokenFile()};
        all.insert(all.end(), arguments.begin(), arguments.end());
        const Outcome outcome = runTool(all);
        EXPECT_EQ(std::ranges::count(outcome.out, '\n'), lines) << outcome.out;
        EXPECT_PRED_FORMAT2(IsSubstring, ": errors 3, warnings 1, remarks 0\n         2  error    mandatory\n",
                            outcome.out);
        EXPECT_EQ(outcome.exitCode, 1);
    }
    for (const char* bad : {"--level=fatal", "--limit=-1", "--limit=many"})
        EXPECT_EQ(runTool({"check", brokenFile(), bad}).exitCode, 2) << bad;
    EXPECT_EQ(runTool({"check", makeModel("odd.ifc", "#1=(IFCPOINT()IFCSURFACE());\n")}).exitCode, 0)
        << "warnings are no errors";
}

} // namespace

} // namespace vnifc::test
