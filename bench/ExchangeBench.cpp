// Reading, writing and inverse attributes of one large file, beside the baselines in the same run. The file is named by
// VNIFC_BENCH_FILE; see docs/performance.md for how it is made.
#include "Baselines.h"
#include "SerialTime.h"

#include <IFC4X3/Module.h>
#include <VnIfcCore/VnIfcCheck.h>
#include <VnIfcCore/VnIfcModel.h>
#include <VnIfcCore/VnIfcSchema.h>
#include <VnRx/VnModuleLifeCycleApp.h>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>
#include <vector>

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
    static const bool isReady = vnGetModuleLifeCycleApp()->initApp();
    return isReady ? vnifcGetSchemaPointer() : nullptr;
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
        model.setInverseCounterParts(static_cast<unsigned>(state.range(0)));
    }
    setRate(state);
}

/// A whole load, inverse attributes included. The counter is the share of its processor time that is serial.
void serialShare(benchmark::State& state) {
    if (!ready(state))
        return;
    VnIfcReadOptions options;
    options.threads = static_cast<unsigned>(state.range(0));
    for (auto _ : state) {
        VnIfcModel model(schema());
        bench::startProcessorTime();
        const bool isRead = static_cast<bool>(model.readFile(fileName(), options));
        const bench::ProcessorTime time = bench::processorTime();
        if (!isRead)
            std::abort();
        state.counters["serial"] = time.serial / time.all;
        state.PauseTiming();
        model.clear();
        state.ResumeTiming();
    }
}

void check(benchmark::State& state) {
    if (!ready(state))
        return;
    VnIfcModel& model = loaded();
    model.setInverseCounterParts();
    for (auto _ : state) {
        VnIfcCheck check(model, {});
        check.run(static_cast<unsigned>(state.range(0)));
        state.counters["errors"] = static_cast<double>(check.errors());
    }
    setRate(state);
}

/// Files of 5 to 100 kB, each the beginning of the large one: that refers to itself and has small numbers, as files do,
/// where a piece of the middle refers to what it does not have.
class SmallFiles {
public:
    SmallFiles() {
        std::filesystem::create_directories(m_directory);
        const std::string& text = fileText();
        const std::size_t data = text.find("DATA;") + 6;
        const std::size_t last = text.rfind("ENDSEC;") - 2;
        for (std::size_t i = 0; i < kFiles; ++i) {
            const std::size_t size = 5'000 + i * 7919 % 95'001;
            const std::size_t end = std::min(text.find(";\n", data + size), last) + 2;
            m_paths.push_back(m_directory / (std::to_string(i) + ".ifc"));
            std::ofstream(m_paths.back(), std::ios::binary)
                << std::string_view(text).substr(0, data) << std::string_view(text).substr(data, end - data)
                << "ENDSEC;\nEND-ISO-10303-21;\n";
            m_bytes += std::filesystem::file_size(m_paths.back());
        }
    }
    SmallFiles(const SmallFiles&) = delete;
    SmallFiles& operator=(const SmallFiles&) = delete;
    ~SmallFiles() {
        std::error_code ignored;
        std::filesystem::remove_all(m_directory, ignored);
    }

    const std::vector<std::filesystem::path>& paths() const { return m_paths; }
    std::size_t bytes() const { return m_bytes; }

private:
    static constexpr std::size_t kFiles = 2'000;

    std::filesystem::path m_directory = std::filesystem::temp_directory_path() / "vnifc_bench_files";
    std::vector<std::filesystem::path> m_paths;
    std::size_t m_bytes = 0;
};

/// One file a thread.
void manyFiles(benchmark::State& state) {
    if (!ready(state))
        return;
    static const SmallFiles files;
    for (auto _ : state) {
        std::atomic<std::size_t> next = 0;
        const auto serve = [&] {
            VnIfcReadOptions options;
            options.threads = 1;
            options.inverses = false;
            for (std::size_t i; (i = next.fetch_add(1)) < files.paths().size();) {
                VnIfcModel model(schema());
                if (!model.readFile(files.paths()[i], options))
                    std::abort();
            }
        };
        std::vector<std::jthread> threads;
        for (int i = 0; i < state.range(0); ++i)
            threads.emplace_back(serve);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(files.bytes()));
    state.counters["MB"] = static_cast<double>(files.bytes()) / 1e6;
}

/// What a run takes when nobody else disturbs the machine.
double fastest(const std::vector<double>& times) { return *std::min_element(times.begin(), times.end()); }

void inRatios(benchmark::internal::Benchmark* benchmark) {
    benchmark->Unit(benchmark::kMillisecond)
        ->MeasureProcessCPUTime()
        ->UseRealTime()
        ->ComputeStatistics("fastest", fastest);
}

BENCHMARK(plainScan)->Apply(inRatios);
BENCHMARK(plainTokenizer)->Apply(inRatios);
BENCHMARK(load)->Arg(1)->Arg(2)->Apply(inRatios);
BENCHMARK(setInverses)->Arg(1)->Arg(2)->Apply(inRatios);
BENCHMARK(serialShare)->Arg(2)->Arg(8)->Apply(inRatios);
BENCHMARK(check)->Arg(1)->Arg(2)->Apply(inRatios);
BENCHMARK(manyFiles)->Arg(2)->Apply(inRatios);
BENCHMARK(write)->Arg(1)->Arg(2)->Apply(inRatios);

} // namespace
