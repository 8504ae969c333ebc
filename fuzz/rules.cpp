// Any bytes as choices: a model of the tests' own schema and rules for it, made of every kind of expression and
// statement; or as the text itself, of a schema or of one expression. Whatever they are, evaluations end within their
// limits, counts and findings agree, results do not depend on how often, on how many threads or beside what a rule is
// evaluated, the laws of the logic hold, and the model stays as it is.
#include <TOY/Module.h>
#include <VnIfcCore/VnIfcModel.h>
#include <VnIfcCore/VnIfcSchema.h>
#include <vnifc/Rules.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <span>
#include <string>
#include <string_view>
#include <vector>

using namespace vnifc;

namespace {

void require(bool holds) {
    if (!holds)
        std::abort();
}

/// What the bytes choose; the first of the alternatives once they are used up.
class Choices {
public:
    explicit Choices(std::span<const std::uint8_t> bytes) : m_bytes(bytes) {}

    std::size_t below(std::size_t count) { return next() % count; }
    bool isOver() const { return m_next == m_bytes.size(); }

private:
    std::size_t next() { return isOver() ? 0 : m_bytes[m_next++]; }

    std::span<const std::uint8_t> m_bytes;
    std::size_t m_next = 0;
};

using Templates = std::span<const std::string_view>;

// "$" and a letter stand for something made by the templates of that letter: number, logical, string, aggregate,
// entity, any value, statement (Z). "$<" names the variable of a query, which is there from "$|" to "$>"; "$q" is the
// innermost one.
// "$M" is SELF, or a parameter in algorithms. Those in front hold nothing else.
constexpr std::size_t kLeaves = 3;
constexpr std::string_view kNumbers[] = {"1",
                                         "0",
                                         "$M\\ToyBed.Length",
                                         "-3",
                                         "2.5",
                                         "9223372036854775807",
                                         "1.0E308",
                                         "$M\\ToyBed.Rows",
                                         "Dozen",
                                         "n",
                                         "PI",
                                         "SIZEOF($A)",
                                         "($N + $N)",
                                         "($N - $N)",
                                         "($N * $N)",
                                         "($N / $N)",
                                         "($N DIV $N)",
                                         "($N MOD $N)",
                                         "($N ** $N)",
                                         "-($N)",
                                         "ABS($N)",
                                         "SQRT($N)",
                                         "LOG10($N)",
                                         "ATAN($N, $N)",
                                         "HIINDEX($A)",
                                         "LOINDEX($A)",
                                         "HIBOUND($A)",
                                         "LOBOUND($A)",
                                         "NVL($X, $N)",
                                         "LENGTH($S)",
                                         "VALUE($S)",
                                         "Twice($X, $N)",
                                         "Deep($N, $X)",
                                         "($A)[$N]",
                                         "$q",
                                         "$E\\ToyBed.Area",
                                         "$E\\ToyTree.Height"};
constexpr std::string_view kLogicals[] = {"TRUE",
                                          "FALSE",
                                          "UNKNOWN",
                                          "EXISTS($X)",
                                          "($L AND $L)",
                                          "($L OR $L)",
                                          "($L XOR $L)",
                                          "NOT($L)",
                                          "($N < $N)",
                                          "($N >= $N)",
                                          "($X = $X)",
                                          "($X <> $X)",
                                          "($X :=: $X)",
                                          "($X :<>: $X)",
                                          "($X IN $A)",
                                          "($S LIKE $S)",
                                          "{$N < $N <= $N}",
                                          "{$N <= $X < $X}",
                                          "($A <= $A)",
                                          "($A >= $A)",
                                          "($A = $A)",
                                          "('TOY.TOYTREE' IN TYPEOF($X))",
                                          "($S IN TYPEOF($X))",
                                          "VALUE_UNIQUE($A)",
                                          "VALUE_IN($A, $X)",
                                          "ODD($N)",
                                          "$E\\ToyMember.Works",
                                          "$q",
                                          "l",
                                          "Holds($X)",
                                          "(SIZEOF(QUERY($< <* $A $| $L)) = 0)$>",
                                          "(SIZEOF(['TOY.TOYBED', 'TOY.TOYTREE'] * TYPEOF($E)) > 0)"};
constexpr std::string_view kStrings[] = {"'a'",
                                         "''",
                                         "$M\\ToyThing.Name",
                                         "'@#&'",
                                         "'\\*?$'",
                                         "'!a'",
                                         "\"000000DF\"",
                                         "'TOY.TOYBED'",
                                         "'TOY.TOYBED.OWNER'",
                                         "$E\\ToyPlant.Kind",
                                         "$E\\ToyMember.Called",
                                         "($S + $S)",
                                         "$S[$N]",
                                         "$S[$N:$N]",
                                         "FORMAT($N, $S)",
                                         "FORMAT($N, '+8.3F')",
                                         "($A)[$N]",
                                         "$q"};
constexpr std::string_view kAggregates[] = {"[]",
                                            "[1, 2]",
                                            "$M\\ToyBed.Corners",
                                            "[$X]",
                                            "[$X, $X, $X]",
                                            "[$X : $N]",
                                            "[$X : 2, $X]",
                                            "($A + $A)",
                                            "($A * $A)",
                                            "($A - $A)",
                                            "($A + $X)",
                                            "($X + $A)",
                                            "($A - $X)",
                                            "QUERY($< <* $A $| $L)$>",
                                            "TYPEOF($X)",
                                            "USEDIN($E, 'TOY.TOYBED.CORNERS')",
                                            "USEDIN($E, '')",
                                            "USEDIN($E, $S)",
                                            "ROLESOF($E)",
                                            "$E\\ToyBed.Grows",
                                            "$E\\ToyBed.Neighbours",
                                            "$E\\ToyGrowing.Notes",
                                            "$E\\ToyGrowing.Since",
                                            "$E\\ToyTree.RingWidths",
                                            "$E\\ToyClub.Members",
                                            "$E\\ToyGardener.Likes",
                                            "$E\\ToyPoint.Coordinates",
                                            "$E\\ToyPlant.GrowsIn",
                                            "a",
                                            "$q",
                                            "Filled($N, $X)"};
constexpr std::string_view kEntities[] = {"$M",
                                          "ToyPoint([1.0, 2.0])",
                                          "$M\\ToyBed.Owner",
                                          "ToyPoint($A)",
                                          "ToyThing($S, $X, ?)",
                                          "($E || $E)",
                                          "(ToyThing($S, $S, ?) || ToyPlant($S, $X, $L, $L, $X))",
                                          "$E\\ToyThing",
                                          "$E\\ToyGrowing.Bed",
                                          "($A)[$N]",
                                          "e",
                                          "$q"};
constexpr std::string_view kValues[] = {"?",
                                        "ToySeason.SPRING",
                                        "%101",
                                        "$N",
                                        "$L",
                                        "$S",
                                        "$A",
                                        "$E",
                                        "$M\\ToyPlant.Size",
                                        "$E\\ToyPlant.Blooms",
                                        "$E\\ToyThing.Picture",
                                        "x"};
constexpr std::string_view kStatements[] = {
    ";",
    "n := n + 1;",
    "x := a;",
    "x := $X;",
    "n := $N;",
    "l := $L;",
    "a := $A;",
    "e := $E;",
    "a[$N] := $X;",
    "b[$N][$N] := $N;",
    "e\\ToyPoint.Coordinates := $A;",
    "e\\ToyPoint.Coordinates[$N] := $N;",
    "b := $A;",
    "INSERT(a, $X, $N);",
    "REMOVE(a, $N);",
    "BEGIN Change(x); Change(a); Change(n); END;",
    "IF $L THEN $Z $Z ELSE $Z END_IF;",
    "BEGIN $Z $Z END;",
    "REPEAT i := $N TO $N BY $N; $Z IF $L THEN SKIP; END_IF; n := i; $Z END_REPEAT;",
    "REPEAT i := 1 TO $N WHILE $L UNTIL $L; $Z END_REPEAT;",
    "REPEAT UNTIL $L; $Z $Z END_REPEAT;",
    "REPEAT; $Z IF $L THEN ESCAPE; END_IF; $Z END_REPEAT;",
    "CASE $X OF $X, $X : $Z $X : $Z OTHERWISE : $Z END_CASE;",
    "ALIAS t FOR a[$N]; t := $X; $Z END_ALIAS;",
    "ALIAS t FOR e\\ToyPoint.Coordinates; $Z END_ALIAS;",
    "RETURN($X);"};

/// Texts of expressions and statements.
class Writer {
public:
    Writer(Choices& choices, bool isInAlgorithm) : m_choices(choices), m_isInAlgorithm(isInAlgorithm) {}

