#include "Process.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>

namespace vnifc::test {

namespace {

using nlohmann::json;
using testing::IsSubstring;

TEST(Info, JsonHasOneShape) {
    json found = json::parse(runTool({"info", "--json", house}).out);
    EXPECT_GT(found["peakBytes"].get<std::uint64_t>(), 1'000'000u);
    EXPECT_GE(found["seconds"]["read"].get<double>(), 0.0);
    found.erase("peakBytes");
    found.erase("seconds");
    EXPECT_EQ(found, json({{"file", house},
                           {"bytes", std::filesystem::file_size(house)},
                           {"schema", {"IFC4X3_ADD2"}},
                           {"release", "IFC4X3_ADD2"},
                           {"module", "VnIfc4x3Add2"},
                           {"header",
                            {{"schema", {"IFC4X3_ADD2"}},
                             {"description", {"ViewDefinition [ReferenceView]", "gemacht für Prüfer"}},
                             {"name", "house.ifc"},
                             {"timeStamp", "2024-02-29T12:00:00"},
                             {"author", {"O'Neill"}},
                             {"organization", {"", ""}},
                             {"preprocessor", "editor"},
                             {"system", "vnifc"},
                             {"authorization", nullptr},
                             {"implementation", "2;1"}}},
                           {"instances", 14},
                           {"globalIds", 4},
                           {"structure",
                            {{"nodes", {{"IfcProject", 1}}},
                             {"elements", 1},
                             {"lowestElevation", nullptr},
                             {"highestElevation", nullptr},
                             {"lengthUnit", "mm"}}},
                           {"types",
                            {{"(complex)", 1},
                             {"IFCAXIS2PLACEMENT3D", 1},
                             {"IFCBLOBTEXTURE", 1},
                             {"IFCCARTESIANPOINT", 2},
                             {"IFCGARDENGNOME", 1},
                             {"IFCGEOMETRICREPRESENTATIONCONTEXT", 1},
                             {"IFCPROJECT", 1},
                             {"IFCPROPERTYSINGLEVALUE", 1},
                             {"IFCRELAGGREGATES", 1},
                             {"IFCSIUNIT", 1},
                             {"IFCUNITASSIGNMENT", 1},
                             {"IFCWALL", 2}}},
                           {"diagnostics", {{"error", 0}, {"warning", 5}}}}));
}

TEST(Info, TextTellsInstancesWithoutClassApart) {
    const Outcome outcome = runTool({"info", house});
    EXPECT_EQ(outcome.exitCode, 0);
    const std::size_t foreign = outcome.out.find("without a class");
    ASSERT_NE(foreign, std::string::npos);
    EXPECT_LT(outcome.out.find("2  IFCWALL"), foreign);
    EXPECT_GT(outcome.out.find("1  IFCGARDENGNOME"), foreign);
    EXPECT_PRED_FORMAT2(IsSubstring, "O'Neill\n", outcome.out);
    EXPECT_PRED_FORMAT2(IsSubstring, "gemacht für Prüfer\n", outcome.out);
}

TEST(Info, HeaderEntriesStandUnderTheirNames) {
    const std::string file = makeFile("header.ifc", "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION(('d1','d2'),'2;1');\n"
                                                    "FILE_NAME('n','t',('a'),('o'),'p','s','z');\n"
                                                    "FILE_SCHEMA(('IFC4X3_ADD2'));\nENDSEC;\nDATA;\nENDSEC;\n"
                                                    "END-ISO-10303-21;\n");
    EXPECT_PRED_FORMAT2(IsSubstring,
                        "\nschema         IFC4X3_ADD2\ndescription    d1, d2\nname           n\ntime stamp     t\n"
                        "author         a\norganization   o\npreprocessor   p\nsystem         s\nauthorization  z\n"
                        "implementation 2;1\n",
                        runTool({"info", file}).out);
}

TEST(Info, StandardInputIsAFile) {
    const Outcome outcome = runTool({"info", "--json", "-"}, {.in = house});
    EXPECT_EQ(json::parse(outcome.out)["instances"], 14);
    EXPECT_PRED_FORMAT2(IsSubstring, "standard input:16:51: warning: #9 IFCWALL.PredefinedType", outcome.err);
}

TEST(Info, DiagnosticsEndAfterTwenty) {
    std::string instances;
    for (int i = 1; i <= 23; ++i)
        instances += "#" + std::to_string(i) + "=IFCGARDENGNOME();\n";
    const std::string file = makeModel("gnomes.ifc", instances);
    const Outcome outcome = runTool({"info", file});
    EXPECT_EQ(std::ranges::count(outcome.err, '\n'), 21);
    EXPECT_PRED_FORMAT2(IsSubstring, ": #20 ", outcome.err);
    EXPECT_TRUE(outcome.err.ends_with("\nvnifc: ... and 3 more\n")) << outcome.err;
    EXPECT_EQ(runTool({"info", "--quiet", file}).err, "");
}

// A file must not speak to the terminal, nor its name break the JSON.
TEST(Info, BytesFromOutsideDoNoHarm) {
    const std::string file = makeModel("\xFF.ifc", "#1=IFCWALL(\x1B[2J,'\x1B]0;x\x07',\xC2\x9B"
                                                   "2J);\n");
    const Outcome text = runTool({"info", file});
    for (const char* control : {"\x1B", "\x07", "\xC2\x9B"})
        EXPECT_PRED_FORMAT2(testing::IsNotSubstring, control, text.out + text.err);
    EXPECT_EQ(json::parse(runTool({"info", "--json", file}).out)["instances"], 1);
}

TEST(Rewrite, WhatIsInTheWritersFormComesBackByteForByte) {
    const std::filesystem::path copy = scratch() / "copy.ifc";
    const Outcome outcome = runTool({"rewrite", house, copy.string()});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(contents(copy), contents(house));
    EXPECT_EQ(outcome.out, "");
    EXPECT_PRED_FORMAT2(IsSubstring, "2 instances without a class, kept as text: 1 (complex), 1 IFCGARDENGNOME\n",
                        outcome.err);
    EXPECT_PRED_FORMAT2(IsSubstring, "1 unknown-literal", outcome.err);

    const Outcome quiet = runTool({"rewrite", "--quiet", "-", "-"}, {.in = house});
    EXPECT_EQ(quiet.out, contents(house));
    EXPECT_EQ(quiet.err, "");
}

TEST(Rewrite, FileMayBeItsOwnTarget) {
    const std::string file =
        makeModel("own.ifc", "#2 = IfcCartesianPoint ( ( 1.50, 2 ) ) ; /* loose */\n#1=IFCLINE(#2,$);\n");
    const std::string expected =
        contents(makeModel("own2.ifc", "#1=IFCLINE(#2,$);\n#2=IFCCARTESIANPOINT((1.5,2.));\n"));
    EXPECT_EQ(runTool({"rewrite", file, file}).exitCode, 0);
    EXPECT_EQ(contents(file), expected);
}

} // namespace

} // namespace vnifc::test
