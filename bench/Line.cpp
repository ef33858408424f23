// SPDX-License-Identifier: Apache-2.0
#include "Line.h"

namespace bench {

Line lineThrough(const std::vector<Point>& points) {
    const double count = static_cast<double>(points.size());
    double x = 0, y = 0;
    for (const Point& point : points) x += point.x / count, y += point.y / count;
    double xx = 0, xy = 0, yy = 0;
    for (const Point& point : points) {
        xx += (point.x - x) * (point.x - x);
        xy += (point.x - x) * (point.y - y);
        yy += (point.y - y) * (point.y - y);
    }
    const double slope = xy / xx;
    return {y - slope * x, slope, yy > 0 ? xy * xy / (xx * yy) : 1.0};
}

} // namespace bench
