// SPDX-License-Identifier: Apache-2.0
// plime process --resume: pictures that are cut for shaders go on, others say that they cannot.
#include "tests/app/PictureProgram.h"

namespace {

const Words Colours = {"--with", "Hollywood/ColorGammaCorrection", "-p", "red=-0.5"};
constexpr std::size_t Side = 400;
const std::string AllTiles = "25";

/// Does not become smaller when it is compressed.
workbench::Picture noise(unsigned seed) {
    workbench::Picture picture;
    picture.description.width = picture.description.height = Side;
    picture.description.hasAlpha = picture.description.alphaIsAssociated = true;
    const auto next = [&] {
        seed = seed * 1664525U + 1013904223U; // a linear congruential generator
        return static_cast<float>(seed >> 8U) * 0x1p-24F + 0.01F;
    };
    for (std::size_t i = 0; i < Side * Side; ++i)
        picture.pixels.push_back(pixel(next(), next(), next(), next()));
    return picture;
}

class PlimeProcessResume : public PictureProgramTest {
protected:
    [[nodiscard]] Words processing(const std::string& name, const Words& more = {}) const {
        return Words{"process",  input,    "-o", at(name),    "--gpu",
                     "software", "--tile", tile, "--overlap", "4"} +
               Colours + more;
    }
    /// A run that finds no room for its picture behind the last tile.
    void leaveTiles(const Words& more = {}) const {
        Call call{processing("a.exr", more)};
        call.largestFile = std::uint64_t{1} << 20;
        const Result result = run(call);
        EXPECT_EQ(result.code, 4) << result.error;
        expectHas(result.error, "a.exr: cannot be written completely");
        expectHas(result.error, "\n  Finished tiles are kept in " + parts +
                                    "; continue with the same command and --resume\n");
        EXPECT_FALSE(std::filesystem::exists(at("a.exr")));
    }
    /// Goes on, with so many tiles taken, and compares with an uninterrupted run.
    void expectGoesOn(const std::string& taken, const Words& more = {},
                      const std::map<std::string, std::string>& environment = {}) const {
        const Result result = run(Call{processing("a.exr", more + Words{"--resume", "-v"}), environment});
        EXPECT_EQ(result.code, 0) << result.error;
        expectHas(result.error, "plime: " + taken + " of " + AllTiles + " tiles taken from " + parts + ".\n");
        EXPECT_EQ(occurrences(result.error, "warning: " + parts + ": its tiles are of other work: input, "),
                  taken == "0" ? 1U : 0U)
            << result.error;
        EXPECT_FALSE(std::filesystem::exists(parts));
        EXPECT_EQ(run(Call{processing("whole.exr", more), environment}).code, 0);
        EXPECT_TRUE(read(at("a.exr")) == read(at("whole.exr"))) << "not the bytes of an uninterrupted run";
    }
    /// The warning of work that cannot be gone on with, the only line.
    void expectNothingToGoOnWith(const Words& words, const std::string& why) const {
        EXPECT_EQ(messagesOf(words + Words{"--resume"}),
                  "plime: warning: --resume: has nothing to go on with: " + input + why +
                      ", and all work is done again.\n");
    }

    const std::string input = picture("in.exr", noise(1));
    const std::string parts = at("a.exr.parts");
    std::string tile = "96";
};

TEST_F(PlimeProcessResume, goesOn_andHasTheSameBytes) {
    leaveTiles();
    expectGoesOn(AllTiles);
}

TEST_F(PlimeProcessResume, tilesThatAreMissingOrDamaged_areMadeAgain) {
    leaveTiles();
    std::filesystem::remove(parts + "/tile-3");
    std::string bytes = read(parts + "/tile-24");
    bytes[1000] = static_cast<char>(bytes[1000] ^ 1);
    write("a.exr.parts/tile-24", bytes);
    expectGoesOn("23");
}

TEST_F(PlimeProcessResume, additionalChannels_areKept) {
    workbench::Picture deep = noise(1);
    deep.description.extraChannels = {{"Z", workbench::ExtraType::Float}};
    deep.extra.emplace_back(Side * Side * 4, std::byte{17});
    static_cast<void>(picture("in.exr", deep));
    leaveTiles();
    expectGoesOn(AllTiles);
    EXPECT_EQ(workbench::readPicture(at("a.exr")).extra, deep.extra);
}

TEST_F(PlimeProcessResume, changedParameter_makesAllAnew) {
    leaveTiles({"-p", "green=0.5"});
    expectGoesOn("0", {"-p", "green=0.25"});
}

TEST_F(PlimeProcessResume, changedTiles_makeAllAnew) {
    leaveTiles();
    tile = "128";
    expectHas(messagesOf(processing("a.exr", {"--resume", "-v"})), "plime: 0 of 16 tiles taken");
}

TEST_F(PlimeProcessResume, changedInput_makesAllAnew) {
    leaveTiles();
    static_cast<void>(picture("in.exr", noise(2)));
    expectGoesOn("0");
}

TEST_F(PlimeProcessResume, anotherDepthOfTheFile_isTheSameWork) {
    leaveTiles();
    expectGoesOn(AllTiles, {"-d", "float"});
}

TEST_F(PlimeProcessResume, anotherDriver_makesAllAnew) {
    leaveTiles();
    expectGoesOn("0", {}, {{"GALLIUM_DRIVER", "softpipe"}});
}

TEST_F(PlimeProcessResume, anotherBuildOfThePlugin_makesAllAnew) {
    const auto plugin =
        std::filesystem::path(PLIME).parent_path().parent_path() / "plugins" / "tovar_plime.so";
    std::filesystem::copy_file(plugin, at("tovar_plime.so"));
    const Words mine = {"--plugin", at("tovar_plime.so")};
    leaveTiles(mine);
    std::ofstream(at("tovar_plime.so"), std::ios::app) << '\0';
    expectGoesOn("0", mine);
}

TEST_F(PlimeProcessResume, withoutResume_allIsMadeAnew_withoutAWord) {
    leaveTiles();
    succeed(processing("a.exr"));
    EXPECT_FALSE(std::filesystem::exists(parts));
}

TEST_F(PlimeProcessResume, ofStripsOrOneTile_saysThatThereIsNothing) {
    expectNothingToGoOnWith({"process", input, "-o", at("a.exr"), "--with", "Hollywood/GammaCorrection"},
                            " is worked on without a shader");
    expectNothingToGoOnWith(Words{"process", input, "-o", at("a.exr")} + Colours, " is one tile");
}

TEST_F(PlimeProcessResume, ofManyPictures_goesOnWithTheOneThatWasInterrupted) {
    std::filesystem::create_directory(at("out"));
    const std::string other = picture("b.exr", noise(3));
    const Words words = Words{"process", other, input, "-o", at("out/{stem}.exr"), "--tile", "96"} + Colours;
    succeed(words + Words{"-q"});
    const std::string whole = read(at("out/in.exr"));
    Call call{Words{"process", input, "-o", at("out/in.exr"), "--tile", "96"} + Colours};
    call.largestFile = std::uint64_t{1} << 20;
    EXPECT_EQ(run(call).code, 4);
    const std::string said = messagesOf(words + Words{"--resume", "-v"});
    expectHas(said, "plime: 0 of ");
    EXPECT_EQ(occurrences(said, " tiles taken from "), 2U);
    EXPECT_EQ(occurrences(said, "plime: 0 of "), 1U) << said;
    EXPECT_TRUE(read(at("out/in.exr")) == whole);
}

} // namespace
