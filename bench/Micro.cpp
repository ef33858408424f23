// SPDX-License-Identifier: Apache-2.0
// What is short: texts of values, composing a shader's text, one half, one row of pixels.
#include "Displays.h"
#include "Modules.h"
#include "Report.h"

#include "workbench/gl/ShaderCapture.h"

#include "host/values/VValueTrait.h"

#include <benchmark/benchmark.h>

#include <map>

namespace {

using namespace krod;
using half_float::half;

constexpr const char* Repetitions = "9";

void textOfDouble(benchmark::State& state) {
    double value = 0.1;
    for (auto _ : state) {
        benchmark::DoNotOptimize(VValueTrait<double>::Text(value));
        value += 0.1;
    }
}

void doubleOfText(benchmark::State& state) {
    double value = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(VValueTrait<double>::setValueFromText(value, "10.000000000000002"));
        benchmark::DoNotOptimize(value);
    }
}

void halfPower(benchmark::State& state) {
    half value(1.7f);
    for (auto _ : state) {
        benchmark::DoNotOptimize(value);
        benchmark::DoNotOptimize(pow(value, half(1.5f)));
    }
}

void halfArcTangent(benchmark::State& state) {
    half value(1.7f);
    for (auto _ : state) {
        benchmark::DoNotOptimize(value);
        benchmark::DoNotOptimize(atan(value));
    }
}

/// One row of 4096 pixels through a processor whose table is warm.
void rowThrough(benchmark::State& state, bench::Modules& modules, const char* key) {
    const auto module = modules.make(key);
    const auto processor = bench::processorOf(*module);
    const VValuePool pool;
    const VRenderContext context(pool);
    ImageTile tile(4096, 1, StrongPtr<Chunk<RGBAHalf>>(new Chunk<RGBAHalf>(4096)));
    const bench::QuietOutput quiet; // a processor tells of each tile
    for (auto _ : state) processor->process(context, tile);
}

void composing(benchmark::State& state, bench::Modules& modules, const bench::DisplayCase& about) {
    const auto display = modules.make<MSDeferredObjectDisplay>(about.key, about.settings);
    const VValuePool pool;
    for (auto _ : state) benchmark::DoNotOptimize(workbench::captureShader(*display, pool));
}

/// One row of a table for each benchmark: the median of its repetitions and their spread.
class MarkdownReporter : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override {
        bench::table("In this process, by Google Benchmark, nanoseconds:", {"what", "time"});
        return true;
    }
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs)
            if (run.run_type == Run::RT_Iteration)
                times[run.run_name.function_name].push_back(run.GetAdjustedRealTime());
    }
    void Finalize() override {
        for (const auto& [name, values] : times) bench::row({name, bench::spread(values, 1)});
    }

private:
    std::map<std::string, std::vector<double>> times;
};

} // namespace

int main(int argc, char** argv) {
    bench::Modules modules;
    const auto add = [](const std::string& name, auto work) {
        benchmark::RegisterBenchmark(name.c_str(), work);
    };
    add("text of a double", textOfDouble);
    add("double of a text", doubleOfText);
    add("half library, power", halfPower);
    add("half library, arc tangent", halfArcTangent);
    for (const char* key : {"Hollywood/GammaCorrection", "Hollywood/ArcTangens"})
        add(std::string("4096 pixels through ") + key,
            [&modules, key](benchmark::State& state) { rowThrough(state, modules, key); });
    for (const bench::DisplayCase& about : bench::displayCases())
        add("composing the text of " + about.label,
            [&](benchmark::State& state) { composing(state, modules, about); });
    // Repetitions of all take turns, so that the machine's speed changes for all alike.
    std::string repetitions = std::string("--benchmark_repetitions=") + Repetitions,
                shuffled = "--benchmark_enable_random_interleaving=true", least = "--benchmark_min_time=0.02";
    std::vector<char*> arguments{argv[0], repetitions.data(), shuffled.data(), least.data()};
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    MarkdownReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return 0;
}
