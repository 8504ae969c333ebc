#include "Process.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <sstream>

namespace vnifc::test {

namespace {

using nlohmann::json;
using testing::IsSubstring;

/// One instance of every kind of value.
std::string kindsFile() {
    static const std::string file = makeModel(
        "kinds.ifc",
        "#1=IFCMATERIALLAYER(#99,0.1,.U.,'a\\S\\dB\\X\\E4\\X2\\D83DDE00\\X0\\\\\\''\"\x01\xFF',$,'',-5);\n"
        "#2=IFCPROPERTYSINGLEVALUE('Area\\X\\0D\\X\\0A\t',$,IFCAREAMEASURE(1.E30),$);\n"
        "#3=IFCPROPERTYENUMERATEDVALUE('y',$,(IFCLABEL('a'),IFCLOGICAL(.U.),IFCINTEGER(7),IFCBINARY(\"0FF\")),$);\n"
        "#4=IFCTRIANGULATEDFACESET(#5,$,.T.,((1,2,3),(3,2,1)),$);\n"
        "#5=IFCCARTESIANPOINTLIST3D(((0.,-0.,0.1),(1.E-7,123456789.,1.)),$);\n"
        "#6=IFCCURVEBOUNDEDPLANE(#7,#8,());\n"
        "#9=IFCPIXELTEXTURE(.T.,.F.,$,$,$,1,1,1,(\"0FF\",\"1\"));\n"
        "#10=IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.);\n"
        "#11=IFCINDEXEDPOLYCURVE(#12,(IFCLINEINDEX((1,2)),IFCARCINDEX((2,3,4))),.F.);\n"
        "#13=IFCMATERIALCONSTITUENT('Beton',$,#14,$,$);\n"
        "#14=IFCMATERIAL('C20/25',$,$);\n"
        "#15=IFCPOLYLINE((#16,#16));\n"
        "#16=IFCCARTESIANPOINT((1.,2.));\n");
    return file;
}

TEST(Show, WordsForEveryKindOfValue) {
    const struct {
        const char* instance;
        const char* line;
    } cases[] = {
        {"1", "Material        #99 (not there)\n"},
        {"#1", "IsVentilated    .U.\n"},
        {"#1", "Name            'a\xC3\xA4"},
        {"#1", "Category        ''\n"},
        {"#1", "Description     $\n"},
        {"#2", "NominalValue   IFCAREAMEASURE(1e+30)\n"},
        {"#3", "(IFCLABEL('a'), IFCLOGICAL(.U.), IFCINTEGER(7), "},
        {"#4", "CoordIndex   ((1, 2, 3), (3, 2, 1))\n"},
        {"#6", "InnerBoundaries  ()\n"},
        {"#10", "Dimensions  * (derived)\n"},
        {"#10", "Name        .METRE.\n"},
        {"#10", "Prefix      $\n"},
        {"#11", "(IFCLINEINDEX((1, 2)), IFCARCINDEX((2, 3, 4)))\n"},
        {"#13", "Material     #14 IFCMATERIAL 'C20/25'\n"},
    };
    for (const auto& [instance, line] : cases)
        EXPECT_PRED_FORMAT2(IsSubstring, line, runTool({"show", "--quiet", kindsFile(), instance}).out);
    EXPECT_EQ(runTool({"show", "--quiet", house, "12"}).out,
              "#12 IFCGARDENGNOME\nwithout a class, kept as text: 'red hat',(#8,*),.HAPPY.\n");
}

// A value that could not be taken must look like one that is not there nowhere.
TEST(Show, WhatIsKeptAsTextIsMarked) {
    const std::string file = makeModel("kept.ifc", "#1=IFCMATERIALLAYER('m',0.1,$,'n',$,$,7.5,'more',2);\n"
                                                   "#2=IFCMATERIALLAYER($,1.50,$,$,$,$,$);\n");
    const std::string shown = runTool({"show", "--quiet", file, "1"}).out;
    EXPECT_PRED_FORMAT2(IsSubstring, "Material        $  (the file has 'm', kept as text)\n", shown);
    EXPECT_PRED_FORMAT2(IsSubstring, "Priority        $  (the file has 7.5, kept as text)\n", shown);
    EXPECT_PRED_FORMAT2(IsSubstring, "kept as text after the last attribute: ,'more',2\n", shown);
    EXPECT_EQ(runTool({"show", "--quiet", file, "2"}).out.find("kept"), std::string::npos);
    std::istringstream lines(runTool({"export", "--quiet", file}).out);
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(json::parse(line)["kept"], json({{"Material", "'m'"}, {"Priority", "7.5"}, {"", ",'more',2"}}));
    std::getline(lines, line);
    EXPECT_FALSE(json::parse(line).contains("kept"));
}

TEST(Show, LongListsAreCutForPeopleOnly) {
    std::string points = "(1";
    for (int i = 0; i < 40; ++i)
        points += ",2";
    const std::string file =
        makeModel("long.ifc", "#1=IFCTRIANGULATEDFACESET(#2,$,$,(" + points + ")," + points + ")),$);\n");
    EXPECT_PRED_FORMAT2(IsSubstring, "2, 2, ... 29 more), (1, 2, ", runTool({"show", "--quiet", file, "1"}).out);
    const json found = json::parse(runTool({"show", "--quiet", "--json", file, "1"}).out);
    EXPECT_EQ(found["attributes"]["CoordIndex"][1].size(), 41u);
}

TEST(Show, InstancesAreFoundByNumberAndGlobalId) {
    for (const char* address : {"#1", "1", "2O2Fr$t4X7Zf8NOew3FLOH"}) {
        const Outcome outcome = runTool({"show", "--quiet", "--json", house, address});
        EXPECT_EQ(json::parse(outcome.out)["attributes"]["Name"], "H\xC3\xA4us") << address;
    }
    for (const char* address : {"#99", "4711", "", "#", "-1", "2O2Fr$t4X7Zf8NOew3FLO", "2O2Fr$t4X7Zf8NOew3FLOHx",
                                "99999999999999999999999", "2O2FR$T4X7ZF8NOEW3FLOH"}) {
        const Outcome outcome = runTool({"show", "--quiet", house, "--", address});
        EXPECT_EQ(outcome.exitCode, 4) << address;
        EXPECT_EQ(outcome.err, std::string("vnifc: there is no instance ") + address + "\n");
    }
}

TEST(Show, JsonDescribesWhatIsReferredTo) {
    const json found = json::parse(runTool({"show", "--quiet", "--json", kindsFile(), "13"}).out);
    EXPECT_EQ(found["attributes"]["Material"], json::parse(R"({"ref":14,"type":"IFCMATERIAL","name":"C20/25"})"));
    const json dangling = json::parse(runTool({"show", "--quiet", "--json", kindsFile(), "1"}).out);
    EXPECT_EQ(dangling["attributes"]["Material"], json::parse(R"({"ref":99,"type":null,"name":null})"));
}

TEST(Export, JsonForEveryKindOfValue) {
    const struct {
        int id;
        const char* attribute;
        const char* value;
    } cases[] = {
        {1, "Material", R"({"ref":99})"},
        {1, "LayerThickness", "0.1"},
        {1, "IsVentilated", R"("UNKNOWN")"},
        {1, "Name", R"("aäBä😀\\'\"\u0001�")"},
        {1, "Description", "null"},
        {1, "Category", R"("")"},
        {1, "Priority", "-5"},
        {2, "Name", R"("Area\r\n\t")"},
        {2, "NominalValue", R"({"type":"IFCAREAMEASURE","value":1e30})"},
        {3, "EnumerationValues",
         R"([{"type":"IFCLABEL","value":"a"},{"type":"IFCLOGICAL","value":"UNKNOWN"},)"
         R"({"type":"IFCINTEGER","value":7},{"type":"IFCBINARY","value":"0FF"}])"},
        {4, "Normals", "null"},
        {4, "Closed", "true"},
        {4, "CoordIndex", "[[1,2,3],[3,2,1]]"},
        {5, "CoordList", "[[0.0,-0.0,0.1],[1e-7,123456789.0,1.0]]"},
        {6, "InnerBoundaries", "[]"},
        {9, "Pixel", R"(["0FF","1"])"},
        {10, "Name", R"("METRE")"},
        {10, "Prefix", "null"},
        {11, "Segments", R"([{"type":"IFCLINEINDEX","value":[1,2]},{"type":"IFCARCINDEX","value":[2,3,4]}])"},
        {15, "Points", R"([{"ref":16},{"ref":16}])"},
    };
    const Outcome outcome = runTool({"export", "--quiet", kindsFile()});
    std::map<int, json> exported;
    std::istringstream lines(outcome.out);
    for (std::string line; std::getline(lines, line);) {
        json instance = json::parse(line);
        const int id = instance["id"];
        exported[id] = std::move(instance);
    }
    for (const auto& [id, attribute, value] : cases)
        EXPECT_EQ(exported[id]["attributes"][attribute], json::parse(value)) << id << attribute;
    EXPECT_FALSE(exported[10]["attributes"].contains("Dimensions"));
    EXPECT_PRED_FORMAT2(
        IsSubstring, R"({"id": 16, "type": "IFCCARTESIANPOINT", "attributes": {"Coordinates": [1, 2]}})", outcome.out);
}

TEST(Export, LinesComeInOrderAndByType) {
    const auto idsOf = [](const std::vector<std::string>& arguments) {
        std::vector<std::uint64_t> ids;
        std::istringstream lines(runTool(arguments).out);
        for (std::string line; std::getline(lines, line);)
            ids.push_back(json::parse(line)["id"]);
        return ids;
    };
    using Ids = std::vector<std::uint64_t>;
    EXPECT_EQ(idsOf({"export", "--quiet", house}),
              (Ids{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 18446744073709551615u}));
    EXPECT_EQ(idsOf({"export", "--quiet", house, "--type", "ifcobjectdefinition", "--type", "IFCGARDENGNOME"}),
              (Ids{1, 8, 9, 12}));
    EXPECT_EQ(runTool({"export", "--quiet", house, "--type", "IfcGnome"}).exitCode, 4);
    EXPECT_EQ(runTool({"export", "--quiet", house}, {.out = "/dev/full"}).exitCode, 3);
}

TEST(Find, ConditionsCompareValuesNotTexts) {
    const std::string file =
        makeModel("find.ifc", "#1=IFCWALL('3vB2YO$MX4xv5uCqZZG0aa',#9,'Gr\\X2\\00FC\\X0\\n',$,$,$,$,'',.SOLIDWALL.);\n"
                              "#2=IFCWALL('3vB2YO$MX4xv5uCqZZG0ab',$,'Gr\xC3\xBCn',$,$,$,$,$,.MOVABLE.);\n"
                              "#3=IFCWALLSTANDARDCASE('3vB2YO$MX4xv5uCqZZG0ac',#9,'.T.',$,$,$,$,$,.SOLIDWALL.);\n"
                              "#4=IFCPROPERTYSINGLEVALUE('a',$,IFCLABEL('1'),$);\n"
                              "#5=IFCPROPERTYSINGLEVALUE('b',$,IFCREAL(1.0),$);\n"
                              "#6=IFCPROPERTYSINGLEVALUE('c',$,IFCBOOLEAN(.T.),#10);\n"
                              "#7=IFCCARTESIANPOINT((1.,2.50));\n"
                              "#8=IFCCIRCLE(#11,10.);\n"
                              "#9=IFCOWNERHISTORY($,$,$,$,$,$,$,12);\n"
                              "#10=IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.);\n"
                              "#12=IFCGARDENGNOME($);\n");
    const struct {
        std::vector<std::string> arguments;
        std::vector<int> found;
    } cases[] = {
        {{"IfcWall"}, {1, 2, 3}},
        {{"ifcwall", "--exact"}, {1, 2}},
        {{"IfcWall", "--where", "Name=Gr\xC3\xBCn"}, {1, 2}},
        {{"IfcWall", "--where", "name='Gr\\X\\FCn'", "--where", "PREDEFINEDTYPE=solidwall"}, {1}},
        {{"IfcWall", "--where", "Name=.T."}, {3}},
        {{"IfcWall", "--where", "Tag=$"}, {2, 3}},
        {{"IfcWall", "--where", "Tag="}, {1}},
        {{"IfcRoot", "--where", "PredefinedType=.SOLIDWALL.", "--where", "OwnerHistory=#9"}, {1, 3}},
        {{"IfcPropertySingleValue", "--where", "NominalValue=1"}, {4, 5}},
        {{"IfcPropertySingleValue", "--where", "NominalValue=IFCREAL(1)"}, {5}},
        {{"IfcPropertySingleValue", "--where", "NominalValue=true"}, {6}},
        {{"IfcPropertySingleValue", "--where", "Unit=#10"}, {6}},
        {{"IfcPoint", "--where", "Coordinates=(1, 2.5)"}, {7}},
        {{"IfcCircle", "--where", "Radius=1E1"}, {8}},
        {{"IfcGardenGnome"}, {12}},
        {{"IfcSlab"}, {}},
    };
    for (const auto& [arguments, expected] : cases) {
        std::vector<std::string> all{"find", "--quiet", "--json", file};
        all.insert(all.end(), arguments.begin(), arguments.end());
        std::vector<int> found;
        std::istringstream lines(runTool(all).out);
        for (std::string line; std::getline(lines, line);)
            found.push_back(json::parse(line)["id"]);
        EXPECT_EQ(found, expected) << arguments.back();
    }
    EXPECT_EQ(runTool({"find", "--quiet", makeModel("bare.ifc", "#1=IFCWALL($,$,$,$,$,$,$,$,$);\n"), "IfcWall"}).out,
              "#1 IFCWALL\n");
    EXPECT_EQ(runTool({"find", "--quiet", file, "IfcWall", "--exact"}).out,
              "#1 IFCWALL 3vB2YO$MX4xv5uCqZZG0aa 'Gr\xC3\xBCn'\n#2 IFCWALL 3vB2YO$MX4xv5uCqZZG0ab 'Gr\xC3\xBCn'\n");
}

TEST(Find, WhatCannotBeFoundIsWrongUse) {
    const struct {
        std::vector<std::string> arguments;
        const char* message;
        int exitCode = 2;
    } cases[] = {
        {{"IfcGnome"}, "neither IFC4X3_ADD2 nor the file has an entity \"IfcGnome\"", 4},
        {{"IfcWall, IfcGnome"}, "column 10: expected a class of", 4},
        {{"IfcWall, Name~x"}, "column 10: expected"},
        {{"IfcWall", "--where", "Colour=red"}, "IFCWALL has no attribute Colour"},
        {{"IfcWall", "--where", "Name"}, "expected NAME=VALUE, found Name"},
        {{"IfcWall", "--where", "PredefinedType=BRICKWALL"}, "#8 IFCWALL.PredefinedType: expected one of "},
        {{"IfcGardenGnome", "--where", "Name=x"}, "an instance without a class has no attribute Name"},
    };
    for (const auto& [arguments, message, exitCode] : cases) {
        std::vector<std::string> all{"find", "--quiet", house};
        all.insert(all.end(), arguments.begin(), arguments.end());
        const Outcome outcome = runTool(all);
        EXPECT_EQ(outcome.exitCode, exitCode) << message;
        EXPECT_PRED_FORMAT2(IsSubstring, message, outcome.err);
    }
}

TEST(Find, SaysWhatIsKnownOfWhatASelectorPicks) {
    const std::string rooms =
        makeModel("rooms.ifc", "#1=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);\n"
                               "#2=IFCUNITASSIGNMENT((#1));\n"
                               "#3=IFCPROJECT('0000000000000000000003',$,'P',$,$,$,$,$,#2);\n"
                               "#4=IFCDOOR('0000000000000000000004',$,'A, \"wide\"',$,$,$,$,$,2000.,900.,$,$,$);\n"
                               "#5=IFCDOOR('0000000000000000000005',$,'B',$,$,$,$,$,2100.,$,$,$,$);\n"
                               "#6=IFCDOOR('0000000000000000000006',$,'B',$,$,$,$,$,1900.,1000.,$,$,$);\n");
    const struct {
        std::vector<std::string> arguments;
        const char* printed;
    } cases[] = {
        {{"IfcDoor, OverallHeight>1.95m"},
         "#4 IFCDOOR 0000000000000000000004 'A, \"wide\"'\n#5 IFCDOOR 0000000000000000000005 'B'\n"},
        {{"IfcDoor, Name=B", "--count"}, "2\n"},
        {{"IfcDoor, Name=C", "--count"}, "0\n"},
        {{"IfcDoor", "--columns", "Name,OverallWidth"},
         "id  Name       OverallWidth\n#4  A, \"wide\"  900\n#5  B          \n#6  B          1000\n"},
        {{"IfcDoor", "--columns", "Name,OverallWidth", "--format", "csv"},
         "id,Name,OverallWidth\r\n#4,\"A, \"\"wide\"\"\",900\r\n#5,B,\r\n#6,B,1000\r\n"},
        {{"#5", "--columns", "Name,OverallWidth", "--json"}, "{\"id\": 5, \"Name\": \"B\", \"OverallWidth\": null}\n"},
        {{"IfcDoor", "--sum", "OverallWidth", "--group-by", "Name", "--json"},
         "{\"Name\": \"A, \\\"wide\\\"\", \"count\": 1, \"OverallWidth [mm]\": 900}\n"
         "{\"Name\": \"B\", \"count\": 2, \"OverallWidth [mm]\": 1000}\n"},
    };
    for (const auto& [arguments, printed] : cases) {
        std::vector<std::string> all{"find", "--quiet", rooms};
        all.insert(all.end(), arguments.begin(), arguments.end());
        EXPECT_EQ(runTool(all).out, printed) << arguments.front();
    }
}

TEST(Set, ChangesAllThatASelectorPicks) {
    const std::string walls = makeModel("walls.ifc", "#1=IFCWALL('0000000000000000000001',$,'A',$,$,$,$,$,$);\n"
                                                     "#2=IFCWALL('0000000000000000000002',$,'B',$,$,$,$,$,$);\n");
    const std::string out = scratch() / "set.ifc";
    Outcome outcome = runTool({"set", walls, out, "IfcWall", "PredefinedType=SOLIDWALL", "Name=B",
                               "Pset_WallCommon.FireRating=EI30", "Pset_WallCommon.IsExternal=true"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.err, "vnifc: PredefinedType: 2 of 2 changed\nvnifc: Name: 1 of 2 changed\n"
                           "vnifc: Pset_WallCommon.FireRating: 2 of 2 changed\n"
                           "vnifc: Pset_WallCommon.IsExternal: 2 of 2 changed\n");
    EXPECT_EQ(runTool({"find", out,
                       "IfcWall, Name=B, PredefinedType=SOLIDWALL, Pset_WallCommon.FireRating=EI30, "
                       "Pset_WallCommon.IsExternal=TRUE",
                       "--count"})
                  .out,
              "2\n");
    EXPECT_EQ(runTool({"diff", "--quiet", walls, out}).exitCode, 1);
    for (const auto& [change, message] : {std::pair("Nmae=x", "Nmae"),
                                          {"Name", "expected NAME=VALUE, found Name"},
                                          {"PredefinedType=BRICK", "expected one of"}}) {
        std::filesystem::remove(out);
        outcome = runTool({"set", "--quiet", walls, out, "IfcWall", change});
        EXPECT_EQ(outcome.exitCode, 2) << change;
        EXPECT_PRED_FORMAT2(IsSubstring, message, outcome.err);
        EXPECT_FALSE(std::filesystem::exists(out)) << change;
    }
}

} // namespace

} // namespace vnifc::test
