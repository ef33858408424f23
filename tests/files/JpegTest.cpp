// SPDX-License-Identifier: Apache-2.0
// JPEG files of other programs, harmless and damaged ones, and ours in their eyes.
#include "FilesTest.h"
#include "Tool.h"

#include <cmath>

using namespace workbench;

namespace {

class JpegTest : public FilesTest {
protected:
    [[nodiscard]] std::string at(const std::string& name) const {
        return "'" + (folder / name).string() + "'";
    }

    [[nodiscard]] std::vector<krod::RGBAHalf> pixelsByOiiotool(const std::string& name) const {
        tool("oiiotool " + at(name) + " -d half --compression none -o " + at("seen.exr"));
        return readPicture(folder / "seen.exr").pixels;
    }
    /// A JPEG of another program, of 200 x 150 pixels.
    [[nodiscard]] std::string bytesOf(const std::string& options) const {
        tool("convert -size 200x150 -seed 3 plasma:tomato-steelblue " + options + " " + at("made.jpg"));
        return read(folder / "made.jpg");
    }
    [[nodiscard]] std::vector<std::string> notesOf(const std::string& name) const {
        return PictureReader::open(folder / name)->description().notes;
    }
};

} // namespace

TEST_F(JpegTest, everyKindOfJpeg_isReadAsOthersReadIt) {
    for (const std::string options :
         {"-quality 90", "-sampling-factor 4:2:0", "-sampling-factor 4:2:2", "-interlace JPEG",
          "-colorspace Gray", "-colorspace CMYK", "-quality 100 -interlace JPEG -sampling-factor 4:2:0"}) {
        static_cast<void>(bytesOf(options));
        const Picture read = readPicture(folder / "made.jpg");
        expectSameBits(read.pixels, pixelsByOiiotool("made.jpg"));
        EXPECT_TRUE(read.description.isLossy);
        EXPECT_EQ(read.description.transfer, Transfer::Srgb);
    }
}

TEST_F(JpegTest, progressiveJpeg_saysWhatItsWholeTakes) {
    const auto bytes = [&] { return PictureReader::open(folder / "made.jpg")->description().readerBytes; };
    static_cast<void>(bytesOf(""));
    const std::uint64_t sequential = bytes();
    static_cast<void>(bytesOf("-interlace JPEG"));
    EXPECT_GT(bytes(), sequential + 200 * 150 * 2);
}

TEST_F(JpegTest, harmlessFaults_areNotedAndRead) {
    const std::string good = bytesOf("");
    const Picture expected = readPicture(folder / "made.jpg");
    EXPECT_TRUE(expected.description.notes.empty());
    // The end of the spectrum in the head of the scan, which some cameras write as 0.
    std::string scan = good;
    const std::size_t head = scan.find("\xff\xda");
    scan[head + 5 + 2 * static_cast<std::size_t>(scan[head + 4]) + 1] = '\0';
    write("scan.jpg", scan);
    write("end.jpg", good.substr(0, good.size() - 2));
    for (const std::string name : {"scan.jpg", "end.jpg"}) {
        expectSameBits(readPicture(folder / name).pixels, expected.pixels);
        EXPECT_EQ(notesOf(name).size(), 1U) << name;
    }
    EXPECT_EQ(notesOf("scan.jpg").front(), "a fault was passed over: Invalid SOS parameters for sequential JPEG");
    EXPECT_EQ(notesOf("end.jpg").front(), "the marker of its end is missing");
}

TEST_F(JpegTest, missingPixels_areRefused) {
    for (const std::string options : {"", "-interlace JPEG", "-colorspace CMYK"}) {
        const std::string good = bytesOf(options);
        for (const std::size_t missing : {std::size_t{20}, good.size() / 3, good.size() / 2}) {
            write("cut.jpg", good.substr(0, good.size() - missing));
            expectHas(sentenceOf(Fault::Input, [&] { return readPicture(folder / "cut.jpg"); }),
                      "cut.jpg: cannot be read at the row");
        }
    }
    const std::string progressive = bytesOf("-interlace JPEG"); // without its last scan, with an end
    write("scan.jpg", progressive.substr(0, progressive.rfind("\xff\xda")));
    EXPECT_THROW(static_cast<void>(readPicture(folder / "scan.jpg")), Failure);
}

