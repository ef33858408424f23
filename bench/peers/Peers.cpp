// SPDX-License-Identifier: Apache-2.0
// `plime process` through Hollywood/GammaCorrection against two public tools that raise a picture to a power, whole
// programs in turn: oiiotool writes the same half EXR; vips works in single precision and writes its own format, so its
// time is for information. A tool that is not installed is left out with a word.
#include "bench/Median.h"
#include "bench/Runs.h"

#include <cstdio>
#include <filesystem>

namespace {

using namespace bench;

constexpr int Side = 8192, Rounds = 7;

struct Tool {
    const char* label;
    std::vector<std::string> words;
    std::string output;
    std::vector<double> seconds = {}, megabytes = {}, ratios = {}, shares = {};
    bool isThere = true;
};

/// Runs a tool into a new file and keeps what that cost.
void measure(Tool& tool) {
    std::filesystem::remove(tool.output);
    const Run done = run(tool.words);
    if (!done.isDone()) {
        std::printf("%s ended with %d%s; left out\n", tool.label, done.code,
                    done.code == 127 ? ", it is not installed" : "");
        tool.isThere = false;
        return;
    }
    tool.seconds.push_back(done.seconds);
    tool.megabytes.push_back(done.peakMegabytes);
}

void print(const char* what, const std::vector<double>& ratios, const char* wanted) {
    std::printf("%-34s %6.2f   %.2f .. %.2f   (wanted: %s)\n", what, median(ratios), quantile(ratios, 0),
                quantile(ratios, 1), wanted);
}

} // namespace

int main() {
    const Folder folder;
    const std::string input = folder.file("in.exr"), out = folder.file("out.exr"),
                      peer = folder.file("peer.exr"), floats = folder.file("peer.v");
    writeHalfPicture(input, Side);
    Tool tools[] = {
        {"plime", {PLIME, "process", input, "-o", out, "--with", "Hollywood/GammaCorrection"}, out},
        {"oiiotool",
         {"oiiotool", input, "--powc", "1.5,1.5,1.5,1", "-d", "half", "--compression", "none", "-o", peer},
         peer},
        {"vips", {"vips", "gamma", input, floats, "--exponent", "0.6666666666666666"}, floats}};
    for (Tool& tool : tools) measure(tool); // fills the cache of files; not counted
    for (Tool& tool : tools) tool.seconds.clear(), tool.megabytes.clear();

    for (int round = 0; round < Rounds; ++round) {
        for (int place = 0; place < 3; ++place) {
            Tool& tool = tools[round % 2 == 0 ? place : 2 - place];
            if (tool.isThere) measure(tool);
        }
        for (Tool& tool : tools) {
            if (!tool.isThere) continue;
            tool.ratios.push_back(tools[0].seconds.back() / tool.seconds.back());
            tool.shares.push_back(tools[0].megabytes.back() / tool.megabytes.back());
        }
    }
    std::printf("%dx%d half EXR, uncompressed, to the power of 1.5; medians of %d rounds, least and most\n",
                Side, Side, Rounds);
    for (const Tool& tool : tools)
        if (tool.isThere)
            std::printf("%-10s %6.2f s   peak memory %5.0f MB\n", tool.label, median(tool.seconds),
                        median(tool.megabytes));
    if (tools[1].isThere) print("time, plime / oiiotool", tools[1].ratios, "at most 0.5");
    if (tools[1].isThere) print("peak memory, plime / oiiotool", tools[1].shares, "for information");
    if (tools[2].isThere) print("time, plime / vips", tools[2].ratios, "for information");
    if (tools[2].isThere) print("peak memory, plime / vips", tools[2].shares, "at most 1");
    return 0;
}
