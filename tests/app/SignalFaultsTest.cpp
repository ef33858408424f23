// SPDX-License-Identifier: Apache-2.0
// Signals at chosen moments: nothing is half-written, and what is finished can be gone on with.
#include "tests/app/FaultyProgram.h"

#include <algorithm>
#include <random>
#include <tuple>

namespace {

using workbench::readPicture;

const Words Gamma = {"--with", "Hollywood/GammaCorrection"};
const Words Colours = {"--with", "Hollywood/ColorGammaCorrection", "-p", "red=-0.5"};
constexpr int Tiles = 16; // of 256x256 pixels in tiles of 64
constexpr int Killed = 1000 + SIGKILL;

class PlimeSignals : public PictureProgramTest {
protected:
    PlimeSignals() { write("out.exr", "the old file"); }

    [[nodiscard]] Words drawing(const Words& more = {}) const {
        return Words{"render", "demo:knot", "-o",     at("out.exr"), "--gpu",     "software",
                     "--size", "256x256",   "--tile", "64",          "--overlap", "0"} +
               more;
    }
    [[nodiscard]] std::string journal() const { return read(at("out.exr.parts/journal")); }
    [[nodiscard]] std::size_t finishedTiles() const {
        return std::max<std::size_t>(occurrences(journal(), "\n"), 1) - 1; // behind the head
    }
    /// The call ends with 130 and these words, and nothing but tiles is left.
    void expectInterrupted(const Call& call, const std::string& error) const {
        const auto files = filesInFolder() + (std::filesystem::exists(at("out.exr.parts")) ? 0 : 1);
        const Result result = run(call);
        EXPECT_EQ(result.code, 130);
        EXPECT_EQ(result.error, error);
        EXPECT_EQ(read(at("out.exr")), "the old file");
        EXPECT_EQ(filesInFolder(), files);
    }
    [[nodiscard]] std::string pictureOf(const Words& words) const {
        succeed(words);
        const std::string bytes = read(at("out.exr"));
        write("out.exr", "the old file");
        return bytes;
    }
};

TEST_F(PlimeSignals, duringATile_endTheDrawingBehindIt_andItGoesOn) {
    const std::string whole = pictureOf(drawing());
    const std::string said = SignalAnswer + "plime: error: interrupted.\n  Finished tiles are kept in " +
                             at("out.exr.parts") + "; continue with the same command and --resume\n";
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        for (const int tile : {1, Tiles / 2, Tiles - 1}) {
            SCOPED_TRACE("signal " + std::to_string(signal) + " in tile " + std::to_string(tile));
            expectInterrupted(Call{drawing(), signalled("read", tile, signal)}, said);
            EXPECT_EQ(finishedTiles(), static_cast<std::size_t>(tile));
            expectHas(messagesOf(drawing({"--resume", "-v"})),
                      "plime: " + std::to_string(tile) + " of 16 tiles taken from ");
            EXPECT_TRUE(read(at("out.exr")) == whole) << "not the bytes of an uninterrupted run";
            write("out.exr", "the old file");
        }
    }
}

TEST_F(PlimeSignals, twiceInATile_endTheDrawingAtOnce_andItGoesOn) {
    const std::string whole = pictureOf(drawing());
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        for (const int tile : {2, Tiles / 2, Tiles}) {
            SCOPED_TRACE("signal " + std::to_string(signal) + " in tile " + std::to_string(tile));
            expectInterrupted(Call{drawing(), signalled("read", tile, signal, 2)}, SignalAnswer);
            EXPECT_EQ(finishedTiles(), static_cast<std::size_t>(tile) - 1);
            succeed(drawing({"--resume"}));
            EXPECT_TRUE(read(at("out.exr")) == whole) << "not the bytes of an uninterrupted run";
            write("out.exr", "the old file");
        }
    }
}

