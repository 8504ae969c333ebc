// Commands that walk a model backwards: tree, props, and --inverse of show and export.
#include "Process.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <map>

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

TEST(Tree, CountsPartsOfAllRelations) {
    const std::string file = makeModel("parts.ifc", R"(#1=IFCSITE('1',$,$,$,$,$,$,$,$,$,$,$,$,$);
#2=IFCFLOWSEGMENT('2',$,$,$,$,$,$,$);
#3=IFCFLOWFITTING('3',$,$,$,$,$,$,$);
#4=IFCRELNESTS('4',$,$,$,#2,(#3));
#5=IFCRELCONTAINEDINSPATIALSTRUCTURE('5',$,$,$,(#2),#1);
#6=IFCFLOWCONTROLLER('6',$,$,$,$,$,$,$);
#7=IFCRELAGGREGATES('7',$,$,$,#3,(#6));
)");
    EXPECT_EQ(runTool({"tree", file}).out,
              "#1 IFCSITE\n  1 IFCFLOWCONTROLLER\n  1 IFCFLOWFITTING\n  1 IFCFLOWSEGMENT\n");
}

TEST(Tree, BeginsAtTheTopWhateverTheOrderOfTheFile) {
    EXPECT_EQ(runTool({"tree", makeModel("order.ifc", "#1=IFCSITE('1',$,$,$,$,$,$,$,$,$,$,$,$,$);\n"
                                                      "#2=IFCSITE('2',$,$,$,$,$,$,$,$,$,$,$,$,$);\n"
                                                      "#3=IFCRELAGGREGATES('3',$,$,$,#2,(#1));\n")})
                  .out,
              "#2 IFCSITE\n  #1 IFCSITE\n");
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
    EXPECT_EQ(runTool({"props", equipped(), "#99"}).exitCode, 4);
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

/// The signs of the units of all properties of a file with one wall, by the property's name.
std::map<std::string, std::string> signsOf(const std::string& instances, const std::string& address = "10") {
    std::map<std::string, std::string> signs;
    const Outcome outcome = runTool({"props", "--json", makeModel("units.ifc", instances), address});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    const json props = json::parse(outcome.out);
    for (const json& set : props["sets"])
        for (const json& property : set["properties"]) {
            const json& unit = property["values"][0]["unit"];
            signs[property["name"]] = unit.is_null() ? "" : unit["sign"].get<std::string>();
        }
    return signs;
}

std::string wallWith(const std::string& properties) {
    return "#10=IFCWALL('10',$,$,$,$,$,$,$,$);\n#11=IFCPROPERTYSET('11',$,'S',$,(" + properties +
           "));\n#12=IFCRELDEFINESBYPROPERTIES('12',$,$,$,(#10),#11);\n";
}

TEST(Props, EverySiUnitHasItsSign) {
    // ISO 80000-1.
    const std::map<std::string, std::string> expected{
        {"EXA.METRE", "Em"},       {"PETA.METRE", "Pm"},  {"TERA.METRE", "Tm"},  {"GIGA.METRE", "Gm"},
        {"MEGA.METRE", "Mm"},      {"KILO.METRE", "km"},  {"HECTO.METRE", "hm"}, {"DECA.METRE", "dam"},
        {"DECI.METRE", "dm"},      {"CENTI.METRE", "cm"}, {"MILLI.METRE", "mm"}, {"MICRO.METRE", "µm"},
        {"NANO.METRE", "nm"},      {"PICO.METRE", "pm"},  {"FEMTO.METRE", "fm"}, {"ATTO.METRE", "am"},
        {".AMPERE", "A"},          {".BECQUEREL", "Bq"},  {".CANDELA", "cd"},    {".COULOMB", "C"},
        {".CUBIC_METRE", "m³"},    {".FARAD", "F"},       {".GRAM", "g"},        {".GRAY", "Gy"},
        {".DEGREE_CELSIUS", "°C"}, {".HENRY", "H"},       {".HERTZ", "Hz"},      {".JOULE", "J"},
        {".KELVIN", "K"},          {".LUMEN", "lm"},      {".LUX", "lx"},        {".MOLE", "mol"},
        {".NEWTON", "N"},          {".OHM", "Ω"},         {".PASCAL", "Pa"},     {".RADIAN", "rad"},
        {".SECOND", "s"},          {".SIEMENS", "S"},     {".SIEVERT", "Sv"},    {".SQUARE_METRE", "m²"},
        {".STERADIAN", "sr"},      {".TESLA", "T"},       {".VOLT", "V"},        {".WATT", "W"},
        {".WEBER", "Wb"},
    };
    std::string instances, properties;
    int id = 100;
    for (const auto& [unit, sign] : expected) {
        const std::size_t dot = unit.find('.');
        instances += '#' + std::to_string(id) + "=IFCPROPERTYSINGLEVALUE('" + unit + "',$,IFCREAL(1.),#" +
                     std::to_string(id + 1) + ");\n#" + std::to_string(id + 1) + "=IFCSIUNIT(*,.LENGTHUNIT.," +
                     (dot == 0 ? "$" : '.' + unit.substr(0, dot) + '.') + ",." + unit.substr(dot + 1) + ".);\n";
        properties += (properties.empty() ? "#" : ",#") + std::to_string(id);
        id += 2;
    }
    EXPECT_EQ(signsOf(wallWith(properties) + instances), expected);
}

TEST(Props, ProductsOfUnitsAreWrittenAsPeopleDo) {
    std::string instances = "#1=IFCSIUNIT(*,.POWERUNIT.,$,.WATT.);\n#2=IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.);\n"
                            "#3=IFCSIUNIT(*,.THERMODYNAMICTEMPERATUREUNIT.,$,.KELVIN.);\n"
                            "#4=IFCSIUNIT(*,.AREAUNIT.,$,.SQUARE_METRE.);\n";
    const struct {
        std::vector<std::pair<int, int>> factors; ///< unit and exponent
        const char* sign;
    } cases[] = {
        {{{1, 1}, {2, -2}, {3, -1}}, "W/(m²·K)"},
        {{{1, 1}, {4, -1}, {3, -1}}, "W/(m²·K)"},
        {{{1, 1}, {2, 1}}, "W·m"},
        {{{2, -1}}, "1/m"},
        {{{4, 2}}, "(m²)²"},
        {{{2, 12}, {3, -3}}, "m¹²/K³"},
    };
    std::map<std::string, std::string> expected;
    std::string properties;
    int id = 100;
    for (const auto& [factors, sign] : cases) {
        const std::string name = std::to_string(id);
        std::string elements;
        for (const auto& [unit, exponent] : factors) {
            elements += (elements.empty() ? "#" : ",#") + std::to_string(++id);
            instances += '#' + std::to_string(id) + "=IFCDERIVEDUNITELEMENT(#" + std::to_string(unit) + ',' +
                         std::to_string(exponent) + ");\n";
        }
        const std::string unit = '#' + std::to_string(++id), property = '#' + std::to_string(++id);
        instances += unit + "=IFCDERIVEDUNIT((" + elements + "),.USERDEFINED.,'x',$);\n" + property +
                     "=IFCPROPERTYSINGLEVALUE('" + name + "',$,IFCREAL(1.)," + unit + ");\n";
        properties += (properties.empty() ? "" : ",") + property;
        expected[name] = sign;
        ++id;
    }
    EXPECT_EQ(signsOf(wallWith(properties) + instances), expected);
}

TEST(Props, MeasuresFindTheUnitsOfTheProject) {
    std::string instances = R"(#1=IFCPROJECT('1',$,'P',$,$,$,$,(),#2);
#2=IFCUNITASSIGNMENT((#3,#4,#5,#6,#7,#8));
#3=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);
#4=IFCCONVERSIONBASEDUNIT($,.PLANEANGLEUNIT.,'DEGREE',$);
#5=IFCMONETARYUNIT('EUR');
#6=IFCDERIVEDUNIT((#9),.THERMALCONDUCTANCEUNIT.,$,$);
#7=IFCDERIVEDUNIT((#9),.SECTIONAREAINTEGRALUNIT.,$,$);
#8=IFCSIUNIT(*,.THERMODYNAMICTEMPERATUREUNIT.,$,.KELVIN.);
#9=IFCDERIVEDUNITELEMENT(#8,-1);
)";
    const std::map<std::string, std::string> expected{{"LENGTH", "mm"},
                                                      {"POSITIVELENGTH", "mm"},
                                                      {"NONNEGATIVELENGTH", "mm"},
                                                      {"PLANEANGLE", "DEGREE"},
                                                      {"POSITIVEPLANEANGLE", "DEGREE"},
                                                      {"MONETARY", "EUR"},
                                                      {"THERMALCONDUCTIVITY", "1/K"},
                                                      {"SECTIONALAREAINTEGRAL", "1/K"},
                                                      {"THERMODYNAMICTEMPERATURE", "K"},
                                                      {"RATIO", ""},
                                                      {"MASS", ""}};
    std::string properties;
    int id = 100;
    for (const auto& [measure, sign] : expected) {
        properties += (properties.empty() ? "#" : ",#") + std::to_string(id);
        instances += '#' + std::to_string(id++) + "=IFCPROPERTYSINGLEVALUE('" + measure + "',$,IFC" + measure +
                     "MEASURE(1.),$);\n";
    }
    EXPECT_EQ(signsOf(wallWith(properties) + instances), expected);
    // Properties of profiles and materials, which have no relation.
    const std::string plain =
        "#20=IFCPROPERTYSINGLEVALUE('p',$,IFCREAL(1.),#22);\n#22=IFCSIUNIT(*,.MASSUNIT.,.KILO.,.GRAM.);\n";
    EXPECT_EQ(signsOf("#10=IFCPROFILEDEF(.AREA.,'P');\n#11=IFCPROFILEPROPERTIES('S',$,(#20),#10);\n" + plain),
              (std::map<std::string, std::string>{{"p", "kg"}}));
    EXPECT_EQ(signsOf("#10=IFCPROFILEDEF(.AREA.,'P');\n#11=IFCPROFILEPROPERTIES('S',$,(#20),#10);\n" + plain, "11"),
              (std::map<std::string, std::string>{{"p", "kg"}}))
        << "a set that is asked itself";
    EXPECT_EQ(signsOf("#10=IFCMATERIAL('M',$,$);\n#11=IFCMATERIALPROPERTIES('S',$,(#20),#10);\n" + plain),
              (std::map<std::string, std::string>{{"p", "kg"}}));
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
