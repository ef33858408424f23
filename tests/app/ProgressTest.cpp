// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/terminal/Progress.h"

#include "apps/plime/terminal/Text.h"

#include <gtest/gtest.h>

namespace workbench {
namespace {

const ProgressText Picture{"in.exr", 8000000, "Mpixel", 1e6};

TEST(Progress_line, tells_share_rate_and_the_time_left) {
    EXPECT_EQ(Picture.line({2000000, 0, 4}, 0), "in.exr: 25 %, 0.5 Mpixel/s, 12 s left");
    EXPECT_EQ(Picture.line({8000000, 0, 4}, 0), "in.exr: 100 %, 2.0 Mpixel/s, 0 s left");
}

TEST(Progress_line, does_not_count_resumed_work_in_the_rate) {
    const ProgressText tiles{"a.exr", 100, "tiles", 1};
    EXPECT_EQ(tiles.line({60, 50, 5}, 0), "a.exr: 60 %, 2.0 tiles/s, 20 s left");
    EXPECT_EQ(tiles.line({50, 50, 1}, 0), "a.exr: 50 %, 1 s so far");
}

TEST(Progress_line, tells_the_time_so_far_within_one_long_piece) {
    EXPECT_EQ(Picture.line({0, 0, 63}, 0), "in.exr: 0 %, 63 s so far");
}

TEST(Progress_line, fits_into_a_narrow_terminal) {
    const ProgressText far{"/a/very/long/path/to/the/picture/größe.exr", 100, "tiles", 1};
    EXPECT_EQ(far.line({25, 0, 5}, 45), "…ture/größe.exr: 25 %, 5.0 tiles/s, 15 s left");
    for (std::size_t columns = 1; columns < 100; ++columns)
        EXPECT_LE(columnsOf(far.line({25, 0, 5}, columns)), columns) << columns;
}

TEST(Progress_line, obeys_no_control_characters_of_a_name) {
    EXPECT_EQ((ProgressText{"a\x1b[2J", 1, "tiles", 1}.line({0, 0, 1}, 0)), "a\\x1b[2J: 0 %, 1 s so far");
}

} // namespace
} // namespace workbench
