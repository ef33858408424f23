// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/pictures/DrawingPlan.h"

#include "apps/plime/pictures/FreeSpace.h"
#include "apps/plime/pictures/MemoryUse.h"
#include "tests/app/FakeModules.h"

#include <gtest/gtest.h>

#include <limits>

namespace workbench {
namespace {

constexpr std::uint64_t Megabyte = 1U << 20U;

/// A display of 4 samples.
DrawingTask poster(int width, int height, std::uint64_t megabytes = 700) {
    const std::uint64_t other = bytesBesidePixels(true, "a.exr", width);
    return {"a.exr", width, height, {}, 4, true, false, other, megabytes * Megabyte};
}

/// "2048 in rows", or in blocks.
std::string textOf(const DrawingTask& task) {
    const DrawingPlan plan = planDrawing(task);
    EXPECT_LE(plan.bytes, task.memory);
    return std::to_string(plan.tiles.size) + (plan.inBlocks ? " in blocks" : " in rows");
}

TEST(Drawing_plan, is_the_wish_where_there_is_room) {
    EXPECT_EQ(textOf(poster(1280, 720)), "2048 in rows");
    EXPECT_EQ(textOf(poster(14040, 9920)), "2048 in rows");
    EXPECT_EQ(textOf(poster(32768, 32768)), "2048 in blocks");
}

TEST(Drawing_plan, takes_half_the_side_as_often_as_the_memory_asks_for_it) {
    EXPECT_EQ(textOf(poster(14040, 9920, 500)), "1024 in rows");
    EXPECT_EQ(textOf(poster(14040, 9920, 200)), "256 in rows");
    EXPECT_EQ(textOf(poster(32768, 32768, 300)), "1024 in blocks");
    DrawingTask two = poster(32768, 32768);
    two.samples = 12;
    EXPECT_EQ(textOf(two), "1024 in blocks");
}

TEST(Drawing_plan, leaves_processors_half_of_what_is_there_for_pixels) {
    DrawingTask task = poster(4000, 4000);
    const std::uint64_t alone = planDrawing(task).bytes;
    task.memory = alone;
    EXPECT_EQ(textOf(task), "2048 in rows");
    task.isProcessed = true;
    EXPECT_EQ(textOf(task), "1024 in rows");
    EXPECT_LE(planDrawing(task).bytes - task.otherBytes, (alone - task.otherBytes) / 2);
}

TEST(Drawing_plan, counts_every_drawing_area_and_what_is_kept_of_a_tile) {
    DrawingTask task = poster(5000, 100, 7000);
    task.wish = {1000, 100};
    task.otherBytes = 11;
    // 7 tiles that keep 715 of 915 pixels at most, and 5000 rows as high as they are.
    EXPECT_EQ(planDrawing(task).targetBytes, 915U * 100 * (1 + 4) * 12);
    EXPECT_EQ(planDrawing(task).bytes, 11U + 915 * 100 * (1 + 4) * 12 + 715 * 100 * 8 + 5000 * 100 * 8);
}

TEST(Drawing_plan, only_wide_EXR_pictures_without_processors_are_stored_in_tiles) {
    EXPECT_EQ(textOf(poster(16384, 100)), "2048 in rows");
    EXPECT_EQ(textOf(poster(16385, 100)), "2048 in blocks");
    DrawingTask task = poster(16385, 100);
    task.isExr = false;
    EXPECT_EQ(textOf(task), "2048 in rows");
    task = poster(16385, 100);
    task.isProcessed = true;
    EXPECT_EQ(textOf(task), "2048 in rows");
    task = poster(16385, 100);
    task.wish = {127, 32}; // keeps less than a stored tile
    EXPECT_EQ(textOf(task), "127 in rows");
}

TEST(Drawing_plan, tiles_stored_together_begin_at_their_borders) {
    EXPECT_EQ(planDrawing(poster(20000, 20000)).tiles.multiple, 64);
    EXPECT_EQ(planDrawing(poster(2000, 2000)).tiles.multiple, 1);
}

TEST(Drawing_plan, names_what_is_needed_at_least) {
    const auto refusal = [](const DrawingTask& task) {
        return failureOf([&] { static_cast<void>(planDrawing(task)); });
    };
    EXPECT_EQ(refusal(poster(1000, 1000, 100)),
              "4 a.exr: needs more memory than is allowed — expected at most 100M, got 127M. Allow it with "
              "--memory 127M.");
    EXPECT_EQ(refusal(poster(1000, 1000, 127)), "");
    DrawingTask processed = poster(1000, 1000, 128);
    processed.isProcessed = true;
    EXPECT_NE(refusal(processed), "");
}

TEST(Free_space, that_does_not_suffice_is_named_with_what_is_needed) {
    const std::uint64_t most = std::numeric_limits<std::uint64_t>::max() / 2;
    const auto refusal = [](std::uint64_t picture, std::uint64_t tiles) {
        return failureOf([&] { requireFreeSpace("a.exr", picture, tiles); });
    };
    EXPECT_EQ(refusal(1, 1), "");
    EXPECT_TRUE(refusal(most, 0).starts_with(
        "4 a.exr: may not fit on its disk — expected 9223372036854775807 bytes free, got "));
    EXPECT_TRUE(refusal(most - 1, 1)
                    .starts_with("4 a.exr: may not fit on its disk beside its finished tiles "
                                 "— expected 9223372036854775807 bytes free, got "));
}

TEST(Free_space, of_a_folder_that_is_not_there_is_not_asked_for) {
    EXPECT_EQ(failureOf([] {
                  requireFreeSpace("/nonexistent/a.exr", std::numeric_limits<std::uint64_t>::max() / 2, 0);
              }),
              "");
}

} // namespace
} // namespace workbench
