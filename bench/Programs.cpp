// SPDX-License-Identifier: Apache-2.0
// What the program cache does: over a hundred frames that do not change, and while a slider moves.
#include "Displays.h"
#include "Report.h"

#include "workbench/gl/ProgramCache.h"
#include "workbench/gl/RenderSession.h"
#include "workbench/gl/SceneRenderer.h"
#include "workbench/gl/ShaderCapture.h"

#include <algorithm>
#include <array>
#include <charconv>
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
class Screen {
public:
    explicit Screen(const std::string& key, const std::vector<Setting>& settings = {})
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

void printRow(const std::string& what, std::size_t texts, const workbench::ProgramCacheStatistics& counts) {
    const auto compiles = static_cast<double>(counts.compiles);
    row({what, std::to_string(texts), std::to_string(counts.compiles), std::to_string(counts.hits),
         std::to_string(counts.evictions), std::to_string(counts.entries),
         fixed(compiles > 0 ? counts.compileSeconds * 1e3 / compiles : 0, 1)});
}

/// The programs that were compiled.
double drawSteadily(const DisplayCase& about) {
    Screen screen(about.key, about.settings);
    for (int i = 0; i < SteadyFrames; ++i) screen.draw();
    printRow(about.label, 1, screen.counts());
    return static_cast<double>(screen.counts().compiles);
}

/// The programs that are kept at the end.
double move(const Slider& slider) {
    Screen screen(slider.key);
    std::set<std::string> texts;
    for (int step = 0; step < SliderValues; ++step) {
        set(*screen.display, {slider.parameter, textOf(slider, step)});
        texts.insert(screen.text());
        screen.draw();
    }
    printRow(slider.key + ", " + slider.parameter, texts.size(), screen.counts());
    return static_cast<double>(screen.counts().entries);
}

} // namespace

/// bench_programs [PART]: only displays whose label or key contains the part.
int main(int argc, char** argv) {
    const auto isWanted = [&](const std::string& name) {
        return argc < 2 || std::strstr(name.c_str(), argv[1]);
    };
    const std::vector<std::string> columns{"texts",     "compiles", "hits",
                                           "evictions", "kept",     "ms for a compile"};
    const auto begin = [&](const std::string& title, const std::string& first) {
        std::vector<std::string> all{first};
        all.insert(all.end(), columns.begin(), columns.end());
        table(title, all);
    };
    std::vector<double> compiles, kept;
    begin("100 frames that do not change:", "display");
    for (const DisplayCase& about : displayCases())
        if (isWanted(about.label)) compiles.push_back(drawSteadily(about));
    begin("500 values of a slider:", "display, parameter");
    for (const Slider& slider : Sliders)
        if (isWanted(slider.key)) kept.push_back(move(slider));
    // The scene has a program of its own.
    if (!compiles.empty())
        wanted("programs compiled in 100 frames that do not change, the scene's own with them",
               {Limit::Side::AtMost, 2, 0}, {*std::ranges::max_element(compiles)});
    if (!kept.empty())
        wanted("programs kept after 500 values of a slider in the text", {Limit::Side::AtMost, 64, 0},
               {*std::ranges::max_element(kept)});
    return 0;
}
