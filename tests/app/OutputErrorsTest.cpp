// SPDX-License-Identifier: Apache-2.0
// Everything that can be wrong with the picture that plime render and plime process are to write.
#include "tests/app/PictureProgram.h"

#include <fstream>

namespace {

const Words Gamma = {"--with", "Hollywood/GammaCorrection"};

class PlimeOutput : public PictureProgramTest {
protected:
    /// Both commands must refuse the output alike.
    void refused(int code, const std::string& output, const std::string& what, const Words& more = {}) const {
        const std::string sentence = output + ": " + what;
        expectFailure(code, sentence, Words{"process", input, "-o", output} + Gamma + more);
        expectFailure(code, sentence, Words{"render", "demo:knot", "-o", output, "--size", "8x8"} + more);
    }

    std::string input = picture("in.exr", gradient(16, 16));
};

TEST_F(PlimeOutput, unknownFormat_isRefused) {
    const std::string known = "cannot be written as a picture — expected one of the extensions .exr .png "
                              ".tif .tiff .jpg .jpeg .hdr, got ";
    refused(2, at("out.bmp"), known + ".bmp.");
    refused(2, at("out"), known + "none.");
}

TEST_F(PlimeOutput, depthThatTheFormatDoesNotHold_isRefused) {
    refused(2, at("out.exr"), "EXR cannot hold the depth asked for — expected half, float, got uint8.",
            {"-d", "uint8"});
    refused(2, at("out.jpg"), "JPEG cannot hold the depth asked for — expected uint8, got float.",
            {"-d", "float"});
}

// The library behind the format would end the process.
TEST_F(PlimeOutput, sizeThatTheFormatDoesNotHold_isRefusedBeforeAnythingIsLeft) {
    expectFailure(4,
                  at("out.jpg") + ": is too large for a JPEG picture — expected at most 65500 pixels a side, "
                                  "got 70000. Write .exr or .png.",
                  {"render", "demo:knot", "-o", at("out.jpg"), "--size", "70000x10"});
}

TEST_F(PlimeOutput, thatWasBegunInVain_leavesOneLineOnly) {
    std::ofstream(folder / "BlurredObject.frag") << "#version 330\n";
    const Result result = run(Words{"render", "demo:knot", "-o", at("out.png"), "--display",
                                    "Display/Blurred", "--shader-dir", folder.string()});
    EXPECT_EQ(result.code, 6);
    EXPECT_EQ(occurrences(result.error, "\n"), 1U) << result.error;
}

TEST_F(PlimeOutput, folders_areSaid) {
    refused(4, at("none/out.exr"),
            "cannot be written, because the folder " + at("none") +
                " does not exist. Create it first, or correct the path.");
    std::filesystem::create_directory(folder / "folder.exr");
    refused(4, at("folder.exr"), "cannot be written — expected the name of a file, got a folder.");
}

TEST_F(PlimeOutput, device_isRefused) {
    std::filesystem::create_symlink("/dev/full", folder / "full.exr");
    const Result result = run(Words{"process", input, "-o", at("full.exr")} + Gamma);
    EXPECT_EQ(result.code, 4);
    EXPECT_TRUE(result.error.starts_with("plime: error: " + at("full.exr") + ": ")) << result.error;
    EXPECT_EQ(occurrences(result.error, "\n"), 1U) << result.error;
    EXPECT_TRUE(std::filesystem::is_symlink(at("full.exr")));
    EXPECT_EQ(filesInFolder(), 2);
}

TEST_F(PlimeOutput, noClobber_keepsAFileThatIsThere) {
    write("out.exr", "precious");
    refused(4, at("out.exr"), "exists already and is not replaced. Choose another name, or allow replacing.",
            {"--no-clobber"});
    const Result result = run(Words{"process", input, "-o", at("new.exr"), "--no-clobber"} + Gamma);
    EXPECT_EQ(result.code, 0) << result.error;
    EXPECT_TRUE(std::filesystem::exists(at("new.exr")));
}

TEST_F(PlimeOutput, fullDisk_keepsTheOldFile) {
    write("out.exr", "the old file");
    write("out.png", "the old file");
    const std::string large = picture("large.exr", gradient(200, 600));
    for (const std::string name : {"out.exr", "out.png"}) {
        for (const Words& words :
             {Words{"process", large, "-o", at(name), "-q"} + Gamma,
              Words{"render", "demo:galaxy", "-o", at(name), "--size", "200x200", "-q"}}) {
            Call call{words};
            call.largestFile = 4096;
            const Result result = run(call);
            EXPECT_EQ(result.code, 4);
            EXPECT_TRUE(result.error.starts_with("plime: error: " + at(name) + ": ")) << result.error;
            EXPECT_EQ(occurrences(result.error, "\n"), 1U) << result.error;
            EXPECT_EQ(read(at(name)), "the old file");
        }
    }
    EXPECT_EQ(filesInFolder(), 4);
}

} // namespace
