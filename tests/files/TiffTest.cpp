// SPDX-License-Identifier: Apache-2.0
// What is special about TIFF.
#include "FilesTest.h"

#include <chrono>
#include <thread>

using namespace workbench;

namespace {

using TiffTest = FilesTest;

} // namespace

// A colour space is kept in a directory of its own, which libtiff has to find its way back from.
TEST_F(TiffTest, Tiff_withColourSpace_canBeReadAgain) {
    Picture picture = gradient(64, 40, false);
    picture.description.depth = PixelDepth::UInt16;
    writePicture(folder / "a.tif", picture, {.srgb = true});
    const Picture again = readPicture(folder / "a.tif");
    EXPECT_EQ(again.description.width, 64);
    EXPECT_EQ(again.description.height, 40);
    const Metadatum* space = again.description.find("oiio:ColorSpace");
    ASSERT_NE(space, nullptr);
    EXPECT_EQ(space->text, "sRGB");
}

// The format has a date that is set to the present where there is none; two files must not lie in one second.
TEST_F(TiffTest, Tiff_sameWorkAtTwoTimes_givesTheSameBytes) {
    const Picture picture = gradient(16, 16, false);
    writePicture(folder / "a.tif", picture);
    const auto second = [] {
        return std::chrono::time_point_cast<std::chrono::seconds>(std::chrono::system_clock::now());
    };
    for (const auto first = second(); second() == first;) std::this_thread::yield();
    writePicture(folder / "b.tif", picture);
    EXPECT_EQ(read(folder / "a.tif"), read(folder / "b.tif"));
}
