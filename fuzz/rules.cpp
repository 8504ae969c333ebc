// Random rules, functions and models of a small schema: whatever they are, they are refused with the place of the fault
// or evaluated within the limits, the same on two threads as on one, and the model stays as it was. An input that
// begins with a letter is the text of the rules itself; any other chooses what a grammar of the language makes.
#include <VnIfcCore/VnIfcModel.h>
#include <VnRx/VnModule.h>
#include <vnifc/Rules.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

using namespace VN_SDAI;

namespace {

void require(bool holds) {
    if (!holds)
        std::abort();
}

/// What the bytes of an input choose; the first possibility of each when they have run out.
class Choices {
public:
    Choices(const std::uint8_t* data, std::size_t size) noexcept : m_next(data), m_end(data + size) {}

    std::size_t below(std::size_t count) noexcept { return m_next == m_end ? 0 : *m_next++ % count; }
    template <std::size_t kCount>
    const char* of(const std::array<const char*, kCount>& possibilities) noexcept {
        return possibilities[below(kCount)];
    }

private:
    const std::uint8_t* m_next;
    const std::uint8_t* m_end;
};

/// Makes expressions and statements, at most so deep.
class Grammar {
public:
    explicit Grammar(Choices& choices) noexcept : m_choices(choices) {}

    std::string expression(unsigned depth) {
        if (depth == 0)
            return operand();
        const auto inner = [&] { return '(' + expression(depth - 1) + ')'; };
        switch (m_choices.below(14)) {
        case 0:
            return operand();
        case 1:
        case 2:
        case 3:
            return inner() + m_choices.of(kBinary) + inner();
        case 4:
            return m_choices.of(kUnary) + inner();
        case 5:
            return '{' + inner() + " <= " + inner() + " < " + inner() + '}';
        case 6:
            return "QUERY(q <* " + inner() + " | " + inner() + ')';
        case 7:
            return m_choices.of(kFunctionsOfOne) + inner();
        case 8:
            return m_choices.of(kFunctionsOfTwo) + inner() + ", " + inner() + ')';
        case 9:
            return '[' + inner() + ", " + inner() + (m_choices.below(4) == 0 ? " : " + inner() : "") + ']';
        case 10:
            return inner() + '[' + inner() + (m_choices.below(3) == 0 ? " : " + inner() : "") + ']';
        case 11:
            return inner() + m_choices.of(kQualifiers);
        case 12:
            return "F(" + inner() + ", " + inner() + ')';
        default:
            return "ToyPoint([" + inner() + ", " + inner() + "])";
        }
    }

    std::string statements(unsigned depth) {
        std::string text;
        for (std::size_t i = 0; i <= m_choices.below(3); ++i)
            text += statement(depth) + ' ';
        return text;
    }

private:
    std::string operand() { return m_choices.of(kOperands); }

    std::string statement(unsigned depth) {
        const auto value = [&] { return expression(2); };
        if (depth == 0)
            return m_choices.of(kVariables) + std::string(" := ") + value() + ';';
        const auto inner = [&] { return statements(depth - 1); };
        switch (m_choices.below(11)) {
        case 0:
        case 1:
            return m_choices.of(kVariables) + std::string(" := ") + value() + ';';
        case 2:
            return "IF " + value() + " THEN " + inner() + "ELSE " + inner() + "END_IF;";
        case 3:
            return "CASE " + value() + " OF 1, " + operand() + " : BEGIN " + inner() + "END; OTHERWISE : ; END_CASE;";
        case 4:
            return "REPEAT i := " + value() + " TO " + value() + " BY " + operand() + "; " + inner() + "END_REPEAT;";
        case 5:
            return "REPEAT WHILE " + value() + " UNTIL " + value() + "; " + inner() + "END_REPEAT;";
        case 6:
            return "ALIAS z FOR b; z := " + value() + "; END_ALIAS;";
        case 7:
            return "RETURN (" + value() + ");";
        case 8:
            return m_choices.below(2) == 0 ? "SKIP;" : "ESCAPE;";
        case 9:
            return "INSERT(b, " + value() + ", " + operand() + ");";
        default:
            return "REMOVE(b, " + operand() + ");";
        }
    }

