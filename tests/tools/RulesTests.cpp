// The schema's rules on the command line. The texts are declarations of a release with rules that the tests add.
#include "Process.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <sstream>

namespace vnifc::test {

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::IsSubstring;

/// A text of the rules of IFC4X3_ADD2 in a folder of its own.
fs::path textOfRules() {
    std::string text = contents(VNIFC_SCHEMAS "/ifc4x3_add2/declarations.exp");
    const auto add = [&](const std::string& entity, const std::string& clause) {
        const std::size_t place = text.find("ENTITY " + entity + '\n');
        if (place == text.npos)
            throw std::invalid_argument(entity);
        text.insert(text.find("END_ENTITY", place), clause);
    };
    const auto derive = [&](const std::string& entity, const std::string& value) {
        const std::size_t place =
            text.find("?", text.find(":=", text.find("DERIVE", text.find("ENTITY " + entity + '\n'))));
        text.replace(place, 1, value);
    };
    add("IfcCartesianPoint", " WHERE\n  Two : HIINDEX(Coordinates)\n >= 2;\n  Near : Coordinates[1] < 10.;\n");
    add("IfcVector", " WHERE Never : 'IFC4X3_ADD2.IFCNOTHING' IN TYPEOF(SELF);\n");
    derive("IfcPoint", "HIINDEX(SELF\\IfcCartesianPoint.Coordinates)");
    fs::create_directories(scratch() / "rules");
    return makeFile("rules/IFC4X3_ADD2.exp", text);
}

std::string points() {
    return makeModel("points.ifc", "#1=IFCCARTESIANPOINT((1.,2.,3.));\n"
                                   "#2=IFCCARTESIANPOINT((11.,2.));\n"
                                   "#3=IFCCARTESIANPOINT((12.));\n"
                                   "#4=IFCCARTESIANPOINT((1.,2.));\n");
}

TEST(RulesOnTheCommandLine, AreCheckedWithTheTextThatIsNamedOrFound) {
    const std::string text = textOfRules(), file = points();
    const std::string expected = text + ":";
    const Outcome named = runTool({"check", file, "--rules", text, "--level", "error"});
    EXPECT_EQ(named.exitCode, 1);
    EXPECT_EQ(named.err, "");
    EXPECT_EQ(named.out,
              file + ":9:1: error: #2 IFCCARTESIANPOINT: rule IfcCartesianPoint.Near is violated [rule]\n" + file +
                  ":10:1: error: #3 IFCCARTESIANPOINT: rule IfcCartesianPoint.Two is violated [rule]\n" + file +
                  ":10:1: error: #3 IFCCARTESIANPOINT: rule IfcCartesianPoint.Near is violated [rule]\n" + file +
                  ": errors 3, warnings 0, remarks 1\n"
                  "         3  error    rule\n"
                  "rules: 3 in the text, 2 apply to this file\n"
                  "         1  violated IfcCartesianPoint.Two\n"
                  "         2  violated IfcCartesianPoint.Near\n");
    ::setenv("VNIFC_RULES", (scratch() / "rules").c_str(), 1);
    EXPECT_EQ(runTool({"check", file, "--level", "error"}).out, named.out);
    ::setenv("VNIFC_RULES", "/nonexistent", 1);
    const Outcome none = runTool({"check", file});
    EXPECT_EQ(none.exitCode, 0);
    EXPECT_PRED_FORMAT2(IsSubstring,
                        "rules are not checked; there is no text of the rules of IFC4X3_ADD2: name it with --rules",
                        none.err);
    EXPECT_EQ(runTool({"check", file, "--quiet"}).err, "");
}

TEST(RulesOnTheCommandLine, CanBeChosenAndExplained) {
    const std::string text = textOfRules(), file = points();
    const Outcome explained =
        runTool({"check", file, "--rules", text, "--explain", "--rule", "ifccartesianpoint.two", "--level", "error"});
    EXPECT_PRED_FORMAT2(IsSubstring, "IfcCartesianPoint.Two is violated [rule]\n    HIINDEX(Coordinates) >= 2\n",
                        explained.out);
    EXPECT_PRED_FORMAT2(IsSubstring, "errors 1,", explained.out);
    EXPECT_EQ(runTool({"check", file, "--rules", text, "--no-rule", "IfcCartesianPoint.Two", "--no-rule",
                       "IfcCartesianPoint.Near"})
                  .exitCode,
              0);
    // Each rule has its own limit.
    const std::string limited = runTool({"check", file, "--rules", text, "--level", "error", "--limit", "1"}).out;
    EXPECT_EQ(limited.find("#3 IFCCARTESIANPOINT: rule IfcCartesianPoint.Near"), limited.npos);
    EXPECT_PRED_FORMAT2(IsSubstring, "#3 IFCCARTESIANPOINT: rule IfcCartesianPoint.Two", limited);
    EXPECT_EQ(runTool({"check", file, "--rules", text, "--rule", "IfcWall.Nothing"}).exitCode, 2);
    EXPECT_EQ(runTool({"check", file, "--explain"}).exitCode, 3);
    EXPECT_EQ(runTool({"check", file, "--rules", "/nonexistent"}).exitCode, 3);
}

TEST(RulesOnTheCommandLine, ProgramsGetTheRuleOfEachFindingAndASummary) {
    const std::string text = textOfRules(), file = points();
    std::vector<json> lines;
    std::istringstream out(runTool({"check", file, "--rules", text, "--json", "--explain"}).out);
    for (std::string line; std::getline(out, line);)
        lines.push_back(json::parse(line));
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(lines[0]["code"], "rule-text");
    EXPECT_EQ(lines[0]["file"], text);
    EXPECT_EQ(lines[0]["found"], "'IFC4X3_ADD2.IFCNOTHING'");
    EXPECT_EQ(lines[2]["rule"], "IfcCartesianPoint.Two");
    EXPECT_EQ(lines[2]["severity"], "error");
    EXPECT_EQ(lines[2]["explanation"], "HIINDEX(Coordinates) >= 2");
    EXPECT_EQ(lines[2]["id"], 3);
    EXPECT_EQ(lines[4]["summary"]["rules"],
              json::parse(R"({"IfcCartesianPoint.Two": {"evaluated": 4, "violated": 1, "notEvaluated": 0},
                              "IfcCartesianPoint.Near": {"evaluated": 4, "violated": 2, "notEvaluated": 0}})"));
}

TEST(RulesOnTheCommandLine, GiveDerivedAttributesTheirValues) {
    const std::string text = textOfRules(), file = points();
    EXPECT_PRED_FORMAT2(IsSubstring, "\nDim (derived)  3\n",
                        runTool({"show", file, "#1", "--derived", "--rules", text}).out);
    EXPECT_EQ(json::parse(runTool({"show", file, "#1", "--derived", "--rules", text, "--json"}).out)["derived"],
              json::parse(R"({"Dim": 3})"));
    const Outcome none = runTool({"show", file, "#1", "--derived"});
    EXPECT_EQ(none.exitCode, 3);
    EXPECT_PRED_FORMAT2(IsSubstring, "--rules", none.err);
}

} // namespace

} // namespace vnifc::test
