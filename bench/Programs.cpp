// SPDX-License-Identifier: Apache-2.0
// What the program cache does: over a hundred frames that do not change, and while a slider moves.
#include "Displays.h"
#include "Median.h"

#include "workbench/gl/ProgramCache.h"
#include "workbench/gl/RenderSession.h"
#include "workbench/gl/SceneRenderer.h"
#include "workbench/gl/ShaderCapture.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <set>

namespace {

using namespace krod;
using namespace bench;

constexpr int SteadyFrames = 100, SliderValues = 500;

/// A parameter that moves between two values; `rest` follows the number in its text.
struct Slider {
    std::string key, parameter;
    double from, to;
    std::string rest = {};
};

const std::array Sliders{Slider{"Display/Blurred", "exponent", -0.5, 0.5},
                         Slider{"Display/CurveAdjust", "p", 0.1, 0.9, " 0.5"},
                         Slider{"Display/Depth@HDRObjectDisplay", "offset", -1, 1},
                         Slider{"Display/Depth@HDRObjectDisplay", "TransparencyExponent", -1, 3},
                         Slider{"Display/HSVAdjust", "hue", -180, 180},
                         Slider{"Display/PixelContours", "strength", 0, 1},
                         Slider{"Display/ProximityHDR", "gamma", 0.5, 2}};

std::string textOf(const Slider& slider, int step) {
    std::array<char, 32> digits{};
    const double value = slider.from + (slider.to - slider.from) * step / (SliderValues - 1);
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    return std::string(digits.data(), end.ptr) + slider.rest;
}

/// A display of a scene, drawn small, since only its program counts.
class Stage {
public:
    explicit Stage(const std::string& key, const std::vector<Setting>& settings = {})
        : display(modules.make<MSDeferredObjectDisplay>(key, settings)) {
        display->setInput(modules.make<VGLRenderObject>("Scene/Columns"));
        frame.width = frame.height = 32;
    }

    void draw() { static_cast<void>(workbench::renderPicture(session, *display, pool, frame)); }
    [[nodiscard]] std::string text() const {
        return workbench::captureShader(*display, pool).front().fragmentText;
    }
    [[nodiscard]] workbench::ProgramCacheStatistics counts() { return session.programs().statistics(); }

private:
    workbench::RenderSession session;
    Modules modules;
    VValuePool pool;
    workbench::FrameSetup frame;

public:
    StrongPtr<MSDeferredObjectDisplay> display;
};

void print(const std::string& what, std::size_t texts, const workbench::ProgramCacheStatistics& counts) {
    std::printf("%-46s %5zu %8llu %7llu %9llu %7zu %11.1f\n", what.c_str(), texts,
                static_cast<unsigned long long>(counts.compiles),
                static_cast<unsigned long long>(counts.hits),
                static_cast<unsigned long long>(counts.evictions), counts.entries,
                counts.compiles ? counts.compileSeconds * 1e3 / static_cast<double>(counts.compiles) : 0.0);
    std::fflush(stdout);
}

void drawSteadily(const DisplayCase& about) {
    Stage stage(about.key, about.settings);
    for (int i = 0; i < SteadyFrames; ++i) stage.draw();
    print(about.label, 1, stage.counts());
}

void move(const Slider& slider) {
    Stage stage(slider.key);
    std::set<std::string> texts;
    for (int step = 0; step < SliderValues; ++step) {
        set(*stage.display, {slider.parameter, textOf(slider, step)});
        texts.insert(stage.text());
        stage.draw();
    }
    print(slider.key + ", " + slider.parameter, texts.size(), stage.counts());
}

} // namespace

/// bench_programs [PART]: only displays whose label or key contains the part.
int main(int argc, char** argv) {
    const auto isWanted = [&](const std::string& name) {
        return argc < 2 || std::strstr(name.c_str(), argv[1]);
    };
    std::puts(
        "wanted: one compile for each text, and one more for the scene's own program; a bounded number kept");
    std::printf("%-46s texts compiles    hits evictions    kept  ms/compile\n",
                "100 frames that do not change");
    for (const DisplayCase& about : displayCases())
        if (isWanted(about.label)) drawSteadily(about);
    std::printf("%-46s texts compiles    hits evictions    kept  ms/compile\n", "500 values of a slider");
    for (const Slider& slider : Sliders)
        if (isWanted(slider.key)) move(slider);
    return 0;
}