    static constexpr std::array<const char*, 24> kOperands{
        "1",    "0",     "-2",         "2.5",    "?",      "TRUE",         "UNKNOWN",    "'word'",
        "%101", "SELF",  "Name",       "Length", "Width",  "Corners",      "Owner",      "Rows",
        "Area", "Grows", "Neighbours", "[]",     "spring", "'TOY.TOYBED'", "9000000000", "SELF\\ToyThing.Id"};
    static constexpr std::array<const char*, 24> kBinary{
        " + ",  " - ",   " * ",    " / ",   " DIV ", " MOD ", " ** ", " = ",    " <> ", " < ", " > ", " <= ",
        " >= ", " :=: ", " :<>: ", " AND ", " OR ",  " XOR ", " IN ", " LIKE ", " || ", " + ", " = ", " * "};
    static constexpr std::array<const char*, 3> kUnary{"-", "+", "NOT "};
    static constexpr std::array<const char*, 16> kFunctionsOfOne{
        "ABS", "COS", "EXISTS", "HIBOUND", "HIINDEX", "LENGTH", "LOBOUND", "LOINDEX",
        "LOG", "ODD", "SIZEOF", "SQRT",    "TYPEOF",  "VALUE",  "BLENGTH", "ROLESOF"};
    static constexpr std::array<const char*, 5> kFunctionsOfTwo{"NVL(", "ATAN(", "USEDIN(", "FORMAT(", "VALUE_IN("};
    static constexpr std::array<const char*, 8> kQualifiers{
        ".Name", "\\ToyBed", ".Plants", ".Bed.Rows", ".Owner", "\\ToyBed.Area", ".Neighbours", ".Coordinates[1]"};
    static constexpr std::array<const char*, 4> kVariables{"a", "b", "n", "b[n]"};

