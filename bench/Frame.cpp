// SPDX-License-Identifier: Apache-2.0
// One frame of each display against the same frame in bare OpenGL, both into the same destination; and the share
// that everything about the shader's text has in a frame.
#include "BareFrame.h"
#include "Median.h"

#include "workbench/gl/RenderSession.h"
#include "workbench/gl/ShaderCapture.h"

#include <epoxy/gl.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>

namespace {

using namespace krod;
using namespace bench;

struct Size {
    int width, height;
};
constexpr std::array Sizes{Size{1920, 1080}, Size{1280, 720}, Size{64, 64}};

/// As many pairs as take about the same time at each size.
int pairsOf(const DisplayCase& about, const Size& size) {
    const double share = 1280.0 * 720.0 / (static_cast<double>(size.width) * size.height);
    return std::clamp(static_cast<int>(about.pairs * share), std::min(about.pairs, 5), 200);
}

/// Seconds to read the parameters and to compose the text, as in every draw. No session is open, so that the
/// state of OpenGL, which is kept around a draw, is not in the time.
double composing(const DisplayCase& about) {
    Modules modules;
    const auto display = modules.make<MSDeferredObjectDisplay>(about.key, about.settings);
    const VValuePool pool;
    std::vector<double> times;
    for (int i = 0; i < 300; ++i)
        times.push_back(secondsOf([&] { static_cast<void>(workbench::captureShader(*display, pool)); }));
    return median(times);
}

/// Seconds to find the program of a text that is in the cache.
double finding(MSDeferredObjectDisplay& display, const VValuePool& pool) {
    const auto texts = workbench::captureShader(display, pool);
    auto& programs = workbench::RenderSession::require("benchmark").programs();
    std::vector<double> times;
    for (int i = 0; i < 300; ++i)
        times.push_back(secondsOf([&] { static_cast<void>(programs.find(texts.front())); }));
    return median(times);
}

void measure(const DisplayCase& about, const Size& size) {
    const double composition = composing(about);
    workbench::RenderSession session;
    Modules modules;
    const auto scene = modules.make<VGLRenderObject>("Scene/Columns");
    const auto display = modules.make<MSDeferredObjectDisplay>(about.key, about.settings);
    display->setInput(scene);
    const VValuePool pool;
    const Destination destination(size.width, size.height, scene->bounds());
    VGLRenderContext context(pool, size.width, size.height);
    const auto drawDisplay = [&] {
        destination.begin();
        display->render(context);
        glFinish();
    };
    drawDisplay(); // fills the caches, and the program's uniforms
    BareFrame bare(about, *display, *scene, destination, pool);
    bare.draw();

    Pairs pairs;
    for (int i = pairsOf(about, size); i > 0; --i) pairs.measure(drawDisplay, [&] { bare.draw(); });
    const double frame = median(pairs.first), text = composition + finding(*display, pool);
    std::printf("%-24s %4dx%-4d %10.2f %6.3f %6.3f .. %.3f %9.1f %8.3f %%\n", about.label.c_str(), size.width,
                size.height, frame * 1e3, median(pairs.ratios), quantile(pairs.ratios, 0.25),
                quantile(pairs.ratios, 0.75), text * 1e6, 100 * text / frame);
    std::fflush(stdout);
}

} // namespace

/// bench_frame [PART]: only displays whose label contains the part.
int main(int argc, char** argv) {
    std::puts("display against bare OpenGL; wanted: at most 1.10, at 64x64 at most 1.5; text: below 1 % at "
              "1280x720");
    std::puts("display                       size    frame ms  ratio  middle half      text us  share of the "
              "frame");
    for (const Size& size : Sizes)
        for (const DisplayCase& about : displayCases())
            if (argc < 2 || std::strstr(about.label.c_str(), argv[1])) measure(about, size);
    return 0;
}
