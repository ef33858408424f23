// SPDX-License-Identifier: Apache-2.0
// The straight line through points.
#pragma once

#include <vector>

namespace bench {

struct Point {
    double x, y;
};

/// y = offset + slope x, with the least sum of squared distances.
struct Line {
    double offset = 0, slope = 0;
    /// The share of the variance of y that the line explains: R squared.
    double share = 0;

    [[nodiscard]] double at(double x) const { return offset + slope * x; }
};

/// The line through at least two points that do not all have the same x.
[[nodiscard]] Line lineThrough(const std::vector<Point>& points);

} // namespace bench
