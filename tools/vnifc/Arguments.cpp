#include "Arguments.h"

#include <VnIfcCore/VnIfcFile.h>

#include <fmt/format.h>

#include <string_view>
#include <vector>

namespace vnifc::tool {

void addReleaseOption(CLI::App& command, std::string& release, const std::string& description) {
    std::vector<std::string_view> names;
    for (const VN_SDAI::VnIfcRelease& each : VN_SDAI::vnIfcReleases())
        names.push_back(each.name);
    command.add_option("--schema", release, fmt::format("{} ({})", description, fmt::join(names, ", ")))
        ->option_text("NAME");
}

void addLoadFlags(CLI::App& command, ReadFlags& flags) {
    command.add_option("--threads", flags.threads, "number of threads; as many as the machine has by default")
        ->check(CLI::Range(1, 256));
    command.add_flag("--quiet", flags.quiet, "print no diagnostics");
    addReleaseOption(command, flags.release, "release whose classes are taken; by default the one that the file names");
}

void addReadFlags(CLI::App& command, ReadFlags& flags) {
    command.add_option("FILE", flags.file, "exchange file; - is standard input")->required();
    addLoadFlags(command, flags);
}

} // namespace vnifc::tool
