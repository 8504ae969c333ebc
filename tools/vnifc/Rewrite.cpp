#include "LoadedFile.h"
#include "Messages.h"
#include "Population.h"
#include "WriteModel.h"

#include <fmt/format.h>

#include <chrono>

namespace vnifc::tool {

using namespace VN_SDAI;

namespace {

void sayWhatWasRead(const LoadedFile& file) {
    say(fmt::format("read {} instances, {} bytes in {:.3f} s: {}", file.model().count(), file.result().bytes,
                    file.seconds(), file.findings()));
    const Population::Counts foreign = Population(file.model()).withoutClass;
    if (foreign.empty())
        return;
    std::vector<std::string> keywords;
    for (const auto& [keyword, count] : byFrequency(foreign))
        keywords.push_back(fmt::format("{} {}", count, keyword));
    say(fmt::format("{} instances without a class, kept as text: {}", total(foreign), fmt::join(keywords, ", ")));
}

} // namespace

ExitCode rewrite(const ReadFlags& flags, const std::string& target) {
    const LoadedFile file(flags);
    if (!flags.quiet)
        sayWhatWasRead(file);
    const auto start = std::chrono::steady_clock::now();
    const std::uint64_t bytes = writeModel(file.model(), target, flags);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (!flags.quiet)
        say(fmt::format("wrote {} bytes in {:.3f} s", bytes, seconds));
    return file.exitCode();
}

} // namespace vnifc::tool
