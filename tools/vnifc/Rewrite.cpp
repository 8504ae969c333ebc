#include "LoadedFile.h"
#include "Messages.h"
#include "Population.h"
#include "Progress.h"

#include <fmt/format.h>

#include <chrono>
#include <cstdio>

namespace vnifc {

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

std::uint64_t write(const VnIfcModel& model, const std::string& target, const VnIfcWriteOptions& options) {
    if (target == "-") {
        const std::string text = model.writeText(options);
        if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size())
            throw Failure(kFileFailure, "cannot write standard output");
        return text.size();
    }
    const VnIfcFileResult result = model.writeFile(target, options);
    if (!result)
        throw Failure(kFileFailure, fmt::format("cannot write {}: {}", target, result.message));
    return result.bytes;
}

} // namespace

ExitCode rewrite(const ReadFlags& flags, const std::string& target) {
    const LoadedFile file(flags);
    if (!flags.quiet)
        sayWhatWasRead(file);
    Progress progress("writing " + target);
    VnIfcWriteOptions options;
    options.progress = progress.callback();
    options.threads = flags.threads;
    const auto start = std::chrono::steady_clock::now();
    const std::uint64_t bytes = write(file.model(), target, options);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    progress.clear();
    if (!flags.quiet)
        say(fmt::format("wrote {} bytes in {:.3f} s", bytes, seconds));
    return file.exitCode();
}

} // namespace vnifc
