// SPDX-License-Identifier: Apache-2.0
// Other ways to look a table of halves up for red, green and blue of pixels, each bit for bit the same.
#pragma once

#include "host/rendering/RGBAHalf.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace bench {

/// A value for each of the 65,536 bit patterns of a half; one more at the end, since a wide load reads beyond the last.
using Answers = std::array<std::uint16_t, 65538>;

struct HalfLoop {
    const char* label;
    void (*apply)(const Answers& answers, krod::RGBAHalf* pixels, std::size_t count);
};

/// Those that this processor can run. The plug-in's own loop comes first, as its source says it; a pass over the memory
/// that looks nothing up is not among them.
[[nodiscard]] std::vector<HalfLoop> halfLoops();

/// Changes each pixel in place without a table, in a plain loop, and with the fetching ahead that the plug-in does.
void passPlainly(krod::RGBAHalf* pixels, std::size_t count);
void passAhead(krod::RGBAHalf* pixels, std::size_t count);

} // namespace bench
