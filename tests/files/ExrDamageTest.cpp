// SPDX-License-Identifier: Apache-2.0
#include "FilesTest.h"

#include <OpenEXR/ImfChannelList.h>
#include <OpenEXR/ImfDeepScanLineOutputFile.h>
#include <OpenEXR/ImfHeader.h>
#include <OpenEXR/ImfOutputFile.h>
#include <OpenEXR/ImfPartType.h>

#include <csignal>
#include <cstring>
#include <sys/resource.h>

using namespace workbench;

namespace {

class ExrDamageTest : public FilesTest {
protected:
    std::string exrBytes(int width = 100, int height = 100) {
        writePicture(folder / "good.exr", gradient(width, height));
        std::string bytes = read(folder / "good.exr");
        std::filesystem::remove(folder / "good.exr");
        return bytes;
    }
    /// A file with another data and display window in its head.
    static std::string withWindow(std::string bytes, int maxX, int maxY) {
        for (const std::string name : {"dataWindow", "displayWindow"}) {
            const auto value = bytes.find(name) + name.size() + 1 + std::string("box2i").size() + 1 + 4;
            const std::int32_t box[] = {0, 0, maxX, maxY};
            std::memcpy(bytes.data() + value, box, sizeof box);
        }
        return bytes;
    }
};

} // namespace

TEST_F(ExrDamageTest, Exr_textUnderItsName_isRefused) {
    const auto path = write("a.exr", "This is a text.");
    EXPECT_EQ(
        sentenceOf(Fault::Input, [&] { return readPicture(path); }),
        path.string() +
            ": is named .exr but is no EXR file — expected the four bytes 76 2f 31 01 at its start, got "
            "other ones. Check how the file was made, or give it its right extension.");
}

TEST_F(ExrDamageTest, Exr_underAnotherName_isReadAllTheSame) {
    const auto path = write("a.png", exrBytes());
    EXPECT_EQ(readPicture(path).description.width, 100);
}

TEST_F(ExrDamageTest, Exr_cutAnywhere_failsWithASentence) {
    const std::string bytes = exrBytes();
    for (std::size_t size = 4; size < bytes.size(); size += size < 500 ? 7 : 97) {
        const auto path = write("a.exr", bytes.substr(0, size));
        const std::string text = sentenceOf(Fault::Input, [&] { return readPicture(path); });
        expectHas(text, "a.exr: ");
        expectHas(text, "The file is damaged or was not written to its end.");
    }
}

TEST_F(ExrDamageTest, Exr_cutInTheMiddle_namesTheRows) {
    const std::string bytes = exrBytes();
    const auto path = write("a.exr", bytes.substr(0, bytes.size() / 2));
    expectHas(sentenceOf(Fault::Input, [&] { return readPicture(path); }),
              "a.exr: cannot be read at the rows ");
}

TEST_F(ExrDamageTest, Exr_damagedBytes_neverCrash) {
    const std::string bytes = exrBytes();
    unsigned state = 1;
    const auto random = [&] { return state = state * 1664525U + 1013904223U; };
    int refused = 0;
    for (int round = 0; round < 1000; ++round) {
        std::string damaged = bytes;
        for (int i = 0; i < 4; ++i) damaged[4 + (random() >> 8) % 2000] = static_cast<char>(random() >> 24);
        try {
            static_cast<void>(readPicture(write("a.exr", damaged)));
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.fault(), Fault::Input);
            ++refused;
        }
    }
    EXPECT_GT(refused, 100);
}

TEST_F(ExrDamageTest, Exr_hugeDeclaredSize_isRefused) {
    const std::string bytes = exrBytes(4, 4);
    for (const auto& [x, y] : {std::pair{2000000000, 2000000000}, {1000000, 10}, {10, 1000000}}) {
        const auto path = write("a.exr", withWindow(bytes, x, y));
        expectHas(sentenceOf(Fault::Input, [&] { return readPicture(path); }),
                  "a.exr: cannot be read as an EXR picture");
    }
    // With room for the table of rows that the head announces, the size itself is judged.
    const std::string room(1 << 20, '\0');
    const auto path = write("a.exr", withWindow(bytes, 99999, 99999) + room);
    expectHas(sentenceOf(Fault::Input, [&] { return readPicture(path); }),
              "a.exr: declares a size that cannot be read — expected at most 2147483648 pixels, got "
              "100000x100000 pixels");
    const auto small = write("a.exr", withWindow(bytes, 39999, 39999) + room);
    expectHas(sentenceOf(Fault::Input, [&] { return readPicture(small); }), "expected a file of at least ");
}

TEST_F(ExrDamageTest, Exr_moreThan1024Channels_isRefused) {
    Picture picture = associatedGradient(2, 2);
    for (int i = 0; i < 1021; ++i) {
        picture.description.extraChannels.push_back({"x" + std::to_string(i), ExtraType::Half});
        picture.extra.emplace_back(8);
    }
    writePicture(folder / "a.exr", picture);
    expectHas(sentenceOf(Fault::Input, [&] { return readPicture(folder / "a.exr"); }),
              "expected 1 to 1024 channels, got 1025 channels");
}

TEST_F(ExrDamageTest, Exr_subsampledChannels_areRefused) {
    Imf::Header header(4, 4);
    header.channels().insert("Y", Imf::Channel(Imf::HALF));
    header.channels().insert("BY", Imf::Channel(Imf::HALF, 2, 2));
    { Imf::OutputFile file((folder / "a.exr").c_str(), header); }
    expectHas(
        sentenceOf(Fault::Input, [&] { return readPicture(folder / "a.exr"); }),
        "has the subsampled channel BY — expected channels with a value for each pixel. Convert luminance");
}

TEST_F(ExrDamageTest, Exr_deepPixels_areRefused) {
    Imf::Header header(4, 4);
    header.setType(Imf::DEEPSCANLINE);
    header.compression() = Imf::NO_COMPRESSION;
    header.channels().insert("R", Imf::Channel(Imf::HALF));
    { Imf::DeepScanLineOutputFile file((folder / "a.exr").c_str(), header); }
    expectHas(sentenceOf(Fault::Input, [&] { return readPicture(folder / "a.exr"); }), "holds deep pixels");
}

TEST_F(ExrDamageTest, ExrWriter_fullDisk_failsAndLeavesNothing) {
    const auto oldHandler = ::signal(SIGXFSZ, SIG_IGN);
    struct rlimit old {};
    ::getrlimit(RLIMIT_FSIZE, &old);
    for (const rlim_t room : {rlim_t{100}, rlim_t{20000}}) { // within the head, and within the pixels
        const struct rlimit full { room, old.rlim_max };
        ::setrlimit(RLIMIT_FSIZE, &full);
        const Failure failure =
            failureOf([&] { writePicture(folder / "a.exr", gradient(400, 400), {.compression = "none"}); });
        ::setrlimit(RLIMIT_FSIZE, &old);
        EXPECT_EQ(failure.fault(), Fault::Output);
        expectHas(failure.what(), "a.exr: cannot be written completely — ");
        expectHas(failure.what(), "got File too large. Make room on the disk");
        EXPECT_EQ(filesInFolder(), 0);
    }
    ::signal(SIGXFSZ, oldHandler);
}
