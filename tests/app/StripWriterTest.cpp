// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/pictures/StripWriter.h"

#include "tests/files/FilesTest.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace workbench {
namespace {

using Chunk = krod::Chunk<krod::RGBAHalf>;

constexpr int Width = 33, Height = 320, Rows = 64;

/// A picture of which every value is the number of its row.
class StripWriters : public FilesTest {
protected:
    [[nodiscard]] PictureOutput output() const {
        PictureDescription description;
        description.width = Width;
        description.height = Height;
        return {OutputWish{path, {}, false}, GlobalOptions{}, description};
    }

    /// Fills a strip, with its store if it has one.
    static Strip fill(Strip strip, int first) {
        if (!strip.pixels) strip.pixels = krod::StrongPtr<Chunk>(new Chunk(std::size_t{Width} * Rows));
        strip.first = first;
        strip.count = Rows;
        for (int row = 0; row < Rows; ++row)
            std::fill_n(strip.pixels->data() + std::ptrdiff_t{row} * Width, Width, ofRow(first + row));
        return strip;
    }
    static krod::RGBAHalf ofRow(int row) {
        const auto value = static_cast<float>(row);
        return pixel(value, value, value);
    }

    const std::string path = (folder / "out.exr").string();
};

TEST_F(StripWriters, write_all_strips_in_order_while_two_stores_take_turns) {
    PictureOutput picture = output();
    StripWriter writer(picture);
    Strip strip;
    const Chunk* stores[2] = {};
    for (int i = 0; i < Height / Rows; ++i) {
        strip = fill(std::move(strip), i * Rows);
        if (i < 2) stores[i] = &*strip.pixels;
        EXPECT_EQ(&*strip.pixels, stores[i % 2]);
        strip = writer.write(std::move(strip));
    }
    writer.finish();
    Report report;
    picture.finish(report);
    const Picture written = readPicture(path);
    for (int row = 0; row < Height; ++row)
        ASSERT_EQ(static_cast<float>(written.pixels[static_cast<std::size_t>(row) * Width + 5].g), row);
}

TEST_F(StripWriters, throw_the_failure_of_a_strip_with_the_next_one_or_at_the_end) {
    PictureOutput picture = output();
    StripWriter writer(picture);
    EXPECT_FALSE(writer.write(fill({}, Rows)).pixels); // its rows come too early
    EXPECT_THROW(static_cast<void>(writer.write(fill({}, 0))), std::logic_error);
    EXPECT_TRUE(writer.write(fill({}, 2 * Rows)).pixels);
    EXPECT_THROW(writer.finish(), std::logic_error);
    writer.finish();
}

TEST_F(StripWriters, end_with_the_strip_at_hand_where_the_work_is_given_up) {
    {
        PictureOutput picture = output();
        StripWriter writer(picture);
        static_cast<void>(writer.write(fill({}, 0)));
    }
    EXPECT_EQ(filesInFolder(), 0);
}

} // namespace
} // namespace workbench
