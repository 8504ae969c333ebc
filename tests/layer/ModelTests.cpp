#include "Support.h"

#include <vnifc/References.h>
#include <vnifc/ValueVisitor.h>

#include <VnIfcCore/VnIfcText.h>
#include <VnIfcCore/VnIfcVariant.h>

#include <algorithm>
#include <sstream>
#include <unordered_set>

namespace vnifc::test {

namespace {

// Everything that differs between kinds of attributes, in entities that all releases have with the same parameters.
const char* const kKinds = R"(#1=IFCCARTESIANPOINT((1.,2.5,0.));
#2=IFCPERSON($,'Stra\X\DFe','A''s',('x','y'),$,$,$,$);
#3=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);
#4=IFCPROPERTYSINGLEVALUE('a',$,IFCLABEL('EI 60'),#3);
#5=IFCPROPERTYSINGLEVALUE('b',$,IFCBOOLEAN(.T.),$);
#6=IFCPROPERTYSINGLEVALUE('c',$,IFCLOGICAL(.U.),$);
#7=IFCPROPERTYENUMERATEDVALUE('d',$,(IFCLABEL('x'),IFCINTEGER(3)),$);
#8=IFCDIRECTION((0.,0.,1.));
#9=IFCPOLYLINE((#1,#1));
#10=IFCAPPLICATION($,'1','name','id');
#11=IFCFOO('what is this',#1);
#12=IFCPROPERTYSINGLEVALUE('e',$,IFCLABEL(3),$);
)";

/// With the classes of a release, whatever other releases FILE_SCHEMA's name stands for.
Model modelOf(const std::string& release, const std::string& lines) {
    return openText(fileOf(release, lines), {.release = release});
}

/// "#9.Points[1]", one after the other.
std::string placesOf(const Instance& instance) {
    std::ostringstream words;
    for (const Reference& reference : referencesTo(instance)) {
        words << '#' << reference.from.id() << '.' << reference.attribute;
        for (const std::size_t index : reference.position)
            words << '[' << index << ']';
        words << (reference.isInText ? "'" : "") << ' ';
    }
    return words.str();
}

class EachRelease : public testing::TestWithParam<std::string> {};
INSTANTIATE_TEST_SUITE_P(Layer, EachRelease, testing::ValuesIn(kReleases), [](const auto& each) { return each.param; });

TEST_P(EachRelease, GivesTheValueOfEveryKindOfAttribute) {
    const Model model = modelOf(GetParam(), kKinds);
    EXPECT_EQ(model.release(), GetParam());
    const Instance point = model[1], unit = model[3];
    EXPECT_EQ(point["Coordinates"], (Value{1.0, 2.5, 0.0}));
    EXPECT_EQ(model[2]["FAMILYNAME"].as<std::string>(), "Straße");
    EXPECT_EQ(model[2].get<std::string>("GivenName"), "A's");
    EXPECT_EQ(model[2]["MiddleNames"].as<std::vector<std::string>>(), (std::vector<std::string>{"x", "y"}));
    EXPECT_TRUE(model[2]["PrefixTitles"].isNull());
    EXPECT_EQ(unit["Prefix"], Value(Literal{"MILLI"}));
    EXPECT_TRUE(unit["Dimensions"].isNull()) << "a derived attribute has no value";
    EXPECT_EQ(model[4]["NominalValue"], Value(typed("IfcLabel", "EI 60")));
    EXPECT_EQ(model[4]["NominalValue"].as<std::string>(), "EI 60") << "values are seen through their types";
    EXPECT_EQ(model[4]["Unit"], Value(unit));
    EXPECT_EQ(model[5].get<bool>("NominalValue"), true);
    EXPECT_EQ(model[6]["NominalValue"].as<Logical>(), Logical::kUnknown);
    EXPECT_EQ(model[6].get<bool>("NominalValue"), std::nullopt) << "unknown is neither true nor false";
    EXPECT_EQ(model[7]["EnumerationValues"], (Value{typed("IFCLABEL", "x"), typed("IFCINTEGER", 3)}));
    EXPECT_EQ(model[9]["Points"], (Value{point, point}));
    EXPECT_EQ(model[4].get<double>("NominalValue"), std::nullopt);
    EXPECT_THROW(model[4]["NominalValue"].as<double>(), BadValue);
}

TEST_P(EachRelease, PrintsInstancesAndValuesInTheirForms) {
    const Model model = modelOf(GetParam(), kKinds);
    std::ostringstream stream;
    stream << model[4] << model[12] << model[11];
    EXPECT_EQ(stream.str(), "#4=IFCPROPERTYSINGLEVALUE('a',$,IFCLABEL('EI 60'),#3);"
                            "#12=IFCPROPERTYSINGLEVALUE('e',$,IFCLABEL(3),$);"
                            "#11=IFCFOO('what is this',#1);");
    const struct {
        Value value;
        std::string plain, described, exchange;
    } kCases[] = {
        {{}, "", "$", "$"},
        {"Straße's", "Straße's", "'Straße's'", "'Stra\\X2\\00DF\\X0\\e''s'"},
        {1e21, "1e+21", "1e+21", "1.E+21"},
        {2.0, "2", "2", "2."},
        {Logical::kUnknown, "unknown", ".U.", ".U."},
        {Literal{"SOLID"}, "SOLID", ".SOLID.", ".SOLID."},
        {{1, Value{2, 3}}, "1, (2, 3)", "(1, (2, 3))", "(1,(2,3))"},
        {typed("IfcLabel", "x"), "x", "IFCLABEL('x')", "IFCLABEL('x')"},
        {model[4], "#4", "#4 IFCPROPERTYSINGLEVALUE 'a'", "#4"},
        {Value::List(14, Value(1)), "1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1",
         "(1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, ... 2 more)", "(1,1,1,1,1,1,1,1,1,1,1,1,1,1)"},
    };
    for (const auto& [value, plain, described, exchange] : kCases) {
        EXPECT_EQ(value.toString(), plain);
        EXPECT_EQ(value.toString(TextForm::kDescribed), described);
        EXPECT_EQ(value.toString(TextForm::kExchange), exchange);
    }
}

TEST_P(EachRelease, KeepsWhatHasNoClassOrDoesNotFit) {
    const Model model = modelOf(GetParam(), kKinds);
    const Instance foreign = model[11], misfit = model[12];
    EXPECT_TRUE(foreign.isForeign());
    EXPECT_EQ(foreign.type(), "IFCFOO");
    EXPECT_EQ(foreign.foreignText(), "'what is this',#1");
    EXPECT_TRUE(foreign.is("IfcFoo"));
    EXPECT_EQ(idsOf(model.instances("ifcfoo")), Ids{11});
    EXPECT_EQ(messageOf<NotFound>([&] { (void)foreign["Name"]; }), "an instance without a class has no attribute Name");
    EXPECT_EQ(misfit.keptText("nominalvalue"), "IFCLABEL(3)");
    EXPECT_EQ(misfit.keptText("Name"), std::nullopt);
    EXPECT_TRUE(misfit["NominalValue"].isNull());
    EXPECT_EQ(model.errors() + model.warnings(), model.findings().size());
    EXPECT_FALSE(model.findings().empty());
}

TEST_P(EachRelease, StoresWhatWasTypedAsItIs) {
    Model model = modelOf(GetParam(), kKinds);
    const struct {
        std::uint64_t id;
        const char* attribute;
        const char* text;
        const char* line;
    } kCases[] = {
        {4, "Name", "'Stra\\X\\DFe'", "#4=IFCPROPERTYSINGLEVALUE('Stra\\X\\DFe',$,IFCLABEL('EI 60'),#3);"},
        {5, "NominalValue", "false", "#5=IFCPROPERTYSINGLEVALUE('b',$,IFCBOOLEAN(.F.),$);"},
        {3, "Prefix", "kilo", "#3=IFCSIUNIT(*,.LENGTHUNIT.,.KILO.,.METRE.);"},
        {8, "DirectionRatios", "(1.,0.,0.)", "#8=IFCDIRECTION((1.,0.,0.));"},
        {7, "EnumerationValues", "(IFCLABEL('y'))", "#7=IFCPROPERTYENUMERATEDVALUE('d',$,(IFCLABEL('y')),$);"},
    };
    for (const auto& [id, attribute, text, line] : kCases) {
        model[id].setFromText(attribute, text);
        EXPECT_EQ(model[id].toString(), line);
    }
    EXPECT_EQ(messageOf<BadValue>([&] { model[3].setFromText("UnitType", "no"); }).substr(0, 56),
              "#3 IFCSIUNIT.UnitType: expected one of ABSORBEDDOSEUNIT,");
    EXPECT_THROW(model[4].setFromText("Unit", "#8"), BadValue);
    EXPECT_EQ(placesOf(model[3]), "#4.Unit ") << "what does not fit changes nothing";
}

TEST_P(EachRelease, TakesValuesAsTheCallerHasThem) {
    Model model = modelOf(GetParam(), kKinds);
    Instance person = model[2], property = model[4], list = model[7];
    person.set("FamilyName", "Groß'");
    person.set("MiddleNames", {"a", "ö"});
    person.set("PrefixTitles", std::vector<std::string>{"Dr"});
    model[1].set("Coordinates", {1, 2.5});
    Instance unit = model[3];
    unit.set("Prefix", "kilo");
    unit.set("UnitType", Literal{"AREAUNIT"});
    property.set("NominalValue", "EI 90");
    property.set("Unit", nullptr);
    list.set("EnumerationValues", {typed("IfcReal", 2), typed("ifclabel", "ß"), typed("IfcBoolean", true)});
    Instance polyline = model[9];
    polyline.set("Points", std::vector<Instance>{model[1]});
    const Model again = openText(model.text());
    EXPECT_EQ(again[2].toString(), R"(#2=IFCPERSON($,'Gro\X2\00DF\X0\''','A''s',('a','\X2\00F6\X0\'),('Dr'),$,$,$);)");
    EXPECT_EQ(again[1].toString(), "#1=IFCCARTESIANPOINT((1.,2.5));");
    EXPECT_EQ(again[3].toString(), "#3=IFCSIUNIT(*,.AREAUNIT.,.KILO.,.METRE.);");
    EXPECT_EQ(again[4].toString(), "#4=IFCPROPERTYSINGLEVALUE('a',$,IFCLABEL('EI 90'),$);");
    EXPECT_EQ(again[7].toString(),
              R"(#7=IFCPROPERTYENUMERATEDVALUE('d',$,(IFCREAL(2.),IFCLABEL('\X2\00DF\X0\'),IFCBOOLEAN(.T.)),$);)");
    EXPECT_EQ(again[9].toString(), "#9=IFCPOLYLINE((#1));");
}

TEST_P(EachRelease, ChoosesTheTypeOfASelectsValue) {
    Model model = modelOf(GetParam(), kKinds);
    const struct {
        const char* text; ///< what the property holds at first
        Value value;
        const char* expected;
    } kCases[] = {
        {"IFCIDENTIFIER('x')", "y", "IFCIDENTIFIER('y')"},
        {"IFCLENGTHMEASURE(1.)", 2, "IFCLENGTHMEASURE(2.)"},
        {"IFCLENGTHMEASURE(1.)", "y", "IFCLABEL('y')"},
        {"$", 2.5, "IFCREAL(2.5)"},
        {"$", 2, "IFCINTEGER(2)"},
        {"$", false, "IFCBOOLEAN(.F.)"},
        {"$", Logical::kUnknown, "IFCLOGICAL(.U.)"},
        {"IFCLABEL('x')", typed("IfcThermodynamicTemperatureMeasure", 20), "IFCTHERMODYNAMICTEMPERATUREMEASURE(20.)"},
        {"IFCLABEL('x')", nullptr, "$"},
    };
    for (const auto& [text, value, expected] : kCases) {
        Instance property = model[4];
        property.set("NominalValue", property.parse("NominalValue", text));
        property.set("NominalValue", value);
        EXPECT_EQ(property["NominalValue"].toString(TextForm::kExchange), expected);
    }
}

TEST_P(EachRelease, RefusesWhatDoesNotFitAndChangesNothing) {
    Model model = modelOf(GetParam(), kKinds);
    const Model other = modelOf(GetParam(), kKinds);
    const std::string before = model.text();
    const struct {
        std::uint64_t id;
        const char* attribute;
        Value value;
        std::string message; ///< what it begins with
    } kCases[] = {
        {2, "FamilyName", 3, "#2 IFCPERSON.FamilyName: expected a text in UTF-8, found 3"},
        {2, "FamilyName", "\xFF", "#2 IFCPERSON.FamilyName: expected a text in UTF-8"},
        {2, "MiddleNames", {1}, "#2 IFCPERSON.MiddleNames: expected a value of list [1:?] of IFCLABEL, found (1)"},
        {1,
         "Coordinates",
         {1.0, "x"},
         "#1 IFCCARTESIANPOINT.Coordinates: expected a value of list [1:3] of IFCLENGTHMEASURE, found (1, 'x')"},
        {1,
         "Coordinates",
         {std::numeric_limits<double>::infinity()},
         "#1 IFCCARTESIANPOINT.Coordinates: expected a value of list"},
        {3, "Prefix", "MILLY", "#3 IFCSIUNIT.Prefix: expected one of "},
        {3, "Dimensions", model[1], "#3 IFCSIUNIT.Dimensions: the value is derived"},
        {4, "NominalValue", model[1], "#4 IFCPROPERTYSINGLEVALUE.NominalValue: expected a value of"},
        {4, "NominalValue", typed("IfcWallTypeEnum", "x"),
         "#4 IFCPROPERTYSINGLEVALUE.NominalValue: expected a type of IfcValue"},
        {4, "NominalValue", typed("IfcLabel", 3), "#4 IFCPROPERTYSINGLEVALUE.NominalValue: expected a value"},
        {4, "Unit", model[1], "#4 IFCPROPERTYSINGLEVALUE.Unit: expected a value of"},
        {9, "Points", {model[1], model[8]}, "#9 IFCPOLYLINE.Points: expected an instance of IfcCartesianPoint"},
        {9, "Points", {other[1]}, "#9 IFCPOLYLINE.Points: expected an instance of the same model"},
        {9, "Points", Value::List(), "#9 IFCPOLYLINE.Points: expected at least one element"},
        {7,
         "EnumerationValues",
         {typed("IfcLabel", 3)},
         "#7 IFCPROPERTYENUMERATEDVALUE.EnumerationValues: expected a value"},
        {10, "ApplicationDeveloper", model[1],
         "#10 IFCAPPLICATION.ApplicationDeveloper: expected an instance of IfcOrganization"},
    };
    for (const auto& each : kCases) {
        Instance instance = model[each.id];
        const std::string found = messageOf<BadValue>([&] { instance.set(each.attribute, each.value); });
        EXPECT_TRUE(found.starts_with(each.message)) << found;
    }
    Instance person = model[2];
    EXPECT_EQ(messageOf<NotFound>([&] { person.set("Nmae", "x"); }), "IfcPerson has no attribute Nmae");
    EXPECT_THROW(person.set("EngagedIn", person), BadValue) << "inverse attributes follow, they are not set";
    EXPECT_EQ(model.text(), before);
}

TEST_P(EachRelease, TellsWhereAnInstanceIsReferredTo) {
    Model model = modelOf(GetParam(), std::string(kKinds) +
                                          "#20=IFCBSPLINECURVE('none');\n"
                                          "#21=IFCPROPERTYSINGLEVALUE(#1,$,IFCLABEL('#1'),#3);\n"
                                          "#22=IFCPROPERTYREFERENCEVALUE('g',$,$,#2);\n"
                                          "#23=IFCRELASSIGNSTOACTOR('0000000000000000000023',$,$,$,(#9,#1),$,#2);\n"
                                          "#24=IFCPROPERTYSINGLEVALUE('h',$,IFCLABEL('x'),$,#1,#1);\n");
    EXPECT_EQ(placesOf(model[1]), "#9.Points[0] #9.Points[1] #11.' #21.Name' #23.RelatedObjects[0] #24.' #24.' ")
        << "quotes hold no references; a SET is in ascending order";
    EXPECT_EQ(placesOf(model[3]), "#4.Unit #21.Unit ");
    EXPECT_EQ(placesOf(model[2]), "#22.PropertyReference #23.RelatingActor ");
    EXPECT_EQ(placesOf(model[24]), "");
    model[21].set("Name", "text");
    EXPECT_EQ(idsOf(model[1].referrers()), (Ids{9, 11, 23, 24})) << "a text that was kept may have referred";
    const std::vector<std::pair<std::string_view, std::string>> kept{{"", ",#1,#1"}};
    EXPECT_EQ(model[24].keptTexts(), kept);
    EXPECT_THROW(referencesTo(Instance()), NotFound);
}

TEST_P(EachRelease, FindsInstancesAndWhoRefersToThem) {
    Model model = modelOf(GetParam(), kKinds);
    EXPECT_EQ(model.size(), 12u);
    EXPECT_EQ(idsOf(model.instances("IfcProperty")), (Ids{4, 5, 6, 7, 12}));
    EXPECT_EQ(idsOf(model.instances("IfcProperty", true)), Ids{});
    static_assert(std::ranges::view<InstanceRange> && std::ranges::forward_range<InstanceRange>);
    EXPECT_EQ((*std::ranges::next(model.instances("IFCSIMPLEPROPERTY").begin(), 3)).id(), 7u);
    EXPECT_EQ(model.all().count(), 12u);
    EXPECT_EQ(idsOf(model[1].referrers()), (Ids{9, 11})) << "twice in a list is one referrer; text refers too";
    EXPECT_EQ(idsOf(model[9].references()), Ids{1});
    EXPECT_EQ(idsOf(model[3].referrers()), Ids{4});
    model[5].set("Unit", model[3]);
    EXPECT_EQ(idsOf(model[3].referrers()), (Ids{4, 5})) << "what is kept follows changes";
    const Instance created = model.create("IfcPropertySingleValue", {{"Name", "f"}, {"Unit", model[3]}});
    EXPECT_EQ(idsOf(model[3].referrers()), (Ids{4, 5, created.id()}));
    EXPECT_EQ(idsOf(model.instances("IfcProperty")), (Ids{4, 5, 6, 7, 12, created.id()}));
    model.erase(model[3]);
    EXPECT_TRUE(model[4]["Unit"].isNull()) << "nobody refers to what is gone";
    EXPECT_EQ(messageOf<NotFound>([&] { (void)model[3]; }), "there is no instance #3");
    EXPECT_EQ(messageOf<NotFound>([&] { (void)model.instances("IfcFou"); }),
              "neither " + GetParam() + " nor the file has an entity \"IfcFou\"");
    for (const Instance& each : model.instances("IfcProperty"))
        model.erase(each);
    EXPECT_EQ(idsOf(model.all()), (Ids{1, 2, 8, 9, 10, 11}));
}

TEST_P(EachRelease, ReadsAndStoresByKey) {
    Model model =
        modelOf(GetParam(), kKinds + std::string("#20=IFCDOOR('0000000000000000000001',$,'d',$,$,$,$,$,2.1,$);\n"
                                                 "#21=IFCCIRCLE(#1,3.);\n"));
    const AttributeKey width = model.key("IfcDoor", "overallwidth"), name = model.key("IfcRoot", "Name"),
                       height = model.key("IfcDoor", "OverallHeight"), position = model.key("IfcConic", "Position"),
                       inverse = model.key("IfcElement", "HasOpenings");
    Instance door = model[20], circle = model[21];
    EXPECT_EQ(height.entity(), "IfcDoor");
    EXPECT_EQ(door.get<double>(width), std::nullopt);
    EXPECT_EQ(door.get<double>(height), 2.1);
    door.set(width, 0.9);
    EXPECT_EQ(door.get<double>("OverallWidth"), 0.9);
    EXPECT_EQ(door[name].as<std::string>(), "d");
    EXPECT_TRUE(door[inverse].get<Value::List>()->empty());
    EXPECT_EQ(circle.get<Instance>(position), model[1]) << "whatever the file refers to is there";
    EXPECT_EQ(messageOf<BadValue>([&] { (void)circle.get<double>(width); }),
              "#21 IfcCircle is no IfcDoor, for which OverallWidth was looked up");
    EXPECT_THROW(door.set(width, std::numeric_limits<double>::quiet_NaN()), BadValue);
    EXPECT_THROW((void)model.key("IfcDoor", "Width"), NotFound);
    EXPECT_THROW((void)Instance().get<double>(width), NotFound);
}

TEST_P(EachRelease, InverseAttributesFollowChanges) {
    Model model = modelOf(GetParam(), "#1=IFCWALL('0000000000000000000001',$,'w',$,$,$,$,$" +
                                          std::string(GetParam() == "IFC2X3" ? "" : ",$") +
                                          ");\n#2=IFCGROUP('0000000000000000000002',$,'g',$,$);\n"
                                          "#3=IFCGROUP('0000000000000000000003',$,'h',$,$);\n");
    const Instance wall = model[1];
    EXPECT_EQ(wall["HasAssignments"], Value(Value::List()));
    Instance relation = model.create("IfcRelAssignsToGroup", {{"RelatedObjects", {wall}}, {"RelatingGroup", model[2]}});
    EXPECT_EQ(wall["HasAssignments"], Value{relation});
    EXPECT_FALSE(model[2]["IsGroupedBy"].isNull());
    relation.set("RelatedObjects", {model[3]});
    EXPECT_EQ(wall["HasAssignments"], Value(Value::List()));
    EXPECT_EQ(model[3]["HasAssignments"], Value{relation});
    model.erase(relation);
    EXPECT_EQ(model[3]["HasAssignments"], Value(Value::List()));
    EXPECT_EQ(model.create("IfcWall").globalId().size(), 22u);
    EXPECT_THROW(model.create("IfcRoot"), BadValue) << "abstract";
    EXPECT_THROW(model.create("IfcWal"), NotFound);
    const std::size_t size = model.size();
    EXPECT_THROW(model.create("IfcWall", {{"Name", 3}}), BadValue);
    EXPECT_EQ(model.size(), size) << "half an instance does not stay";
}

TEST_P(EachRelease, TakesWhatIsTyped) {
    const Model model = modelOf(GetParam(), kKinds);
    const struct {
        std::uint64_t id;
        const char* attribute;
        const char* text;
        Value value;
    } kCases[] = {
        {2, "FamilyName", "Straße", "Straße"},
        {2, "FamilyName", "'a''b'", "a'b"},
        {2, "FamilyName", "$", nullptr},
        {3, "Prefix", "kilo", Literal{"KILO"}},
        {3, "Prefix", ".KILO.", Literal{"KILO"}},
        {4, "NominalValue", "x", typed("IFCLABEL", "x")},
        {5, "NominalValue", "false", typed("IFCBOOLEAN", false)},
        {4, "NominalValue", "IFCREAL(2.)", typed("IFCREAL", 2.0)},
        {4, "Unit", "#3", model[3]},
        {1, "Coordinates", "(1.,2.)", {1.0, 2.0}},
    };
    for (const auto& [id, attribute, text, value] : kCases)
        EXPECT_EQ(model[id].parse(attribute, text), value) << attribute << ' ' << text;
    EXPECT_EQ(messageOf<BadValue>([&] { (void)model[4].parse("Unit", "#99"); }),
              "#4 IFCPROPERTYSINGLEVALUE.Unit: there is no instance #99, found #99");
    EXPECT_EQ(messageOf<BadValue>([&] { (void)model[9].parse("Points", "(#8)"); }).substr(0, 22),
              "#9 IFCPOLYLINE.Points:");
}

TEST(Models, OfSeveralReleasesLiveTogetherAndMove) {
    if (!isBuilt("IFC2X3") || !isBuilt("IFC4X3_ADD2"))
        GTEST_SKIP() << "one of the modules is not built";
    Model old = create("ifc2x3");
    Instance point = old.create("IfcCartesianPoint", {{"Coordinates", {1.0, 2.0}}});
    Model moved = std::move(old);
    EXPECT_EQ(point["Coordinates"], (Value{1.0, 2.0})) << "instances stay good when their model moves";
    Model young = create("IFC4X3_ADD2");
    const Instance copy = young.copy(point);
    EXPECT_EQ(copy.toString(), "#1=IFCCARTESIANPOINT((1.,2.));");
    EXPECT_NE(copy, point);
    EXPECT_EQ((std::unordered_set<Instance>{copy, point, copy}.size()), 2u);
    EXPECT_EQ(messageOf<FileError>([] { (void)create("IFC5"); }).substr(0, 30), "cannot create a model of IFC5:");
    EXPECT_THROW((void)open("/nowhere/at/all.ifc"), FileError);
    EXPECT_THROW((void)open(std::filesystem::temp_directory_path()), FileError);
    EXPECT_THROW(young.save("/nowhere/at/all.ifc"), FileError);
}

TEST(Models, StreamFindingsAndKeepAFew) {
    std::string lines;
    for (int i = 1; i <= 50; ++i)
        lines += "#" + std::to_string(i) + "=IFCFOO();\n";
    std::size_t streamed = 0;
    const Model model =
        openText(fileOf(kReleases.back(), lines), {.findings = [&](const Finding&) { ++streamed; }, .keptFindings = 5});
    EXPECT_GE(streamed, 50u);
    EXPECT_EQ(model.findings().size(), 5u);
    EXPECT_EQ(model.findings()[0].instance, 1u);
    EXPECT_THROW((void)openText(fileOf(kReleases.back(), lines), {.progress = [](double) { return false; }}),
                 FileError);
}

/// Compares with the core's own access, for every attribute of every instance of real files.
TEST(Models, AgreeWithTheCoreOnRealFiles) {
    if (readableCorpusFiles().empty())
        GTEST_SKIP() << "no files of other programs here";
    std::size_t files = 0;
    for (const std::filesystem::path& path : readableCorpusFiles()) {
        if (std::filesystem::file_size(path) > 300'000)
            continue;
        ++files;
        SCOPED_TRACE(path.filename());
        const Model model = open(path);
        std::size_t seen = 0, texts = 0;
        std::unordered_map<Instance, std::vector<Instance>> referrers;
        for (const Instance& instance : model.all()) {
            ++seen;
            for (const Instance& target : instance.references())
                referrers[target].push_back(instance);
            for (const Attribute& attribute : instance.attributes()) {
                const VN_SDAI::VnIfcEntityBase& core = *instance.core().openObject();
                const VN_SDAI::VnAnsiString name(attribute.name());
                if (attribute.isDerived())
                    continue;
                EXPECT_EQ(core.testAttr(name),
                          !(attribute.value().isNull() || attribute.value() == Value(Value::List())))
                    << instance << ' ' << attribute.name();
                VN_SDAI::VnIfcVariant held;
                core.getAttr(name, held);
                if (const auto* text = held.get<const char*>(); text && core.testAttr(name)) {
                    ++texts;
                    EXPECT_EQ(attribute.value().as<std::string>(), VN_SDAI::vnDecodeText(*text).text);
                }
            }
        }
        EXPECT_EQ(seen, model.core().count());
        EXPECT_GT(texts, 0u);
        for (auto& [target, sources] : referrers)
            if (target) {
                EXPECT_EQ(target.referrers().toVector(), sources) << target;
            }
    }
    EXPECT_GE(files, builtReleases().size());
}

} // namespace

} // namespace vnifc::test
