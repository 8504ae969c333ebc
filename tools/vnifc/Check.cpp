#include "JsonWriter.h"
#include "LoadedFile.h"
#include "Messages.h"
#include "RuleText.h"
#include "Terminal.h"

#include <VnIfcCore/VnIfcCheck.h>

#include <fmt/format.h>

#include <array>
#include <functional>
#include <map>
#include <utility>

namespace vnifc::tool {

using namespace VN_SDAI;

namespace {

constexpr std::array kSeverities = {"info", "warning", "error"};

/// Prints findings as they come, and in the end how many there were of which kind.
class Report {
public:
    /// Without `lines` only the end is printed.
    Report(const std::string& file, const CheckOptions& options, bool lines)
        : m_file(file), m_options(options), m_lines(lines), m_output(writeToStandardOutput), m_json(m_output) {}

    /// `explanation` is the text of the rule that the finding is about, if it is to be told.
    void add(VnIfcDiagnostic finding, std::string_view explanation = {}) {
        finding.file = m_file;
        put(finding, explanation);
    }
    /// What is wrong in the text of the rules, which has a place there.
    void addRemark(const VnIfcDiagnostic& remark) { put(remark, {}); }

    void addSummary(const Rules& rules, const RulesCheckResult& result) {
        m_rules = &rules;
        m_result = &result;
    }

    void end() {
        m_options.json ? endJson() : endText();
        m_output.flush();
    }

    bool hasErrors() const noexcept { return m_counts[VnIfcDiagnostic::kError] > 0; }

private:
    using Kind = std::pair<VnIfcDiagnostic::Severity, std::string>;

    void put(const VnIfcDiagnostic& finding, std::string_view explanation) {
        ++m_counts[finding.severity];
        if (finding.severity < m_options.level)
            return;
        std::uint64_t count = ++m_kinds[{finding.severity, finding.code}];
        if (!finding.rule.empty())
            count = ++m_countByRule[finding.code + ' ' + finding.rule];
        if (!m_lines || (count > m_options.limit && m_options.limit > 0))
            return;
        if (m_options.json)
            return addJson(finding, explanation);
        m_output.put(findingLine(finding, m_isColoured) + '\n');
        if (!explanation.empty())
            m_output.put("    " + printable(onOneLine(explanation)) + '\n');
    }

    /// Texts of rules stand in several lines.
    static std::string onOneLine(std::string_view text) {
        std::string line;
        for (const char c : text) {
            const bool isSpace = c == ' ' || c == '\t' || c == '\n' || c == '\r';
            if (!isSpace)
                line += c;
            else if (!line.empty() && line.back() != ' ')
                line += ' ';
        }
        return line;
    }

    void member(const char* name, const std::string& text) {
        m_json.key(name);
        text.empty() ? m_json.null() : m_json.string(text);
    }
    void member(const char* name, std::uint64_t number) {
        m_json.key(name);
        number == 0 ? m_json.null() : m_json.number(number);
    }

    void addJson(const VnIfcDiagnostic& finding, std::string_view explanation) {
        m_json.beginObject();
        member("severity", kSeverities[finding.severity]);
        member("code", finding.code);
        member("file", finding.file);
        member("line", finding.line);
        member("column", finding.column);
        member("id", finding.instance);
        member("keyword", finding.keyword);
        member("attribute", finding.attribute);
        member("found", finding.found);
        member("expected", finding.expected);
        if (!finding.rule.empty())
            member("rule", finding.rule);
        if (!explanation.empty())
            member("explanation", onOneLine(explanation));
        m_json.endObject();
        m_json.newLine();
    }

    /// Calls `visit` with each rule that is violated, or could not be evaluated, and its counts.
    template <class Visit>
    void forEachRule(Visit visit) const {
        for (std::size_t i = 0; m_rules && i < m_rules->rules().size(); ++i) {
            const RuleCount& count = m_result->counts[i];
            if (count.violated > 0 || count.notEvaluated > 0)
                visit(m_rules->rules()[i].name, count);
        }
    }

    void jsonOfRules() {
        m_json.key("rules");
        m_json.beginObject();
        forEachRule([&](const std::string& name, const RuleCount& count) {
            m_json.key(name);
            m_json.beginObject();
            m_json.key("evaluated");
            m_json.number(count.evaluated);
            m_json.key("violated");
            m_json.number(count.violated);
            m_json.key("notEvaluated");
            m_json.number(count.notEvaluated);
            m_json.endObject();
        });
        m_json.endObject();
    }

