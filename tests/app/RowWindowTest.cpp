// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/pictures/RowWindow.h"

#include "apps/plime/pictures/TilePlan.h"

#include <gtest/gtest.h>

namespace workbench {
namespace {

/// A picture of two columns in which every value is the number of its row; counts the rows that are read.
class CountingReader : public PictureReader {
public:
    explicit CountingReader(int height) : PictureReader("a.exr") {
        about.width = 2;
        about.height = height;
        about.extraChannels = {{"h", ExtraType::Half}, {"f", ExtraType::Float}};
    }
    int rowsRead = 0;

private:
    void decodeRows(int first, int count, krod::RGBAHalf* out, ExtraRows* extra) override {
        rowsRead += count;
        for (int i = 0; i < 2 * count; ++i) {
            const auto row = static_cast<float>(first + i / 2);
            out[i].r = half_float::half(row);
            for (std::size_t plane = 0; plane < 2; ++plane) {
                const std::size_t bytes = about.extraChannels[plane].bytesPerValue();
                (*extra)[plane][static_cast<std::size_t>(i) * bytes] = static_cast<std::byte>(first + i / 2);
            }
        }
    }
};

TEST(Row_window, reads_every_row_once_while_it_slides_over_overlapping_tiles) {
    CountingReader reader(217);
    RowWindow window(reader);
    const TilePlan plan({"a.exr", 2, 217, 6, 1 << 20, 4096}, {.side = 50, .overlap = 12});
    ASSERT_GT(plan.rows(), 2);
    for (int i = 0; i < plan.rows(); ++i) {
        const TileSpan rows = plan.row(i);
        window.moveTo(rows.seenBegin, rows.seenLength);
        const ExtraRows extra = window.extra(rows.begin, rows.length);
        for (int y = rows.seenBegin; y < rows.seenBegin + rows.seenLength; ++y)
            ASSERT_EQ(static_cast<float>(window.row(y)[1].r), static_cast<float>(y));
        ASSERT_EQ(extra[0].size(), static_cast<std::size_t>(rows.length) * 2 * 2);
        ASSERT_EQ(extra[1].size(), static_cast<std::size_t>(rows.length) * 2 * 4);
        EXPECT_EQ(extra[0].front(), static_cast<std::byte>(rows.begin));
        EXPECT_EQ(extra[1].front(), static_cast<std::byte>(rows.begin));
    }
    EXPECT_EQ(reader.rowsRead, 217);
}

} // namespace
} // namespace workbench
