// SPDX-License-Identifier: Apache-2.0
// Color profiles that fit the pixels, that do not, and damaged ones; names with question marks.
#include "FilesTest.h"
#include "Tool.h"

using namespace workbench;

namespace {

class ProfileTest : public FilesTest {
protected:
    [[nodiscard]] std::string at(const std::string& name) const {
        return "'" + (folder / name).string() + "'";
    }

    /// What a writer of that file leaves out of a picture with this profile.
    [[nodiscard]] std::vector<std::string> droppedFrom(const std::string& name, const std::string& profile,
                                                       bool isGrey, bool srgb = false) const {
        Picture picture = gradient(8, 8, false);
        picture.description.isGrey = isGrey;
        picture.description.metadata.push_back(
            {"ICCProfile", "uint8[" + std::to_string(profile.size()) + "]", "", profile});
        const auto writer = PictureWriter::create(folder / name, picture.description, {.srgb = srgb});
        writer->writeRows(0, 8, picture.pixels.data());
        writer->finish();
        const bool isKept = PictureReader::open(folder / name)->description().find("ICCProfile");
        EXPECT_EQ(isKept, writer->dropped().empty()) << name;
        return writer->dropped();
    }
    static std::string installed(const std::string& name) {
        return read(packaged("/usr/share/color/icc/ghostscript/" + name, "libgs-common"));
    }
};

const std::vector<std::string> None, Profile{"ICCProfile"};

} // namespace

TEST_F(ProfileTest, profile_isKeptWhereItFitsThePixels) {
    const std::string color = installed("srgb.icc"), grey = installed("sgray.icc"),
                      inks = installed("default_cmyk.icc");
    for (const std::string name : {"a.png", "a.jpg", "a.tif"}) {
        EXPECT_EQ(droppedFrom(name, color, false), None) << name;
        EXPECT_EQ(droppedFrom(name, color, false, true), None) << name;
        EXPECT_EQ(droppedFrom(name, color, true), Profile) << name;
        EXPECT_EQ(droppedFrom(name, grey, true), None) << name;
        EXPECT_EQ(droppedFrom(name, grey, false), Profile) << name;
        EXPECT_EQ(droppedFrom(name, inks, false), Profile) << name;
    }
}

TEST_F(ProfileTest, damagedProfile_isLeftOutByName) {
    const std::string good = installed("srgb.icc");
    std::string padded = good + '\0', unmarked = good, intent = good;
    unmarked[36] = 'x';
    intent[64] = '\x7f';
    for (const std::string name : {"a.png", "a.jpg", "a.tif"}) {
        EXPECT_EQ(droppedFrom(name, padded, false), Profile) << name;
        EXPECT_EQ(droppedFrom(name, good.substr(0, good.size() - 4), false), Profile) << name;
        EXPECT_EQ(droppedFrom(name, unmarked, false), Profile) << name;
        EXPECT_EQ(droppedFrom(name, good.substr(0, 40), false), Profile) << name;
    }
    EXPECT_EQ(droppedFrom("a.png", intent, false), Profile); // libpng refuses it
}

TEST_F(ProfileTest, otherProfile_isLeftOutOfAPictureThatIsEncodedAsSrgb) {
    const std::string other = installed("a98.icc");
    EXPECT_EQ(droppedFrom("a.png", other, false), None);
    EXPECT_EQ(droppedFrom("a.png", other, false, true), Profile);
}

TEST_F(ProfileTest, greyAndCmykJpegWithTheirProfiles_becomePng) {
    tool("convert -size 8x8 gradient: -colorspace Gray -profile /usr/share/color/icc/ghostscript/sgray.icc " +
         at("grey.png"));
    tool("convert -size 8x8 xc:red -colorspace CMYK -profile "
         "/usr/share/color/icc/ghostscript/default_cmyk.icc " +
         at("cmyk.jpg"));
    for (const std::string name : {"grey.png", "cmyk.jpg"}) {
        Picture picture = readPicture(folder / name);
        EXPECT_NE(picture.description.find("ICCProfile"), nullptr) << name;
        picture.description.isGrey = false;
        for (const std::string output : {"o.png", "o.jpg", "o.tif"}) {
            writePicture(folder / output, picture);
            EXPECT_EQ(PictureReader::open(folder / output)->description().find("ICCProfile"), nullptr)
                << output;
        }
    }
}

TEST_F(ProfileTest, fileWithAQuestionMarkInItsName_isRead) {
    tool("convert -size 8x8 xc:red " + at("a.gif"));
    for (const std::string extension : {"png", "jpg", "tif", "hdr", "exr"}) {
        tool("oiiotool --create 8x8 3 -d uint8 -o " + at("a." + extension));
        tool("cp " + at("a." + extension) + " " + at("what?x=1." + extension));
        EXPECT_EQ(readPicture(folder / ("what?x=1." + extension)).description.width, 8) << extension;
    }
    std::filesystem::rename(folder / "a.gif", folder / "a?.gif");
    EXPECT_EQ(readPicture(folder / "a?.gif").description.width, 8);
    writePicture(folder / "out?.tif", gradient(8, 8));
    writePicture(folder / "out?.png", gradient(8, 8));
    EXPECT_EQ(readPicture(folder / "out?.tif").description.width, 8);
}
