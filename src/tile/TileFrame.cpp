// SPDX-License-Identifier: Apache-2.0
#include "tile/TileFrame.h"

#include <cmath>

namespace plime::tile {

double powerOfTen(double v) { return std::exp(v * 2.302585092994046); } // ln 10

} // namespace plime::tile
