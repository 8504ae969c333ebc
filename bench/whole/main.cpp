// Times what works on whole models, beside loading a file on one thread, in one run; and tells what memory it takes.
#include <vnifc/Diff.h>
#include <vnifc/Extract.h>
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
#include <map>
#include <string>

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

Time timeOf(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    const std::clock_t processor = std::clock();
    work();
    return {std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(),
            static_cast<double>(std::clock() - processor) / CLOCKS_PER_SEC};
}

} // namespace

int main(int argc, char** argv) try {
    if (argc < 3) {
        std::fputs("usage: vnifc_whole OPERATION FILE [OTHER]\n"
                   "OPERATION: load, diff (with OTHER), optimise, extract (OTHER: selector), sqlite, csv (OTHER: where "
                   "to), text, rules1, rules2 (OTHER: text of the rules; on one and two threads)\n",
                   stderr);
        return 2;
    }
    const std::string operation = argv[1];
    const std::string file = argv[2];
    const std::string other = argc > 3 ? argv[3] : "";
    std::string told;
    const auto count = [&](const char* what, std::uint64_t number) {
        told += ' ' + std::string(what) + ' ' + std::to_string(number);
    };
    const auto rules = [&](unsigned threads) {
        const vnifc::Model model = load(file);
        const VN_SDAI::VnIfcModel& core = model.core();
        const vnifc::Rules rules = vnifc::Rules::load(other, *core.schema());
        const std::uint64_t before = peak();
        return timeOf([&] {
            vnifc::RulesCheckOptions options;
            options.threads = threads;
            const vnifc::RulesCheckResult result = rules.check(core, {}, options);
            std::uint64_t evaluated = 0;
            for (const vnifc::RuleCount& each : result.counts)
                evaluated += each.evaluated;
            count("evaluated", evaluated);
            count("violated", result.violations);
            count("not evaluated", result.notEvaluated);
            count("MB more", (peak() - before) >> 20);
        });
    };
    const std::map<std::string, std::function<Time()>> operations{
        {"rules1", [&] { return rules(1); }},
        {"rules2", [&] { return rules(2); }},
        {"text",
         [&] {
             const vnifc::Model model = load(file);
             return timeOf([&] {
                 const VN_SDAI::VnIfcSchema& schema = *model.core().schema();
                 count("rules", vnifc::Rules::load(other, schema).rules().size());
             });
         }},
        {"load", [&] { return timeOf([&] { count("instances", load(file, 1).size()); }); }},
        {"diff",
         [&] {
             return timeOf([&] {
                 const vnifc::Model before = load(file);
                 const vnifc::Model after = load(other);
                 const vnifc::DiffResult result = vnifc::diff(before, after);
                 count("added", result.added);
                 count("removed", result.removed);
                 count("changed", result.changed);
                 count("same", result.same);
             });
         }},
        {"optimise",
         [&] {
             vnifc::Model model = load(file);
             return timeOf([&] {
                 const vnifc::OptimiseResult result = vnifc::optimise(model);
                 count("kept", result.kept);
                 count("merged", result.merged);
             });
         }},
        {"extract",
         [&] {
             vnifc::Model model = load(file);
             return timeOf([&] {
                 const auto picked = vnifc::select(model, other).toVector();
                 const vnifc::ExtractResult result = vnifc::extract(model, picked);
                 count("picked", picked.size());
                 count("kept", result.kept);
             });
         }},
        {"sqlite",
         [&] {
             const vnifc::Model model = load(file);
             return timeOf([&] { count("rows", vnifc::exportSqlite(model, other).rows); });
         }},
        {"csv",
         [&] {
             const vnifc::Model model = load(file);
             return timeOf([&] { count("rows", vnifc::exportCsv(model, other).rows); });
         }},
    };
    const Time baseline = operation == "load" ? Time() : operations.at("load")();
    told.clear();
    const Time time = operations.at(operation)();
    std::printf("%-9s %6.2f s, processors %.2f s", operation.c_str(), time.wall, time.processor);
    if (baseline.wall > 0)
        std::printf("; of load/1 %.2f, processors %.2f", time.wall / baseline.wall,
                    time.processor / baseline.processor);
    std::printf("; peak %llu MB;%s\n", static_cast<unsigned long long>(peak() >> 20), told.c_str());
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 3;
}
