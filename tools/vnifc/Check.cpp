#include "JsonWriter.h"
#include "LoadedFile.h"
#include "Messages.h"

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

    void add(const VnIfcDiagnostic& finding) {
        ++m_counts[finding.severity];
        if (finding.severity < m_options.level)
            return;
        const std::uint64_t count = ++m_kinds[{finding.severity, finding.code}];
        if (!m_lines || (count > m_options.limit && m_options.limit > 0))
            return;
        if (m_options.json)
            return addJson(finding);
        VnIfcDiagnostic named = finding;
        named.file = m_file;
        m_output.put(printable(named.text()) + '\n');
    }

    void end() {
        m_options.json ? endJson() : endText();
        m_output.flush();
    }

    bool hasErrors() const noexcept { return m_counts[VnIfcDiagnostic::kError] > 0; }

private:
    using Kind = std::pair<VnIfcDiagnostic::Severity, std::string>;

    void member(const char* name, const std::string& text) {
        m_json.key(name);
        text.empty() ? m_json.null() : m_json.string(text);
    }
    void member(const char* name, std::uint64_t number) {
        m_json.key(name);
        number == 0 ? m_json.null() : m_json.number(number);
    }

    void addJson(const VnIfcDiagnostic& finding) {
        m_json.beginObject();
        member("severity", kSeverities[finding.severity]);
        member("code", finding.code);
        member("file", m_file);
        member("line", finding.line);
        member("column", finding.column);
        member("id", finding.instance);
        member("keyword", finding.keyword);
        member("attribute", finding.attribute);
        member("found", finding.found);
        member("expected", finding.expected);
        m_json.endObject();
        m_json.newLine();
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
    }

    std::string m_file;
    const CheckOptions& m_options;
    bool m_lines;
    Output m_output;
    JsonWriter m_json;
    std::array<std::uint64_t, kSeverities.size()> m_counts{};
    std::map<Kind, std::uint64_t, std::greater<>> m_kinds; ///< errors first
};

} // namespace

ExitCode check(const ReadFlags& flags, const CheckOptions& options) {
    Report report(flags.file == "-" ? "standard input" : flags.file, options, !flags.quiet);
    const VnIfcDiagnosticSink sink = [&report](const VnIfcDiagnostic& finding) { report.add(finding); };
    const VnIfcDiagnosticSink reading = [&report](const VnIfcDiagnostic& finding) {
        if (finding.code != "mandatory") // the check of the instance tells it, whatever file it came from
            report.add(finding);
    };
    const LoadedFile file(flags, {.inverses = true, .places = true, .strict = true, .diagnostics = reading});
    VnIfcCheck(file.model(), sink).run(flags.threads);
    report.end();
    return report.hasErrors() ? kErrorsInFile : kSuccess;
}

} // namespace vnifc::tool
