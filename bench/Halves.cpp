// SPDX-License-Identifier: Apache-2.0
// The two processors that work on halves, on 8 megapixels: against the half library called for every channel, bit for
// bit, and against one pass over the same memory; and other ways to write their loop. The plug-in is loaded anew for
// each cold run, so that the run builds its table.
#include "HalfLoops.h"
#include "Median.h"
#include "Modules.h"
#include "Report.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <vector>

namespace {

using namespace krod;
using namespace bench;
using half_float::half;
using Pixels = StrongPtr<Chunk<RGBAHalf>>;

constexpr int Width = 3456, Height = 2432; // 8.4 megapixels
constexpr int Rounds = 5, LoopRounds = 9;  // the library takes seconds

/// What a module does to one channel, as the half library says.
struct HalfCase {
    const char* key;
    half (*function)(half);
    double wantedCold, wantedWarm; ///< times as fast as the library; 0: for information
};

half power(half c) { return pow(c, half(1.5f)); }
half angle(half c) {
    const float t = atan(c);
    return half(static_cast<float>(t * 0.6366197723675814L));
}

constexpr HalfCase Cases[] = {{"Hollywood/GammaCorrection", power, 300, 0},
                              {"Hollywood/ArcTangens", angle, 0, 60}};

/// Intensities over ten stops, as HDR pictures have them, and alpha 1.
std::vector<RGBAHalf> intensities() {
    std::vector<RGBAHalf> pixels(std::size_t{Width} * Height);
    std::mt19937 random(1);
    const auto value = [&] { return half(std::exp2(static_cast<float>(random() % 1000) / 100.0f - 6.0f)); };
    for (RGBAHalf& pixel : pixels) pixel = {value(), value(), value(), half(1.0f)};
    return pixels;
}

/// The same in every run.
const std::vector<RGBAHalf>& original() {
    static const std::vector<RGBAHalf> pixels = intensities();
    return pixels;
}

Pixels picture() { return Pixels(new Chunk<RGBAHalf>(original())); }

double process(ImageTileProcessor& processor, const Pixels& pixels) {
    const VValuePool pool;
    const VRenderContext context(pool);
    ImageTile tile(Width, Height, pixels);
    const QuietOutput quiet;
    return secondsOf([&] { processor.process(context, tile); });
}

double processCold(const HalfCase& about, const Pixels& pixels) {
    Modules modules;
    const auto module = modules.make(about.key);
    return process(*processorOf(*module), pixels);
}

double callLibrary(const HalfCase& about, const Pixels& pixels) {
    return secondsOf([&] {
        for (RGBAHalf *pixel = pixels->data(), *end = pixel + pixels->elements(); pixel != end; ++pixel)
            for (half* channel : {&pixel->r, &pixel->g, &pixel->b}) *channel = about.function(*channel);
    });
}

bool areSame(const Pixels& a, const Pixels& b) {
    return std::memcmp(static_cast<const void*>(a->data()), b->data(), a->bytes()) == 0;
}

void judge(const HalfCase& about, const char* what, double limit, const std::vector<double>& ratios) {
    if (limit > 0)
        wanted("half library called per channel, against `" + std::string(about.key) + "`, " + what,
               {Limit::Side::AtLeast, limit, 0}, ratios);
}

/// Whether the module gives what the library gives.
bool measure(const HalfCase& about) {
    std::vector<double> cold, warm, building, plain, ahead, times;
    bool same = true;
    for (int round = 0; round < Rounds; ++round) {
        const auto byModule = picture(), byLibrary = picture(), passed = picture();
        const double coldSeconds = processCold(about, picture());
        Modules modules;
        const auto module = modules.make(about.key);
        const auto processor = processorOf(*module);
        process(*processor, picture()); // builds the table
        const double warmSeconds = process(*processor, byModule);
        plain.push_back(warmSeconds / secondsOf([&] { passPlainly(passed->data(), passed->elements()); }));
        ahead.push_back(warmSeconds / secondsOf([&] { passAhead(passed->data(), passed->elements()); }));
        const double library = callLibrary(about, byLibrary);
        same = same && areSame(byModule, byLibrary);
        cold.push_back(library / coldSeconds);
        warm.push_back(library / warmSeconds);
        building.push_back((coldSeconds - warmSeconds) * 1e3);
        times.push_back(warmSeconds * 1e3);
    }
    row({'`' + std::string(about.key) + '`', spread(cold, 0), spread(warm, 0), spread(building, 1) + " ms",
         spread(times, 1) + " ms", spread(plain), spread(ahead), same ? "yes" : "**no**"});
    judge(about, "its table built in that time", about.wantedCold, cold);
    judge(about, "table warm", about.wantedWarm, warm);
    return same;
}

Answers answersOf(const HalfCase& about) {
    Answers answers{};
    for (std::uint32_t c = 0; c < 65536; ++c)
        answers[c] =
            std::bit_cast<std::uint16_t>(about.function(std::bit_cast<half>(static_cast<std::uint16_t>(c))));
    return answers;
}

/// Milliseconds of all loops in turn over a number of pixels, `times` times in a row.
std::vector<std::vector<double>> timesOf(const std::vector<HalfLoop>& loops, const Answers& answers,
                                         std::size_t count, int times) {
    std::vector<std::vector<double>> milliseconds(loops.size() + 2);
    const Pixels pixels = picture();
    const auto note = [&](std::size_t place, const auto& apply) {
        const double seconds = secondsOf([&] {
            for (int i = 0; i < times; ++i) apply(pixels->data(), count);
        });
        milliseconds[place].push_back(seconds * 1e3);
    };
    for (int round = 0; round < LoopRounds; ++round) {
        std::ranges::copy(original(), pixels->data());
        for (std::size_t i = 0; i < loops.size(); ++i)
            note(i, [&](RGBAHalf* data, std::size_t n) { loops[i].apply(answers, data, n); });
        note(loops.size(), passPlainly);
        note(loops.size() + 1, passAhead);
    }
    return milliseconds;
}

/// Whether a loop gives what the library gives, also for a number of pixels that is no multiple of anything.
bool isRight(const HalfLoop& loop, const Answers& answers) {
    std::vector<RGBAHalf> pixels(65536 + 13), expected;
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const auto c = std::bit_cast<half>(static_cast<std::uint16_t>(i));
        pixels[i] = {c, c, c, c};
        const auto answer = std::bit_cast<half>(answers[i % 65536]);
        expected.push_back({answer, answer, answer, c});
    }
    loop.apply(answers, pixels.data(), pixels.size());
    return std::memcmp(static_cast<const void*>(pixels.data()), expected.data(),
                       pixels.size() * sizeof pixels[0]) == 0;
}