    std::string made(char letter) {
        std::string text;
        put(text, letter);
        return text;
    }

private:
    static Templates templatesOf(char letter) {
        switch (letter) {
        case 'N':
            return kNumbers;
        case 'L':
            return kLogicals;
        case 'S':
            return kStrings;
        case 'A':
            return kAggregates;
        case 'E':
            return kEntities;
        case 'Z':
            return kStatements;
        default:
            return kValues;
        }
    }

    void put(std::string& text, char letter) {
        constexpr std::size_t kDeepest = 8, kLongest = 20'000;
        const Templates all = templatesOf(letter);
        const bool isLeaf = m_depth >= kDeepest || text.size() > kLongest || m_choices.isOver();
        ++m_depth;
        expand(text, all[m_choices.below(isLeaf ? kLeaves : all.size())]);
        --m_depth;
    }

    void expand(std::string& text, std::string_view form) {
        for (std::size_t i = 0; i < form.size(); ++i) {
            if (form[i] != '$' || i + 1 == form.size() || form[i + 1] == '\'')
                text += form[i];
            else
                putSpecial(text, form[++i]);
        }
    }

    void putSpecial(std::string& text, char letter) {
        if (letter == '<') {
            text += 'q' + std::to_string(m_queries + 1);
        } else if (letter == '|') {
            text += '|';
            ++m_queries;
        } else if (letter == '>')
            --m_queries;
        else if (letter == 'q')
            text += m_queries > 0 ? 'q' + std::to_string(m_queries) : "(?)";
        else if (letter == 'M')
            text += m_isInAlgorithm ? "e" : "SELF";
        else
            put(text, letter);
    }

