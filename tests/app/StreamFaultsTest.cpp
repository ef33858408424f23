// SPDX-License-Identifier: Apache-2.0
// Standard streams that are closed, broken or full: every command says so or goes on, and no picture suffers.
#include "tests/app/FaultyProgram.h"

#include <tuple>

namespace {

const Words Gamma = {"--with", "Hollywood/GammaCorrection"};
const std::string FullDisk =
    "plime: error: standard output: the result cannot be written — got No space left on "
    "device. Make room, or write to another place.\n";

class PlimeStreams : public PictureProgramTest {
protected:
    /// Everything that has a result on standard output.
    [[nodiscard]] std::vector<Words> commands() const {
        return {{"list"},
                {"list", "--json"},
                {"describe", "Display/CMYK"},
                {"describe", "Display/CMYK", "--json"},
                {"shader", "Hollywood/PixelBlur"},
                {"doctor"},
                {"doctor", "--json"},
                {"help"},
                {"help", "render"},
                {"help", "Display/CMYK"},
                {"info", small},
                {"info", small, "--json"},
                {"validate", "--list"},
                {"render", "--list-demos"},
                {"render", "--help"},
                {"--help"},
                {"--version"}};
    }
    [[nodiscard]] static std::string nameOf(const Words& words) {
        std::string name;
        for (const std::string& word : words) name += word + ' ';
        return name;
    }

    std::string small = picture("in.exr", gradient(16, 16));
};

TEST_F(PlimeStreams, fullOutput_isAnErrorOfEveryCommand) {
    for (const Words& words : commands()) {
        const Result result = run(Call{words, {}, Sink::Full});
        EXPECT_EQ(result.code, 4) << nameOf(words);
        EXPECT_EQ(result.error, FullDisk) << nameOf(words);
    }
}

TEST_F(PlimeStreams, closedOrBrokenOutput_isNoErrorOfAnyCommand) {
    for (const Words& words : commands()) {
        const int usual = run(words).code;
        for (const Sink sink : {Sink::Closed, Sink::Broken}) {
            const Result result = run(Call{words, {}, sink});
            EXPECT_EQ(result.code, usual) << nameOf(words);
            EXPECT_EQ(result.error, "") << nameOf(words);
        }
    }
}

TEST_F(PlimeStreams, closedInputAndMessages_changeNoResult) {
    for (const Words& words : commands()) {
        const Result usual = run(words);
        for (const Sink sink : {Sink::Closed, Sink::Broken, Sink::Full}) {
            Call call{words, {}, Sink::Captured, sink};
            call.closedInput = true;
            const Result result = run(call);
            EXPECT_EQ(result.code, usual.code) << nameOf(words);
            EXPECT_EQ(result.output, usual.output) << nameOf(words);
        }
    }
}

TEST_F(PlimeStreams, ofAnyKind_leavePicturesIntact) {
    const std::vector<Words> makers = {Words{"process", small, "-o", at("out.exr"), "-v"} + Gamma,
                                       {"render", "demo:knot", "-o", at("out.exr"), "--size", "32x32", "-v",
                                        "--display", "Display/CMYK", "--trace", "100"}};
    for (const Words& words : makers) {
        ASSERT_EQ(run(words).code, 0);
        const std::string whole = read(at("out.exr"));
        for (const auto& [output, error, closedInput] : {std::tuple{Sink::Closed, Sink::Captured, false},
                                                         {Sink::Broken, Sink::Captured, false},
                                                         {Sink::Full, Sink::Captured, true},
                                                         {Sink::Captured, Sink::Closed, false},
                                                         {Sink::Broken, Sink::Broken, true},
                                                         {Sink::Full, Sink::Full, false},
                                                         {Sink::Closed, Sink::Closed, false},
                                                         {Sink::Closed, Sink::Closed, true}}) {
            std::filesystem::remove(at("out.exr"));
            Call call{words, {}, output, error};
            call.closedInput = closedInput;
            EXPECT_EQ(run(call).code, 0) << words[0];
            EXPECT_TRUE(read(at("out.exr")) == whole) << words[0];
            EXPECT_EQ(filesInFolder(), 2);
        }
    }
}

// A module prints a line for each picture, the host one before each of them and one at the end.
TEST_F(PlimeStreams, linesOfModules_standWhereTheyWereSaid) {
    std::filesystem::create_directory(at("out"));
    const std::string second = picture("second.exr", gradient(16, 16));
    const std::string said =
        messagesOf(Words{"process", small, second, "-o", at("out/{stem}.exr"), "-v"} + Gamma);
    const std::string strips = "plime: Working in strips of 16 rows.\n",
                      module = "GammaCorrection....process...\n";
    EXPECT_TRUE(said.ends_with(strips + module + strips + module + "plime: 2 of 2 pictures are written.\n"))
        << said;
}

} // namespace
