// SPDX-License-Identifier: Apache-2.0
// What holds for point lists of every format.
#pragma once

#include "Target.h"

#include "workbench/files/Points.h"
#include "workbench/report/Failure.h"

#include <cmath>

namespace fuzz {

/// Reads with `reader`, which may refuse the input in one line, and checks every point.
template <class Reader>
void checkPoints(Reader reader, std::string_view bytes) {
    workbench::PointSet points;
    try {
        points = reader("input", bytes);
    } catch (const workbench::Failure& failure) {
        require(failure.fault() == workbench::Fault::Input, "a broken file is a fault of the input");
        require(isOneLine(failure.what()), "the message is one line");
        return;
    }
    require(points.positions.size() == points.colours.size(), "every point has a colour");
    for (const auto& position : points.positions)
        for (int i = 0; i < 3; ++i) require(std::isfinite(position[i]), "positions are finite");
    for (const auto& colour : points.colours)
        for (int i = 0; i < 4; ++i) require(std::isfinite(colour[i]), "colours are finite");
}

} // namespace fuzz
