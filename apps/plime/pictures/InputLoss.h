// SPDX-License-Identifier: Apache-2.0
// What of a picture is not read, or is read otherwise than it is stored.
#pragma once

#include "apps/plime/terminal/Report.h"
#include "workbench/files/PictureDescription.h"
#include "workbench/files/PixelConversion.h"

#include <optional>
#include <string>

namespace workbench {

/// Says what of a picture was left out, which layer was taken, and what its decoder mended. With `srgb` the result
/// is encoded: then says so of a picture whose own encoding is not undone.
void tellOfInput(Report& report, const std::string& input, const PictureDescription& picture, bool srgb);

/// Says which values became others as halves. Rounding is told where the picture is written with more bits than
/// halves have.
void tellOfValueLoss(Report& report, const std::string& input, const ValueLoss& loss, PixelDepth stored,
                     PixelDepth written);

/// Says of how many of so many pixels modules made NaN because they had values below 0.
void tellOfNegatives(Report& report, const std::string& input, std::uint64_t count, std::uint64_t pixels);

/// Says that the modules have changed alpha, so that colors are not made to fit it.
void tellOfChangedAlpha(Report& report, const std::string& output);

/// "the layer ViewLayer.Combined", "X, Y, Z as red, green, blue" or nothing to say: which channels are the color.
[[nodiscard]] std::optional<std::string> colorSource(const PictureDescription& picture);

} // namespace workbench
