#include "JsonWriter.h"
#include "Messages.h"
#include "Progress.h"
#include "WholeModel.h"

#include <fmt/format.h>
#include <vnifc/Diff.h>

namespace vnifc::tool {

namespace {

constexpr const char* wordOf(Difference::Kind kind) noexcept {
    switch (kind) {
    case Difference::Kind::kAdded:
        return "added";
    case Difference::Kind::kRemoved:
        return "removed";
    default:
        return "changed";
    }
}

std::string idsOf(const Difference& difference) {
    if (difference.oldId == 0 || difference.newId == 0 || difference.oldId == difference.newId)
        return fmt::format("#{}", std::max(difference.oldId, difference.newId));
    return fmt::format("#{} -> #{}", difference.oldId, difference.newId);
}

void print(Output& output, const Difference& difference) {
    const auto line = [&](const std::string& text) { output.put(printable(text) + '\n'); };
    line(fmt::format("{} {} {}{}{}", wordOf(difference.kind), idsOf(difference), difference.entity,
                     difference.globalId.empty() ? "" : " " + difference.globalId,
                     difference.name.empty() ? "" : " '" + difference.name + "'"));
    for (const DiffDetail& detail : difference.details)
        line(fmt::format("    {}{}{}: {} -> {}", nameOf(detail.aspect), detail.path.empty() ? "" : " ", detail.path,
                         detail.before.empty() ? "nothing" : detail.before,
                         detail.after.empty() ? "nothing" : detail.after));
    if (difference.moreDetails > 0)
        line(fmt::format("    ... and {} more", difference.moreDetails));
}

void printJson(Output& output, const Difference& difference) {
    JsonWriter json(output);
    const auto text = [&](const char* key, std::string_view value) {
        json.key(key);
        json.string(value);
    };
    const auto number = [&](const char* key, std::uint64_t value) {
        json.key(key);
        value == 0 ? json.null() : json.number(value);
    };
    json.beginObject();
    text("kind", wordOf(difference.kind));
    text("globalId", difference.globalId);
    text("entity", difference.entity);
    text("name", difference.name);
    number("oldId", difference.oldId);
    number("newId", difference.newId);
    json.key("details");
    json.beginArray();
    for (const DiffDetail& detail : difference.details) {
        json.beginObject();
        text("aspect", nameOf(detail.aspect));
        text("path", detail.path);
        text("before", detail.before);
        text("after", detail.after);
        json.endObject();
    }
    json.endArray();
    json.key("moreDetails");
    json.number(difference.moreDetails);
    json.endObject();
    json.newLine();
}

void printSummary(Output& output, const DiffResult& result, bool json) {
    output.put(json
                   ? fmt::format("{{\"summary\": {{\"added\": {}, \"removed\": {}, \"changed\": {}, \"same\": {}}}}}\n",
                                 result.added, result.removed, result.changed, result.same)
                   : fmt::format("{} added, {} removed, {} changed, {} the same\n", result.added, result.removed,
                                 result.changed, result.same));
}

} // namespace

ExitCode diffFiles(const ReadFlags& flags, const DiffFlags& options) {
    const Model before = openModel(flags);
    ReadFlags other = flags;
    other.file = options.other;
    const Model after = openModel(other);
    Output output(writeToStandardOutput);
    Progress progress("comparing");
    DiffOptions comparison;
    comparison.tolerance = options.tolerance;
    comparison.ignored = options.ignored;
    comparison.maxDetails = options.limit == 0 ? std::size_t(-1) : options.limit;
    comparison.progress = progress.callback();
    comparison.differences = [&](const Difference& difference) {
        progress.clear();
        options.json ? printJson(output, difference) : print(output, difference);
    };
    const DiffResult result = diff(before, after, comparison);
    progress.clear();
    printSummary(output, result, options.json);
    output.flush();
    return result.isEqual() ? kSuccess : kErrorsInFile;
}

} // namespace vnifc::tool
