// SPDX-License-Identifier: Apache-2.0
// Cutting pictures: every pixel is kept exactly once, and no tile is too large.
#include "workbench/gl/TileGrid.h"
#include "workbench/report/Failure.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

namespace workbench::test {
namespace {

class TileGrid : public ::testing::TestWithParam<std::tuple<int, int, int, int>> {};

TEST_P(TileGrid, Keeps_every_pixel_once) {
    const auto [width, height, size, overlap] = GetParam();
    std::vector<int> kept(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    for (const PictureTile& tile : planTiles(width, height, {size, overlap})) {
        EXPECT_LE(tile.drawnWidth(), size);
        EXPECT_LE(tile.drawnHeight(), size);
        EXPECT_EQ(tile.drawnWidth(), planTiles(width, height, {size, overlap}).front().drawnWidth());
        EXPECT_EQ(tile.drawnHeight(), planTiles(width, height, {size, overlap}).front().drawnHeight());
        EXPECT_GE(tile.left, std::min(overlap, tile.x));
        EXPECT_GE(tile.right, std::min(overlap, width - tile.x - tile.width));
        EXPECT_GE(tile.top, std::min(overlap, tile.y));
        EXPECT_GE(tile.bottom, std::min(overlap, height - tile.y - tile.height));
        EXPECT_LE(tile.left, tile.x);
        EXPECT_LE(tile.top, tile.y);
        EXPECT_LE(tile.x + tile.width + tile.right, width);
        EXPECT_LE(tile.y + tile.height + tile.bottom, height);
        for (int y = tile.y; y < tile.y + tile.height; ++y)
            for (int x = tile.x; x < tile.x + tile.width; ++x)
                ++kept[static_cast<std::size_t>(y * width + x)];
    }
    EXPECT_EQ(kept, std::vector<int>(kept.size(), 1));
}

INSTANTIATE_TEST_SUITE_P(Sizes, TileGrid,
                         ::testing::Values(std::tuple{1, 1, 2048, 64}, std::tuple{100, 100, 100, 10},
                                           std::tuple{101, 100, 100, 10}, std::tuple{300, 7, 64, 31},
                                           std::tuple{97, 89, 5, 2}, std::tuple{97, 89, 1, 0}));

TEST(TileGridPlan, Tiles_begin_at_multiples) {
    for (const int multiple : {2, 16, 20}) {
        const auto tiles = planTiles(501, 303, {64, 10, multiple});
        const PictureTile* last = nullptr;
        for (const PictureTile& tile : tiles) {
            EXPECT_EQ(tile.x % multiple, 0);
            EXPECT_EQ(tile.y % multiple, 0);
            EXPECT_LE(tile.drawnWidth(), 64);
            EXPECT_GT(tile.width, 0);
            last = &tile;
        }
        ASSERT_TRUE(last);
        EXPECT_EQ(last->x + last->width, 501);
        EXPECT_EQ(last->y + last->height, 303);
    }
    EXPECT_THROW(static_cast<void>(planTiles(500, 500, {64, 20, 32})), Failure);
}

TEST(TileGridPlan, Tiles_are_nearly_equal_and_overlap_inside_only) {
    const auto tiles = planTiles(5000, 100, {2048, 64});
    ASSERT_EQ(tiles.size(), 3U);
    EXPECT_EQ(tiles[0].width, 1666);
    EXPECT_EQ(tiles[0].left, 0);
    EXPECT_EQ(tiles[0].right, 129);
    EXPECT_EQ(tiles[1].width, 1667);
    EXPECT_EQ(tiles[1].left, 64);
    EXPECT_EQ(tiles[2].left, 128);
    EXPECT_EQ(tiles[2].right, 0);
    EXPECT_EQ(tiles[2].top, 0);
}

TEST(TileGridPlan, Impossible_wishes_are_refused) {
    EXPECT_THROW(static_cast<void>(planTiles(0, 5, {})), Failure);
    EXPECT_THROW(static_cast<void>(planTiles(5, 5, {16, 8})), Failure);
    EXPECT_THROW(static_cast<void>(planTiles(5, 5, {0, 0})), Failure);
    EXPECT_THROW(static_cast<void>(planTiles(5, 5, {16, -1})), Failure);
}

} // namespace
} // namespace workbench::test
