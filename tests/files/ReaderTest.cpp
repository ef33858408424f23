// SPDX-License-Identifier: Apache-2.0
// Pictures that another process decodes are what the decoders give in this one.
#include "FilesTest.h"

#include "workbench/files/reader/LocalReader.h"

#include <cstring>
#include <thread>

#include <fcntl.h>
#include <unistd.h>

using namespace workbench;

namespace {

class ReaderTest : public FilesTest {
protected:
    /// A picture with noise and additional channels.
    std::filesystem::path noise(const std::string& name, int width, int height, bool withExtra) const {
        Picture picture = gradient(width, height);
        unsigned state = 7;
        const auto random = [&] { return (state = state * 1664525U + 1013904223U) >> 8; };
        for (auto& pixel : picture.pixels) pixel.g = half_float::half(static_cast<float>(random()) / 1000);
        const auto values = picture.pixels.size();
        if (withExtra)
            for (const ExtraType type : {ExtraType::Half, ExtraType::Float, ExtraType::UInt}) {
                const ExtraChannel channel{"x" + std::to_string(static_cast<int>(type)), type};
                picture.extra.emplace_back(values * channel.bytesPerValue());
                for (std::byte& byte : picture.extra.back()) byte = static_cast<std::byte>(random() & 0xFFU);
                picture.description.extraChannels.push_back(channel);
            }
        writePicture(folder / name, picture);
        return folder / name;
    }
};

bool same(const std::vector<krod::RGBAHalf>& a, const std::vector<krod::RGBAHalf>& b) {
    return a.size() == b.size() &&
           (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof a[0]) == 0);
}

/// Reads the same rows through both readers.
void expectSameRows(PictureReader& remote, PictureReader& local, int first, int count, bool withExtra) {
    const auto pixels = static_cast<std::size_t>(count) * static_cast<std::size_t>(local.description().width);
    std::vector<krod::RGBAHalf> a(pixels), b(pixels);
    ExtraRows extraA, extraB;
    remote.readRows(first, count, a.data(), withExtra ? &extraA : nullptr);
    local.readRows(first, count, b.data(), withExtra ? &extraB : nullptr);
    EXPECT_TRUE(same(a, b)) << first << ' ' << count;
    EXPECT_EQ(extraA, extraB) << first << ' ' << count;
    EXPECT_EQ(remote.loss(), local.loss()) << first << ' ' << count;
    EXPECT_EQ(remote.lossByRow(), local.lossByRow()) << first << ' ' << count;
}

} // namespace

TEST_F(ReaderTest, Description_isTheSame) {
    for (const auto& path : {noise("a.exr", 40, 30, true), noise("b.png", 40, 30, false)}) {
        const PictureDescription a = PictureReader::open(path)->description();
        const PictureDescription b = openPictureHere(path)->description();
        EXPECT_EQ(a.width, b.width);
        EXPECT_EQ(a.height, b.height);
        EXPECT_EQ(a.depth, b.depth);
        EXPECT_EQ(a.hasAlpha, b.hasAlpha);
        EXPECT_EQ(a.isGrey, b.isGrey);
        EXPECT_EQ(a.displayWindow, b.displayWindow);
        EXPECT_EQ(a.channelNames, b.channelNames);
        ASSERT_EQ(a.extraChannels.size(), b.extraChannels.size());
        ASSERT_EQ(a.metadata.size(), b.metadata.size());
        for (std::size_t i = 0; i < a.metadata.size(); ++i) {
            EXPECT_EQ(a.metadata[i].name, b.metadata[i].name);
            EXPECT_EQ(a.metadata[i].type, b.metadata[i].type);
            EXPECT_EQ(a.metadata[i].text, b.metadata[i].text);
            EXPECT_EQ(a.metadata[i].bytes, b.metadata[i].bytes);
        }
    }
}

