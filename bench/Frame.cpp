// SPDX-License-Identifier: Apache-2.0
// One frame of each display against the same frame in bare OpenGL, both into the same destination; and the share
// that everything about the shader's text has in a frame.
#include "BareFrame.h"
#include "Files.h"
#include "MeshFiles.h"
#include "Report.h"
#include "Stage.h"

#include "workbench/gl/RenderSession.h"
#include "workbench/gl/ShaderCapture.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace {

using namespace krod;
using namespace bench;

struct Size {
    int width, height;
};
constexpr Size Large{1920, 1080}, Middle{1280, 720}, Small{64, 64};
constexpr std::uint32_t FewTriangles = 70'000, ManyTriangles = 1'000'000;

/// As many pairs as take about the same time at each size.
int pairsOf(const DisplayCase& about, const Size& size) {
    const double share = 1280.0 * 720.0 / (static_cast<double>(size.width) * size.height);
    return std::clamp(static_cast<int>(about.pairs * share), std::min(about.pairs, 5), 100);
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

struct Measured {
    Pairs frames;       ///< of the display, and of bare OpenGL
    double finding = 0; ///< seconds to find the program
};

Measured measure(const DisplayCase& about, const Setting& model, const Size& size, int pairs) {
    const workbench::RenderSession session;
    Modules modules;
    Stage stage(modules, about.key, about.settings, model, size.width, size.height);
    stage.draw(); // fills the caches, and the program's uniforms
    BareFrame bare(about, *stage.display, *stage.scene, stage.destination, stage.pool);
    bare.draw();
    Measured measured;
    for (; pairs > 0; --pairs) measured.frames.measure([&] { stage.draw(); }, [&] { bare.draw(); });
    measured.finding = finding(*stage.display, stage.pool);
    return measured;
}

/// The ratios of all displays at one size, which together have a limit: the display that is furthest above it counts.
class Worst {
public:
    void add(const std::vector<double>& ratios) {
        if (median(ratios) > median(worst)) worst = ratios;
    }
    void judge(const std::string& what, double limit) const {
        if (!worst.empty()) wanted(what + ", the worst display", {Limit::Side::AtMost, limit}, worst);
    }

private:
    std::vector<double> worst;
};

void overSizes(const std::vector<DisplayCase>& cases) {
    Worst large, middle, small;
    std::vector<double> shares;
    table("Ratio to bare OpenGL, `demo:columns`:",
          {"display", "1920x1080", "1280x720", "64x64", "frame at 1280x720", "text, microseconds",
           "text, share of the frame"});
    for (const DisplayCase& about : cases) {
        std::string cells[3];
        const std::pair<Size, Worst*> sizes[] = {{Large, &large}, {Middle, &middle}, {Small, &small}};
        double frame = 0, text = composing(about);
        for (std::size_t i = 0; i < std::size(sizes); ++i) {
            const auto& [size, worst] = sizes[i];
            if (about.isSlow() && size.width == Large.width) continue;
            const Measured measured = measure(about, {}, size, pairsOf(about, size));
            worst->add(measured.frames.ratios);
            cells[i] = spread(measured.frames.ratios);
            if (size.width != Middle.width) continue;
            frame = median(measured.frames.first);
            text += measured.finding;
        }
        shares.push_back(100 * text / frame);
        row({about.label, cells[0], cells[1], cells[2], fixed(frame * 1e3, 1) + " ms", fixed(text * 1e6, 1),
             fixed(shares.back(), 4) + " %"});
    }
    large.judge("display against bare OpenGL, 1920x1080", 1.1);
    middle.judge("display against bare OpenGL, 1280x720", 1.1);
    small.judge("display against bare OpenGL, 64x64", 1.5);
    wanted("everything about a shader's text, share of a frame at 1280x720, the largest",
           {Limit::Side::AtMost, 1, 4, " %"}, {*std::ranges::max_element(shares)});
}

void overModels(const std::vector<DisplayCase>& cases) {
    const Folder folder;
    const std::string few = folder.file("few.ply"), many = folder.file("many.ply");
    writeRing(few, FewTriangles);
    writeRing(many, ManyTriangles);
    Worst worstFew, worstMany;
    table("Ratio to bare OpenGL, a model, 1280x720:",
          {"display", "70,000 triangles", "frame", "1,000,000 triangles", "frame"});
    for (const DisplayCase& about : cases) {
        if (about.isSlow()) continue;
        const auto first = measure(about, {"file", few}, Middle, about.pairs).frames;
        const auto second = measure(about, {"file", many}, Middle, 5).frames;
        worstFew.add(first.ratios);
        worstMany.add(second.ratios);
        row({about.label, spread(first.ratios), fixed(median(first.first) * 1e3, 1) + " ms",
             spread(second.ratios), fixed(median(second.first) * 1e3, 1) + " ms"});
    }
    worstFew.judge("display against bare OpenGL, 70,000 triangles, 1280x720", 1.05);
    worstMany.judge("display against bare OpenGL, 1,000,000 triangles, 1280x720", 1.05);
}

} // namespace

/// bench_frame [PART]: only displays whose label contains the part.
int main(int argc, char** argv) {
    std::vector<DisplayCase> cases = displayCases();
    if (argc > 1)
        std::erase_if(cases,
                      [&](const DisplayCase& about) { return !std::strstr(about.label.c_str(), argv[1]); });
    if (cases.empty()) return 2;
    overSizes(cases);
    overModels(cases);
    return 0;
}
