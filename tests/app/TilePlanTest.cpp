// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/pictures/TilePlan.h"

#include "tests/app/FakeModules.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace workbench {
namespace {

constexpr std::uint64_t Plenty = 700ULL << 20U;

TilingTask shaders(int width, int height, std::uint64_t memory = Plenty) {
    return {"a.exr", width, height, 0, memory, 16384};
}

std::string refusalOf(const TilingTask& task, const TilingWish& wish) {
    return failureOf([&] { static_cast<void>(TilePlan(task, wish)); });
}

/// "columns x rows of width x height with overlap".
std::string textOf(const TilePlan& plan) {
    return std::to_string(plan.columns()) + 'x' + std::to_string(plan.rows()) + " of " +
           std::to_string(plan.tileWidth()) + 'x' + std::to_string(plan.tileHeight()) + " with " +
           std::to_string(plan.overlap());
}

/// The kept parts follow each other over the whole side; every window lies inside, is as large as the others
/// and sees the overlap wherever the picture goes on.
void expectCovered(const TilePlan& plan, int total, int count, int seen, bool rows) {
    int next = 0;
    for (int i = 0; i < count; ++i) {
        const TileSpan span = rows ? plan.row(i) : plan.column(i);
        EXPECT_EQ(span.begin, next);
        EXPECT_GT(span.length, 0);
        next = span.begin + span.length;
        EXPECT_EQ(span.seenLength, seen);
        EXPECT_GE(span.seenBegin, 0);
        EXPECT_LE(span.seenBegin + span.seenLength, total);
        EXPECT_LE(span.seenBegin, std::max(0, span.begin - plan.overlap()));
        EXPECT_GE(span.seenBegin + span.seenLength, std::min(total, next + plan.overlap()));
    }
    EXPECT_EQ(next, total);
}

TEST(Tile_plan, without_a_shader_is_strips_of_64_rows) {
    const TilePlan plan({"a.exr", 100, 600, 0, Plenty, std::nullopt}, {.side = 7, .overlap = 3});
    EXPECT_EQ(textOf(plan), "1x10 of 100x64 with 0");
    EXPECT_EQ(plan.row(9).begin, 576);
    EXPECT_EQ(plan.row(9).length, 24);
    EXPECT_EQ(plan.row(9).seenLength, 24);
}

TEST(Tile_plan, without_a_shader_takes_fewer_rows_where_memory_is_short) {
    const TilePlan plan({"a.exr", 131072, 600, 4, 100ULL << 20U, std::nullopt}, {});
    EXPECT_EQ(textOf(plan), "1x19 of 131072x32 with 0");
    EXPECT_EQ(refusalOf({"a.exr", 131072, 600, 4, 1 << 20U, std::nullopt}, {}),
              "4 a.exr: needs more memory than is allowed — expected at most 1M, got 3M. Allow it with "
              "--memory 3M.");
}

TEST(Tile_plan, takes_a_picture_up_to_4096_whole) {
    EXPECT_EQ(textOf({shaders(4096, 4096), {}}), "1x1 of 4096x4096 with 0");
    EXPECT_EQ(textOf({shaders(4097, 10), {}}), "3x1 of 1494x10 with 64");
    EXPECT_EQ(textOf({shaders(10, 4097), {}}), "1x3 of 10x1494 with 64");
}

TEST(Tile_plan, takes_larger_ones_whole_when_asked_and_the_driver_can) {
    EXPECT_EQ(textOf({shaders(8000, 100), {.side = 8000, .overlap = {}}}), "1x1 of 8000x100 with 0");
    EXPECT_EQ(textOf({shaders(20000, 100), {.side = 131072, .overlap = {}}}), "11x1 of 1947x100 with 64");
}

TEST(Tile_plan, takes_all_whole_that_driver_and_memory_allow_where_the_place_counts) {
    TilingTask task = shaders(5000, 2500);
    task.dependsOnPlace = true;
    EXPECT_EQ(textOf({task, {}}), "1x1 of 5000x2500 with 0");
    EXPECT_EQ(textOf({task, {.side = 4096, .overlap = {}}}), "3x2 of 1795x1378 with 64");
    task.memory = 100ULL << 20U;
    EXPECT_GT(TilePlan(task, {}).count(), 1);
    task = shaders(20000, 10);
    task.dependsOnPlace = true;
    EXPECT_GT(TilePlan(task, {}).count(), 1);
}

TEST(Tile_plan, cuts_a_picture_that_does_not_fit_into_the_memory) {
    EXPECT_EQ(textOf({shaders(4000, 4000, 200ULL << 20U), {}}), "5x5 of 928x928 with 64");
    EXPECT_EQ(textOf({shaders(4000, 4000, 40ULL << 20U), {}}), "11x11 of 492x492 with 64");
    EXPECT_EQ(refusalOf(shaders(100000, 100, 10ULL << 20U), {}),
              "4 a.exr: needs more memory than is allowed — expected at most 10M, got 98M. Allow it with "
              "--memory 98M.");
}

TEST(Tile_plan, covers_the_picture_with_tiles_of_one_size) {
    for (const int side : {1, 2, 3, 7, 64, 100, 333})
        for (const int width : {1, 63, 64, 65, 333, 1001})
            for (const std::optional<int> overlap : {std::optional<int>(), std::optional<int>(0)}) {
                const TilePlan plan(shaders(width, 217), {side, overlap});
                SCOPED_TRACE(textOf(plan));
                EXPECT_LE(plan.tileWidth(), std::max(side, width <= side ? width : side));
                expectCovered(plan, width, plan.columns(), plan.tileWidth(), false);
                expectCovered(plan, 217, plan.rows(), plan.tileHeight(), true);
            }
}

TEST(Tile_plan, refuses_an_overlap_that_leaves_nothing) {
    EXPECT_EQ(
        refusalOf(shaders(100, 100), {.side = 64, .overlap = 32}),
        "2 --overlap: leaves nothing of a tile — expected less than half of a tile of 64 pixels, got 32. "
        "Choose a larger --tile or a smaller --overlap.");
    EXPECT_EQ(textOf({shaders(64, 64), {.side = 64, .overlap = 32}}), "1x1 of 64x64 with 0");
}

TEST(Tile_plan, exact_tiles_of_a_plan_lead_to_the_same_plan) {
    for (const int side : {64, 100, 128, 1000})
        for (const int overlap : {0, 10, 31}) {
            const TilePlan first(shaders(901, 333), {.side = side, .overlap = overlap});
            const TilingWish exact{.side = {},
                                   .overlap = {},
                                   .exact = {{first.tileWidth(), first.tileHeight(), first.overlap()}}};
            EXPECT_EQ(textOf(TilePlan(shaders(901, 333), exact)), textOf(first));
        }
}

TEST(Tile_plan, exact_tiles_that_cannot_be_are_refused) {
    const auto exact = [](int width, int height, int overlap) {
        return TilingWish{.side = {}, .overlap = {}, .exact = {{width, height, overlap}}};
    };
    EXPECT_EQ(
        refusalOf(shaders(500, 100), exact(124, 100, 64)),
        "2 a.exr, the overlap of its tiles: leaves nothing of a tile — expected less than half of a tile of "
        "124 pixels, got 64. Choose a larger --tile or a smaller --overlap.");
    EXPECT_EQ(refusalOf(shaders(500, 100), exact(500, 100, 64)), "");
    EXPECT_EQ(
        refusalOf(shaders(500, 100), exact(20000, 100, 0)),
        "4 a.exr: is to be cut into larger tiles than the driver can draw — expected at most 16384 pixels a "
        "side, got 20000. Choose a smaller --tile.");
    EXPECT_NE(refusalOf(shaders(5000, 5000, 1U << 20U), exact(5000, 5000, 0)), "");
}

} // namespace
} // namespace workbench
