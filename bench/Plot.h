// SPDX-License-Identifier: Apache-2.0
// Small plots.
#pragma once

#include "Line.h"

#include <string>
#include <vector>

namespace bench {

struct Plot {
    std::string title, across, upwards; ///< of the picture and of both axes
    std::vector<Point> points;
    Line line;

    /// Writes the points and the line as SVG; both axes begin at 0. Throws std::runtime_error.
    void write(const std::string& path) const;
};

} // namespace bench