TEST_F(PlimeSignals, duringATileOfAProcessedPicture_keepWhatIsFinished_andItGoesOn) {
    const std::string in = picture("in.exr", gradient(256, 256));
    const Words words = Words{"process", in, "-o", at("out.exr"), "--tile", "64", "--overlap", "0"} + Colours;
    ASSERT_EQ(callsOf(words, "read", folder / "calls"), Tiles);
    const std::string whole = pictureOf(words);
    const std::string said = SignalAnswer + "plime: error: interrupted.\n  Finished tiles are kept in " +
                             at("out.exr.parts") + "; continue with the same command and --resume\n";
    for (const auto& [signal, tile, times] : {std::tuple{SIGINT, 1, 1},
                                              {SIGTERM, Tiles / 2, 1},
                                              {SIGHUP, Tiles - 1, 1},
                                              {SIGHUP, 2, 2},
                                              {SIGINT, Tiles / 2, 2},
                                              {SIGTERM, Tiles, 2}}) {
        SCOPED_TRACE("signal " + std::to_string(signal) + " in tile " + std::to_string(tile));
        expectInterrupted(Call{words, signalled("read", tile, signal, times)},
                          times == 1 ? said : SignalAnswer);
        EXPECT_EQ(finishedTiles(), static_cast<std::size_t>(times == 1 ? tile : tile - 1));
        succeed(words + Words{"--resume"});
        EXPECT_TRUE(read(at("out.exr")) == whole) << "not the bytes of an uninterrupted run";
        write("out.exr", "the old file");
    }
}

TEST_F(PlimeSignals, duringAStrip_leaveNothing) {
    workbench::Picture noise = gradient(512, 10 * 256);
    std::minstd_rand random(1);
    for (krod::RGBAHalf& value : noise.pixels)
        value = pixel(float(random() % 2048) / 2048, float(random() % 2048) / 2048,
                      float(random() % 2048) / 2048);
    const Words words = Words{"process", picture("in.exr", noise), "-o", at("out.exr")} + Gamma;
    const int writes = callsOf(words, "write", folder / "calls");
    ASSERT_GE(writes, 5);
    write("out.exr", "the old file");
    // The last ones come with the end of the file, when all is done.
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        for (const int number : {1, writes / 2, writes - 3})
            expectFailure(130, "interrupted.", Call{words, signalled("write", number, signal)});
}

TEST_F(PlimeSignals, duringABatch_sayHowManyPicturesAreWritten) {
    std::filesystem::remove(at("out.exr"));
    std::filesystem::create_directory(at("out"));
    Words words = {"process"};
    for (char name = 'a'; name < 'k'; ++name)
        words.push_back(picture(std::string(1, name) + ".exr", gradient(8, 8)));
    words = words + Words{"-o", at("out/{stem}.exr")} + Gamma;
    const Result result = run(Call{words, signalled("rename", 3, SIGINT)});
    EXPECT_EQ(result.code, 130);
    EXPECT_EQ(result.error, SignalAnswer + "plime: error: interrupted, 3 of 10 pictures are written.\n");
    for (const std::string name : {"a", "b", "c"})
        EXPECT_EQ(readPicture(at("out/" + name + ".exr")).pixels.size(), 64U);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(at("out")), {}), 3);
}

TEST_F(PlimeSignals, duringARunOfViews_sayHowManyAreWritten_andWhereTilesAre) {
    write("two.json", R"({"version": 1,
"objects": [{"name": "knot", "creator": "Scene/Knot"}],
"views": [{"name": "small", "shows": "knot", "size": [32, 24]},
          {"name": "large", "shows": "knot", "size": [128, 128], "tiles": {"size": [64, 64], "overlap": 0}}]})");
    const Words words = {"run", at("two.json"), "-o", at("{view}.exr"), "--gpu", "software"};
    const Result result = run(Call{words, signalled("read", 2, SIGINT)});
    EXPECT_EQ(result.code, 130);
    EXPECT_EQ(result.error, SignalAnswer +
                                "plime: error: interrupted, 1 of 2 pictures are written.\n  Finished tiles are kept in " +
                                at("large.exr.parts") + "; continue with the same command and --resume\n");
    EXPECT_EQ(readPicture(at("small.exr")).pixels.size(), 32U * 24);
    EXPECT_FALSE(std::filesystem::exists(at("large.exr")));
}

