// SPDX-License-Identifier: Apache-2.0
// How the modules turn a parameter on a decimal scale into a factor or an exponent.
#pragma once

#include <cmath>

namespace plime {

/// 10 to the power of v, as exp(v ln 10); 10.000000000000002 for 1.
[[nodiscard]] inline double powerOfTen(double v) { return std::exp(v * 2.302585092994046); } // ln 10

} // namespace plime
