// SPDX-License-Identifier: Apache-2.0
// Nothing that stands in a file reaches a terminal as something that it obeys, and a killed program leaves whole files.
#include "tests/app/PictureProgram.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <csignal>

#include <poll.h>
#include <sys/inotify.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

using workbench::Picture;

Picture plain(int width, int height) {
    Picture made;
    made.description.width = width;
    made.description.height = height;
    made.pixels.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height),
                       pixel(0.1F, 0.2F, 0.3F));
    return made;
}

/// Whether a terminal could obey something: controls other than line ends, and marks that turn the direction.
bool isHarmless(const std::string& text) {
    for (const char* const bad : {"\xc2\x9b", "\xe2\x80\xae", "\xe2\x81\xa6", "\x7f"})
        if (text.find(bad) != std::string::npos) return false;
    return std::ranges::none_of(text,
                                [](char c) { return static_cast<unsigned char>(c) < ' ' && c != '\n'; });
}

class HostileNames : public PictureProgramTest {
protected:
    /// Whatever becomes of the call, what it says is harmless.
    static void expectHarmless(const Words& words, int code) {
        const Result result = run(words);
        EXPECT_EQ(result.code, code) << result.error;
        EXPECT_TRUE(isHarmless(result.output)) << result.output;
        EXPECT_TRUE(isHarmless(result.error)) << result.error;
        EXPECT_FALSE(result.output.empty() && result.error.empty());
    }
};

TEST_F(HostileNames, textsOfPictures_areShownHarmlessly) {
    for (const std::string text : {"\x1b[2J\x1b]0;title\x07",
                                   "\xc2\x9b"
                                   "2J",
                                   "user\xe2\x80\xae"
                                   "txt.exe",
                                   "a\rb\bc\x7f"}) {
        Picture picture = plain(4, 4);
        picture.description.setText("comment", text);
        const std::string file = this->picture("a.exr", picture);
        expectHarmless({"info", file}, 0);
        picture.description.setText("comment", "");
        picture.description.setText("krod:network", "{\"version\": 1, \"" + text + "\": 1}");
        const std::string kept = this->picture("b.exr", picture);
        expectHarmless({"info", kept}, 0);
        expectHarmless({"info", kept, "--network"}, 8);
    }
}

TEST_F(HostileNames, jsonOfPictures_holdsNoRawControl) {
    Picture picture = plain(4, 4);
    picture.description.setText("comment", "\x1b[2J");
    const Result result = run({"info", this->picture("a.exr", picture), "--json"});
    EXPECT_EQ(result.output.find('\x1b'), std::string::npos);
    EXPECT_EQ(nlohmann::json::parse(result.output)["metadata"]["comment"], "\x1b[2J");
}

TEST_F(HostileNames, fieldsOfNetworks_areShownHarmlessly) {
    const std::string good =
        R"({"version": 1, "objects": [{"name": "NAME", "creator": "KEY", "source": "SOURCE",
        "parameters": {"PARAMETER": "VALUE"}, "unset": ["UNSET"]}], "shared": [["SHARED.a", "b.c"]],
        "views": [{"name": "VIEW", "picture": "PATH", "processors": ["OTHER"], "MEMBER": "x"}]})";
    for (const std::string field : {"NAME", "KEY", "SOURCE", "PARAMETER", "VALUE", "UNSET", "SHARED", "VIEW",
                                    "PATH", "OTHER", "MEMBER"})
        for (const std::string evil : {"\\u001b[2J", "\x1b[2J", "\\u009b2J",
                                       "\xc2\x9b"
                                       "2J",
                                       "\xe2\x80\xae"
                                       "x",
                                       "\xff", "%n%s%s%x"}) {
            std::string text = good;
            text.replace(text.find(field), field.size(), evil);
            const std::string file = write("net.json", text).string();
            expectHarmless({"info", file}, 8);
            expectHarmless({"run", file, "-o", at("{view}.exr")}, 8);
        }
}

TEST_F(HostileNames, percentSignsInNames_areNames) {
    static_cast<void>(picture("in.exr", plain(4, 4)));
    const std::string file = write("net.json", R"({"version": 1,
        "objects": [{"name": "%n%s%s%x", "creator": "Hollywood/GammaCorrection"}],
        "views": [{"name": "%s%n", "picture": "in.exr", "processors": ["%n%s%s%x"]}]})")
                                 .string();
    const Result made = run({"run", file, "-o", at("{view}.exr"), "--trace", "100", "-v"});
    EXPECT_EQ(made.code, 0) << made.error;
    EXPECT_TRUE(std::filesystem::exists(at("%s%n.exr")));
    const Result shown = run({"info", file});
    EXPECT_NE(shown.output.find("%n%s%s%x  Hollywood/GammaCorrection"), std::string::npos) << shown.output;
}

/// Kills the program after so many events in the folder, unless it ends before.
std::function<void(int)> killAfter(int events, const std::filesystem::path& folder) {
    const int watch = ::inotify_init1(IN_CLOEXEC);
    if (::inotify_add_watch(watch, folder.c_str(),
                            IN_CREATE | IN_MODIFY | IN_CLOSE_WRITE | IN_MOVE | IN_DELETE) < 0)
        ADD_FAILURE() << "cannot watch " << folder;
    return [=](int child) {
        const int end = static_cast<int>(::syscall(SYS_pidfd_open, child, 0));
        pollfd either[] = {{watch, POLLIN, 0}, {end, POLLIN, 0}};
        for (int seen = 0; seen < events;) {
            ::poll(either, 2, -1);
            if (either[0].revents == 0) break;
            alignas(inotify_event) char buffer[sizeof(inotify_event) + NAME_MAX + 1];
            if (::read(watch, buffer, sizeof buffer) > 0) ++seen;
        }
        ::kill(child, SIGKILL);
        ::close(end);
        ::close(watch);
    };
}

TEST_F(HostileNames, killedWhileItSavesANetwork_leavesTheOldOrTheNewOne) {
    const std::string in = picture("in.exr", plain(8, 8));
    const auto words = [&](const Words& more) {
        return Words{"process",
                     in,
                     "-o",
                     at("out.exr"),
                     "--with",
                     "Hollywood/GammaCorrection",
                     "--save-network",
                     at("net.json")} +
               more;
    };
    succeed(words({"--srgb"}));
    const std::string newer = read(at("net.json"));
    succeed(words({}));
    const std::string older = read(at("net.json"));
    ASSERT_NE(newer, older);
    bool sawOld = false, sawNew = false;
    for (int events = 1; events <= 40 && !(sawOld && sawNew && events > 16); ++events) {
        write("net.json", older);
        Call call{words({"--srgb"})};
        call.meanwhile = killAfter(events, folder);
        const int code = run(call).code;
        EXPECT_TRUE(code == 1000 + SIGKILL || code == 0) << code;
        const std::string now = read(at("net.json"));
        sawOld = sawOld || now == older;
        sawNew = sawNew || now == newer;
        ASSERT_TRUE(now == older || now == newer) << "after " << events << " events: " << now;
    }
    EXPECT_TRUE(sawOld && sawNew) << "some were killed before, and some after the file was replaced";
    succeed(words({}));
    EXPECT_EQ(read(at("net.json")), older) << "what killed ones left is in nobody's way";
}

} // namespace
