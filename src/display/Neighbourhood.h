// SPDX-License-Identifier: Apache-2.0
// The square of pixels around a pixel, as constant arrays of a shader.
#pragma once

#include <string>

namespace plime::display {

/// The arrays "weight", "iX" and "iY" of (2R + 1)^2 elements, R = max(1, width) pixels: the weights form a
/// tent, (1 - |x| s)(1 - |y| s) with s = 1 / (R + 1), not normalised; rows from -R up, within a row columns
/// from -R up.
[[nodiscard]] std::string neighbourhoodArrays(int width);

} // namespace plime::display