    Choices& m_choices;
    bool m_isInAlgorithm;
    std::size_t m_depth = 0;
    std::size_t m_queries = 0;
};

const VN_SDAI::VnIfcSchema& schema() {
    static const VN_SDAI::VnModule module(TOY::vnToyModule());
    return *module.schema();
}

const std::string& declarations() {
    static const std::string text = [] {
        std::ifstream file(VNIFC_TOY "/declarations.exp", std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    }();
    return text;
}

void insertBefore(std::string& text, std::string_view declaration, std::string_view ending, std::string_view clause) {
    const std::size_t begin = text.find(declaration);
    require(begin != text.npos);
    text.insert(text.find(ending, begin), clause);
}

constexpr const char* kVariables = "LOCAL n : NUMBER := 2; l : LOGICAL; a : LIST OF GENERIC := [1, 2.5, 'a'];\n"
                                   "b : ARRAY [0:2] OF OPTIONAL LIST [0:3] OF NUMBER; e : GENERIC := p; END_LOCAL;\n";
/// For rules, which have no variables.
constexpr const char* kConstants =
    "CONSTANT Dozen : INTEGER := 12; n : NUMBER := 0.5; l : LOGICAL := ?; a : SET OF NUMBER := [1, 2, 2.5];\n"
    "e : ToyPoint := ToyPoint([1.0, 2.0]); x : GENERIC := 'x'; END_CONSTANT;\n";

std::string madeText(Choices& choices) {
    std::string text = declarations();
    const auto made = [&](char letter, bool isInAlgorithm = false) {
        return Writer(choices, isInAlgorithm).made(letter);
    };
    const auto body = [&](const char* last) {
        return kVariables + made('Z', true) + made('Z', true) + made('Z', true) + last;
    };
    const std::string logical = made('L'), other = made('L');
    insertBefore(text, "ENTITY ToyBed", "END_ENTITY",
                 "WHERE Law1 : NOT(" + logical + " AND " + other + ") = (NOT(" + logical + ") OR NOT(" + other +
                     "));\nLaw2 : (" + logical + " XOR " + other + ") = (" + other + " XOR " + logical +
                     ");\nA : " + made('L') + ";\nB : Holds(" + made('X') + ");\n");
    insertBefore(text, "ENTITY ToyThing", "END_ENTITY", "WHERE C : " + made('L') + ";\n");
    insertBefore(text, "TYPE ToyMetres", "END_TYPE", "WHERE D : {0 <= SELF < " + made('N') + "};\n");
    text.replace(text.find("Area : ToyMetres := ?"), 21, "Area : ToyMetres := " + made('N'));
    text.insert(text.rfind("END_SCHEMA"),
                kConstants + std::string("FUNCTION Twice(p : GENERIC; x : NUMBER) : NUMBER;\n") + "RETURN (x + x); " +
                    "END_FUNCTION;\nFUNCTION Holds(x : GENERIC) : LOGICAL;\nLOCAL p : GENERIC := x; END_LOCAL;\n" +
                    "RETURN (Deep(2, x) = x);\nEND_FUNCTION;\nPROCEDURE Change(VAR x : GENERIC);\n" +
                    "x := [x, x];\nEND_PROCEDURE;\nFUNCTION Filled(p, x : GENERIC) : LIST OF GENERIC;\n" +
                    body("RETURN (a);") + "END_FUNCTION;\nFUNCTION Deep(p, x : GENERIC) : GENERIC;\n" +
                    body("RETURN (x);") + "END_FUNCTION;\nRULE All FOR (ToyBed, ToyPlant); WHERE Some : " +
                    "SIZEOF(QUERY(each <* ToyBed | Holds(each))) >= 0; END_RULE;\n");
    return text;
}

std::string reference(Choices& choices) { return '#' + std::to_string(1 + choices.below(12)); }

/// "?" is a reference, "%" a size; the rest stands as it is.
std::string madeModel(Choices& choices) {
    constexpr std::string_view kInstances[] = {"TOYPOINT((1.,-2.5))",
                                               "TOYBED('b',$,$,4.,3,(?,?),?,2)",
                                               "TOYTREE('t','Oak',$,*,.SUMMER.,.T.,.U.,%,12.,$)",
                                               "TOYPLANT('p','\\X\\DF',\"23F\",'Rose',$,.F.,$,%)",
                                               "TOYGROWING('g',$,$,(?,?,?),?,(1,2),(%,?,?))",
                                               "TOYFENCE('f',$,$,(?,?),(\"0A\"))",
                                               "TOYGARDENER('Ann',.U.,3,1.5,.T.,.RAKE.,(%,?),('a','b'))",
                                               "TOYCLUB('Club',.T.,1,0.,.F.,(?,?),$,(1,2))",
                                               "TOYBED($,$,$,$,$,(?,?,?,?),?,?)",
                                               "TOYPOINT($)",
                                               "NOBODY(?,?)",
                                               "TOYTREE('t',5,$,*,.RAKE.,'x',.U.,?,'y',((1.,2.),(3.),?))",
                                               "TOYBED('b',$,$,1.E300,-5,(?,$,?),*,99999999999)"};
    constexpr std::string_view kSizes[] = {"$",
                                           "TOYMETRES(2.5)",
                                           "TOYCOUNT(3)",
                                           "TOYWORD('x')",
                                           "TOYMAYBE(.U.)",
                                           "TOYPICTURE(\"3F\")",
                                           "TOYWHEN((1,2,3))",
                                           "TOYSEASON(.NEVER.)",
                                           "TOYMETRES('x')",
                                           "?"};
    constexpr std::size_t kCount = 10;
    std::string data;
    for (std::size_t i = 1; i <= kCount; ++i) {
        std::string form = '#' + std::to_string(i) + '=';
        form += kInstances[choices.below(std::size(kInstances))];
        for (const char c : form) {
            const std::string_view size = c == '%' ? kSizes[choices.below(std::size(kSizes))] : "";
            if (c == '?' || size == "?")
                data += reference(choices);
            else if (c == '%')
                data += size;
            else
                data += c;
        }
        data += ";\n";
    }
    return "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\nFILE_NAME('','',(''),(''),'','','');\n"
           "FILE_SCHEMA(('TOY'));\nENDSEC;\nDATA;\n" +
           data + "ENDSEC;\nEND-ISO-10303-21;\n";
}

constexpr RuleLimits kLimits{20'000, std::size_t{1} << 20};

struct Checked {
    std::string findings;
    RulesCheckResult result;
};

Checked checked(const Rules& rules, const VN_SDAI::VnIfcModel& model, unsigned threads,
                const std::vector<std::string>& only = {}) {
    RulesCheckOptions options;
    options.threads = threads;
    options.only = only;
    options.steps = kLimits.steps;
    options.memory = kLimits.memory;
    std::uint64_t violations = 0, notEvaluated = 0;
    Checked all;
    all.result = rules.check(
        model,
        [&](const VN_SDAI::VnIfcDiagnostic& finding) {
            require(rules.has(finding.rule));
            require(finding.code == (finding.found.empty() ? "rule" : "rule-not-evaluated"));
            ++(finding.found.empty() ? violations : notEvaluated);
            all.findings += finding.text() + '\n';
        },
        options);
    require(violations == all.result.violations && notEvaluated == all.result.notEvaluated);
    return all;
}

bool areEqual(const RuleCount& left, const RuleCount& right) {
    return left.evaluated == right.evaluated && left.violated == right.violated &&
           left.indeterminate == right.indeterminate && left.notEvaluated == right.notEvaluated;
}

void requireSound(const Rules& rules, const VN_SDAI::VnIfcModel& model, Choices& choices) {
    const Checked first = checked(rules, model, 1);
    require(first.result.counts.size() == rules.rules().size());
    for (std::size_t i = 0; i < rules.rules().size(); ++i) {
        const RuleCount& count = first.result.counts[i];
        const std::string& name = rules.rules()[i].name;
        require(count.violated + count.indeterminate <= count.evaluated);
        require(rules.rules()[i].isCompiled || count.evaluated + count.notEvaluated == 0);
        require(!name.starts_with("ToyBed.Law") || count.violated == 0);
    }
    require(checked(rules, model, 2).findings == first.findings);
    if (rules.rules().empty())
        return;
    const std::size_t chosen = choices.below(rules.rules().size());
    const Checked alone = checked(rules, model, 1, {rules.rules()[chosen].name});
    require(areEqual(alone.result.counts[chosen], first.result.counts[chosen]));
}

std::string valueOf(const Rules& rules, std::string_view expression, const VN_SDAI::VnIfcEntityBase& self) {
    try {
        return rules.evaluate(expression, self, kLimits).toText();
    } catch (const RulesError& error) {
        require(std::string_view(error.what()).starts_with("expression:"));
        return error.what();
    }
}

void evaluateAll(const Rules& rules, const VN_SDAI::VnIfcModel& model, std::string_view expression) {
    constexpr std::size_t kMost = 3; // each call makes a machine of its own
    const std::vector<VN_SDAI::VnDbObjectId> all = model.instances();
    for (const VN_SDAI::VnDbObjectId& handle : std::span(all).first(std::min(kMost, all.size()))) {
        const VN_SDAI::VnIfcEntityBase& instance = *handle.openObject();
        for (const std::string& name : rules.derivedAttributes(instance)) {
            const RuleValue value = rules.derived(instance, name, kLimits);
            require(!value.exists() || value.toText() == valueOf(rules, name, instance));
        }
        require(valueOf(rules, expression, instance) == valueOf(rules, expression, instance));
    }
}

/// The bytes as the text of one rule, of a schema, or of an expression.
std::string givenText(std::size_t mode, std::string_view bytes) {
    std::string text = declarations();
    if (mode == 0)
        return std::string(bytes);
    if (mode == 1)
        insertBefore(text, "ENTITY ToyBed", "END_ENTITY", "WHERE A : " + std::string(bytes) + ";\n");
    else
        text.insert(text.rfind("END_SCHEMA"), std::string(bytes) + '\n');
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kTexts = 3, kModes = 5, kLongest = 20'000;
    if (size < 2 || size > kLongest)
        return 0;
    const std::size_t mode = data[0] % kModes;
    const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    Choices choices({data + 1, size - 1});
    VN_SDAI::VnIfcModel model(&schema());
    require(static_cast<bool>(model.readText(madeModel(choices))));
    const std::string before = model.writeText();
    try {
        const Rules rules =
            Rules::parse(mode < kTexts ? givenText(mode, bytes) : madeText(choices), schema(), "toy.exp");
        requireSound(rules, model, choices);
        evaluateAll(rules, model, mode < kTexts ? std::string(bytes) : Writer(choices, false).made('X'));
    } catch (const RulesError& error) {
        require(mode < kTexts && std::string_view(error.what()).starts_with("toy.exp"));
    }
    require(model.writeText() == before);
    return 0;
}
