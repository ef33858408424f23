// SPDX-License-Identifier: Apache-2.0
// plime render --resume: a picture in many tiles is interrupted and goes on.
#include "tests/app/PictureProgram.h"

#include <array>
#include <cerrno>
#include <csignal>

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

namespace {

constexpr int LongestWait = 60'000; // milliseconds, for a program that never writes the file
constexpr std::size_t AllTiles = 144;

/// For Call::meanwhile: sends SIGINT as soon as a file of that name appears in the folder.
std::function<void(int)> interruptAtFile(const std::filesystem::path& folder, const std::string& name) {
    const int watch = ::inotify_init1(IN_CLOEXEC);
    if (::inotify_add_watch(watch, folder.c_str(), IN_CREATE) < 0) ADD_FAILURE() << "cannot watch " << folder;
    return [watch, name](int child) {
        alignas(inotify_event) std::array<char, 4096> events{};
        bool seen = false;
        for (pollfd ready{watch, POLLIN, 0}; !seen && ::poll(&ready, 1, LongestWait) == 1;) {
            const ssize_t size = ::read(watch, events.data(), events.size());
            for (ssize_t at = 0; at < size && !seen;) {
                const auto* event = reinterpret_cast<const inotify_event*>(events.data() + at);
                seen = event->len > 0 && name == event->name;
                at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
            }
        }
        EXPECT_TRUE(seen) << name << " was not begun";
        ::close(watch);
        ::kill(child, SIGINT);
    };
}

class PlimeResume : public PictureProgramTest {
protected:
    /// Draws 768x768 pixels in tiles of 64 on the software renderer.
    [[nodiscard]] Words drawing(const std::string& name, const Words& more = {}) const {
        return Words{"render", input,     "-o",     at(name), "--gpu",     "software",
                     "--size", "768x768", "--tile", "64",     "--overlap", "0"} +
               more;
    }
    /// Interrupts the drawing of a.exr when it begins that tile, and gives how many tiles it has left.
    [[nodiscard]] std::size_t interruptedAt(const std::string& tile, const Words& more = {}) const {
        std::filesystem::create_directory(parts);
        const auto files = filesInFolder();
        Call call{drawing("a.exr", more)};
        call.meanwhile = interruptAtFile(parts, tile);
        const Result result = run(call);
        EXPECT_EQ(result.code, 130);
        EXPECT_EQ(result.error, SignalAnswer + "plime: error: interrupted.\n  Finished tiles are kept in " +
                                    parts + "; continue with the same command and --resume\n");
        EXPECT_EQ(filesInFolder(), files) << "only the tiles are left";
        const std::size_t kept = occurrences(read(parts + "/journal"), "\n") - 1;
        EXPECT_GE(kept, 3U);
        EXPECT_LT(kept, AllTiles);
        return kept;
    }
    [[nodiscard]] std::string takenTiles(std::size_t count) const {
        return "plime: " + std::to_string(count) + " of 144 tiles taken from " + parts + ".\n";
    }
    /// Expects that a.exr is complete and what an uninterrupted run leaves, and that the tiles are gone.
    void expectWholePicture(const Words& more = {}) const {
        EXPECT_FALSE(std::filesystem::exists(parts));
        succeed(drawing("whole.exr", more));
        EXPECT_TRUE(read(at("a.exr")) == read(at("whole.exr"))) << "not the bytes of an uninterrupted run";
    }

