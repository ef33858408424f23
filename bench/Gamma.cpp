// SPDX-License-Identifier: Apache-2.0
// Hollywood/GammaCorrection on 8 megapixels: against the half library called for every channel, and against
// one pass over the same memory. The plug-in is loaded anew for each cold run, so that the run builds its
// table.
#include "Ratios.h"

#include "workbench/core/CreatorRegistry.h"
#include "workbench/core/PluginManager.h"

#include "host/core/VCreatorBase.h"
#include "host/rendering/ImageTileProcessor.h"

#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>

namespace {

using namespace krod;
using half_float::half;
using Clock = std::chrono::steady_clock;

constexpr int Width = 3456, Height = 2432; // 8.4 megapixels

/// Pixels as HDR pictures have them: intensities over ten stops, alpha 1.
StrongPtr<Chunk<RGBAHalf>> picture() {
    StrongPtr<Chunk<RGBAHalf>> pixels(new Chunk<RGBAHalf>(std::size_t{Width} * Height));
    std::mt19937 random(1);
    const auto value = [&] { return half(std::exp2(static_cast<float>(random() % 1000) / 100.0f - 6.0f)); };
    for (std::size_t i = 0; i < pixels->elements(); ++i)
        pixels->data()[i] = {value(), value(), value(), half(1.0f)};
    return pixels;
}

/// The module's lines go nowhere while this lives.
class QuietOutput {
public:
    QuietOutput() : real(dup(1)) {
        const int nowhere = open("/dev/null", O_WRONLY);
        dup2(nowhere, 1);
        close(nowhere);
    }
    QuietOutput(const QuietOutput&) = delete;
    QuietOutput& operator=(const QuietOutput&) = delete;
    ~QuietOutput() {
        std::fflush(stdout);
        dup2(real, 1);
        close(real);
    }

private:
    int real;
};

/// A freshly loaded plug-in with its processor; both go with it.
class Processor {
public:
    Processor() {
        library = manager.load(TOVAR_PLIME);
        VCreationContext context;
        module = workbench::CreatorRegistry::find("Hollywood/GammaCorrection")
                     .front()
                     .creator->create("", context);
        const auto& output = module->slots().output("ImageProcessor")->value();
        processor = dynamic_cast<const TypedValue<StrongPtr<ImageTileProcessor>>&>(output).value();
    }
    ImageTileProcessor* operator->() { return processor.get(); }

private:
    workbench::PluginManager manager;
    workbench::LibraryId library = 0;
    StrongPtr<VObject> module;
    StrongPtr<ImageTileProcessor> processor;
};

double secondsOf(Processor& processor, ImageTile& tile) {
    const VValuePool pool;
    const VRenderContext context(pool);
    const QuietOutput quiet;
    const auto start = Clock::now();
    processor->process(context, tile);
    return std::chrono::duration<double>(Clock::now() - start).count();
}

void library(benchmark::State& state) {
    const auto pixels = picture();
    const half exponent(1.5f);
    for (auto _ : state) {
        for (RGBAHalf *pixel = pixels->data(), *end = pixel + pixels->elements(); pixel != end; ++pixel) {
            // The result is kept apart, so that every round asks the library for the same values.
            half r = pow(pixel->r, exponent), g = pow(pixel->g, exponent), b = pow(pixel->b, exponent);
            benchmark::DoNotOptimize(r);
            benchmark::DoNotOptimize(g);
            benchmark::DoNotOptimize(b);
        }
    }
}

void moduleCold(benchmark::State& state) {
    for (auto _ : state) {
        Processor processor;
        ImageTile tile(Width, Height, picture());
        state.SetIterationTime(secondsOf(processor, tile));
    }
}

void moduleWarm(benchmark::State& state) {
    Processor processor;
    for (auto _ : state) {
        ImageTile tile(Width, Height, picture());
        state.SetIterationTime(secondsOf(processor, tile));
    }
}

void memoryPass(benchmark::State& state) {
    for (auto _ : state) {
        const auto pixels = picture();
        const auto start = Clock::now();
        for (RGBAHalf *pixel = pixels->data(), *end = pixel + pixels->elements(); pixel != end; ++pixel) {
            std::uint64_t word;
            std::memcpy(&word, pixel, sizeof word);
            word ^= 0x0000000100010001u;
            std::memcpy(static_cast<void*>(pixel), &word, sizeof word);
        }
        benchmark::ClobberMemory();
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - start).count());
    }
}

constexpr auto Unit = benchmark::kMillisecond;
BENCHMARK(library)->Unit(Unit)->Iterations(1)->Repetitions(3)->ReportAggregatesOnly();
BENCHMARK(moduleCold)->Unit(Unit)->UseManualTime()->Iterations(1)->Repetitions(9)->ReportAggregatesOnly();
BENCHMARK(moduleWarm)->Unit(Unit)->UseManualTime()->Iterations(1)->Repetitions(9)->ReportAggregatesOnly();
BENCHMARK(memoryPass)->Unit(Unit)->UseManualTime()->Iterations(1)->Repetitions(9)->ReportAggregatesOnly();

} // namespace

int main(int argc, char** argv) {
    return bench::run(
        argc, argv,
        {{"library per channel / module, table built in that time", "library", "moduleCold", "at least 300"},
         {"library per channel / module, table warm", "library", "moduleWarm", "for information"},
         {"module, table warm / one pass over the memory", "moduleWarm", "memoryPass", "for information"}});
}
