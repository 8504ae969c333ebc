#include "Process.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <map>

namespace vnifc::test {

namespace {

using nlohmann::json;
using testing::IsSubstring;

std::map<std::string, std::size_t> countByKind(const json& records) {
    std::map<std::string, std::size_t> counts;
    for (const json& record : records)
        ++counts[record["kind"]];
    return counts;
}

std::size_t countAll(const json& records, const char* key) {
    std::size_t count = 0;
    for (const json& record : records)
        count += record.contains(key) ? record[key].size() : 0;
    return count;
}

std::string lineOf(const Outcome& outcome) { return outcome.out.substr(0, outcome.out.find('\n')); }

TEST(Schema, DictionaryIsComplete) {
    const Outcome outcome = runTool({"schema", "--schema", "IFC4X3", "--json"});
    ASSERT_EQ(outcome.exitCode, 0);
    const json dictionary = json::parse(outcome.out);
    EXPECT_EQ(dictionary["name"], "IFC4X3");
    EXPECT_EQ(dictionary["version"], "4.3");

    using Counts = std::map<std::string, std::size_t>;
    const json& named = dictionary["namedTypes"];
    EXPECT_EQ(countByKind(named), (Counts{{"defined", 125}, {"enumeration", 252}, {"select", 66}, {"aggregation", 5}}));
    EXPECT_EQ(countAll(named, "literals"), 2193u);
    EXPECT_EQ(countAll(named, "members"), 287u);
    const json& anonymous = dictionary["anonymousTypes"];
    EXPECT_EQ(countByKind(anonymous), (Counts{{"string", 2}, {"aggregation", 256}}));

    const json& entities = dictionary["entities"];
    EXPECT_EQ(entities.size(), 880u);
    EXPECT_EQ(std::ranges::count_if(entities, [](const json& entity) { return entity["supertype"].is_null(); }), 59);
    Counts attributes;
    for (const json& entity : entities)
        for (const auto& [kind, count] : countByKind(entity["attributes"]))
            attributes[kind] += count;
    EXPECT_EQ(attributes, (Counts{{"explicit", 1625}, {"derived", 62}, {"inverse", 163}}));
}

TEST(Schema, DictionaryKeepsTheBuildingOrder) {
    const json dictionary = json::parse(runTool({"schema", "--schema", "IFC4X3", "--json"}).out);
    const auto nameAt = [&](const char* list, std::size_t i) { return dictionary[list][i]["name"].get<std::string>(); };
    EXPECT_EQ(nameAt("namedTypes", 0), "IfcModulusOfLinearSubgradeReactionMeasure");
    EXPECT_EQ(nameAt("namedTypes", 125), "ifcactionrequesttypeenum");
    EXPECT_EQ(nameAt("namedTypes", 125 + 252), "IfcHatchLineDistanceSelect");
    EXPECT_EQ(nameAt("namedTypes", 125 + 252 + 66), "IfcArcIndex");
    EXPECT_EQ(nameAt("anonymousTypes", 0), "string(22)fixed");
    EXPECT_EQ(nameAt("entities", 5), "IFCRELSPACEBOUNDARY2NDLEVEL");
    const json& anonymous = dictionary["anonymousTypes"];
    EXPECT_TRUE(std::is_sorted(anonymous.begin() + 2, anonymous.end(),
                               [](const json& a, const json& b) { return a["name"] < b["name"]; }));
}

TEST(Schema, RecordsKeepTheFormsOfTheirNames) {
    const struct {
        const char* name; // in another case than the record's
        const char* record;
    } cases[] = {
        {"IFCPOSITIVEINTEGER", R"({"name":"IfcPositiveInteger","kind":"defined","underlying":"ifcinteger"})"},
        {"IfcDirectionSenseEnum",
         R"({"name":"ifcdirectionsenseenum","kind":"enumeration","literals":["NEGATIVE","POSITIVE"]})"},
        {"ifcvectorordirection",
         R"({"name":"IfcVectorOrDirection","kind":"select","members":["IFCDIRECTION","IFCVECTOR"]})"},
        {"LIST [1:?] OF IFCACTORROLE",
         R"({"name":"list [1:?] of IfcActorRole","kind":"aggregation","aggregation":"list","lower":1,"upper":null,)"
         R"("element":"IfcActorRole"})"},
        {"array [0:uupper] of array [0:vupper] of ifccartesianpoint",
         R"({"name":"array [0:UUpper] of array [0:VUpper] of IfcCartesianPoint","kind":"aggregation",)"
         R"("aggregation":"array","lower":0,"upper":null,"element":"array [0:VUpper] of IfcCartesianPoint"})"},
        {"BINARY(32)", R"_({"name":"binary(32)","kind":"string","fixed":false,"width":32})_"},
        {"IfcRelationship", R"({"name":"IFCRELATIONSHIP","supertype":"IFCROOT","abstract":true,"attributes":[]})"},
        {"IfcOrientedEdge",
         R"({"name":"IFCORIENTEDEDGE","supertype":"IFCEDGE","abstract":false,"attributes":[)"
         R"({"name":"EdgeElement","kind":"explicit","type":"IFCEDGE","optional":false},)"
         R"({"name":"Orientation","kind":"explicit","type":"IFCBOOLEAN","optional":false},)"
         R"({"name":"ifcedge_edgestart","kind":"derived","type":"IFCVERTEX","redeclares":"EdgeStart"},)"
         R"({"name":"ifcedge_edgeend","kind":"derived","type":"IFCVERTEX","redeclares":"EdgeEnd"}]})"},
        {"IfcCartesianPointList",
         R"({"name":"IFCCARTESIANPOINTLIST","supertype":"IFCGEOMETRICREPRESENTATIONITEM","abstract":true,"attributes":[)"
         R"({"name":"Dim","kind":"derived","type":"IFCDIMENSIONCOUNT","redeclares":null}]})"},
        {"IfcAlignment2DHorizontal",
         R"({"name":"IFCALIGNMENT2DHORIZONTAL","supertype":"IFCGEOMETRICREPRESENTATIONITEM","abstract":false,"attributes":[)"
         R"({"name":"StartDistAlong","kind":"explicit","type":"IFCLENGTHMEASURE","optional":true},)"
         R"({"name":"Segments","kind":"explicit","type":"list [1:?] of IFCALIGNMENT2DHORIZONTALSEGMENT","optional":false},)"
         R"({"name":"ToAlignmentCurve","kind":"inverse","entity":"ifcalignmentcurve","attribute":"Horizontal",)"
         R"("lower":1,"upper":null}]})"},
    };
    for (const auto& [name, record] : cases)
        EXPECT_EQ(lineOf(runTool({"schema", "--schema", "ifc4x3", "--json", name})), record);
}

TEST(Schema, TextShowsWhatIsInherited) {
    const struct {
        const char* name;
        const char* text;
    } cases[] = {
        {"ifcwall", "entity IFCWALL < IFCBUILTELEMENT < "},
        {"ifcwall", "attributes of IFCROOT\n  GlobalId: IFCGLOBALLYUNIQUEID\n"},
        {"ifcwall", "  HasOpenings: set [0:?] of IFCRELVOIDSELEMENT for RelatingBuildingElement\n"},
        {"ifcwall", "subtypes\n  IFCWALLELEMENTEDCASE\n  IFCWALLSTANDARDCASE\n"},
        {"ifcroot", "abstract entity IFCROOT\n"},
        {"ifcorientededge", "  EdgeStart: IFCVERTEX (derived, redeclared)\n"},
        {"ifccartesianpointlist", "  Dim: IFCDIMENSIONCOUNT (derived)\n"},
        {"ifccomplexnumber", "aggregation IFCCOMPLEXNUMBER\n  array [1:2] of real\n"},
        {"ifclabel", "defined IFCLABEL\n  string\n"},
        {"ifcpositiveinteger", "defined IFCPOSITIVEINTEGER\n  IFCINTEGER\n"},
        {"ifcpolyline", "  Points: list [2:?] of IFCCARTESIANPOINT\n"},
        {"ifcwall", "  PredefinedType: OPTIONAL IFCWALLTYPEENUM\n"},
        {"list [1:?] of ifcactorrole", "aggregation list [1:?] of IFCACTORROLE\n"},
        {"list [1:?] of ifcactorrole", "  list [1:?] of IFCACTORROLE\n"},
        {"ifcunit", "select IFCUNIT\n  IFCDERIVEDUNIT\n  IFCMONETARYUNIT\n  IFCNAMEDUNIT\n"},
    };
    for (const auto& [name, text] : cases)
        EXPECT_PRED_FORMAT2(IsSubstring, text, runTool({"schema", name, "--schema", "IFC4X3"}).out);
    EXPECT_PRED_FORMAT2(IsSubstring, "\nenumeration  IFCWALLTYPEENUM\n", runTool({"schema", "--schema", "IFC4X3"}).out);
}

} // namespace

} // namespace vnifc::test