TEST_F(PlimeSignals, areAnsweredInThePlaceOfTheProgressLine_onATerminal) {
    Call call{drawing({"-q"}), signalled("read", 2, SIGINT)};
    call.error = Sink::Terminal;
    const Result result = run(call);
    EXPECT_EQ(result.code, 130);
    expectHas(result.error, "\r\x1b[Kplime: interrupted; the run ends after");
}

TEST_F(PlimeSignals, reachNobodyWhoDoesNotRead_andEndTheRunAllTheSame) {
    for (const Sink sink : {Sink::Closed, Sink::Broken, Sink::Full}) {
        Call call{drawing(), signalled("read", 2, SIGINT)};
        call.error = sink;
        EXPECT_EQ(run(call).code, 130);
        EXPECT_EQ(read(at("out.exr")), "the old file");
    }
}

// SIGKILL at every call of a save that works on files, so at every moment that the disk can tell apart.
TEST_F(PlimeSignals, killAtAnyStepOfASave_leavesTheOldOrTheNewFile_andTheNextRunCleansUp) {
    const std::string in = picture("in.exr", gradient(300, 300));
    const Words words = Words{"process", in, "-o", at("out.exr"), "--save-network", at("out.json")} + Gamma;
    const int steps = callsOf(words, "any", folder / "calls");
    ASSERT_GE(steps, 8);
    const std::string bytes = read(at("out.exr")), network = read(at("out.json"));
    int old = 0;
    for (int step = 1; step <= steps; ++step) {
        SCOPED_TRACE("step " + std::to_string(step) + " of " + std::to_string(steps));
        write("out.exr", "the old file");
        write("out.json", "the old file");
        EXPECT_EQ(run(Call{words, signalled("any", step, SIGKILL)}).code, Killed);
        const std::string left = read(at("out.exr")), leftNetwork = read(at("out.json"));
        EXPECT_TRUE(left == bytes || left == "the old file");
        EXPECT_TRUE(leftNetwork == network || leftNetwork == "the old file");
        old += left == bytes ? 0 : 1;
        succeed(words);
        EXPECT_TRUE(read(at("out.exr")) == bytes && read(at("out.json")) == network);
        EXPECT_EQ(filesInFolder(), 3) << "what the killed run has left is still there";
    }
    EXPECT_GT(old, 0);
    EXPECT_LT(old, steps);
}

TEST_F(PlimeSignals, killAtAnyStepOfATiledDrawing_losesATileAtMost) {
    const Words words = {"render", "demo:knot", "-o",     at("out.exr"), "--gpu",     "software",
                         "--size", "192x64",    "--tile", "64",          "--overlap", "0"};
    const int steps = callsOf(words, "any", folder / "calls");
    ASSERT_GE(steps, 20);
    const std::string bytes = read(at("out.exr"));
    std::size_t most = 0;
    for (int step = 1; step <= steps; ++step) {
        SCOPED_TRACE("step " + std::to_string(step) + " of " + std::to_string(steps));
        write("out.exr", "the old file");
        EXPECT_EQ(run(Call{words, signalled("any", step, SIGKILL)}).code, Killed);
        const std::string left = read(at("out.exr"));
        EXPECT_TRUE(left == bytes || left == "the old file");
        if (std::filesystem::exists(at("out.exr.parts/journal"))) most = std::max(most, finishedTiles());
        succeed(words + Words{"--resume"});
        EXPECT_TRUE(read(at("out.exr")) == bytes) << "not the bytes of an uninterrupted run";
        EXPECT_EQ(filesInFolder(), 1) << "what the killed run has left is still there";
    }
    EXPECT_EQ(most, 3U);
}

} // namespace
