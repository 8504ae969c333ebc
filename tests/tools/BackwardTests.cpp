// Commands that walk a model backwards: tree, props, and --inverse of show and export.
#include "Process.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace vnifc::test {

namespace {

using nlohmann::json;

/// A site with a storey; a stair of two flights in the storey, which holds a room; a wall in both, a column in neither.
std::string building() {
    return makeModel("building.ifc", R"(#1=IFCPROJECT('1',$,'P',$,$,'Long',$,(),$);
#2=IFCSITE('2',$,'S',$,$,$,$,$,.ELEMENT.,$,$,$,$,$);
#3=IFCBUILDINGSTOREY('3',$,'Erdgescho\X\DF',$,$,$,$,'Ground',.ELEMENT.,0.);
#4=IFCSPACE('4',$,'S',$,$,$,$,'S',.ELEMENT.,$,$);
#5=IFCRELAGGREGATES('5',$,$,$,#1,(#2));
#6=IFCRELAGGREGATES('6',$,$,$,#2,(#3));
#7=IFCRELAGGREGATES('7',$,$,$,#3,(#4));
#8=IFCWALL('8',$,$,$,$,$,$,$,$);
#9=IFCSTAIR('9',$,$,$,$,$,$,$,$);
#10=IFCSTAIRFLIGHT('10',$,$,$,$,$,$,$,$,$,$,$,$);
#11=IFCSTAIRFLIGHT('11',$,$,$,$,$,$,$,$,$,$,$,$);
#12=IFCRELAGGREGATES('12',$,$,$,#9,(#10,#11));
#13=IFCRELCONTAINEDINSPATIALSTRUCTURE('13',$,$,$,(#8,#9,#14),#3);
#14=IFCFLOWSEGMENT('14',$,$,$,$,$,$,$);
#15=IFCDISTRIBUTIONPORT('15',$,$,$,$,$,$,$,$,$);
#16=IFCRELNESTS('16',$,$,$,#14,(#15));
#17=IFCRELCONTAINEDINSPATIALSTRUCTURE('17',$,$,$,(#8),#2);
#18=IFCCOLUMN('18',$,$,$,$,$,$,$,$);
#19=IFCOPENINGELEMENT('19',$,$,$,$,$,$,$,$);
#20=IFCRELVOIDSELEMENT('20',$,$,$,#8,#19);
)");
}

TEST(Tree, ShowsWhatIsWhere) {
    const Outcome outcome = runTool({"tree", building()});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_NE(
        outcome.err.find("1 more places of instances that belong to several wholes; each is counted in the first "),
        std::string::npos)
        << outcome.err;
    EXPECT_EQ(outcome.out, "#1 IFCPROJECT 'P' (Long)\n"
                           "  #2 IFCSITE 'S'\n"
                           "    #3 IFCBUILDINGSTOREY 'Erdgeschoß' (Ground)\n"
                           "      2 IFCSTAIRFLIGHT\n"
                           "      1 IFCFLOWSEGMENT\n"
                           "      1 IFCSTAIR\n"
                           "      1 IFCWALL\n"
                           "      #4 IFCSPACE 'S'\n"
                           "elements in no spatial element\n"
                           "  1 IFCCOLUMN\n");
    EXPECT_EQ(runTool({"tree", building(), "--depth", "1"}).out, "#1 IFCPROJECT 'P' (Long)\n"
                                                                 "  #2 IFCSITE 'S'\n"
                                                                 "    2 IFCSTAIRFLIGHT\n"
                                                                 "    1 IFCBUILDINGSTOREY\n"
                                                                 "    1 IFCFLOWSEGMENT\n"
                                                                 "    1 IFCSPACE\n"
                                                                 "    1 IFCSTAIR\n"
                                                                 "    1 IFCWALL\n"
                                                                 "elements in no spatial element\n"
                                                                 "  1 IFCCOLUMN\n");
}

TEST(Tree, JsonNests) {
    const json tree = json::parse(runTool({"tree", "--json", building()}).out);
    EXPECT_EQ(tree["outside"], json({{"IFCCOLUMN", 1}}));
    EXPECT_EQ(tree["repeated"], 1);
    ASSERT_EQ(tree["structure"].size(), 1u);
    const json& storey = tree["structure"][0]["children"][0]["children"][0];
    EXPECT_EQ(storey,
              json({{"id", 3},
                    {"type", "IFCBUILDINGSTOREY"},
                    {"globalId", "3"},
                    {"name", "Erdgeschoß"},
                    {"longName", "Ground"},
                    {"elements", {{"IFCFLOWSEGMENT", 1}, {"IFCSTAIR", 1}, {"IFCSTAIRFLIGHT", 2}, {"IFCWALL", 1}}},
                    {"children",
                     {{{"id", 4},
                       {"type", "IFCSPACE"},
                       {"globalId", "4"},
                       {"name", "S"},
                       {"longName", "S"},
                       {"elements", json::object()},
                       {"children", json::array()}}}}}));
}

// What a file says in circles, or without end, must neither hang the program nor break its stack.
TEST(Tree, EndsWhateverTheFileSays) {
    std::string instances = "#1=IFCSITE('1',$,$,$,$,$,$,$,$,$,$,$,$,$);\n#2=IFCSITE('2',$,$,$,$,$,$,$,$,$,$,$,$,$);\n"
                            "#3=IFCRELAGGREGATES('3',$,$,$,#1,(#2));\n#4=IFCRELAGGREGATES('4',$,$,$,#2,(#1,#1));\n";
    EXPECT_EQ(runTool({"tree", makeModel("circle.ifc", instances)}).out, "#1 IFCSITE\n  #2 IFCSITE\n");
    instances = "#1=IFCSITE('1',$,$,$,$,$,$,$,$,$,$,$,$,$);\n";
    constexpr int kLevels = 50'000;
    for (int i = 3; i <= 2 * kLevels + 1; i += 2) {
        instances += "#" + std::to_string(i) + "=IFCSPACE('" + std::to_string(i) + "',$,$,$,$,$,$,$,$,$,$);\n#";
        instances += std::to_string(i - 1) + "=IFCRELAGGREGATES($,$,$,$,#" + std::to_string(i - 2) + ",(#" +
                     std::to_string(i) + "));\n";
    }
    const std::string file = makeModel("deep.ifc", instances);
    const Outcome deep = runTool({"tree", "--json", file});
    EXPECT_EQ(deep.exitCode, 0) << deep.err.substr(0, 200);
    EXPECT_NE(deep.out.find("\"id\": " + std::to_string(2 * kLevels + 1)), std::string::npos);
    EXPECT_NE(runTool({"tree", "--depth", "3", file}).out.find("49997 IFCSPACE"), std::string::npos);
}

/// A wall with sets of its own and of its type, a bounded, a tabular and a complex property, and units of all kinds.
std::string equipped() {
    return makeModel("equipped.ifc", R"(#1=IFCPROJECT('1',$,'P',$,$,$,$,(),#2);
#2=IFCUNITASSIGNMENT((#3,#4,#7,#8));
#3=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);
#4=IFCDERIVEDUNIT((#5,#6),.MASSDENSITYUNIT.,$);
#5=IFCDERIVEDUNITELEMENT(#9,1);
#6=IFCDERIVEDUNITELEMENT(#3,-3);
#7=IFCMONETARYUNIT('EUR');
#8=IFCCONVERSIONBASEDUNIT($,.PLANEANGLEUNIT.,'DEGREE',$);
#9=IFCSIUNIT(*,.MASSUNIT.,.KILO.,.GRAM.);
#10=IFCWALL('10',$,'W',$,$,$,$,$,$);
#11=IFCWALLTYPE('11',$,'T',$,$,(#30,#40),$,$,$,.SOLIDWALL.);
#12=IFCRELDEFINESBYTYPE('12',$,$,$,(#10),#11);
#13=IFCRELDEFINESBYPROPERTIES('13',$,$,$,(#10),#20);
#14=IFCRELDEFINESBYPROPERTIES('14',$,$,$,(#10),IFCPROPERTYSETDEFINITIONSET((#50)));
#20=IFCPROPERTYSET('20',$,'Set',$,(#21,#22,#23,#24,#25));
#21=IFCPROPERTYSINGLEVALUE('Label',$,IFCLABEL('Stra\X\DFe'),$);
#22=IFCPROPERTYBOUNDEDVALUE('Range',$,IFCPOSITIVELENGTHMEASURE(5.5),IFCPOSITIVELENGTHMEASURE(1.),$,$);
#23=IFCPROPERTYTABLEVALUE('Curve',$,(IFCPLANEANGLEMEASURE(1.),IFCPLANEANGLEMEASURE(2.)),(IFCREAL(3.),IFCREAL(4.)),$,$,#9,$);
#24=IFCCOMPLEXPROPERTY('Many',$,'U',(#26,#24));
#25=IFCPROPERTYENUMERATEDVALUE('None',$,$,$);
#26=IFCPROPERTYLISTVALUE('Inner',$,(IFCLOGICAL(.U.),IFCLOGICAL(.T.)),$);
#30=IFCPROPERTYSET('30',$,'Set',$,(#31,#32));
#31=IFCPROPERTYSINGLEVALUE('Label',$,IFCLABEL('of the type'),$);
#32=IFCPROPERTYSINGLEVALUE('Density',$,IFCMASSDENSITYMEASURE(2.5),$);
#40=IFCDOORPANELPROPERTIES('40',$,$,$,50.,.SWINGING.,$,.LEFT.,$);
#50=IFCELEMENTQUANTITY('50',$,'Base',$,$,(#51,#52));
#51=IFCQUANTITYLENGTH('Length',$,#60,2.,$);
#52=IFCQUANTITYCOUNT('Count',$,$,3,$);
#60=IFCCONVERSIONBASEDUNIT($,.LENGTHUNIT.,'INCH',$);
)");
}

TEST(Props, ShowsValuesUnitsAndWhereTheyComeFrom) {
    const Outcome outcome = runTool({"props", equipped(), "#10"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_EQ(outcome.out,
              "#10 IFCWALL 'W'\n\n"
              "Set (#20 IFCPROPERTYSET)\n"
              "  Label  Straße                                    IFCLABEL\n"
              "  Range  UpperBoundValue 5.5 mm; LowerBoundValue 1 mm  IFCPOSITIVELENGTHMEASURE\n"
              "  Curve  DefiningValues 1, 2 DEGREE; DefinedValues 3, 4 kg (own unit)  IFCPLANEANGLEMEASURE\n"
              "  Many\n"
              "    Many\n"
              "    Inner  unknown, true  IFCLOGICAL\n"
              "  None\n\n"
              "Base (#50 IFCELEMENTQUANTITY)\n"
              "  Length  2 INCH (own unit)  IFCLENGTHMEASURE\n"
              "  Count   3                  IFCCOUNTMEASURE\n\n"
              "Set (#30 IFCPROPERTYSET, from its type #11 IFCWALLTYPE 'T')\n"
              "  Label    of the type  IFCLABEL (overridden)\n"
              "  Density  2.5 kg/mm³   IFCMASSDENSITYMEASURE\n\n"
              "IFCDOORPANELPROPERTIES (#40, from its type #11 IFCWALLTYPE 'T')\n"
              "  PanelDepth      50 mm     IFCPOSITIVELENGTHMEASURE\n"
              "  PanelOperation  SWINGING  IFCDOORPANELOPERATIONENUM\n"
              "  PanelPosition   LEFT      IFCDOORPANELPOSITIONENUM\n");
    EXPECT_EQ(runTool({"props", equipped(), "1"}).out, "#1 IFCPROJECT 'P'\nno property sets\n");
    EXPECT_EQ(runTool({"props", equipped(), "#99"}).exitCode, 2);
}

TEST(Props, JsonSaysTheSame) {
    const json props = json::parse(runTool({"props", "--json", equipped(), "#10"}).out);
    ASSERT_EQ(props["sets"].size(), 4u);
    const json& own = props["sets"][0];
    EXPECT_EQ(own["from"], json({{"ref", 10}, {"type", "IFCWALL"}, {"name", "W"}}));
    EXPECT_EQ(own["properties"][0]["values"],
              json::parse(R"([{"attribute": "NominalValue", "value": {"type": "IFCLABEL", "value": "Straße"},
                               "unit": null}])"));
    EXPECT_EQ(own["properties"][2]["values"][1]["unit"], json({{"sign", "kg"}, {"ref", 9}, {"from", "property"}}));
    EXPECT_EQ(own["properties"][3]["properties"][1]["name"], "Inner");
    const json& density = props["sets"][2]["properties"][1];
    EXPECT_EQ(density["values"][0]["unit"], json({{"sign", "kg/mm³"}, {"ref", 4}, {"from", "project"}}));
    EXPECT_EQ(density["overridden"], false);
    EXPECT_EQ(props["sets"][2]["from"]["ref"], 11);
    EXPECT_EQ(props["sets"][2]["properties"][0]["overridden"], true);
}

TEST(Inverse, ShowAndExportTellWhoRefers) {
    const Outcome shown = runTool({"show", "--inverse", building(), "8"});
    EXPECT_NE(shown.out.find("HasOpenings (inverse)\n  #20 IFCRELVOIDSELEMENT\n"
                             "ContainedInStructure (inverse)\n  #17 IFCRELCONTAINEDINSPATIALSTRUCTURE\n"),
              std::string::npos)
        << shown.out;
    EXPECT_EQ(json::parse(runTool({"show", "--inverse", "--json", building(), "19"}).out)["inverse"],
              json::parse(R"({"VoidsElements": [{"ref": 20, "type": "IFCRELVOIDSELEMENT", "name": null}]})"));

    std::string line = runTool({"export", "--inverse", "--type", "IfcStairFlight", building()}).out;
    EXPECT_EQ(json::parse(line.substr(0, line.find('\n')))["inverse"], json({{"Decomposes", {12}}}));
    line = runTool({"export", "--type", "IfcStair", building()}).out;
    EXPECT_FALSE(json::parse(line).contains("inverse"));
}

} // namespace

} // namespace vnifc::test