/// Whether all loops are right.
bool compareLoops() {
    // The arc tangent maps intensities to intensities, so that the same pixels serve again and again.
    const Answers answers = answersOf(Cases[1]);
    const auto loops = halfLoops();
    constexpr std::size_t Near = 1 << 17, Far = std::size_t{Width} * Height;
    const auto far = timesOf(loops, answers, Far, 1), near = timesOf(loops, answers, Near, 64);
    bool right = true;
    table(
        "Other loops, 8.4 megapixels, and 131,072 pixels (1 MiB) 64 times; the table is that of ArcTangens:",
        {"loop", "8.4 megapixels", "against a pass", "in the cache", "against a pass", "bit for bit"});
    const auto print = [&](const std::string& label, std::size_t i, const char* check) {
        const auto ratio = [&](const std::vector<std::vector<double>>& times) {
            std::vector<double> ratios;
            for (std::size_t k = 0; k < times[i].size(); ++k) ratios.push_back(times[i][k] / times.back()[k]);
            return spread(ratios);
        };
        row({label, fixed(median(far[i]), 1) + " ms", ratio(far), fixed(median(near[i]), 1) + " ms",
             ratio(near), check});
    };
    for (std::size_t i = 0; i < loops.size(); ++i) {
        const bool same = isRight(loops[i], answers) && isRight(loops[i], answersOf(Cases[0]));
        right = right && same;
        print(loops[i].label, i, same ? "yes" : "**no**");
    }
    print("a pass over the memory, plain", loops.size(), "");
    print("a pass over the memory, fetching ahead", loops.size() + 1, "");
    return right;
}

} // namespace

/// bench_halves [loops]: only the loops.
int main(int argc, char**) {
    bool same = true;
    if (argc < 2) {
        table("Half processors on 8.4 megapixels:",
              {"module", "library / module, table built too", "library / module, table warm",
               "building the table", "table warm", "against a plain pass over the memory",
               "against a pass that fetches ahead", "bit for bit as the library"});
        for (const HalfCase& about : Cases) same = measure(about) && same;
    }
    return compareLoops() && same ? 0 : 1;
}
