// SPDX-License-Identifier: Apache-2.0
#include "workbench/gl/TileGrid.h"

#include "workbench/report/Failure.h"

#include <algorithm>
#include <cstdint>
#include <string>

namespace workbench {
namespace {

/// One side of a picture: where a part begins, how long it is, and what is drawn before and behind it.
struct Span {
    int begin, length, before, behind;
};

std::vector<Span> cut(int total, const TileWish& wish) {
    if (total <= wish.size) return {{0, total, 0, 0}};
    const int most = (wish.size - 2 * wish.overlap) / wish.multiple;
    const int units = (total - 1) / wish.multiple + 1; // of as many pixels as the multiple says
    const int count = (units - 1) / most + 1;
    const auto edge = [&](int index) {
        return std::min(total, static_cast<int>(std::int64_t{units} * index / count) * wish.multiple);
    };
    int longest = 0;
    for (int i = 0; i < count; ++i) longest = std::max(longest, edge(i + 1) - edge(i));
    const int drawn = std::min(total, longest + 2 * wish.overlap);
    std::vector<Span> spans;
    for (int i = 0; i < count; ++i) {
        const int begin = edge(i), length = edge(i + 1) - begin;
        const int before = begin - std::clamp(begin - wish.overlap, 0, total - drawn);
        spans.push_back({begin, length, before, drawn - before - length});
    }
    return spans;
}

Failure refusal(const char* what, const char* expected, std::string got, const char* advice) {
    return Failure(Fault::Usage, {"picture", what, expected, std::move(got), advice, {}});
}

} // namespace

std::vector<PictureTile> planTiles(int width, int height, const TileWish& wish) {
    if (width < 1 || height < 1)
        throw refusal("has no pixels", "at least 1x1", std::to_string(width) + 'x' + std::to_string(height),
                      "Change --size");
    if (wish.overlap < 0 || wish.size - 2 * std::int64_t{wish.overlap} < wish.multiple)
        throw refusal("cannot be cut into tiles", "tiles of more than twice the overlap",
                      std::to_string(wish.size) + " with an overlap of " + std::to_string(wish.overlap),
                      "Choose a larger --tile or a smaller --overlap");
    std::vector<PictureTile> tiles;
    for (const Span& row : cut(height, wish))
        for (const Span& column : cut(width, wish))
            tiles.push_back({column.begin, row.begin, column.length, row.length, column.before, row.before,
                             column.behind, row.behind});
    return tiles;
}

} // namespace workbench
