// SPDX-License-Identifier: Apache-2.0
#include "FilesTest.h"

#include <csignal>
#include <sys/resource.h>

using namespace workbench;

namespace {

class PictureDamageTest : public FilesTest {};

} // namespace

TEST_F(PictureDamageTest, Picture_textUnderItsName_isRefused) {
    for (const std::string name : {"a.png", "a.tif", "a.jpg", "a.hdr"}) {
        const auto path = write(name, "This is a text, and long enough to hold any head of a picture.");
        expectHas(sentenceOf(Fault::Input, [&] { return readPicture(path); }),
                  name + ": cannot be read as a picture — expected EXR, PNG, TIFF, JPEG, HDR or another "
                         "picture format");
    }
}

TEST_F(PictureDamageTest, Picture_cutInTheMiddle_isRefused) {
    for (const std::string name : {"a.png", "a.tif", "a.jpg", "a.hdr"}) {
        Picture picture = gradient(300, 300, false);
        unsigned state = 1;
        for (auto& p : picture.pixels)
            p.r = half_float::half(static_cast<float>((state = state * 1664525U + 1013904223U) >> 8) /
                                   16777216.0F);
        writePicture(folder / name, picture);
        const std::string bytes = read(folder / name);
        const auto path = write(name, bytes.substr(0, bytes.size() / 2));
        expectHas(sentenceOf(Fault::Input, [&] { return readPicture(path); }), name + ": ");
    }
}

TEST_F(PictureDamageTest, Png_hugeDeclaredSize_isRefused) {
    writePicture(folder / "a.png", gradient(4, 4));
    std::string bytes = read(folder / "a.png");
    bytes.replace(16, 8, std::string("\x00\x01\x00\x00\x00\x01\x00\x00", 8)); // 65536 x 65536
    const auto path = write("a.png", bytes);
    expectHas(sentenceOf(Fault::Input, [&] { return readPicture(path); }), "a.png: ");
}

TEST_F(PictureDamageTest, CheckPictureSize_limits_areExact) {
    const auto check = [](std::int64_t width, std::int64_t height, std::int64_t channels,
                          std::uint64_t size) { checkPictureSize("a", width, height, channels, 8, size); };
    const std::uint64_t large = std::uint64_t{1} << 40;
    EXPECT_NO_THROW(check(131072, 16384, 1024, large));
    EXPECT_THROW(check(131073, 1, 1, large), Failure);
    EXPECT_THROW(check(0, 1, 1, large), Failure);
    EXPECT_THROW(check(1, -1, 1, large), Failure);
    EXPECT_THROW(check(131072, 16385, 1, large), Failure);
    EXPECT_THROW(check(1, 1, 1025, large), Failure);
    EXPECT_NO_THROW(check(2896, 2896, 4, 1)); // just below 64 MiB
    EXPECT_THROW(check(4096, 4096, 4, 13420), Failure);
    EXPECT_NO_THROW(check(4096, 4096, 4, 13421));
    EXPECT_NO_THROW(checkPictureSize("a", 4096, 4096, 4, 8, 1343, "exr"));
    EXPECT_THROW(checkPictureSize("a", 4096, 4096, 4, 8, 1341, "exr"), Failure);
}

TEST_F(PictureDamageTest, Writer_fullDisk_failsAndLeavesNothing) {
    const auto oldHandler = ::signal(SIGXFSZ, SIG_IGN);
    struct rlimit old {};
    ::getrlimit(RLIMIT_FSIZE, &old);
    for (const std::string name : {"a.png", "a.tif", "a.jpg", "a.hdr"}) {
        Picture picture = gradient(2000, 1500, false);
        unsigned state = 1;
        for (auto& p : picture.pixels)
            p.r = half_float::half(static_cast<float>((state = state * 1664525U + 1013904223U) >> 8) /
                                   16777216.0F);
        const struct rlimit full { 20000, old.rlim_max };
        ::setrlimit(RLIMIT_FSIZE, &full);
        const Failure failure = failureOf([&] { writePicture(folder / name, picture); });
        ::setrlimit(RLIMIT_FSIZE, &old);
        EXPECT_EQ(failure.fault(), Fault::Output);
        expectHas(failure.what(), name + ": cannot be written completely — ");
        expectHas(failure.what(), "got File too large. Make room on the disk");
        EXPECT_EQ(filesInFolder(), 0);
    }
    ::signal(SIGXFSZ, oldHandler);
}

TEST_F(PictureDamageTest, Writer_targetsThatCannotBe_areRefused) {
    for (const std::string name : {"a.png", "a.exr"}) {
        expectHas(sentenceOf(Fault::Output, [&] { writePicture(folder / "no" / name, gradient(2, 2)); }),
                  "does not exist");
        std::filesystem::create_directory(folder / name);
        expectHas(sentenceOf(Fault::Output, [&] { writePicture(folder / name, gradient(2, 2)); }),
                  "got a folder");
        std::filesystem::remove(folder / name);
    }
    EXPECT_EQ(filesInFolder(), 0);
}

// Made by ImageMagick: convert -size 8x8 xc:'rgb(200,100,50)'; and four pixels of which the second and the
// fourth are transparent.
TEST_F(PictureDamageTest, Gif_hasTheAlphaOfItsOwnPixels) {
    const std::string plain(
        "GIF89a\x08\0\x08\0\xf0\0\0\xc8\x64\x32\0\0\0!\xf9\x04\0\0\0\0\0,\0\0\0\0\x08\0\x08"
        "\0\0\x02\x07\x84\x8f\xa9\xcb\xed\x5d\0\0;",
        48);
    const std::string holes(
        "GIF89a\x04\0\x01\0\xf1\0\0\xff\0\0\0\0\xff\0\0\0\0\0\0!\xf9\x04\x01\0\0\x02\0,\0\0\0\0\x04"
        "\0\x01\0\0\x02\x03\x84\x22\x05\0;",
        50);
    const Picture same = readPicture(write("a.gif", plain));
    EXPECT_TRUE(same.description.unreadChannels.empty());
    expectSameBits(same.pixels, std::vector(64, pixel(200 / 255.0F, 100 / 255.0F, 50 / 255.0F)));
    const Picture four = readPicture(write("b.gif", holes));
    ASSERT_EQ(four.pixels.size(), 4U);
    for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(float(four.pixels[i].a), i % 2 == 0 ? 1 : 0) << i;
    EXPECT_EQ(float(four.pixels[0].r), 1);
    EXPECT_EQ(float(four.pixels[2].b), 1);
}