TEST_F(ReaderTest, Pictures_readInThisProcess_holdWhatWasWritten) {
    const auto path = noise("a.exr", 40, 100, true);
    Picture written = associatedGradient(40, 100), read = written;
    for (const char* const name : {"b.exr", "b.tif"}) {
        writePicture(folder / name, written, {.depth = PixelDepth::Half});
        openPictureHere(folder / name)->readRows(0, 100, read.pixels.data());
        EXPECT_TRUE(same(read.pixels, written.pixels)) << name;
    }
    const auto reader = openPictureHere(path);
    for (int row = 0; row < 100; row += 20) reader->readRows(row, 20, read.pixels.data(), &read.extra);
    EXPECT_EQ(read.extra.size(), 3U);
}

TEST_F(ReaderTest, Rows_inAnyOrder_areTheSame) {
    for (const auto& path : {noise("a.exr", 300, 1000, true), noise("b.png", 300, 1000, false),
                             noise("c.tif", 300, 1000, false)}) {
        const auto remote = PictureReader::open(path), local = openPictureHere(path);
        for (int row = 0; row < 500; row += 50) expectSameRows(*remote, *local, row, 50, true);
        for (const auto& [first, count] :
             {std::pair{990, 10}, {0, 1}, {1, 300}, {300, 0}, {301, 5}, {700, 64}, {764, 236}, {3, 997}})
            expectSameRows(*remote, *local, first, count, first % 2 == 0);
        for (int row = 999; row > 900; row -= 9) expectSameRows(*remote, *local, row, 1, false);
    }
}

TEST_F(ReaderTest, Rows_thatAreVeryLong_areTheSame) {
    const auto path = noise("a.exr", 70000, 40, true);
    const auto remote = PictureReader::open(path), local = openPictureHere(path);
    for (int row = 0; row < 40; row += 8) expectSameRows(*remote, *local, row, 8, true);
}

TEST_F(ReaderTest, Pictures_thatAreOpenTogether_doNotMix) {
    const auto a = noise("a.exr", 100, 600, false), b = noise("b.png", 90, 500, false);
    const auto remoteA = PictureReader::open(a), remoteB = PictureReader::open(b),
               localA = openPictureHere(a), localB = openPictureHere(b);
    for (int row = 0; row < 500; row += 100) {
        expectSameRows(*remoteA, *localA, row, 100, false);
        expectSameRows(*remoteB, *localB, row, 100, false);
    }
}

TEST_F(ReaderTest, Path_thatIsRelative_isFoundAndNamedAsGiven) {
    static_cast<void>(noise("a.exr", 8, 8, false));
    write("b.png", "this is a text");
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(folder);
    EXPECT_EQ(readPicture("a.exr").description.width, 8);
    expectHas(sentenceOf(Fault::Input, [&] { return readPicture("b.png"); }),
              "b.png: cannot be read as a picture");
    std::filesystem::current_path(before);
}

TEST_F(ReaderTest, Picture_thatAThreadOfThePastHasOpened_isStillRead) {
    const auto path = noise("a.exr", 100, 600, false);
    std::unique_ptr<PictureReader> reader;
    std::thread([&] { reader = PictureReader::open(path); }).join();
    expectSameRows(*reader, *openPictureHere(path), 0, 600, false);
    EXPECT_EQ(readPicture(path).description.height, 600);
}

/// The reading process has another standard input.
TEST_F(ReaderTest, StandardInput_thatIsAFile_isRead) {
    const int before = ::dup(STDIN_FILENO);
    for (const char* const name : {"a.exr", "b.png"}) {
        const auto path = noise(name, 40, 30, false);
        const int file = ::open(path.c_str(), O_RDONLY);
        ::dup2(file, STDIN_FILENO);
        expectSameBits(readPicture("/dev/stdin").pixels, readPicture(path).pixels);
        expectSameBits(readPicture("/proc/self/fd/" + std::to_string(file)).pixels, readPicture(path).pixels);
        std::filesystem::remove(path);
        EXPECT_EQ(
            sentenceOf(Fault::Input, [] { return readPicture("/dev/stdin"); }),
            "/dev/stdin: cannot be read — expected a file that has a name, got one that is deleted. Name the "
            "file itself.");
        ::close(file);
    }
    ::dup2(before, STDIN_FILENO);
    ::close(before);
}
