// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/pictures/TilePlan.h"

#include "apps/plime/pictures/MemoryUse.h"
#include "workbench/report/Failure.h"

#include "host/rendering/RGBAHalf.h"

#include <algorithm>
#include <utility>

namespace workbench {
namespace {

constexpr int SmallestShrunkTile = 64;

/// What is held at once: a band of rows before and after the work, with additional channels, which are held
/// twice while the band moves on, and a tile here and in the driver, as a texture and as a drawing area.
std::uint64_t bytesOf(const TilingTask& task, std::uint64_t rows, std::uint64_t tilePixels) {
    const auto width = static_cast<std::uint64_t>(task.width);
    return task.otherBytes + width * rows * (2 * sizeof(krod::RGBAHalf) + 2 * task.extraBytes) +
           tilePixels * 3 * sizeof(krod::RGBAHalf);
}

std::uint64_t cutBytes(const TilingTask& task, int width, int height) {
    const auto wide = static_cast<std::uint64_t>(std::min(width, task.width));
    const auto high = static_cast<std::uint64_t>(std::min(height, task.height));
    return bytesOf(task, high, wide * high);
}

std::uint64_t cutBytes(const TilingTask& task, int side) { return cutBytes(task, side, side); }

} // namespace

std::uint64_t bytesForWhole(const TilingTask& task) {
    const auto pixels = static_cast<std::uint64_t>(task.width) * static_cast<std::uint64_t>(task.height);
    return task.otherBytes + pixels * (3 * sizeof(krod::RGBAHalf) + 2 * task.extraBytes); // rows are the tile
}

void refuseOverlap(const std::string& who, const std::string& tile, int margin) {
    throw Failure(Fault::Usage, {who,
                                 "leaves nothing of a tile",
                                 "less than half of a tile of " + tile + " pixels",
                                 std::to_string(margin),
                                 "Choose a larger --tile or a smaller --overlap",
                                 {}});
}

TilePlan::TilePlan(const TilingTask& task, const TilingWish& wish)
    : across(whole(task.width)), down(whole(task.height)) {
    if (!task.shaderSide)
        cutIntoStrips(task);
    else if (wish.exact && !wish.side)
        cutExactly(task, *wish.exact);
    else
        cutForShaders(task, wish);
}

void TilePlan::cutIntoStrips(const TilingTask& task) {
    int rows = std::min(StripRows, task.height);
    while (rows > 1 && bytesOf(task, static_cast<std::uint64_t>(rows), 0) > task.memory) rows /= 2;
    if (const std::uint64_t needed = bytesOf(task, static_cast<std::uint64_t>(rows), 0); needed > task.memory)
        refuseMemory(task.picture, needed, task.memory);
    down = {task.height, (task.height - 1) / rows + 1, rows, false};
}

void TilePlan::cutForShaders(const TilingTask& task, const TilingWish& wish) {
    const int usual = task.dependsOnPlace ? *task.shaderSide : LargestWholeTile;
    const int limit = std::min(wish.side.value_or(usual), *task.shaderSide);
    if (task.width <= limit && task.height <= limit && bytesForWhole(task) <= task.memory) return;
    int side = std::min(limit, LargestCutTile);
    while (side > SmallestShrunkTile && side / 2 > 2 * wish.overlap.value_or(0) &&
           cutBytes(task, side) > task.memory)
        side /= 2;
    if (cutBytes(task, side) > task.memory) refuseMemory(task.picture, cutBytes(task, side), task.memory);
    margin = wish.overlap.value_or(std::min(UsualOverlap, side / 4));
    if (side <= 2 * std::int64_t{margin}) refuseOverlap("--overlap", std::to_string(side), margin);
    across = cut(task.width, side, margin);
    down = cut(task.height, side, margin);
}

void TilePlan::cutExactly(const TilingTask& task, const TilingWish::Exact& tile) {
    const int most = std::max(tile.width, tile.height);
    if (most > *task.shaderSide)
        throw Failure(Fault::Output, {task.picture,
                                      "is to be cut into larger tiles than the driver can draw",
                                      "at most " + std::to_string(*task.shaderSide) + " pixels a side",
                                      std::to_string(most),
                                      "Choose a smaller --tile",
                                      {}});
    const bool isWhole = task.width <= tile.width && task.height <= tile.height;
    const std::uint64_t needed = isWhole ? bytesForWhole(task) : cutBytes(task, tile.width, tile.height);
    if (needed > task.memory) refuseMemory(task.picture, needed, task.memory);
    for (const auto& [total, side] : {std::pair{task.width, tile.width}, {task.height, tile.height}})
        if (total > side && side <= 2 * std::int64_t{tile.overlap})
            refuseOverlap(task.picture + ", the overlap of its tiles", std::to_string(side), tile.overlap);
    margin = tile.overlap;
    across = cut(task.width, tile.width, margin);
    down = cut(task.height, tile.height, margin);
}

TilePlan::Side TilePlan::cut(int total, int side, int margin) {
    if (total <= side) return whole(total);
    const int count = (total - 1) / (side - 2 * margin) + 1;
    return {total, count, (total - 1) / count + 1 + 2 * margin, true};
}

TileSpan TilePlan::Side::span(int index, int around) const {
    const auto edge = [&](int i) {
        return isEven ? static_cast<int>(std::int64_t{total} * i / count) : std::min(total, i * seen);
    };
    const int begin = edge(index), length = edge(index + 1) - begin;
    if (!isEven) return {begin, length, begin, length};
    return {begin, length, std::clamp(begin - around, 0, total - seen), seen};
}

} // namespace workbench
