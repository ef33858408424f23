// SPDX-License-Identifier: Apache-2.0
#include "display/Neighbourhood.h"

#include "host/values/VValueTrait.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace plime::display {

using krod::VValueTrait;

std::string neighbourhoodArrays(int width) {
    const std::int64_t R = std::max(1, width);
    const double s = 1.0 / static_cast<double>(R + 1);
    const auto tent = [s](std::int64_t distance) {
        return 1.0 - static_cast<double>(std::abs(distance)) * s;
    };

    std::string weight = "const float weight[] = float[](\n";
    std::string iX = "const int iX[] = int[](\n";
    std::string iY = "const int iY[] = int[](\n";
    for (std::int64_t y = -R; y <= R; ++y) {
        const double row = tent(y);
        for (std::int64_t x = -R; x <= R; ++x) {
            const char* const separator = x == R && y == R ? "" : ", ";
            weight += VValueTrait<double>::Text(tent(x) * row) + separator;
            iX += VValueTrait<int>::Text(static_cast<int>(x)) + separator;
            iY += VValueTrait<int>::Text(static_cast<int>(y)) + separator;
        }
        for (std::string* array : {&weight, &iX, &iY}) *array += "\n";
    }
    for (std::string* array : {&weight, &iX, &iY}) *array += ");\n\n";
    return weight + iX + iY;
}

} // namespace plime::display
