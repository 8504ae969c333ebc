#include "LoadedFile.h"
#include "Messages.h"
#include "Output.h"
#include "RuleText.h"

#include <fmt/format.h>
#include <vnifc/Report.h>

#include <filesystem>
#include <fstream>
#include <vector>

namespace vnifc::tool {

namespace {

/// Beside the target first, which keeps what it has when the page cannot be written.
void writePage(const std::filesystem::path& target, const std::string& page) {
    std::filesystem::path unfinished = target;
    unfinished += ".part";
    std::ofstream stream(unfinished, std::ios::binary);
    stream << page;
    stream.close();
    std::error_code error;
    if (stream)
        std::filesystem::rename(unfinished, target, error);
    if (stream && !error)
        return;
    std::error_code ignored;
    std::filesystem::remove(unfinished, ignored);
    throw Failure(kFileFailure, fmt::format("cannot write {}", target.string()));
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