    std::string input = "demo:knot";
    const std::string parts = at("a.exr.parts");
};

TEST_F(PlimeResume, interruptedPicture_goesOn_andHasTheSameBytes) {
    const std::size_t kept = interruptedAt("tile-5");
    expectHas(messagesOf(drawing("a.exr", {"--resume", "-v"})), takenTiles(kept));
    expectWholePicture();
}

TEST_F(PlimeResume, interruptedTwice_goesOn) {
    const std::size_t once = interruptedAt("tile-3");
    const std::size_t twice = interruptedAt("tile-40", {"--resume"});
    EXPECT_GT(twice, once);
    expectHas(messagesOf(drawing("a.exr", {"--resume", "-v"})), takenTiles(twice));
    expectWholePicture();
}

TEST_F(PlimeResume, withAChain_goesOn) {
    const Words chain = {"--with", "Hollywood/GammaCorrection"};
    const std::size_t kept = interruptedAt("tile-5", chain);
    expectHas(messagesOf(drawing("a.exr", chain + Words{"--resume", "-v"})), takenTiles(kept));
    expectWholePicture(chain);
}

TEST_F(PlimeResume, savedNetwork_goesOnToo) {
    succeed(drawing("whole.exr", {"--save-network", at("whole.json")}));
    const std::size_t kept = interruptedAt("tile-5");
    const Words again = {"run", at("whole.json"), "-o", at("a.exr"), "--gpu", "software", "--resume", "-v"};
    expectHas(messagesOf(again), takenTiles(kept));
    expectWholePicture();
}

TEST_F(PlimeResume, damagedTile_aloneIsDrawnAgain) {
    const std::size_t kept = interruptedAt("tile-5");
    std::string bytes = read(parts + "/tile-2");
    bytes[1000] = static_cast<char>(bytes[1000] ^ 1);
    write("a.exr.parts/tile-2", bytes);
    expectHas(messagesOf(drawing("a.exr", {"--resume", "-v"})), takenTiles(kept - 1));
    expectWholePicture();
}

TEST_F(PlimeResume, journalCutInALine_losesThatTile) {
    const std::size_t kept = interruptedAt("tile-5");
    const std::string text = read(parts + "/journal");
    write("a.exr.parts/journal", text.substr(0, text.size() - 9));
    expectHas(messagesOf(drawing("a.exr", {"--resume", "-v"})), takenTiles(kept - 1));
    expectWholePicture();
}

TEST_F(PlimeResume, changedParameter_drawsAllAnew_andWarns) {
    const std::string warning =
        "plime: warning: " + parts +
        ": its tiles are of other work: input, parameters, view, tiles, driver or program have changed; all "
        "tiles are made anew.\n";
    static_cast<void>(interruptedAt("tile-3", {"--background", "0.5,0,0"}));
    const Words changed = {"--background", "0,0.5,0"};
    const std::string text = messagesOf(drawing("a.exr", changed + Words{"--resume", "-v"}));
    expectHas(text, warning);
    expectHas(text, takenTiles(0));
    expectWholePicture(changed);
}

TEST_F(PlimeResume, changedInput_drawsAllAnew) {
    const std::string triangle = "v 0 0 0\nv 4 0 0\nv 0 4 0\nf 1 2 3\n";
    input = write("model.obj", triangle).string();
    static_cast<void>(interruptedAt("tile-3"));
    write("model.obj", triangle + "# changed\n");
    expectHas(messagesOf(drawing("a.exr", {"--resume", "-v"})), takenTiles(0));
}

TEST_F(PlimeResume, changedShaderFile_drawsAllAnew) {
    std::filesystem::create_directory(at("shaders"));
    const Words display = {"--shader-dir", at("shaders"), "--display", "Display/CMYK"};
    static_cast<void>(interruptedAt("tile-3", display + Words{"-q"}));
    write("shaders/any.frag", "void main() {}");
    expectHas(messagesOf(drawing("a.exr", display + Words{"--resume", "-v"})), takenTiles(0));
}

TEST_F(PlimeResume, unsetParameter_drawsAllAnew) {
    const Words display = {"--display", "Display/CMYK"};
    static_cast<void>(interruptedAt("tile-3", display + Words{"-q"}));
    const Words unset = display + Words{"--unset", "options", "--resume", "-v"};
    expectHas(messagesOf(drawing("a.exr", unset)), takenTiles(0));
}

TEST_F(PlimeResume, withoutResume_allIsDrawnAnew_withoutAWord) {
    static_cast<void>(interruptedAt("tile-3"));
    succeed(drawing("a.exr"));
    expectWholePicture();
}

TEST_F(PlimeResume, resumeOfNothing_drawsAll) {
    expectHas(messagesOf(drawing("a.exr", {"--resume", "-v"})), takenTiles(0));
    expectWholePicture();
}

TEST_F(PlimeResume, pictureOfOneTile_isDrawnAsEver) {
    succeed({"render", "demo:knot", "-o", at("a.exr"), "--gpu", "software", "--size", "64x64", "--resume"});
    EXPECT_EQ(filesInFolder(), 1);
}

TEST_F(PlimeResume, diskFullForTheFirstTile_leavesNothing_andKeepsTheOldFile) {
    write("a.exr", "the old file");
    Call call{drawing("a.exr")};
    call.largestFile = 4096;
    expectFailure(4,
                  parts +
                      "/tile-0: cannot be written completely — got File too large. Make room on the disk, "
                      "or choose another place.",
                  call);
}

} // namespace
