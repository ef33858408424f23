// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/pictures/DrawingPlan.h"

#include "apps/plime/pictures/MemoryUse.h"

#include "host/rendering/RGBAHalf.h"

#include <algorithm>

namespace workbench {
namespace {

constexpr int SmallestShrunkTile = 64;
/// Colour and depth of a sample.
constexpr std::uint64_t SampleBytes = sizeof(krod::RGBAHalf) + sizeof(float);

std::uint64_t product(int a, int b) { return static_cast<std::uint64_t>(a) * static_cast<std::uint64_t>(b); }

bool isStoredInTiles(const DrawingTask& task) {
    return task.isExr && !task.isProcessed && task.width > WidestScanLines &&
           task.wish.size - 2 * std::int64_t{task.wish.overlap} >= StoredTileSide;
}

/// The areas that the largest tile is drawn in, what is kept of it, and a row of tiles where rows are written.
void measure(const DrawingTask& task, DrawingPlan& plan) {
    std::uint64_t drawn = 0, kept = 0;
    int rows = 0;
    for (const PictureTile& tile : planTiles(task.width, task.height, plan.tiles)) {
        drawn = std::max(drawn, product(tile.drawnWidth(), tile.drawnHeight()));
        kept = std::max(kept, product(tile.width, tile.height));
        rows = std::max(rows, tile.height);
    }
    plan.targetBytes = drawn * static_cast<std::uint64_t>(1 + task.samples) * SampleBytes;
    plan.bytes = task.otherBytes + plan.targetBytes +
                 (kept + (plan.inBlocks ? 0 : product(task.width, rows))) * sizeof(krod::RGBAHalf);
}

} // namespace

DrawingPlan planDrawing(const DrawingTask& task) {
    DrawingPlan plan{task.wish, isStoredInTiles(task)};
    if (plan.inBlocks) plan.tiles.multiple = StoredTileSide;
    const std::uint64_t forPixels = task.memory - std::min(task.memory, task.otherBytes);
    const std::uint64_t most = task.isProcessed ? task.memory - forPixels / 2 : task.memory;
    for (measure(task, plan); plan.bytes > most; measure(task, plan)) {
        const int half = plan.tiles.size / 2;
        if (half < SmallestShrunkTile || half - 2 * std::int64_t{plan.tiles.overlap} < plan.tiles.multiple)
            refuseMemory(task.picture, plan.bytes + task.memory - most, task.memory);
        plan.tiles.size = half;
    }
    return plan;
}

} // namespace workbench
