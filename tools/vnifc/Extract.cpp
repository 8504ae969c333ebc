#include "Messages.h"
#include "WholeModel.h"
#include "WriteModel.h"

#include <fmt/format.h>
#include <vnifc/Extract.h>
#include <vnifc/Selector.h>

namespace vnifc::tool {

ExitCode extractFile(const ReadFlags& flags, const std::string& target, const std::string& selector) {
    const Selector wanted(selector);
    Model model = openModel(flags);
    const std::vector<Instance> picked = wanted.select(model).toVector();
    const ExtractResult result = extract(model, picked);
    writeModel(model.core(), target, flags);
    if (!flags.quiet)
        say(fmt::format("picked {}, kept {}, left out {}", picked.size(), result.kept, result.removed));
    return kSuccess;
}

} // namespace vnifc::tool