    Choices& m_choices;
};

std::string textOf(Choices& choices) {
    Grammar grammar(choices);
    std::string where, rest;
    for (std::size_t i = 0; i <= choices.below(3); ++i)
        where += " W" + std::to_string(i) + " : " + grammar.expression(4) + ';';
    rest = "FUNCTION F(a : GENERIC; b : GENERIC) : GENERIC; LOCAL n : INTEGER := 1; END_LOCAL; " +
           grammar.statements(3) + "RETURN (" + grammar.expression(2) + "); END_FUNCTION;\n";
    rest += "RULE R FOR (ToyBed, ToyGrowing); WHERE W : " + grammar.expression(3) + "; END_RULE;\n";
    return "WHERE" + where + "\n;" + grammar.expression(3) + '\n' + ';' + rest;
}

/// The declarations of the schema, with the rules of ToyBed, the value of its Area and the rest.
std::string schemaWith(std::string_view where, std::string_view area, std::string_view rest) {
    static const std::string declarations = [] {
        std::ifstream file(VNIFC_TOY "/declarations.exp", std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    }();
    std::string text = declarations;
    const std::size_t bed = text.find("ENTITY ToyBed");
    text.insert(text.find("END_ENTITY", bed), std::string(where) + '\n');
    const std::size_t value = text.find('?', text.find("Area : ToyMetres", bed));
    if (!area.empty())
        text.replace(value, 1, area);
    return text.insert(text.rfind("END_SCHEMA"), std::string(rest) + '\n');
}

VnIfcModel modelOf(Choices& choices, const VnIfcSchema* schema) {
    static constexpr std::array<const char*, 8> kReferences{"$", "#1", "#2", "#3", "#4", "#5", "#99", "'no'"};
    static constexpr std::array<const char*, 6> kNumbers{"1", "-1", "0.5", "$", "1.E300", "2147483647"};
    static constexpr std::array<const char*, 5> kWords{"'w'", "$", "''", "'\\X2\\00E9\\X0\\'", "7"};
    const auto reference = [&] { return std::string(choices.of(kReferences)); };
    const auto number = [&] { return std::string(choices.of(kNumbers)); };
    const auto word = [&] { return std::string(choices.of(kWords)); };
    std::string data;
    for (unsigned i = 1; i <= 2 + choices.below(6); ++i) {
        data += '#' + std::to_string(i) + '=';
        switch (choices.below(6)) {
        case 0:
        case 1:
            data += "TOYBED('b" + std::to_string(i) + "'," + word() + ",$," + number() + ',' + number() + ",(" +
                    reference() + ',' + reference() + ")," + reference() + ',' + number() + ");\n";
            break;
        case 2:
            data += "TOYPOINT((" + number() + ',' + number() + "));\n";
            break;
        case 3:
            data += "TOYGROWING('g'," + word() + ",$,(" + reference() + ',' + reference() + ")," + reference() +
                    ",(1,2),(TOYWORD(" + word() + ")," + reference() + "));\n";
            break;
        case 4:
            data += "TOYFENCE('f',$,$,(" + reference() + ',' + reference() + "),(\"0AF\"));\n";
            break;
        default:
            data += "TOYGARDENER(" + word() + ",.U.," + number() + ',' + number() + ",.T.,.RAKE.,(" + reference() +
                    ",TOYCOUNT(" + number() + ")),(" + word() + "));\n";
        }
    }
    VnIfcModel model(schema);
    VnIfcReadOptions options;
    options.threads = 1;
    model.readText("ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\nFILE_NAME('','',(''),(''),'','','');\n"
                   "FILE_SCHEMA(('TOY'));\nENDSEC;\nDATA;\n" +
                       data + "ENDSEC;\nEND-ISO-10303-21;\n",
                   options);
    return model;
}

struct Seen {
    vnifc::RulesCheckResult result;
    std::string findings;
};

Seen checked(const vnifc::Rules& rules, const VnIfcModel& model, unsigned threads) {
    vnifc::RulesCheckOptions options;
    options.threads = threads;
    options.steps = 20'000;
    options.memory = std::size_t{1} << 20;
    Seen seen;
    std::uint64_t violations = 0;
    seen.result = rules.check(
        model,
        [&](const VnIfcDiagnostic& finding) {
            require(rules.has(finding.rule));
            violations += finding.severity == VnIfcDiagnostic::kError ? 1 : 0;
            seen.findings += finding.text() + '\n';
        },
        options);
    require(violations == seen.result.violations);
    return seen;
}

void evaluate(const vnifc::Rules& rules, const VnIfcModel& model, std::string_view expression) {
    const std::string before = model.writeText();
    const Seen one = checked(rules, model, 1), two = checked(rules, model, 2);
    require(one.findings == two.findings);
    for (std::size_t i = 0; i < one.result.counts.size(); ++i)
        require(one.result.counts[i].evaluated == two.result.counts[i].evaluated &&
                one.result.counts[i].indeterminate == two.result.counts[i].indeterminate);
    model.forEach([&](VnIfcEntityBase& instance) {
        for (const std::string& name : rules.derivedAttributes(instance))
            (void)rules.derived(instance, name).toText();
        try {
            (void)rules.evaluate(expression, instance).toText();
        } catch (const vnifc::RulesError&) {
            // What is no expression, has unknown names or takes too long.
        }
    });
    require(model.writeText() == before);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const VnModule module = VnModule::load("VnToy");
    if (size == 0)
        return 0;
    Choices choices(data, size);
    const VnIfcModel model = modelOf(choices, module.schema());
    const bool isText = (*data | 0x20) >= 'a' && (*data | 0x20) <= 'z';
    const std::string text = isText ? std::string(reinterpret_cast<const char*>(data), size) : textOf(choices);
    const std::size_t area = text.find("\n;"), rest = area == text.npos ? area : text.find("\n;", area + 2);
    const auto part = [&](std::size_t from, std::size_t to) {
        return from == text.npos ? std::string_view() : std::string_view(text).substr(from, to - from);
    };
    const std::string_view value = rest == text.npos ? part(area, area) : part(area + 2, rest);
    try {
        const vnifc::Rules rules =
            vnifc::Rules::parse(schemaWith(part(0, area), value, rest == text.npos ? "" : part(rest + 2, text.npos)),
                                *module.schema(), "t.exp");
        evaluate(rules, model, value);
    } catch (const vnifc::RulesError& error) {
        require(std::string_view(error.what()).starts_with("t.exp:"));
    }
    return 0;
}
