#include "JsonWriter.h"
#include "LoadedFile.h"
#include "Messages.h"
#include "WriteModel.h"

#include <fmt/format.h>
#include <vnifc/Convert.h>

#include <map>
#include <tuple>

namespace vnifc::tool {

using namespace VN_SDAI;

namespace {

/// What was done, alike things together; losses are said one by one.
class ConvertReport {
public:
    ConvertReport(bool quiet, std::uint64_t limit) noexcept : m_quiet(quiet), m_limit(limit) {}

    void add(const ConvertFinding& finding) {
        ++m_cases[{finding.kind, finding.entity, finding.attribute, finding.reason}];
        if (m_quiet || !isLoss(finding.kind))
            return;
        const std::uint64_t count = ++m_said[finding.kind];
        if (m_limit == 0 || count <= m_limit)
            say(finding.text());
    }

    void sayEnd(const ConvertResult& result, std::string_view from, std::string_view to) const {
        if (m_quiet)
            return;
        for (const auto& [kind, count] : m_said)
            if (m_limit > 0 && count > m_limit)
                say(fmt::format("... and {} more {}", count - m_limit, nameOf(kind)));
        for (const auto& [what, count] : m_cases) {
            const auto& [kind, entity, attribute, reason] = what;
            say(fmt::format("{:>8}  {:<16} {}{}{} ({})", count, nameOf(kind), entity, attribute.empty() ? "" : ".",
                            attribute, reason));
        }
        say(fmt::format("{} to {}: carried {}, changed {}, reduced {}, lost {}, added {}", from, to, result.carried,
                        result.changed, result.reduced, result.lost, result.added));
    }

    void writeJson(const ConvertResult& result, std::string_view from, std::string_view to) const {
        Output output(writeToStandardOutput);
        JsonWriter json(output);
        const auto text = [&](const char* key, std::string_view value) {
            json.key(key);
            json.string(value);
        };
        const auto number = [&](std::string_view key, std::uint64_t value) {
            json.key(key);
            json.number(value);
        };
        json.beginObject();
        text("from", from);
        text("to", to);
        number("carried", result.carried);
        number("changed", result.changed);
        number("reduced", result.reduced);
        number("lost", result.lost);
        number("added", result.added);
        json.key("findings");
        json.beginObject();
        for (const auto& [kind, count] : result.findings)
            number(nameOf(kind), count);
        json.endObject();
        json.key("cases");
        json.beginArray();
        for (const auto& [what, count] : m_cases) {
            const auto& [kind, entity, attribute, reason] = what;
            json.beginObject();
            text("kind", nameOf(kind));
            text("entity", entity);
            text("attribute", attribute);
            text("reason", reason);
            number("count", count);
            json.endObject();
        }
        json.endArray();
        json.endObject();
        json.newLine();
        output.flush();
    }

private:
    bool m_quiet;
    std::uint64_t m_limit;
    std::map<std::tuple<ConvertKind, std::string, std::string, std::string>, std::uint64_t> m_cases;
    std::map<ConvertKind, std::uint64_t> m_said;
};

} // namespace

ExitCode convertFile(const ReadFlags& flags, const std::string& target, const std::string& release,
                     const ConvertFlags& options) {
    if (options.json && target == "-")
        throw Failure(kWrongUse, "the summary and the file cannot both go to standard output");
    const VnIfcRelease& wanted = releaseNamed(release);
    const LoadedFile file(flags);
    VnIfcFile converted = vnCreateFile(wanted.name);
    if (!converted)
        throw Failure(kFileFailure, converted.result().message);
    ConvertReport report(flags.quiet, options.limit);
    ConvertOptions conversion;
    conversion.threads = flags.threads;
    conversion.findings = [&report](const ConvertFinding& finding) { report.add(finding); };
    const ConvertResult result = convert(file.model(), converted.model(), conversion);
    if (!result)
        throw Failure(kFileFailure, fmt::format("cannot convert {}: {}", flags.file, result.message));
    writeModel(converted.model(), target, flags);
    report.sayEnd(result, file.release().name, wanted.name);
    if (options.json)
        report.writeJson(result, file.release().name, wanted.name);
    return kSuccess;
}

} // namespace vnifc::tool
