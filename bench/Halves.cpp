// SPDX-License-Identifier: Apache-2.0
// The two processors that work on halves, on 8 megapixels: against the half library called for every channel, bit for
// bit, and against one pass over the same memory. The plug-in is loaded anew for each cold run, so that the run builds
// its table.
#include "Median.h"
#include "Modules.h"

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
constexpr int Rounds = 9;

/// What a module does to one channel, as the half library says.
struct HalfCase {
    const char* key;
    half (*function)(half);
    const char* wantedCold;
    const char* wantedWarm;
};

half power(half c) { return pow(c, half(1.5f)); }
half angle(half c) {
    const float t = atan(c);
    return half(static_cast<float>(t * 0.6366197723675814L));
}

constexpr HalfCase Cases[] = {{"Hollywood/GammaCorrection", power, "at least 300", "for information"},
                              {"Hollywood/ArcTangens", angle, "for information", "at least 60"}};

/// Intensities over ten stops, as HDR pictures have them, and alpha 1.
std::vector<RGBAHalf> intensities() {
    std::vector<RGBAHalf> pixels(std::size_t{Width} * Height);
    std::mt19937 random(1);
    const auto value = [&] { return half(std::exp2(static_cast<float>(random() % 1000) / 100.0f - 6.0f)); };
    for (RGBAHalf& pixel : pixels) pixel = {value(), value(), value(), half(1.0f)};
    return pixels;
}

/// A new copy of the same picture.
Pixels picture() {
    static const std::vector<RGBAHalf> original = intensities();
    return Pixels(new Chunk<RGBAHalf>(original));
}

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

double passOver(const Pixels& pixels) {
    return secondsOf([&] {
        for (RGBAHalf *pixel = pixels->data(), *end = pixel + pixels->elements(); pixel != end; ++pixel) {
            const auto word = std::bit_cast<std::uint64_t>(*pixel) ^ 0x0000000100010001U;
            *pixel = std::bit_cast<RGBAHalf>(word);
        }
    });
}

bool areSame(const Pixels& a, const Pixels& b) {
    return std::memcmp(static_cast<const void*>(a->data()), b->data(), a->bytes()) == 0;
}

void print(const char* what, const std::vector<double>& ratios, const char* wanted) {
    std::printf("  %-44s %8.2f   %.2f .. %.2f   (%s)\n", what, median(ratios), quantile(ratios, 0.25),
                quantile(ratios, 0.75), wanted);
}

/// Whether the module gives what the library gives.
bool measure(const HalfCase& about) {
    std::vector<double> cold, warm, table, passes, times;
    bool same = true;
    for (int round = 0; round < Rounds; ++round) {
        const auto byModule = picture(), byLibrary = picture();
        const double coldSeconds = processCold(about, picture());
        Modules modules;
        const auto module = modules.make(about.key);
        const auto processor = processorOf(*module);
        process(*processor, picture()); // builds the table
        const double warmSeconds = process(*processor, byModule), pass = passOver(picture());
        const double library = callLibrary(about, byLibrary);
        same = same && areSame(byModule, byLibrary);
        cold.push_back(library / coldSeconds);
        warm.push_back(library / warmSeconds);
        table.push_back((coldSeconds - warmSeconds) * 1e3);
        passes.push_back(warmSeconds / pass);
        times.push_back(warmSeconds * 1e3);
    }
    std::printf("%s, %dx%d: %s\n", about.key, Width, Height,
                same ? "bit for bit as the half library" : "DIFFERS from the half library");
    print("library per channel / module, table built too", cold, about.wantedCold);
    print("library per channel / module, table warm", warm, about.wantedWarm);
    print("module, table warm / one pass over the memory", passes, "for information");
    print("building the table, ms", table, "for information");
    print("module, table warm, ms", times, "for information");
    return same;
}

} // namespace

int main() {
    std::puts("medians, and the middle half of what was measured");
    bool same = true;
    for (const HalfCase& about : Cases) same = measure(about) && same;
    return same ? 0 : 1;
}
