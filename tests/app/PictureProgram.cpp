// SPDX-License-Identifier: Apache-2.0
#include "tests/app/PictureProgram.h"

#include <climits>
#include <cmath>
#include <csignal>
#include <cstdlib>

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

namespace {

constexpr int LongestWait = 60'000; // milliseconds, for a program that never begins a file

/// Names and contents of everything in a folder, hidden files too.
std::map<std::string, std::string> contentsOf(const std::filesystem::path& folder) {
    std::map<std::string, std::string> contents;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        std::string& content = contents[entry.path().string()];
        if (!entry.is_regular_file()) continue;
        std::ifstream file(entry.path(), std::ios::binary);
        content = {std::istreambuf_iterator<char>(file), {}};
    }
    return contents;
}

} // namespace

Words operator+(Words words, const Words& more) {
    words.insert(words.end(), more.begin(), more.end());
    return words;
}

std::size_t occurrences(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size()))
        ++count;
    return count;
}

int halfSteps(half_float::half a, half_float::half b) {
    if (isnan(a) || isnan(b)) return isnan(a) && isnan(b) ? 0 : INT_MAX;
    const auto place = [](half_float::half value) {
        const int bits = bitsOf(value);
        return bits < 0x8000 ? bits : 0x8000 - bits;
    };
    return std::abs(place(a) - place(b));
}

double shareWithin(int steps, const workbench::Picture& a, const workbench::Picture& b) {
    if (a.pixels.empty() || a.pixels.size() != b.pixels.size()) return 0;
    std::size_t near = 0;
    for (std::size_t i = 0; i < a.pixels.size(); ++i) {
        const krod::RGBAHalf &p = a.pixels[i], &q = b.pixels[i];
        if (halfSteps(p.r, q.r) <= steps && halfSteps(p.g, q.g) <= steps && halfSteps(p.b, q.b) <= steps &&
            halfSteps(p.a, q.a) <= steps)
            ++near;
    }
    return static_cast<double>(near) / static_cast<double>(a.pixels.size());
}

std::function<void(int)> interruptAtFirstFile(const std::filesystem::path& folder) {
    const int watch = ::inotify_init1(IN_CLOEXEC);
    if (::inotify_add_watch(watch, folder.c_str(), IN_CREATE) < 0) ADD_FAILURE() << "cannot watch " << folder;
    return [watch](int child) {
        pollfd created{watch, POLLIN, 0};
        EXPECT_EQ(::poll(&created, 1, LongestWait), 1) << "no file was begun";
        ::close(watch);
        ::kill(child, SIGINT);
    };
}

void PictureProgramTest::succeed(const Words& words) { EXPECT_EQ(messagesOf(words), ""); }

std::string PictureProgramTest::messagesOf(const Words& words) {
    const Result result = run(words);
    EXPECT_EQ(result.code, 0) << result.error;
    EXPECT_EQ(result.output, "");
    return result.error;
}

void PictureProgramTest::expectFailure(int code, const std::string& sentence, const Call& call) const {
    const auto before = contentsOf(folder);
    const Result result = run(call);
    EXPECT_EQ(result.code, code);
    EXPECT_EQ(result.output, "");
    const std::string answer = code == 130 ? SignalAnswer : "";
    const std::size_t end = result.error.find('\n', answer.size()) + 1;
    EXPECT_EQ(result.error.substr(0, end), answer + "plime: error: " + sentence + '\n');
    const std::string rest = result.error.substr(end);
    EXPECT_TRUE(rest.empty() || rest.starts_with("  ")) << rest;
    EXPECT_TRUE(contentsOf(folder) == before) << "the folder has changed";
}
