// Times what works on whole models, beside loading a file on one thread, in one process: the fastest of several runs of
// both. Tells what memory each takes at the peak, too.
#include <VnIfcCore/VnIfcSchema.h>
#include <vnifc/Change.h>
#include <vnifc/Diff.h>
#include <vnifc/Extract.h>
#include <vnifc/Merge.h>
#include <vnifc/Optimise.h>
#include <vnifc/Rules.h>
#include <vnifc/Selector.h>
#include <vnifc/Tables.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

/// Bytes of memory at the peak so far; 0 where the system does not tell.
std::uint64_t peak() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("VmHWM:"))
            return std::stoull(line.substr(6)) * 1024;
    return 0;
}

vnifc::Model load(const std::string& file, unsigned threads = 0) { return vnifc::open(file, {.threads = threads}); }

/// What it takes by the clock on the wall, and of all processors: where others use the machine only the second tells.
struct Time {
    double wall = 0;
    double processor = 0;
};

/// Keeps the fastest of each.
void keepFastest(Time& best, const Time& time) {
    best = {std::min(best.wall, time.wall), std::min(best.processor, time.processor)};
}

Time timeOf(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    const std::clock_t processor = std::clock();
    work();
    return {std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(),
            static_cast<double>(std::clock() - processor) / CLOCKS_PER_SEC};
}

/// What is told of one operation, which takes the loaded model and the third argument.
using Counts = std::vector<std::pair<const char*, std::uint64_t>>;
struct Operation {
    bool isWithLoading; ///< its time is that of loading, too
    std::function<Counts(vnifc::Model& model, const std::string& other)> run;
};

std::uint64_t countAll(const vnifc::InstanceRange& range) { return range.count(); }

/// Checks the rules of a text, which is compiled beforehand.
Operation checkOfRules(unsigned threads) {
    return {false, [threads](vnifc::Model& model, const std::string& text) {
                // By the release's name, so that the rules keep the schema when the model of a run goes.
                static const vnifc::Rules rules = vnifc::Rules::load(text, model.core().schema()->name().view());
                model.core().setInverseCounterParts();
                vnifc::RulesCheckOptions options;
                options.threads = threads;
                const vnifc::RulesCheckResult result = rules.check(model.core(), {}, options);
                std::uint64_t evaluated = 0;
                for (const vnifc::RuleCount& each : result.counts)
                    evaluated += each.evaluated;
                return Counts{
                    {"evaluated", evaluated}, {"violated", result.violations}, {"not evaluated", result.notEvaluated}};
            }};
}

const std::map<std::string, Operation> kOperations{
    {"rules1", checkOfRules(1)},
    {"rules2", checkOfRules(2)},
    {"text",
     {false,
      [](vnifc::Model& model, const std::string& text) {
          return Counts{{"rules", vnifc::Rules::load(text, *model.core().schema()).rules().size()}};
      }}},
    {"referrers",
     {false,
      [](vnifc::Model& model, const std::string&) {
          std::uint64_t count = 0;
          for (const vnifc::Instance& instance : model.all())
              count += static_cast<std::uint64_t>(!instance.referrers().empty());
          return Counts{{"referred", count}};
      }}},
    {"select",
     {false,
      [](vnifc::Model& model, const std::string& selector) {
          return Counts{{"picked", countAll(vnifc::select(model, selector))}};
      }}},
    {"set",
     {false,
      [](vnifc::Model& model, const std::string& selector) {
          const std::vector<vnifc::Instance> picked = vnifc::select(model, selector).toVector();
          return Counts{{"changed", vnifc::setFromText(picked, "Pset_Bench.Number", "IFCREAL(7.5)")}};
      }}},
    {"diff",
     {true,
      [](vnifc::Model& before, const std::string& other) {
          const vnifc::Model after = load(other);
          const vnifc::DiffResult result = vnifc::diff(before, after);
          return Counts{
              {"added", result.added}, {"removed", result.removed}, {"changed", result.changed}, {"same", result.same}};
      }}},
    {"optimise",
     {true,
      [](vnifc::Model& model, const std::string&) {
          const vnifc::OptimiseResult result = vnifc::optimise(model);
          return Counts{{"kept", result.kept}, {"merged", result.merged}};
      }}},
    {"extract",
     {false,
      [](vnifc::Model& model, const std::string& selector) {
          const auto picked = vnifc::select(model, selector).toVector();
          return Counts{{"picked", picked.size()}, {"kept", vnifc::extract(model, picked).kept}};
      }}},
    {"merge",
     {true,
      [](vnifc::Model& model, const std::string& other) {
          const vnifc::MergeResult result = vnifc::merge(model, load(other));
          return Counts{{"added", result.added}, {"shared", result.shared}, {"converted", result.converted}};
      }}},
    {"sqlite",
     {false,
      [](vnifc::Model& model, const std::string& other) {
          return Counts{{"rows", vnifc::exportSqlite(model, other).rows}};
      }}},
    {"csv",
     {false,
      [](vnifc::Model& model, const std::string& other) {
          return Counts{{"rows", vnifc::exportCsv(model, other).rows}};
      }}},
};

int usage() {
    std::fputs("usage: vnifc_whole OPERATION FILE [OTHER [RUNS]]\n"
               "OPERATION, and what OTHER is: referrers; select, set, extract (a selector); diff, merge (a file), "
               "optimise: with loading; sqlite, csv (where to); text (of rules: reads and compiles it), rules1, "
               "rules2 (checks them, with that many threads)\n",
               stderr);
    return 2;
}

} // namespace

int main(int argc, char** argv) try {
    const auto found = argc < 3 ? kOperations.end() : kOperations.find(argv[1]);
    if (found == kOperations.end())
        return usage();
    const Operation& operation = found->second;
    const std::string file = argv[2], other = argc > 3 ? argv[3] : "";
    const int runs = argc > 4 ? std::stoi(argv[4]) : 5;
    constexpr double kNever = std::numeric_limits<double>::max();
    Time baseline{kNever, kNever}, time{kNever, kNever};
    for (int i = 0; i < runs; ++i)
        keepFastest(baseline, timeOf([&] { load(file, 1); }));
    const std::uint64_t loading = peak();
    Counts counts;
    for (int i = 0; i < runs; ++i) {
        std::optional<vnifc::Model> model;
        Time each = timeOf([&] { model = load(file); });
        const Time work = timeOf([&] { counts = operation.run(*model, other); });
        each = operation.isWithLoading ? Time{each.wall + work.wall, each.processor + work.processor} : work;
        keepFastest(time, each);
    }
    std::printf("%-9s %7.3f s, of load/1 %.2f (processors %.2f); memory %llu MB, of load %.2f;", argv[1], time.wall,
                time.wall / baseline.wall, time.processor / baseline.processor,
                static_cast<unsigned long long>(peak() >> 20),
                static_cast<double>(peak()) / static_cast<double>(std::max<std::uint64_t>(loading, 1)));
    for (const auto& [what, number] : counts)
        std::printf(" %s %llu (%.0f/s)", what, static_cast<unsigned long long>(number),
                    static_cast<double>(number) / time.wall);
    std::printf("\n");
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 3;
}
