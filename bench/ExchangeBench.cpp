// Reading, writing and inverse attributes of one large file, beside the baselines in the same run. The file is named by
// VNIFC_BENCH_FILE; see docs/performance.md for how it is made.
#include "Baselines.h"

#include <IFC4X3/Module.h>
#include <VnIfcCore/VnIfcModel.h>
#include <VnIfcCore/VnIfcSchema.h>
#include <VnRx/VnModuleLifeCycleApp.h>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

using namespace VN_SDAI;

const char* fileName() { return std::getenv("VNIFC_BENCH_FILE"); }

const std::string& fileText() {
    static const std::string text = [] {
        std::ifstream in(fileName(), std::ios::binary);
        return std::string{std::istreambuf_iterator<char>(in), {}};
    }();
    return text;
}

bool ready(benchmark::State& state) {
    if (fileName() && std::filesystem::exists(fileName()))
        return true;
    state.SkipWithError("VNIFC_BENCH_FILE names no file");
    return false;
}

const VnIfcSchema* schema() {
    vnGetModuleLifeCycleApp()->initApp();
    return vnifcGetSchemaPointer();
}

void setRate(benchmark::State& state) {
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(std::filesystem::file_size(fileName())));
}

VnIfcReadOptions readOptions(const benchmark::State& state) {
    VnIfcReadOptions options;
    options.threads = static_cast<unsigned>(state.range(0));
    options.inverses = false;
    return options;
}

void plainScan(benchmark::State& state) {
    if (!ready(state))
        return;
    for (auto _ : state)
        benchmark::DoNotOptimize(bench::scan(fileText()));
    setRate(state);
}

void plainTokenizer(benchmark::State& state) {
    if (!ready(state))
        return;
    for (auto _ : state)
        benchmark::DoNotOptimize(bench::tokenize(fileText()));
    setRate(state);
}

void load(benchmark::State& state) {
    if (!ready(state))
        return;
    for (auto _ : state) {
        VnIfcModel model(schema());
        const VnIfcFileResult result = model.readFile(fileName(), readOptions(state));
        if (!result)
            return state.SkipWithError(result.message.c_str());
        state.counters["instances"] = static_cast<double>(model.count());
        state.PauseTiming();
        model.clear();
        state.ResumeTiming();
    }
    setRate(state);
}

/// A model of the file, loaded once for all benchmarks that only look at it.
VnIfcModel& loaded() {
    static VnIfcModel model(schema());
    if (model.count() == 0) {
        VnIfcReadOptions options;
        options.inverses = false;
        if (!model.readFile(fileName(), options))
            std::abort();
    }
    return model;
}

void write(benchmark::State& state) {
    if (!ready(state))
        return;
    VnIfcWriteOptions options;
    options.threads = static_cast<unsigned>(state.range(0));
    const std::filesystem::path target = std::filesystem::temp_directory_path() / "vnifc_bench.ifc";
    VnIfcModel& model = loaded();
    for (auto _ : state) {
        const VnIfcFileResult result = model.writeFile(target, options);
        if (!result)
            return state.SkipWithError(result.message.c_str());
    }
    std::filesystem::remove(target);
    setRate(state);
}

void setInverses(benchmark::State& state) {
    if (!ready(state))
        return;
    VnIfcModel model(schema());
    VnIfcReadOptions options;
    options.inverses = false;
    for (auto _ : state) {
        state.PauseTiming();
        model.clear();
        if (!model.readFile(fileName(), options))
            std::abort();
        state.ResumeTiming();
        model.setInverseCounterParts();
    }
    setRate(state);
}

/// What a run takes when nobody else disturbs the machine.
double fastest(const std::vector<double>& times) { return *std::min_element(times.begin(), times.end()); }

void inRatios(benchmark::internal::Benchmark* benchmark) {
    benchmark->Unit(benchmark::kMillisecond)->UseRealTime()->ComputeStatistics("fastest", fastest);
}

BENCHMARK(plainScan)->Apply(inRatios);
BENCHMARK(plainTokenizer)->Apply(inRatios);
BENCHMARK(load)->Arg(1)->Arg(2)->Apply(inRatios);
BENCHMARK(setInverses)->Apply(inRatios);
BENCHMARK(write)->Arg(1)->Arg(2)->Apply(inRatios);

} // namespace
