// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/pictures/SmallerTiles.h"

#include "workbench/gl/RenderTarget.h"

#include <gtest/gtest.h>

#include <new>
#include <vector>

namespace workbench {
namespace {

/// The sides that are tried from one on when tiles beyond another do not fit; 0: as asked.
std::vector<int> sidesTried(int first, int fitting, int overlap = 0) {
    Report report(-1);
    std::vector<int> tried;
    withSmallerTiles(report, "picture", [&](TileAttempt& attempt) {
        tried.push_back(attempt.side.value_or(0));
        attempt.used = attempt.side.value_or(first);
        attempt.overlap = overlap;
        if (attempt.used > fitting) throw GraphicsMemoryFailure("tile", 0);
    });
    return tried;
}

TEST(Smaller_tiles, are_not_tried_when_all_is_well) {
    EXPECT_EQ(sidesTried(2048, 2048), std::vector<int>{0});
}

TEST(Smaller_tiles, are_half_of_the_ones_before_down_to_64) {
    EXPECT_EQ(sidesTried(1000, 300), (std::vector<int>{0, 500, 250}));
    EXPECT_EQ(sidesTried(512, 64), (std::vector<int>{0, 256, 128, 64}));
    EXPECT_EQ(sidesTried(75, 64), (std::vector<int>{0, 64}));
    EXPECT_THROW(sidesTried(512, 63), GraphicsMemoryFailure);
}

TEST(Smaller_tiles, stay_larger_than_twice_the_overlap) {
    EXPECT_EQ(sidesTried(1024, 256, 64), (std::vector<int>{0, 512, 256}));
    EXPECT_THROW(sidesTried(1024, 128, 64), GraphicsMemoryFailure);
}

TEST(Smaller_tiles, are_tried_for_memory_of_every_kind_and_for_nothing_else) {
    Report report(-1);
    int tries = 0;
    withSmallerTiles(report, "picture", [&](TileAttempt& attempt) {
        attempt.used = 128;
        if (++tries == 1) throw std::bad_alloc();
    });
    EXPECT_EQ(tries, 2);
    EXPECT_THROW(withSmallerTiles(report, "picture",
                                  [](TileAttempt& attempt) {
                                      attempt.used = 128;
                                      throw Failure(Fault::Output, {"", "full", "", "", "", {}});
                                  }),
                 Failure);
}

TEST(Smaller_tiles, are_no_help_where_the_work_says_so) {
    Report report(-1);
    EXPECT_THROW(withSmallerTiles(report, "picture", [](TileAttempt&) { throw std::bad_alloc(); }),
                 std::bad_alloc);
}

} // namespace
} // namespace workbench
