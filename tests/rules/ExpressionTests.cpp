// What expressions are worth (ISO 10303-11, clauses 12, 14 and 15), with and without indeterminate operands.
#include "Support.h"

namespace vnifc::test {

namespace {

constexpr std::string_view kPlants =
    "#1=TOYTREE('a','Oak',$,*,.SUMMER.,.T.,.U.,TOYMETRES(2.5),12.,((1.,2.),(3.,4.)));\n"
    "#2=TOYTREE('b',$,$,*,$,.F.,$,#99,3.,$);\n"
    "#3=TOYPLANT('c','Stra\\X\\DFe',\"23F\",'Rose',.NEVER.,.F.,.T.,TOYWHEN((1,2,3)));\n"
    "#4=TOYPLANT('d',$,$,'Rose',.SPRING.,.F.,$,TOYSEASON(.WINTER.));\n"
    "#5=TOYBED('e','Bed',$,4.,3,(#6,#7,#6),#8,2);\n"
    "#6=TOYPOINT((0.,1.));\n"
    "#7=TOYPOINT((0.,1.));\n"
    "#8=TOYGARDENER('Ann',.U.,3,1.5,.T.,.RAKE.,(TOYCOUNT(3),#10,TOYWORD('x')),('a','b'));\n"
    "#9=TOYGROWING('f',$,$,(#1,#3,#4),#5,(2001,2),(TOYCOUNT(3),#8));\n"
    "#10=TOYCLUB('Club',.T.,1,0.,.F.,(#8),$,(1,2));\n";

constexpr const char* kAlgorithms =
    "CONSTANT Dozen : INTEGER := 12; Seasons : SET OF ToySeason := [ToySeason.SPRING, AUTUMN]; END_CONSTANT;\n"
    "FUNCTION Twice(x : NUMBER) : NUMBER; RETURN (x + x); END_FUNCTION;\n"
    "FUNCTION Answer : INTEGER; RETURN (42); END_FUNCTION;\n"
    "FUNCTION AsSet(x : SET OF GENERIC) : SET OF GENERIC; RETURN (x); END_FUNCTION;\n"
    "FUNCTION AsBag(x : BAG OF GENERIC) : BAG OF GENERIC; RETURN (x); END_FUNCTION;\n"
    "FUNCTION AsList(x : LIST OF GENERIC) : LIST OF GENERIC; RETURN (x); END_FUNCTION;\n"
    "FUNCTION AsArray(x : ARRAY [3:5] OF OPTIONAL GENERIC) : GENERIC; RETURN (x); END_FUNCTION;\n"
    "FUNCTION AsMetres(x : ToyPositiveMetres) : GENERIC; RETURN (x); END_FUNCTION;\n";

class Expressions : public testing::Test {
protected:
    /// The value for an instance, and for no instance if its number is 0.
    std::string valueOf(const std::string& expression, std::uint64_t self = 0) const {
        try {
            const VN_SDAI::VnIfcEntityBase* const instance = m_model.find(self).openObject();
            return (instance ? m_rules.evaluate(expression, *instance) : m_rules.evaluate(expression, m_model))
                .toText();
        } catch (const RulesError& error) {
            return error.what();
        }
    }
    struct Case {
        const char* expression;
        const char* value;
        std::uint64_t self = 0;
    };
    void expect(const std::vector<Case>& cases) const {
        for (const Case& each : cases)
            EXPECT_EQ(valueOf(each.expression, each.self), each.value) << each.expression;
    }

