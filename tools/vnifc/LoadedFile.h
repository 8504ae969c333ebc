#pragma once
#include "Commands.h"

#include <VnIfcCore/VnIfcFile.h>

#include <cstdint>
#include <map>
#include <string>
#include <unordered_set>

namespace vnifc::tool {

/// The release of that name, in any case; throws Failure for a name that is none.
const VN_SDAI::VnIfcRelease& releaseNamed(std::string_view name);

/// What a command needs beyond the instances of a file.
struct ReadNeeds {
    bool inverses = false;                         ///< inverse attributes
    bool places = false;                           ///< where each instance stands in the file
    bool strict = false;                           ///< errors for all that contradicts standard or schema
    bool unclearLists = false;                     ///< which instances hasUnclearList() is true of
    VN_SDAI::VnIfcDiagnosticSink diagnostics = {}; ///< takes the findings, in place of standard error
};

/// A file in memory: how every command that reads one begins.
class LoadedFile {
public:
    /// Reads the file, out of its archive if it is in one; shows progress, and prints diagnostics unless the flags say
    /// otherwise. Throws Failure when there is nothing to read.
    explicit LoadedFile(const ReadFlags& flags, const ReadNeeds& needs = {});

    /// Gives the model away; nothing else may be asked then.
    VN_SDAI::VnIfcFile take() noexcept { return std::move(m_file); }
    VN_SDAI::VnIfcModel& model() noexcept { return m_file.model(); }
    const VN_SDAI::VnIfcModel& model() const noexcept { return m_file.model(); }
    const VN_SDAI::VnIfcFileResult& result() const noexcept { return m_file.result(); }
    const VN_SDAI::VnIfcRelease& release() const noexcept { return *m_file.release(); }
    /// True when the parameter list of that instance was broken or too long, so that its parameters may belong to other
    /// attributes than those that hold them, or one text holds several of them.
    bool hasUnclearList(std::uint64_t instance) const { return m_unclearLists.contains(instance); }
    double seconds() const noexcept { return m_seconds; }
    /// "1 error, 31 warnings (30 unknown-keyword, ...)": how many findings there were of which kind.
    std::string findings() const;
    ExitCode exitCode() const noexcept { return result().errors > 0 ? kErrorsInFile : kSuccess; }

private:
    void note(const VN_SDAI::VnIfcDiagnostic& diagnostic, bool quiet, bool noteUnclearLists);

    VN_SDAI::VnIfcFile m_file;
    double m_seconds = 0;
    std::uint64_t m_diagnosticCount = 0;
    std::map<std::string, std::uint64_t> m_countByCode;
    std::unordered_set<std::uint64_t> m_unclearLists;
};

} // namespace vnifc::tool
