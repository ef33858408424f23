// SPDX-License-Identifier: Apache-2.0
// One of the eight displays, and the calls that its frames make.
#pragma once

#include "recording/Recording.h"
#include "tests/support/LoadedPlugin.h"
#include "tests/support/ParameterPool.h"

#include "host/gl/MSDeferredObjectDisplay.h"

#include <gtest/gtest.h>

#include <array>
#include <ostream>
#include <string>
#include <string_view>

namespace recording {

/// What the displays have in common by kind and not by value.
struct Display {
    const char* unit;      ///< the source file, and the folder of the goldens
    const char* key;       ///< of the creator
    int quadLine;          ///< where errors after the quad are reported from
    bool readsSamples;     ///< asks for as many samples as "samples" says
    bool bindsSampleCount; ///< sets the uniform "nSamples"
    bool glows;            ///< honours the flag "glow" of "options"
};

inline constexpr std::array<Display, 8> Displays = {{
    {"BlurredObject", "Display/Blurred", 172, true, true, true},
    {"CMYKObjectDisplay", "Display/CMYK", 82, false, true, false},
    {"CurvesFilter", "Display/CurveAdjust", 124, true, true, false},
    {"DisplayDepth", "Display/Depth@DisplayDepth", 139, false, false, false},
    {"HDRObjectDisplay", "Display/Depth@HDRObjectDisplay", 166, true, true, true},
    {"HueSatValueFilter", "Display/HSVAdjust", 161, true, true, false},
    {"PixelContours", "Display/PixelContours", 187, true, true, true},
    {"ProximityHDR", "Display/ProximityHDR", 201, true, true, true},
}};

/// The display of that source file. Throws std::runtime_error when there is none.
[[nodiscard]] const Display& displayOf(std::string_view unit);

inline void PrintTo(const Display& display, std::ostream* stream) { *stream << display.unit; }

/// The text with the first occurrence of a part replaced. Throws std::runtime_error when there is none.
[[nodiscard]] std::string replaced(std::string text, std::string_view part, std::string_view by);

/// An object of one display over a fresh host, and the pool that its frames read.
class DisplayRecord : public testing::Test {
protected:
    explicit DisplayRecord(const Display& tested) : tested(tested) { host() = {}; }

    /// Draws a frame; its calls are added to those on record.
    void drawFrame() { object->draw(context); }
    /// The calls of one new frame, its program counted from 1.
    [[nodiscard]] std::string callsOfFrame();
    /// Those calls of one new frame that have these words in them.
    [[nodiscard]] std::string callsOfFrameWith(std::string_view words);
    /// Whether the golden <unit>/<name>.calls has exactly the calls of one new frame.
    [[nodiscard]] testing::AssertionResult frameMatches(const std::string& name);

    /// A renderer of the values that the pool holds now.
    [[nodiscard]] krod::StrongPtr<krod::MSDeferredRenderObject::MultiSampleDeferredRenderer> makeRenderer() {
        return object->createRenderer(context);
    }
    /// The samples that a new renderer asks for.
    [[nodiscard]] int requestedSamples() { return makeRenderer()->requestedSamples(); }
    /// The host's name of the class of a new renderer.
    [[nodiscard]] std::string rendererClass();

    [[nodiscard]] bool hasParameter(std::string_view name) const { return bool(object->slots().input(name)); }
    /// The expert level of a parameter. Throws std::runtime_error for an unknown name.
    [[nodiscard]] int expertLevel(std::string_view name) const;
    /// Makes every parameter unreadable in the pool.
    void makeAllUnreadable();

    const Display& tested;
    support::LoadedPlugin plugin;
    krod::StrongPtr<krod::MSDeferredObjectDisplay> object =
        plugin.make<krod::MSDeferredObjectDisplay>(tested.key);
    support::ParameterPool pool{*object};
    krod::VGLRenderContext context{pool, 64, 48};
};

} // namespace recording
