#include "LoadedFile.h"

#include "Archive.h"
#include "Messages.h"
#include "Progress.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <vector>

namespace vnifc::tool {

using namespace VN_SDAI;

namespace {

// A broken file can bring as many diagnostics as it has values; beyond a screenful nobody reads them.
constexpr std::uint64_t kPrinted = 20;

constexpr std::string_view kUnclearLists[] = {"behind-list", "missing-comma", "open-string", "too-many-parameters",
                                              "unclosed-list"};

std::string counted(std::uint64_t count, const char* noun) {
    return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

} // namespace

const VnIfcRelease& releaseNamed(std::string_view name) {
    if (const VnIfcRelease* release = vnFindRelease(name))
        return *release;
    std::vector<std::string_view> known;
    for (const VnIfcRelease& release : vnIfcReleases())
        known.push_back(release.name);
    throw Failure(kWrongUse, fmt::format("expected one of the releases {}, found {}", fmt::join(known, ", "), name));
}

LoadedFile::LoadedFile(const ReadFlags& flags, const ReadNeeds& needs) {
    const std::string name = flags.file == "-" ? "standard input" : flags.file;
    Progress progress("reading " + name);
    VnIfcOpenOptions options;
    if (!flags.release.empty())
        options.release = releaseNamed(flags.release).name;
    options.diagnostics = [&](const VnIfcDiagnostic& diagnostic) {
        progress.clear();
        note(diagnostic, flags.quiet || needs.diagnostics, needs.unclearLists);
        if (needs.diagnostics)
            needs.diagnostics(diagnostic);
    };
    options.progress = progress.callback();
    options.threads = flags.threads;
    options.inverses = needs.inverses;
    options.places = needs.places;
    options.strict = needs.strict;
    options.name = name;
    const auto start = std::chrono::steady_clock::now();
    const std::optional<std::string> inflated = readArchive(flags.file, [&](std::string_view line) {
        if (!flags.quiet)
            say(line);
    });
    m_file = inflated ? vnOpenText(*inflated, options) : vnOpenFile(flags.file, options);
    m_seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    progress.clear();
    if (!m_file)
        throw Failure(kFileFailure, fmt::format("cannot read {}: {}", name, result().message));
    if (!flags.quiet && !needs.diagnostics && m_diagnosticCount > kPrinted)
        say(fmt::format("... and {} more", m_diagnosticCount - kPrinted));
}

void LoadedFile::note(const VnIfcDiagnostic& diagnostic, bool quiet, bool noteUnclearLists) {
    ++m_countByCode[diagnostic.code];
    if (noteUnclearLists && std::ranges::find(kUnclearLists, diagnostic.code) != std::end(kUnclearLists))
        m_unclearLists.insert(diagnostic.instance);
    if (++m_diagnosticCount <= kPrinted && !quiet)
        sayFinding(diagnostic);
}

std::string LoadedFile::findings() const {
    std::string text = counted(result().errors, "error") + ", " + counted(result().warnings, "warning");
    if (m_countByCode.empty())
        return text;
    std::vector<std::string> kinds;
    for (const auto& [code, count] : m_countByCode)
        kinds.push_back(fmt::format("{} {}", count, code));
    return fmt::format("{} ({})", text, fmt::join(kinds, ", "));
}

} // namespace vnifc::tool
