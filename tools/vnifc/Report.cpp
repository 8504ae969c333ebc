#include "LoadedFile.h"
#include "Messages.h"
#include "Output.h"
#include "RuleText.h"

#include <VnIfcCore/VnSafeFile.h>
#include <fmt/format.h>
#include <vnifc/Report.h>

#include <cstring>
#include <filesystem>
#include <vector>

namespace vnifc::tool {

namespace {

void writePage(const std::filesystem::path& target, const std::string& page) {
    VN_SDAI::VnSafeFile pending(target);
    if (!pending.stream() || !pending.write(page) || !pending.commit())
        throw Failure(kFileFailure,
                      fmt::format("cannot write {}: {}", target.string(), std::strerror(pending.error())));
}

} // namespace

ExitCode reportFile(const ReadFlags& flags, const std::string& target, const std::string& rulesText) {
    const bool isStandardInput = flags.file == "-";
    if (isStandardInput && target.empty())
        throw Failure(kWrongUse, "expected -o REPORT.html, since standard input has no name");
    ReportOptions options;
    std::vector<Finding> reading;
    LoadedFile file(flags,
                    {.inverses = true, .places = true, .strict = true, .diagnostics = [&](const Finding& finding) {
                         reading.push_back(finding);
                     }});
    const std::optional<Rules> rules = rulesFor(file.model(), rulesText);
    if (!rules && !flags.quiet)
        say("rules are not checked; " + howToHaveRules(file.model()));
    const std::filesystem::path path = flags.file;
    options.title = isStandardInput ? "standard input" : path.filename().string();
    options.reading = reading;
    options.rules = rules ? &*rules : nullptr;
    options.threads = flags.threads;
    const ExitCode exitCode = file.exitCode();
    Model model(file.take());
    const std::string page = report(model, options);
    if (target == "-") {
        writeToStandardOutput(page);
        return exitCode;
    }
    const std::filesystem::path output =
        target.empty() ? path.filename().replace_extension(".html") : std::filesystem::path(target);
    writePage(output, page);
    if (!flags.quiet)
        say(fmt::format("wrote {} ({} bytes)", output.string(), page.size()));
    return exitCode;
}

ExitCode schemaPage(const std::string& release, const std::string& folder) {
    const std::string page =
        dictionaryPage(release.empty() ? VN_SDAI::vnIfcReleases().back().name : releaseNamed(release).name);
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error)
        throw Failure(kFileFailure, fmt::format("cannot make the folder {}: {}", folder, error.message()));
    writePage(std::filesystem::path(folder) / "index.html", page);
    return kSuccess;
}

} // namespace vnifc::tool
