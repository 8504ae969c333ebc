#include "Messages.h"
#include "WholeModel.h"
#include "WriteModel.h"

#include <fmt/format.h>
#include <vnifc/Merge.h>

namespace vnifc::tool {

ExitCode mergeFiles(const ReadFlags& flags, const std::string& target, const std::vector<std::string>& files,
                    bool equalStoreys) {
    ReadFlags each = flags;
    each.file = files.front();
    Model model = openModel(each);
    MergeOptions options;
    options.equalStoreys = equalStoreys;
    options.renamed = [&](const std::string& line) {
        if (!flags.quiet)
            say(each.file + ": " + line);
    };
    for (std::size_t i = 1; i < files.size(); ++i) {
        each.file = files[i];
        const Model other = openModel(each);
        try {
            const MergeResult result = merge(model, other, options);
            if (!flags.quiet)
                say(fmt::format("{}: added {}, shared {}, new GlobalIds {}", each.file, result.added, result.shared,
                                result.renamed));
        } catch (const BadValue& error) {
            throw Failure(kFileFailure, fmt::format("cannot merge {}: {}", each.file, error.what()));
        }
    }
    writeModel(model.core(), target, flags);
    return kSuccess;
}

} // namespace vnifc::tool