    void textOfRules() {
        std::size_t evaluated = 0;
        for (const RuleCount& count : m_result->counts)
            evaluated += count.evaluated > 0 ? 1 : 0;
        m_output.put(fmt::format("rules: {} in the text, {} apply to this file\n", m_rules->rules().size(), evaluated));
        forEachRule([&](const std::string& name, const RuleCount& count) {
            if (count.violated > 0)
                m_output.put(fmt::format("{:>10}  violated {}\n", count.violated, name));
            if (count.notEvaluated > 0)
                m_output.put(fmt::format("{:>10}  not evaluated {}\n", count.notEvaluated, name));
        });
    }

    void endJson() {
        m_json.beginObject();
        m_json.key("summary");
        m_json.beginObject();
        for (std::size_t i = kSeverities.size(); i-- > 0;) {
            m_json.key(kSeverities[i]);
            m_json.number(m_counts[i]);
        }
        m_json.key("kinds");
        m_json.beginObject();
        for (const auto& [kind, count] : m_kinds) {
            m_json.key(kind.second);
            m_json.number(count);
        }
        m_json.endObject();
        if (m_rules)
            jsonOfRules();
        m_json.endObject();
        m_json.endObject();
        m_json.newLine();
    }

    void endText() {
        m_output.put(fmt::format("{}: errors {}, warnings {}, remarks {}\n", printable(m_file),
                                 m_counts[VnIfcDiagnostic::kError], m_counts[VnIfcDiagnostic::kWarning],
                                 m_counts[VnIfcDiagnostic::kInfo]));
        for (const auto& [kind, count] : m_kinds)
            m_output.put(fmt::format("{:>10}  {:<8} {}\n", count, kSeverities[kind.first], kind.second));
        if (m_rules)
            textOfRules();
    }

    std::string m_file;
    const CheckOptions& m_options;
    bool m_lines;
    bool m_isColoured = hasColours(Stream::kOutput);
    Output m_output;
    JsonWriter m_json;
    std::array<std::uint64_t, kSeverities.size()> m_counts{};
    std::map<Kind, std::uint64_t, std::greater<>> m_kinds; ///< errors first
    std::map<std::string, std::uint64_t> m_countByRule;
    const Rules* m_rules = nullptr; ///< what the summary is of; null when rules were not checked
    const RulesCheckResult* m_result = nullptr;
};

RulesCheckResult checkRules(const Rules& rules, const VnIfcModel& model, const ReadFlags& flags, const RuleFlags& which,
                            Report& report) {
    for (const VnIfcDiagnostic& remark : rules.remarks())
        report.addRemark(remark);
    std::map<std::string_view, std::string_view> texts;
    if (which.explain) {
        for (const RuleInfo& rule : rules.rules())
            texts.emplace(rule.name, rule.text);
    }
    RulesCheckOptions options;
    options.only = which.only;
    options.except = which.except;
    options.threads = flags.threads;
    const VnIfcDiagnosticSink sink = [&](const VnIfcDiagnostic& finding) {
        const auto text = texts.find(finding.rule);
        report.add(finding, text == texts.end() ? std::string_view() : text->second);
    };
    return rules.check(model, sink, options);
}

/// Throws Failure for the name of a rule that the text does not have.
void requireRules(const Rules& rules, const RuleFlags& which) {
    for (const auto* names : {&which.only, &which.except}) {
        for (const std::string& name : *names) {
            if (!rules.has(name))
                throw Failure(kWrongUse, fmt::format("the text has no rule \"{}\"", name));
        }
    }
}

} // namespace

ExitCode check(const ReadFlags& flags, const CheckOptions& options) {
    Report report(flags.file == "-" ? "standard input" : flags.file, options, !flags.quiet);
    const VnIfcDiagnosticSink sink = [&report](const VnIfcDiagnostic& finding) { report.add(finding); };
    const VnIfcDiagnosticSink reading = [&report](const VnIfcDiagnostic& finding) {
        if (finding.code != "mandatory") // the check of the instance tells it, whatever file it came from
            report.add(finding);
    };
    const LoadedFile file(flags, {.inverses = true, .places = true, .strict = true, .diagnostics = reading});
    const std::optional<Rules> rules = rulesFor(file.model(), options.rules.text);
    if (rules)
        requireRules(*rules, options.rules);
    else if (!options.rules.only.empty() || !options.rules.except.empty() || options.rules.explain)
        throw Failure(kFileFailure, howToHaveRules(file.model()));
    VnIfcCheck(file.model(), sink).run(flags.threads);
    RulesCheckResult result;
    if (rules) {
        result = checkRules(*rules, file.model(), flags, options.rules, report);
        report.addSummary(*rules, result);
    } else if (!flags.quiet) {
        say("rules are not checked; " + howToHaveRules(file.model()));
    }
    report.end();
    return report.hasErrors() ? kErrorsInFile : kSuccess;
}

} // namespace vnifc::tool