TEST_F(JpegTest, textsThatAreTooLong_areNamedAndTheProgramGoesOn) {
    for (const std::string name : {"Artist", "Make", "Software", "Exif:UserComment", "IPTC:Caption",
                                   "Keywords", "IPTC:Instructions", "ImageDescription", "Comment", "XMP"}) {
        PictureDescription about = gradient(8, 8, false).description;
        about.setText(name, std::string(70000, 'x'));
        about.setText("Copyright", "Somebody");
        const auto writer = PictureWriter::create(folder / "a.jpg", about);
        EXPECT_EQ(writer->dropped(), std::vector<std::string>{name});
        writer->writeRows(0, 8, gradient(8, 8, false).pixels.data());
        writer->finish();
        EXPECT_EQ(PictureReader::open(folder / "a.jpg")->description().find("Copyright")->text, "Somebody");
    }
    PictureDescription about = gradient(8, 8, false).description; // each fits, all together do not
    for (const std::string name : {"Artist", "Make", "Software"})
        about.setText(name, std::string(25000, 'x'));
    EXPECT_EQ(PictureWriter::create(folder / "b.jpg", about)->dropped(),
              std::vector<std::string>{"Software"});
}

TEST_F(JpegTest, network_isInNoPlaceThatIsShown) {
    Picture picture = gradient(8, 8, false);
    const std::string network = std::string(200000, 'n') + "end";
    picture.description.setText(NetworkName, network);
    picture.description.setText("ImageDescription", "A meadow");
    writePicture(folder / "a.jpg", picture);
    const std::string shown = tool("exiftool " + at("a.jpg"));
    EXPECT_EQ(shown.find("nnnn"), std::string::npos);
    expectHas(shown, "A meadow");
    EXPECT_EQ(readPicture(folder / "a.jpg").description.find(NetworkName)->text, network);
}

TEST_F(JpegTest, networkOfVersion010_isStillRead) {
    tool("convert -size 8x8 xc:red " + at("a.jpg"));
    tool("printf 'A meadow\\n--- krod:network ---\\n{\"objects\": []}' > " + at("text") +
         "; exiftool -q -overwrite_original '-ImageDescription<=" + (folder / "text").string() + "' " +
         at("a.jpg"));
    const PictureDescription about = PictureReader::open(folder / "a.jpg")->description();
    ASSERT_NE(about.find(NetworkName), nullptr);
    EXPECT_EQ(about.find(NetworkName)->text, "{\"objects\": []}");
    EXPECT_EQ(about.find("ImageDescription")->text, "A meadow");
}

TEST_F(JpegTest, quality_isWhatIsAskedFor) {
    const Picture picture = gradient(64, 64, false);
    writePicture(folder / "a.jpg", picture);
    writePicture(folder / "b.jpg", picture, {.quality = 40});
    EXPECT_EQ(tool("identify -format %Q,%[jpeg:sampling-factor] " + at("a.jpg")), "95,1x1,1x1,1x1");
    EXPECT_EQ(tool("identify -format %Q " + at("b.jpg")), "40");
}

TEST_F(JpegTest, density_isKept) {
    tool("convert -size 8x8 xc:red -units PixelsPerInch -density 300x150 " + at("a.jpg"));
    writePicture(folder / "b.jpg", readPicture(folder / "a.jpg"));
    writePicture(folder / "c.png", readPicture(folder / "a.jpg"));
    EXPECT_EQ(PictureReader::open(folder / "a.jpg")->description().pixelAspect, 0.5F);
    EXPECT_EQ(tool("identify -units PixelsPerInch -format %x,%y " + at("b.jpg")), "300,150");
    EXPECT_EQ(tool("identify -units PixelsPerInch -format '%[fx:round(resolution.x)]' " + at("c.png")),
              "300");
}
