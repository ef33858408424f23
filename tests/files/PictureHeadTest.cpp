// SPDX-License-Identifier: Apache-2.0
// Declared sizes, found without a decoder.
#include "FilesTest.h"

#include "workbench/files/reader/PictureHead.h"

#include <algorithm>

using namespace workbench;

namespace {

class PictureHeadTest : public FilesTest {};

std::string bigNumber(std::uint32_t value, int size) {
    std::string bytes;
    for (int i = size - 1; i >= 0; --i) bytes += static_cast<char>(value >> (8 * i));
    return bytes;
}

std::string png(std::uint32_t width, std::uint32_t height) {
    return std::string("\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR", 16) + bigNumber(width, 4) + bigNumber(height, 4) +
           std::string("\x08\x06\0\0\0", 5);
}

std::string tiff(std::uint32_t width, std::uint32_t height) {
    const auto entry = [](std::uint32_t tag, std::uint32_t value) {
        return bigNumber(tag, 2) + bigNumber(4, 2) + bigNumber(1, 4) + bigNumber(value, 4);
    };
    return std::string("MM\0*\0\0\0\x08\0\2", 10) + entry(256, width) + entry(257, height) +
           std::string(4, '\0');
}

} // namespace

TEST_F(PictureHeadTest, DeclaredSize_ofWhatTheWritersWrite_isRight) {
    for (const std::string name : {"a.png", "a.tif", "a.jpg", "a.hdr"}) {
        writePicture(folder / name, gradient(37, 21, false));
        EXPECT_EQ(declaredSize(read(folder / name)), (DeclaredSize{37, 21})) << name;
    }
    writePicture(folder / "a.exr", gradient(37, 21));
    EXPECT_EQ(declaredSize(read(folder / "a.exr")), std::nullopt);
}

TEST_F(PictureHeadTest, DeclaredSize_ofAnyStart_neverReadsBeyond) {
    for (const std::string name : {"a.png", "a.tif", "a.jpg", "a.hdr"}) {
        writePicture(folder / name, gradient(37, 21, false));
        const std::string bytes = read(folder / name);
        unsigned state = 1;
        for (std::size_t size = 0; size < std::min<std::size_t>(bytes.size(), 700); ++size) {
            const std::vector<char> exact(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
            static_cast<void>(declaredSize({exact.data(), exact.size()}));
            std::string damaged = bytes;
            for (int i = 0; i < 4; ++i) {
                state = state * 1664525U + 1013904223U;
                damaged[4 + (state >> 8) % (damaged.size() - 4)] = static_cast<char>(state >> 24);
            }
            static_cast<void>(declaredSize(damaged));
        }
    }
}

TEST_F(PictureHeadTest, HugeSize_isRefusedBeforeAnyDecoder) {
    const std::string frame = std::string("\xff\xd8\xff\xc0\0\x11\x08", 7) + "\xff\xff\xff\xff";
    const std::vector<std::pair<std::string, std::string>> files = {
        {"a.png", png(0x7fffffff, 0x7fffffff)},
        {"a.tif", tiff(0x80000000, 0x80000000)},
        {"a.jpg", frame + std::string(16, '\0')},
        {"a.hdr", "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y 2147483648 +X 2147483648\n"}};
    ::setenv("KROD_CODEC_PATH", "/nowhere", 1); // a decoder would be missing
    for (const auto& [name, bytes] : files) {
        EXPECT_LE(bytes.size(), 70U);
        const auto path = write(name, bytes);
        expectHas(sentenceOf(Fault::Input, [&] { return readPicture(path); }),
                  name + ": declares a size that cannot be read — expected ");
    }
    ::unsetenv("KROD_CODEC_PATH");
}
