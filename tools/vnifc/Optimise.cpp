#include "Messages.h"
#include "WholeModel.h"
#include "WriteModel.h"

#include <fmt/format.h>
#include <vnifc/Optimise.h>

namespace vnifc::tool {

ExitCode optimiseFile(const ReadFlags& flags, const std::string& target, bool unusedObjects) {
    Model model = openModel(flags);
    const OptimiseResult result = optimise(model, {.unusedObjects = unusedObjects});
    writeModel(model.core(), target, flags);
    if (!flags.quiet)
        say(fmt::format("kept {}, merged {}, left out {}", result.kept, result.merged, result.removed));
    return kSuccess;
}

} // namespace vnifc::tool
