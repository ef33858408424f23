// SPDX-License-Identifier: Apache-2.0
// The displays to measure, as data.
#pragma once

#include "Modules.h"

#include <string>
#include <vector>

namespace bench {

/// One display with its parameters, and the OpenGL state that its quad is drawn in.
struct DisplayCase {
    std::string label; ///< for the table
    std::string key;
    std::vector<Setting> settings = {};
    int pairs = 20; ///< of frames at 1280x720; fewer for slow ones
    bool depthTest = false, blend = true;

    /// Takes seconds for one frame by software.
    [[nodiscard]] bool isSlow() const { return pairs <= 5; }
};

inline const std::vector<DisplayCase>& displayCases() {
    static const std::vector<DisplayCase> cases{
        {.label = "CMYK", .key = "Display/CMYK"},
        {.label = "Depth, as grey", .key = "Display/Depth@DisplayDepth"},
        {.label = "Depth, tone-mapped",
         .key = "Display/Depth@HDRObjectDisplay",
         .settings = {{"exponent", "0.3"}}},
        {.label = "CurveAdjust", .key = "Display/CurveAdjust", .settings = {{"p", "0.4 0.7"}}},
        {.label = "HSVAdjust",
         .key = "Display/HSVAdjust",
         .settings = {{"hue", "40"}},
         .depthTest = true,
         .blend = false},
        {.label = "Blurred, 3 taps", .key = "Display/Blurred", .settings = {{"width", "3"}}},
        {.label = "Blurred, 20 taps", .key = "Display/Blurred", .settings = {{"width", "20"}}, .pairs = 12},
        {.label = "PixelContours, width 1",
         .key = "Display/PixelContours",
         .settings = {{"width", "1"}, {"strength", "0.5"}},
         .pairs = 12},
        {.label = "PixelContours, width 5",
         .key = "Display/PixelContours",
         .settings = {{"width", "5"}, {"strength", "0.5"}},
         .pairs = 5},
        {.label = "ProximityHDR, width 1",
         .key = "Display/ProximityHDR",
         .settings = {{"width", "1"}},
         .pairs = 12},
        {.label = "ProximityHDR, width 5",
         .key = "Display/ProximityHDR",
         .settings = {{"width", "5"}},
         .pairs = 5},
    };
    return cases;
}

} // namespace bench
