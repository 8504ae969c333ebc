// What is looked at in a model, and what is told of it.
#include "Support.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>

namespace vnifc::test {

namespace {

const Garden& garden() {
    static const Garden instance;
    return instance;
}

TEST(RulesCheck, FindsWhatBreaksARuleOfEachKind) {
    const struct {
        std::vector<std::pair<std::string, std::string>> clauses;
        const char* rest;
        const char* instances;
        const char* findings;
    } cases[] = {
        // own attributes; a rule without a label goes by its number; unset is no violation
        {{{"ToyBed", "WHERE Long : Length > 1.; Width > 1;"}},
         "",
         "#1=TOYBED('a',$,$,2.,3,(),$,2);\n#2=TOYBED('b',$,$,0.5,0,(),$,2);\n#3=TOYBED('c',$,$,$,$,(),$,2);\n",
         "rule #2 ToyBed.Long\nrule #2 ToyBed.2\n"},
        // rules of supertypes
        {{{"ToyThing", "WHERE HasName : EXISTS(Name);"}, {"ToyPlant", "WHERE Edible : IsEdible;"}},
         "",
         "#1=TOYPLANT('a',$,$,'Rose',$,.F.,$,$);\n#2=TOYBED('b','Bed',$,1.,1,(),$,2);\n",
         "rule #1 ToyThing.HasName\nrule #1 ToyPlant.Edible\n"},
        // inverse attributes, one that is a single handle in its class as well
        {{{"ToyPlant", "WHERE Grows : SIZEOF(GrowsIn) = 1;"},
          {"ToyBed", "WHERE Full : SIZEOF(QUERY(g <* Grows | SIZEOF(g.Plants) > 1)) = 0;"}},
         "",
         "#1=TOYPLANT('a',$,$,'Rose',$,.F.,$,$);\n#2=TOYPLANT('b',$,$,'Rose',$,.F.,$,$);\n"
         "#3=TOYBED('c','Bed',$,1.,1,(),$,2);\n#4=TOYGROWING('d',$,$,(#1,#1),#3,$,$);\n"
         "#5=TOYGROWING('e',$,$,(#1),#3,$,$);\n",
         "rule #2 ToyPlant.Grows\n"},
        // types: of attributes, of what they are made of, of elements, and of what selects hold
        {{{"ToyMetres", "WHERE Short : SELF < 10.;"},
          {"ToyPositiveMetres", "WHERE Positive : SELF > 0.;"},
          {"ToyWord", "WHERE LENGTH(SELF) > 1;"},
          {"ToyWhen", "WHERE Year : SELF[1] > 1900;"},
          {"ToyCount", "WHERE Few : SELF < 5;"}},
         "",
         "#1=TOYTREE('a','ok',$,*,$,.F.,$,TOYMETRES(11.),-1.,((1.,12.),(13.,1.)));\n"
         "#2=TOYTREE('b','x',$,*,$,.F.,$,TOYCOUNT(7),20.,$);\n"
         "#3=TOYGROWING('c','ok',$,(#1),#4,(1800,1),(TOYWORD('y'),TOYWHEN((1,2))));\n"
         "#4=TOYBED('d',$,$,1.,1,(),$,2);\n",
         "rule #1 Size ToyMetres.Short\nrule #1 Height ToyPositiveMetres.Positive\n"
         "rule #1 RingWidths ToyMetres.Short\nrule #1 RingWidths ToyMetres.Short\n"
         "rule #2 Name ToyWord.1\nrule #2 Size ToyCount.Few\nrule #2 Height ToyMetres.Short\n"
         "rule #3 Since ToyWhen.Year\nrule #3 Notes ToyWord.1\nrule #3 Notes ToyWhen.Year\n"},
        // uniqueness of derived and inverse attributes; the texts of explicit ones are another check's matter
        {{{"ToyBed", "UNIQUE Spot : Area, Rows;"}},
         "",
         "#1=TOYBED('a',$,$,2.,3,(),$,2);\n#2=TOYBED('b',$,$,3.,2,(),$,2);\n#3=TOYBED('c',$,$,3.,2,(),$,3);\n"
         "#4=TOYBED('d',$,$,$,2,(),$,3);\n#5=TOYBED('d',$,$,$,2,(),$,3);\n",
         "rule #2 ToyBed.Spot\n"},
        // RULEs
        {{},
         "RULE OneBed FOR (ToyBed); WHERE WR1 : SIZEOF(ToyBed) <= 1; END_RULE;\n"
         "RULE Names FOR (ToyThing, ToyBed); LOCAL n : INTEGER := 0; END_LOCAL;\n"
         "REPEAT i := 1 TO HIINDEX(ToyThing); IF EXISTS(ToyThing[i].Name) THEN n := n + 1; END_IF; END_REPEAT;\n"
         "WHERE n = SIZEOF(ToyThing); SIZEOF(ToyBed) = 2; END_RULE;\n",
         "#1=TOYBED('a','a',$,2.,3,(),$,2);\n#2=TOYBED('b','b',$,3.,2,(),$,2);\n",
         "rule OneBed\n"},
    };
    for (const auto& each : cases) {
        const std::string text = Garden::replaced(Garden::text(each.clauses, each.rest), "Area : ToyMetres := ?",
                                                  "Area : ToyMetres := Length * Width");
        EXPECT_EQ(findingsOf(garden().rules(text), garden().model(each.instances)), each.findings) << text.substr(9000);
    }
}

TEST(RulesCheck, AViolationHasPlaceKeywordAndSeverity) {
    const Rules rules = garden().rules(Garden::text({{"ToyBed", "WHERE Long :\n   Length > 1.;"}}));
    const VN_SDAI::VnIfcModel model = garden().model("#7=TOYBED('b',$,$,0.5,1,(),$,2);\n");
    VN_SDAI::VnIfcDiagnostic told;
    rules.check(model, [&](const VN_SDAI::VnIfcDiagnostic& each) { told = each; });
    EXPECT_EQ(told.severity, VN_SDAI::VnIfcDiagnostic::kError);
    EXPECT_EQ(told.code, "rule");
    EXPECT_EQ(told.rule, "ToyBed.Long");
    EXPECT_EQ(told.keyword, "TOYBED");
    EXPECT_EQ(told.line, 8u);
    EXPECT_EQ(told.column, 1u);
    told.file = "f.ifc";
    EXPECT_EQ(told.text(), "f.ifc:8:1: error: #7 TOYBED: rule ToyBed.Long is violated [rule]");
    ASSERT_EQ(rules.rules().size(), 1u);
    EXPECT_EQ(rules.rules()[0].text, "Length > 1.");
}

/// A model that breaks rules here and there, in more blocks than one.
std::string manyBeds() {
    std::string instances;
    for (int i = 1; i <= 5000; ++i)
        instances += '#' + std::to_string(i) + "=TOYBED('" + std::to_string(i) + "',$,$," + std::to_string(i % 7) +
                     ".,1,(),$," + std::to_string(i % 3) + ");\n";
    return instances;
}

TEST(RulesCheck, ComesToTheSameOnAnyNumberOfThreads) {
    const Rules rules = garden().rules(
        Garden::text({{"ToyBed", "WHERE A : Length > 0.; B : Rows > 0; C : SIZEOF(USEDIN(SELF, '')) = 0;"}},
                     "RULE Few FOR (ToyBed); WHERE SIZEOF(ToyBed) < 10; END_RULE;"));
    const VN_SDAI::VnIfcModel model = garden().model(manyBeds());
    RulesCheckOptions options;
    options.threads = 1;
    RulesCheckResult one;
    const std::string findings = findingsOf(rules, model, options, &one);
    EXPECT_EQ(one.violations, 5000u / 7 + 5000u / 3 + 1);
    ASSERT_EQ(one.counts.size(), 4u);
    EXPECT_EQ(one.counts[0].evaluated, 5000u);
    EXPECT_EQ(one.counts[0].violated, 5000u / 7);
    EXPECT_EQ(one.counts[2].violated, 0u);
    for (const unsigned threads : {2u, 5u}) {
        options.threads = threads;
        RulesCheckResult several;
        EXPECT_EQ(findingsOf(rules, model, options, &several), findings);
        EXPECT_EQ(several.counts[1].violated, one.counts[1].violated);
    }
}

TEST(RulesCheck, LooksAtChosenRulesOnly) {
    const Rules rules = garden().rules(
        Garden::text({{"ToyBed", "WHERE A : Length > 9.; B : Rows > 9;"}, {"ToyMetres", "WHERE Short : SELF > 9.;"}},
                     "RULE Few FOR (ToyBed); WHERE FALSE; END_RULE;"));
    const VN_SDAI::VnIfcModel model = garden().model("#1=TOYBED('b',$,$,0.5,1,(),$,2);\n");
    const struct {
        std::vector<std::string> only, except;
        const char* findings;
        std::vector<std::string> unknown;
    } cases[] = {
        {{}, {}, "rule #1 ToyBed.A\nrule #1 ToyBed.B\nrule #1 Length ToyMetres.Short\nrule Few\n", {}},
        {{"toybed.b"}, {}, "rule #1 ToyBed.B\n", {}},
        {{"Few", "ToyMetres.Short"}, {}, "rule #1 Length ToyMetres.Short\nrule Few\n", {}},
        {{}, {"ToyBed.A", "FEW", "ToyMetres.Short"}, "rule #1 ToyBed.B\n", {}},
        {{"ToyBed.A", "ToyBed.C"}, {"x"}, "rule #1 ToyBed.A\n", {"ToyBed.C", "x"}},
    };
    for (const auto& each : cases) {
        RulesCheckOptions options;
        options.only = each.only;
        options.except = each.except;
        RulesCheckResult result;
        EXPECT_EQ(findingsOf(rules, model, options, &result), each.findings);
        EXPECT_EQ(result.unknown, each.unknown);
    }
}

TEST(RulesCheck, TellsWhatIsNotEvaluatedAndNeverTakesItForKept) {
    const Rules rules = garden().rules(Garden::replaced(
        Garden::text({{"ToyBed", "WHERE Steps : Forever(1); Deep : Deeper(1) > 0; Fine : Length > 9.;"
                                 " Known : Owner = Owner; Area : Area > 0.;"}},
                     "FUNCTION Forever(x : INTEGER) : LOGICAL; REPEAT; x := x; END_REPEAT; END_FUNCTION;\n"
                     "FUNCTION Deeper(x : INTEGER) : INTEGER; RETURN (Deeper(x) + 1); END_FUNCTION;\n"),
        "Area : ToyMetres := ?", "Area : ToyMetres := Area + 1"));
    RulesCheckOptions options;
    options.steps = 1000;
    RulesCheckResult result;
    EXPECT_EQ(findingsOf(rules, garden().model("#1=TOYBED('b',$,$,0.5,1,(),'gone',2);\n"), options, &result),
              "rule-not-evaluated #1 ToyBed.Steps: more steps than an evaluation may take\n"
              "rule-not-evaluated #1 ToyBed.Deep: more steps than an evaluation may take\n"
              "rule #1 ToyBed.Fine\n"
              "rule-not-evaluated #1 ToyBed.Known: the value of Owner does not fit, so that it is not known\n"
              "rule-not-evaluated #1 ToyBed.Area: more steps than an evaluation may take\n");
    EXPECT_EQ(result.notEvaluated, 4u);
    EXPECT_EQ(result.violations, 1u);
    options.steps = RulesCheckOptions().steps;
    options.only = {"ToyBed.Deep"};
    EXPECT_EQ(findingsOf(rules, garden().model("#1=TOYBED('b',$,$,0.5,1,(),$,2);\n"), options),
              "rule-not-evaluated #1 ToyBed.Deep: calls that are nested deeper than an evaluation may\n");
}

/// What a file says and nobody can take is not the same as nothing.
TEST(RulesCheck, DoesNotTakeWhatIsNotKnownForNothing) {
    const Rules rules = garden().rules(
        Garden::text({{"ToyBed", "WHERE None : NOT(EXISTS(Owner)); Corners : SIZEOF(QUERY(each <* Corners | "
                                 "EXISTS(each))) = SIZEOF(Corners);"}}));
    const struct {
        const char* corners;
        const char* owner;
        const char* findings;
        std::uint64_t erased = 0;
    } cases[] = {
        {"()", "$", ""},
        {"(#2)", "#3", "rule #1 ToyBed.None\n"},
        {"(#2,#9)", "$", "rule-not-evaluated #1 ToyBed.Corners: #9 is not in the model, so that it is not known\n"},
        {"(#4)", "$",
         "rule-not-evaluated #1 ToyBed.Corners: #4 is of no class of the schema, so that it is not known\n"},
        {"(#2,5)", "$",
         "rule-not-evaluated #1 ToyBed.Corners: the value of Corners does not fit, so that it is not known\n"},
        {"()", "#9", "rule-not-evaluated #1 ToyBed.None: #9 is not in the model, so that it is not known\n"},
        {"()", "#4", "rule-not-evaluated #1 ToyBed.None: #4 is of no class of the schema, so that it is not known\n"},
        {"()", "#3", "", 3}, // what was erased is nothing
    };
    for (const auto& each : cases) {
        VN_SDAI::VnIfcModel model = garden().model(
            "#1=TOYBED('b',$,$,0.5,1," + std::string(each.corners) + ',' + each.owner +
            ",2);\n#2=TOYPOINT($);\n#3=TOYGARDENER('Ann',.U.,3,1.5,.T.,.RAKE.,$,('a'));\n#4=NOBODY(1);\n");
        if (each.erased > 0) {
            model.erase(model.find(each.erased));
        }
        EXPECT_EQ(findingsOf(rules, model), each.findings) << each.corners << ' ' << each.owner;
    }
}

TEST(RulesCheck, HostileModelsEnd) {
    // Clubs whose members are gardeners who like the next club, a thousand deep, and back to the first.
    std::string chain;
    for (int i = 1; i < 2000; i += 2) {
        const std::string club = std::to_string(i), gardener = std::to_string(i + 1);
        chain += '#' + club + "=TOYCLUB('c',.T.,1,0.,.F.,(#" + gardener + "),$,(1));\n#" + gardener +
                 "=TOYGARDENER('g',.U.,3,1.5,.T.,.RAKE.,(#" + std::to_string(i == 1999 ? 1 : i + 2) + "),('a'));\n";
    }
    const Rules rules = garden().rules(
        Garden::text({{"ToyClub", "WHERE Same : Members[1].Likes[1] = SELF; Depth : Level(SELF, 0) > 0;"}},
                     "FUNCTION Level(c : ToyClub; n : INTEGER) : INTEGER;"
                     " RETURN (Level(c.Members[1].Likes[1], n + 1)); END_FUNCTION;"));
    const VN_SDAI::VnIfcModel model = garden().model(chain);
    RulesCheckOptions options;
    options.only = {"ToyClub.Same"};
    RulesCheckResult result;
    findingsOf(rules, model, options, &result);
    EXPECT_EQ(result.violations, 0u); // all look alike, as deep as one may look
    EXPECT_EQ(result.counts[0].evaluated + result.counts[0].notEvaluated, 1000u);
    options.only = {"ToyClub.Depth"};
    options.steps = 10'000;
    findingsOf(rules, model, options, &result);
    EXPECT_EQ(result.notEvaluated, 1000u);
}

TEST(RulesCheck, RefusesAModelOfAnotherSchemaAndStopsWhenToldTo) {
    const Rules rules = garden().rules(Garden::text({{"ToyBed", "WHERE A : Length > 9.;"}}));
    const Garden other;
    const VN_SDAI::VnIfcModel model = garden().model(manyBeds());
    RulesCheckOptions options;
    options.threads = 1;
    options.progress = [](double) { return false; };
    RulesCheckResult result;
    findingsOf(rules, model, options, &result);
    EXPECT_TRUE(result.isCancelled);
    EXPECT_LT(result.counts[0].evaluated, 5000u);
    const VN_SDAI::VnIfcSchema empty;
    const VN_SDAI::VnIfcModel stranger(&empty);
    EXPECT_THROW(rules.check(stranger, {}), std::invalid_argument);
}

TEST(RulesText, MustAgreeWithTheDictionary) {
    const std::string text = Garden::text();
    const struct {
        const char* what;
        const char* with;
        const char* message;
    } cases[] = {
        {"Rows : ToyCount;", "Rows : ToyCount; More : ToyCount;",
         "the entity ToyBed has 5 attributes of its own, in the text 6"},
        {"  Rows : ToyCount;\n", "", "the entity ToyBed has 5 attributes of its own, in the text 4"},
        {"Rows : ToyCount;", "Ranks : ToyCount;", "the text has no attribute ToyBed.Rows"},
        {"Owner : OPTIONAL ToyOwner;", "Owner : ToyOwner;", "the attribute ToyBed.Owner is optional"},
        {"Rows : ToyCount;", "Rows : ToyWord;", "the attribute ToyBed.Rows is of type"},
        {"WINTER, NEVER", "NEVER, WINTER", "the enumeration ToySeason of Blooms has other literals"},
        {"ENTITY ToyTree\n  SUBTYPE OF (ToyPlant);", "ENTITY ToyTree\n  SUBTYPE OF (ToyThing);",
         "the supertype of ToyTree is ToyPlant, in the text ToyThing"},
        {"END_SCHEMA", "ENTITY ToyShed; Id : STRING; END_ENTITY; END_SCHEMA", "it has no entity ToyShed"},
        {"END_SCHEMA", "TYPE ToyYear = INTEGER; END_TYPE; END_SCHEMA", "it has no type ToyYear"},
        {"GrowsIn : SET [0:1] OF ToyGrowing FOR Plants;", "GrewIn : SET [0:1] OF ToyGrowing FOR Plants;",
         "it has no inverse attribute ToyPlant.GrewIn"},
    };
    for (const auto& each : cases) {
        try {
            garden().rules(Garden::replaced(text, each.what, each.with));
            ADD_FAILURE() << each.with;
        } catch (const RulesError& error) {
            EXPECT_PRED_FORMAT2(testing::IsSubstring, each.message, error.what());
            EXPECT_PRED_FORMAT2(testing::IsSubstring, "garden.exp:", error.what());
        }
    }
    EXPECT_THROW(garden().rules("SCHEMA TOY; ENTITY"), RulesError);
    EXPECT_THROW(garden().rules(""), RulesError);
}

std::string repeated(std::string_view text, int times) {
    std::string result;
    for (int i = 0; i < times; ++i)
        result += text;
    return result;
}

/// Neither depth nor length of a text may take stack or memory out of proportion to it.
TEST(RulesText, HostileTextsEnd) {
    const std::string levels = repeated("FUNCTION F : INTEGER; ", 300);
    const struct {
        std::string rest;
        const char* told; ///< in the error, or in the remarks
    } cases[] = {
        {"FUNCTION F : INTEGER; RETURN (" + repeated("(", 100'000), "at most 500"},
        {"FUNCTION F : INTEGER; RETURN (1" + repeated(" + 1", 100'000), "at most 500"},
        {"FUNCTION F : INTEGER; RETURN (a" + repeated(".b", 100'000), "at most 500"},
        {"FUNCTION F : INTEGER; " + repeated("BEGIN ", 100'000), "at most 500"},
        {repeated("FUNCTION F : INTEGER; ", 100'000), "at most 500"},
        {levels + repeated("RETURN (1); END_FUNCTION; ", 300), "more levels of algorithms"},
        {"FUNCTION F(a : " + repeated("LIST OF ", 100'000) + "INTEGER) : INTEGER;", "at most 500"},
        {"FUNCTION F(a" + repeated(", a", 70'000) + " : INTEGER) : INTEGER; RETURN (1); END_FUNCTION;",
         "more parameters"},
        {"FUNCTION F : INTEGER; LOCAL a" + repeated(", a", 70'000) + " : INTEGER := 1; END_LOCAL; END_FUNCTION;",
         "more variables"},
        {"FUNCTION F : INTEGER; LOCAL a" + repeated(", a", 50'000) + " : INTEGER := F(1" + repeated(", 1", 50'000) +
             "); END_LOCAL; END_FUNCTION;",
         "parameters"},
        {"FUNCTION F(a" + repeated(", a", 50'000) + " : LIST [0 : F(1" + repeated(", 1", 50'000) +
             ")] OF INTEGER) : INTEGER;",
         "fewer names"},
        {"CONSTANT A : INTEGER := " + repeated("9", 100'000) + "; END_CONSTANT;", ""},
        {"CONSTANT A : STRING := '" + repeated("x", 100'000) + "'; END_CONSTANT;", ""},
    };
    for (const auto& each : cases) {
        std::string told;
        try {
            const Rules rules = garden().rules(Garden::text({}, each.rest));
            for (const VN_SDAI::VnIfcDiagnostic& remark : rules.remarks())
                told += remark.text() + '\n';
        } catch (const RulesError& error) {
            told = error.what();
        }
        EXPECT_PRED_FORMAT2(testing::IsSubstring, each.told, told.substr(0, 1000)) << each.rest.substr(0, 60);
        EXPECT_LT(told.size(), 1000u) << each.rest.substr(0, 60);
    }
}

TEST(RulesText, WhatCannotBeResolvedIsTold) {
    const struct {
        const char* clause;
        const char* rest;
        const char* remark;
        bool isCompiled;
    } cases[] = {
        {"WHERE A : Nobody > 1;", "", "found \"Nobody\", expected a name that is declared [rule-not-evaluated]", false},
        {"WHERE A : Nobody(1);", "", "found \"Nobody\", expected a function or an entity [rule-not-evaluated]", false},
        {"WHERE A : ToyShed\\Length > 1;", "", "[rule-not-evaluated]", false},
        {"WHERE A : F(1);", "FUNCTION F(x : Nothing) : LOGICAL; RETURN (TRUE); END_FUNCTION;",
         "rule F: expected a type, found \"Nothing\" [rule-not-evaluated]", true},
        {"WHERE A : 'TOY.TOYSHED' IN TYPEOF(SELF);", "",
         "rule ToyBed.A: expected the name of a type as TYPEOF gives it, found 'TOY.TOYSHED' [rule-text]", true},
        {"WHERE A : 'TOY.ToyBed' IN TYPEOF(SELF);", "", "expected 'TOY.TOYBED', found 'TOY.ToyBed' [rule-text]", true},
        {"WHERE A : SIZEOF(USEDIN(SELF, 'ToyGrowing.Bed')) >= 0;", "",
         "expected 'TOY.TOYGROWING.BED', found 'ToyGrowing.Bed' [rule-text]", true},
        {"WHERE A : SIZEOF(USEDIN(SELF, 'TOY.TOYGROWING.NOBED')) >= 0;", "",
         "expected a role: 'SCHEMA.ENTITY.ATTRIBUTE', found 'TOY.TOYGROWING.NOBED' [rule-text]", true},
        {"WHERE A : EXISTS(SELF.Plants);", "", "expected an attribute of ToyBed, found \"Plants\" [rule-text]", true},
        {"UNIQUE A : Plants;", "", "expected an attribute of ToyBed, found \"Plants\" [rule-not-evaluated]", false},
    };
    for (const auto& each : cases) {
        const Rules rules = garden().rules(Garden::text({{"ToyBed", each.clause}}, each.rest));
        std::string remarks;
        for (const VN_SDAI::VnIfcDiagnostic& remark : rules.remarks())
            remarks += remark.text() + '\n';
        EXPECT_PRED_FORMAT2(testing::IsSubstring, "garden.exp:", remarks);
        ASSERT_EQ(rules.remarks().size(), 1u) << remarks;
        const VN_SDAI::VnIfcDiagnostic& remark = rules.remarks().front();
        EXPECT_GT(remark.line, 1u);
        EXPECT_EQ(remark.severity, VN_SDAI::VnIfcDiagnostic::kInfo);
        const std::string expected = each.remark;
        EXPECT_PRED_FORMAT2(testing::IsSubstring, expected.substr(expected.rfind('[')), remarks);
        ASSERT_EQ(rules.rules().size(), 1u);
        EXPECT_EQ(rules.rules()[0].isCompiled, each.isCompiled) << each.clause;
        // Nothing that is not known is ever a violation, and nothing is silently kept.
        RulesCheckResult result;
        const std::string findings =
            findingsOf(rules, garden().model("#1=TOYBED('b',$,$,0.5,1,(),$,2);\n"), {}, &result);
        EXPECT_EQ(result.counts[0].evaluated, each.isCompiled && std::string_view(each.rest).empty() ? 1u : 0u);
        EXPECT_EQ(result.notEvaluated, each.isCompiled && !std::string_view(each.rest).empty() ? 1u : 0u) << findings;
    }
}

TEST(RulesText, IsFoundWhereTheUserHasIt) {
    namespace fs = std::filesystem;
    const fs::path folder = fs::path(testing::TempDir()) / "vnifc-rules-tests";
    const fs::path data = folder / "data" / "vnifc" / "rules";
    fs::create_directories(data);
    ::setenv("VNIFC_RULES", folder.c_str(), 1);
    ::setenv("XDG_DATA_HOME", (folder / "data").c_str(), 1);
    EXPECT_FALSE(Rules::find("TOY"));
    std::ofstream(data / "TOY.exp") << Garden::text({{"ToyBed", "WHERE A : Length > 9.;"}});
    EXPECT_EQ(Rules::find("TOY"), data / "TOY.exp");
    EXPECT_EQ(Rules::load(*Rules::find("TOY"), garden().schema()).rules().size(), 1u);
    std::ofstream(folder / "TOY.exp") << "nothing";
    EXPECT_EQ(Rules::find("TOY"), folder / "TOY.exp"); // the variable goes first
    EXPECT_THROW(Rules::load(folder / "TOY.exp", garden().schema()), RulesError);
    EXPECT_THROW(Rules::load(folder, garden().schema()), RulesError);
    EXPECT_THROW(Rules::load(folder / "absent.exp", garden().schema()), RulesError);
    fs::remove_all(folder);
}

} // namespace

} // namespace vnifc::test