    Garden m_garden;
    VN_SDAI::VnIfcModel m_model = m_garden.model(kPlants);
    Rules m_rules = m_garden.rules(
        Garden::replaced(Garden::text({}, kAlgorithms), "Area : ToyMetres := ?", "Area : ToyMetres := Length * Width"));
};

TEST_F(Expressions, Literals) {
    expect({{"12", "12"},
            {"1.5E3", "1500.0"},
            {"'it''s'", "'it''s'"},
            {"\"000000DF\"", "'\xC3\x9F'"},
            {"%0101", "%0101"},
            {"TRUE", "TRUE"},
            {"unknown", "UNKNOWN"},
            {"?", "?"},
            {"PI > 3.14", "TRUE"},
            {"CONST_E < 2.72", "TRUE"},
            {"Dozen", "12"},
            {"SUMMER", "SUMMER"},
            {"ToySeason.SUMMER", "SUMMER"},
            {"Answer", "42"},
            {"[1, 2 : 3, 'a']", "[1, 2, 2, 2, 'a']"},
            {"[1 : 0]", "[]"},
            {"[1 : ?]", "?"},
            {"[]", "[]"}});
}

TEST_F(Expressions, Arithmetic) {
    expect({{"1 + 2", "3"},      {"1 + 2.5", "3.5"},
            {"7 / 2", "3.5"},    {"1 / 0", "?"},
            {"7 DIV 2", "3"},    {"-7 DIV 2", "-3"},
            {"-7 MOD 2", "1"}, // 0 <= a MOD b < |b|
            {"7 MOD -2", "1"},   {"7.9 DIV 2.9", "3"},
            {"1 MOD 0", "?"},    {"2 ** 10", "1024"},
            {"2 ** -1", "0.5"},  {"(-8.) ** 0.5", "?"},
            {"-(3)", "-3"},      {"- 'a'", "?"},
            {"+ 2", "2"},        {"9223372036854775807 + 1", "?"},
            {"1 + ?", "?"},      {"? * 0", "?"},
            {"1 + 'a'", "?"},    {"2 * 3 + 4 * 5", "26"},
            {"10 - 2 - 3", "5"}, {"Twice(2) + Twice(0.5)", "5.0"},
            {"Twice(?)", "?"},   {"Twice('a')", "?"}});
}

TEST_F(Expressions, LogicOfThreeValues) {
    const char* const names[] = {"FALSE", "UNKNOWN", "TRUE"};
    for (int a = 0; a < 3; ++a) {
        EXPECT_EQ(valueOf(std::string("NOT ") + names[a]), names[2 - a]);
        for (int b = 0; b < 3; ++b) {
            const std::string left = names[a], right = names[b];
            EXPECT_EQ(valueOf(left + " AND " + right), names[std::min(a, b)]) << left << right;
            EXPECT_EQ(valueOf(left + " OR " + right), names[std::max(a, b)]) << left << right;
            EXPECT_EQ(valueOf(left + " XOR " + right), a == 1 || b == 1 ? "UNKNOWN"
                                                       : a != b         ? "TRUE"
                                                                        : "FALSE")
                << left << right;
            EXPECT_EQ(valueOf(left + " < " + right), a < b ? "TRUE" : "FALSE") << left << right;
        }
    }
    expect({{"? AND FALSE", "FALSE"},
            {"? AND TRUE", "UNKNOWN"},
            {"TRUE OR ?", "TRUE"},
            {"FALSE OR ?", "UNKNOWN"},
            {"? XOR TRUE", "UNKNOWN"},
            {"NOT ?", "UNKNOWN"}});
}

TEST_F(Expressions, Comparisons) {
    expect({{"1 = 1.0", "TRUE"},
            {"1 <> 2", "TRUE"},
            {"1 = ?", "UNKNOWN"},
            {"? = ?", "UNKNOWN"},
            {"? <> ?", "UNKNOWN"},
            {"? :=: ?", "UNKNOWN"},
            {"1 < ?", "UNKNOWN"},
            {"'abc' < 'abd'", "TRUE"},
            {"'a' < 'ab'", "TRUE"},
            {"'a' = 'A'", "FALSE"},
            {"%01 = %01", "TRUE"},
            {"%01 = %001", "FALSE"},
            {"ToySeason.SPRING < ToySeason.AUTUMN", "TRUE"},
            {"WINTER > ToySeason.AUTUMN", "TRUE"},
            {"SPRING = ToySeason.SPRING", "TRUE"},
            {"[1, 2] = [1, 2]", "TRUE"},
            {"[1, 2] = [2, 1]", "FALSE"},
            {"[1, 2] = [1]", "FALSE"},
            {"[1, ?] = [1, 2]", "UNKNOWN"},
            {"[2, ?] = [1, 2]", "FALSE"},
            {"AsSet([1, 2]) = AsSet([2, 1])", "TRUE"},
            {"AsBag([1, 1, 2]) = AsBag([1, 2, 2])", "FALSE"},
            {"AsBag([1, ?]) = AsBag([1, 3])", "UNKNOWN"},
            {"{1 <= 2 < 3}", "TRUE"},
            {"{1 < 1 < 3}", "FALSE"},
            {"{1 <= 3 < 3}", "FALSE"},
            {"{1 <= ? < 3}", "UNKNOWN"},
            {"{? <= 5 < 3}", "FALSE"},
            {"2 IN [1, 2]", "TRUE"},
            {"3 IN [1, 2]", "FALSE"},
            {"3 IN [1, ?]", "UNKNOWN"},
            {"1 IN [1, ?]", "TRUE"},
            {"? IN [1]", "UNKNOWN"},
            {"1 IN ?", "UNKNOWN"},
            {"SPRING IN Seasons", "TRUE"},
            {"WINTER IN Seasons", "FALSE"}});
}

TEST_F(Expressions, Patterns) {
    expect({{"'abc' LIKE 'a?c'", "TRUE"},     {"'abc' LIKE 'a'", "FALSE"},       {"'aBc' LIKE '@^@'", "TRUE"},
            {"'abc' LIKE '@^@'", "FALSE"},    {"'a1' LIKE '@#'", "TRUE"},        {"'a1x' LIKE '@#'", "FALSE"},
            {"'ab cd' LIKE '$ $'", "TRUE"},   {"'ab cd' LIKE '$'", "FALSE"},     {"'abcxyz' LIKE 'a*z'", "TRUE"},
            {"'abcxyz' LIKE 'a*y'", "FALSE"}, {"'aaab' LIKE '*ab'", "TRUE"},     {"'abc' LIKE 'a&'", "TRUE"},
            {"'a*' LIKE 'a\\*'", "TRUE"},     {"'ab' LIKE 'a\\*'", "FALSE"},     {"'ab' LIKE 'a!b'", "FALSE"},
            {"'ac' LIKE 'a!b'", "TRUE"},      {"'ab' LIKE '!#!#'", "TRUE"},      {"'' LIKE '*'", "TRUE"},
            {"? LIKE '*'", "UNKNOWN"},        {"Name LIKE '????\?e'", "TRUE", 3}}); // the sharp s is one character
}

TEST_F(Expressions, Texts) {
    expect({{"'ab' + 'cd'", "'abcd'"},
            {"'ab' + ?", "?"},
            {"%01 + %1", "%011"},
            {"'abcd'[2]", "'b'"},
            {"'abcd'[2:3]", "'bc'"},
            {"'abcd'[0]", "?"},
            {"'abcd'[3:9]", "?"},
            {"'abcd'[?]", "?"},
            {"%0110[2:3]", "%11"},
            {"Name",
             "'Stra\xC3\x9F"
             "e'",
             3},
            {"Name[5]", "'\xC3\x9F'", 3},
            {"LENGTH(Name)", "6", 3},
            {"Picture", "%111111", 3}, // two bits of 3F are not used
            {"BLENGTH(Picture)", "6", 3}});
}

TEST_F(Expressions, AlgebraOfAggregates) {
    expect({{"AsSet([1, 1, 2])", "[1, 2]"},
            {"AsBag([1, 1, 2])", "[1, 1, 2]"},
            {"AsSet([1, 2]) + AsSet([2, 3])", "[1, 2, 3]"},
            {"AsSet([1, 2]) + 2", "[1, 2]"},
            {"3 + AsSet([1])", "[3, 1]"},
            {"AsBag([1]) + AsBag([1])", "[1, 1]"},
            {"AsList([1]) + AsList([1])", "[1, 1]"},
            {"AsList([1]) + 2", "[1, 2]"},
            {"0 + AsList([1])", "[0, 1]"},
            {"AsSet([1]) + ?", "?"},
            {"AsSet([1, 2]) * AsSet([2, 3])", "[2]"},
            {"AsBag([1, 1, 2]) * AsBag([1, 1, 1])", "[1, 1]"},
            {"AsSet([1, 2]) - AsSet([2])", "[1]"},
            {"AsBag([1, 1, 2]) - AsBag([1])", "[1, 2]"},
            {"AsBag([1, 1, 2]) - 1", "[1, 2]"},
            {"AsSet([1, 2]) - [2]", "[1]"},
            {"AsSet([1]) <= AsSet([1, 2])", "TRUE"},
            {"AsSet([3]) <= AsSet([1, 2])", "FALSE"},
            {"AsBag([1, 1]) <= AsBag([1, 2])", "FALSE"},
            {"AsSet([1, 2]) >= AsSet([1])", "TRUE"},
            {"AsSet([1]) <= ?", "UNKNOWN"},
            {"? * AsSet([1])", "?"},
            {"AsArray([1, 2])[3]", "1"},
            {"AsArray([1, 2])[1]", "?"},
            {"AsArray([1, 2])", "[1, 2, ?]"},
            {"[5, 6][2]", "6"},
            {"[5, 6][3]", "?"},
            {"[5, 6][?]", "?"},
            {"(?)[1]", "?"},
            {"[[1, 2], [3]][1][2]", "2"}});
}

TEST_F(Expressions, Queries) {
    expect({{"QUERY(x <* [1, 2, 3] | x > 1)", "[2, 3]"},
            {"QUERY(x <* [1, ?, 3] | x > 1)", "[3]"}, // UNKNOWN takes nothing
            {"QUERY(x <* ? | TRUE)", "?"},
            {"SIZEOF(QUERY(x <* [1, 2, 3] | x > 1))", "2"},
            {"SIZEOF(QUERY(x <* ? | TRUE))", "?"},
            {"QUERY(x <* AsArray([1, 2]) | x > 1)", "[?, 2, ?]"},
            {"SIZEOF(QUERY(x <* AsArray([1, 2]) | x > 1))", "3"},
            {"QUERY(x <* [[1], [2, 3]] | SIZEOF(QUERY(y <* x | y > 2)) = 1)", "[[2, 3]]"},
            {"QUERY(p <* Plants | p.IsEdible)", "[#1]", 9},
            {"QUERY(p <* Plants | 'TOY.TOYTREE' IN TYPEOF(p))", "[#1]", 9}});
}

TEST_F(Expressions, AttributesAndGroups) {
    expect({{"SELF", "#1", 1},
            {"Height", "12.0", 1},
            {"SELF.Height * 2", "24.0", 1},
            {"SELF\\ToyPlant.IsEdible", "TRUE", 1},
            {"SELF\\ToyBed", "?", 1},
            {"SELF\\ToyBed.Length", "?", 1},
            {"Kind", "?", 1}, // derived, and without a value
            {"IsRare", "UNKNOWN", 1},
            {"Blooms", "SUMMER", 1},
            {"Blooms < AUTUMN", "TRUE", 1},
            {"Size", "2.5", 1},
            {"Name", "?", 2},
            {"Size", "expression: not evaluated: #99 is not in the model, so that it is not known", 2},
            {"Size", "[1, 2, 3]", 3},
            {"Size[2]", "2", 3},
            {"Size = WINTER", "TRUE", 4},
            {"RingWidths[2][1]", "3.0", 1},
            {"RingWidths[3][1]", "?", 1},
            {"Corners", "[#6, #7, #6]", 5},
            {"Corners[1].Coordinates[2]", "1.0", 5},
            {"Corners[1] = Corners[2]", "TRUE", 5},    // by value
            {"Corners[1] :=: Corners[2]", "FALSE", 5}, // by instance
            {"Corners[1] :<>: Corners[2]", "TRUE", 5},
            {"Corners[1] :=: Corners[3]", "TRUE", 5},
            {"SIZEOF(AsSet(Corners))", "2", 5},
            {"Owner.Called", "'Ann'", 5},
            {"Owner.Likes[3]\\ToyClub.Members", "[#8]", 5},
            {"Owner.Likes", "[3, 'x', #10]", 5},
            {"Owner = Owner.Likes[3]\\ToyClub.Members[1]", "TRUE", 5}, // they refer to each other
            {"Area", "12.0", 5},
            {"Grows", "[#9]", 5},
            {"SIZEOF(Neighbours)", "0", 5},
            {"GrowsIn[1].Bed.Rows", "2", 1},
            {"SIZEOF(GrowsIn)", "0", 2},
            {"GrowsIn[1]", "?", 2},
            {"(?).Height", "?"},
            {"(1).Height", "?"}});
}

TEST_F(Expressions, EntityValues) {
    expect({{"ToyPoint([1, 2])", "ToyPoint([1.0, 2.0])"},
            {"ToyPoint([1, 2]).Coordinates[2]", "2.0"},
            {"ToyPoint([0, 1]) = SELF", "TRUE", 6},
            {"ToyPoint([0, 2]) = SELF", "FALSE", 6},
            {"ToyPoint([0, 1]) :=: SELF", "FALSE", 6},
            {"ToyPoint([0, ?]) = SELF", "UNKNOWN", 6},
            {"'TOY.TOYPOINT' IN TYPEOF(ToyPoint([1, 2]))", "TRUE"},
            {"(ToyThing('x', ?, ?) || ToyBed(2, 3, [], ?, 1)).Area", "6.0"},
            {"(ToyThing('x', ?, ?) || ToyBed(2, 3, [], ?, 1))\\ToyThing.Id", "'x'"},
            {"(ToyThing('x', ?, ?) || ?).Id", "?"},
            {"'TOY.TOYTHING' IN TYPEOF(ToyThing('x', ?, ?) || ToyBed(2, 3, [], ?, 1))", "TRUE"}});
}

TEST_F(Expressions, Types) {
    expect({{"TYPEOF(1)", "['INTEGER', 'NUMBER', 'REAL']"},
            {"TYPEOF('a')", "['STRING']"},
            {"TYPEOF(TRUE)", "['BOOLEAN', 'LOGICAL']"},
            {"TYPEOF(UNKNOWN)", "['LOGICAL']"},
            {"TYPEOF(AsSet([]))", "['SET']"},
            {"TYPEOF(?)", "?"},
            {"'INTEGER' IN TYPEOF(?)", "UNKNOWN"},
            {"TYPEOF(IsRare)", "['LOGICAL', 'TOY.TOYMAYBE', 'TOY.TOYSIZE', 'TOY.TOYANYTHING']", 3},
            {"TYPEOF(Size)", "['NUMBER', 'REAL', 'TOY.TOYMETRES', 'TOY.TOYSIZE', 'TOY.TOYANYTHING']", 1},
            {"TYPEOF(AsMetres(2))",
             "['NUMBER', 'REAL', 'TOY.TOYMETRES', 'TOY.TOYPOSITIVEMETRES', 'TOY.TOYSIZE', 'TOY.TOYANYTHING']"},
            {"TYPEOF(Size)", "['LIST', 'TOY.TOYWHEN', 'TOY.TOYSIZE', 'TOY.TOYANYTHING']", 3},
            {"TYPEOF(Size)", "['TOY.TOYSEASON', 'TOY.TOYSIZE', 'TOY.TOYANYTHING']", 4},
            {"TYPEOF(Corners)", "['LIST']", 5},
            {"TYPEOF(Plants)", "['SET']", 9},
            {"TYPEOF(SELF)", "['TOY.TOYTREE', 'TOY.TOYTHING', 'TOY.TOYPLANT']", 1},
            {"TYPEOF(Owner)", "['TOY.TOYOWNER', 'TOY.TOYANYTHING', 'TOY.TOYMEMBER', 'TOY.TOYGARDENER']", 5},
            {"'TOY.TOYPLANT' IN TYPEOF(SELF)", "TRUE", 1},
            {"'TOY.TOYBED' IN TYPEOF(SELF)", "FALSE", 1},
            {"SIZEOF(TYPEOF(SELF) * ['TOY.TOYPLANT', 'TOY.TOYBED', 'TOY.TOYPLANT'])", "1", 1},
            {"SIZEOF(['TOY.TOYPLANT', 'TOY.TOYTREE'] * TYPEOF(SELF))", "2", 1},
            {"SIZEOF(TYPEOF(?) * ['TOY.TOYPLANT'])", "?"}});
}

TEST_F(Expressions, Uses) {
    expect({{"USEDIN(SELF, 'TOY.TOYGROWING.PLANTS')", "[#9]", 1},
            {"USEDIN(SELF, 'TOY.TOYGROWING.BED')", "[#9]", 5},
            {"USEDIN(SELF, 'TOY.TOYBED.CORNERS')", "[#5, #5]", 6}, // a BAG: once for each use
            {"SIZEOF(USEDIN(SELF, ''))", "3", 8},
            {"USEDIN(SELF, 'TOY.TOYGROWING.PLANTS')", "[]", 5},
            {"USEDIN(SELF, 'TOY.TOYGROWING.' + 'NOTES')", "[#9]", 8},
            {"USEDIN(?, '')", "?"},
            {"USEDIN(SELF, ?)", "?", 1},
            {"ROLESOF(SELF)", "['TOY.TOYBED.OWNER', 'TOY.TOYGROWING.NOTES', 'TOY.TOYCLUB.MEMBERS']", 8},
            {"ROLESOF(SELF)", "[]", 2},
            {"ROLESOF(?)", "?"}});
}

TEST_F(Expressions, BuiltInFunctions) {
    expect({{"ABS(-3)", "3"},
            {"ABS(-2.5)", "2.5"},
            {"ABS(?)", "?"},
            {"SQRT(9.)", "3.0"},
            {"SQRT(-1)", "?"},
            {"LOG10(1000) = 3", "TRUE"},
            {"LOG2(8)", "3.0"},
            {"LOG(0)", "?"},
            {"EXP(0)", "1.0"},
            {"COS(0) + SIN(0) + TAN(0)", "1.0"},
            {"ACOS(1) + ASIN(0)", "0.0"},
            {"ACOS(2)", "?"},
            {"ATAN(0, 1)", "0.0"},
            {"ATAN(0, 0)", "?"},
            {"ODD(3)", "TRUE"},
            {"ODD(-4)", "FALSE"},
            {"ODD(?)", "?"},
            {"EXISTS(?)", "FALSE"},
            {"EXISTS(0)", "TRUE"},
            {"EXISTS(Name)", "FALSE", 2},
            {"NVL(?, 5)", "5"},
            {"NVL(4, 5)", "4"},
            {"SIZEOF([])", "0"},
            {"SIZEOF(?)", "?"},
            {"HIINDEX([5, 6])", "2"},
            {"HIINDEX(?)", "?"},
            {"HIINDEX(AsArray([]))", "5"},
            {"LOINDEX(AsArray([]))", "3"},
            {"LOINDEX([5])", "1"},
            {"LOBOUND(Plants)", "1", 9},
            {"HIBOUND(Plants)", "?", 9},
            {"HIBOUND(Since)", "3", 9},
            {"LENGTH('')", "0"},
            {"BLENGTH(%0011)", "4"},
            {"VALUE('12')", "12"},
            {"VALUE('1.5E2')", "150.0"},
            {"VALUE('abc')", "?"},
            {"VALUE_IN([1, 2], 2)", "TRUE"},
            {"VALUE_IN(Corners, ToyPoint([0, 1]))", "TRUE", 5},
            {"VALUE_IN([1, ?], 2)", "UNKNOWN"},
            {"VALUE_UNIQUE([1, 2])", "TRUE"},
            {"VALUE_UNIQUE([1, 1])", "FALSE"},
            {"VALUE_UNIQUE([1, ?])", "UNKNOWN"},
            {"VALUE_UNIQUE(Corners)", "FALSE", 5},
            {"FORMAT(123.456789, '8.2F')", "'  123.46'"},
            {"FORMAT(32, '5I')", "'   32'"},
            {"FORMAT(32, '+5I')", "'  +32'"},
            {"FORMAT(123.456789, '8.2E')", "'1.23E+02'"},
            {"FORMAT(123.456789, '###.##')", "'123.46'"},
            {"FORMAT(1, '+')", "?"},
            {"FORMAT(?, '5I')", "?"}});
}

/// Each operator, qualifier and function with an operand that has no value (clauses 12 and 15).
TEST_F(Expressions, IndeterminateOperands) {
    for (const char* expression : {"-(?)",
                                   "+ ?",
                                   "? - 1",
                                   "1 - ?",
                                   "? * 2",
                                   "2 * ?",
                                   "? / 2",
                                   "2 / ?",
                                   "? DIV 2",
                                   "2 DIV ?",
                                   "? MOD 2",
                                   "2 MOD ?",
                                   "? ** 2",
                                   "2 ** ?",
                                   "? + 'a'",
                                   "%0 + ?",
                                   "? + [1]",
                                   "AsSet([1]) - ?",
                                   "? - AsSet([1])",
                                   "AsSet([1]) * ?",
                                   "? || ToyPoint([1, 2])",
                                   "? || ?",
                                   "'abc'[?:2]",
                                   "'abc'[1:?]",
                                   "(?)[1:2]",
                                   "(?)\\ToyBed",
                                   "(?)\\ToyBed.Area",
                                   "ToyPoint([1, 2]).Coordinates[?]",
                                   "ToyPoint(?).Coordinates",
                                   "[?][1]",
                                   "NVL(?, ?)",
                                   "ATAN(?, 1)",
                                   "ATAN(1, ?)",
                                   "FORMAT(1, ?)",
                                   "USEDIN(?, ?)"})
        EXPECT_EQ(valueOf(expression), "?") << expression;
    for (const char* function : {"ABS",     "ACOS",    "ASIN",   "COS",     "EXP",     "LOG",    "LOG2",    "LOG10",
                                 "SIN",     "SQRT",    "TAN",    "ODD",     "BLENGTH", "LENGTH", "HIBOUND", "HIINDEX",
                                 "LOBOUND", "LOINDEX", "SIZEOF", "ROLESOF", "TYPEOF",  "VALUE",  "Twice"})
        EXPECT_EQ(valueOf(std::string(function) + "(?)"), "?") << function;
    for (const char* expression : {"? > 1",
                                   "1 >= ?",
                                   "? <= ?",
                                   "'a' < ?",
                                   "? <> 1",
                                   "[1] = ?",
                                   "? = ToyPoint([1, 2])",
                                   "? :<>: 1",
                                   "ToyPoint([1, 2]) :=: ?",
                                   "? IN ?",
                                   "'a' LIKE ?",
                                   "? >= AsSet([1])",
                                   "{? < 1 < 2}",
                                   "{0 < 1 < ?}",
                                   "{0 < ? <= 2}",
                                   "TRUE XOR ?",
                                   "? AND ?",
                                   "? OR UNKNOWN",
                                   "'SET' IN TYPEOF(?)",
                                   "VALUE_IN(?, 1)",
                                   "VALUE_IN([1], ?)",
                                   "VALUE_UNIQUE(?)"})
        EXPECT_EQ(valueOf(expression), "UNKNOWN") << expression;
    expect({{"{2 < 1 < ?}", "FALSE"},
            {"QUERY(x <* [1] | ?)", "[]"},
            {"SIZEOF([?, ?])", "2"},
            {"[? : 2]", "[?, ?]"},
            {"ToyPoint(?)", "ToyPoint(?)"},
            {"EXISTS([?])", "TRUE"}});
}

TEST_F(Expressions, ADerivedAttributeHasItsValueByName) {
    const VN_SDAI::VnIfcEntityBase& bed = *m_model.find(5).openObject();
    EXPECT_EQ(m_rules.derivedAttributes(bed), std::vector<std::string>{"Area"});
    EXPECT_EQ(m_rules.derived(bed, "AREA").real, 12);
    EXPECT_EQ(m_rules.derived(bed, "AREA").type, "ToyMetres");
    EXPECT_FALSE(m_rules.derived(bed, "Length").exists()); // has a value, but is not derived
    EXPECT_EQ(m_rules.derivedAttributes(*m_model.find(1).openObject()), std::vector<std::string>{"Kind"});
}

TEST_F(Expressions, WhatIsNoExpressionIsRefusedWithItsPlace) {
    for (const auto& [expression, message] : std::vector<std::pair<const char*, const char*>>{
             {"1 +", "expression:1:4: found the end of the text, expected an expression"},
             {"1 2", "expression:1:3: found \"2\", expected the end of the expression"},
             {"Nobody", "expression:1:1: found \"Nobody\", expected a name that is declared"},
             {"SELF", "expression:1:1: found \"SELF\", expected an expression; SELF stands in entities and types only"},
             {"(1).Nothing", "expression:1:5: found \"Nothing\", expected the name of an attribute"},
             {"Twice(1, 2)", "expression:1:1: found 2 parameters, expected 1 of Twice"},
             {"ToyPoint()", "expression:1:1: found 0 parameters, expected 1 for the explicit attributes of ToyPoint"},
             {"ToySeason.RAKE", "expression:1:11: found \"RAKE\", expected a literal of ToySeason"},
             {"(1)\\Twice", "expression:1:5: found \"Twice\", expected the name of an entity"}})
        EXPECT_EQ(valueOf(expression), message) << expression;
}

} // namespace

} // namespace vnifc::test
