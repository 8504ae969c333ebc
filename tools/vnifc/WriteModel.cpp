#include "WriteModel.h"

#include "Archive.h"
#include "Messages.h"
#include "Output.h"
#include "Progress.h"

#include <fmt/format.h>

namespace vnifc::tool {

using namespace VN_SDAI;

std::uint64_t writeModel(const VnIfcModel& model, const std::string& target, const ReadFlags& flags) {
    Progress progress("writing " + target);
    VnIfcWriteOptions options;
    options.progress = progress.callback();
    options.threads = flags.threads;
    options.diagnostics = [&](const VnIfcDiagnostic& diagnostic) {
        // What is only unusual was so in the file that was read.
        if (diagnostic.severity == VnIfcDiagnostic::kError && !flags.quiet)
            sayFinding(diagnostic);
    };
    if (target == "-" || isArchiveName(target)) {
        const std::string text = model.writeText(options);
        target == "-" ? writeToStandardOutput(text) : writeArchive(target, text);
        return text.size();
    }
    const VnIfcFileResult result = model.writeFile(target, options);
    if (!result)
        throw Failure(kFileFailure, fmt::format("cannot write {}: {}", target, result.message));
    return result.bytes;
}

} // namespace vnifc::tool
