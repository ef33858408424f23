// SPDX-License-Identifier: Apache-2.0
// `plime process` through Hollywood/GammaCorrection against public tools that raise a picture to the power of 1.5, whole
// programs in turn. Memory is that of an extra run of each tool, with all processes that it begins.
#include "bench/Files.h"
#include "bench/Median.h"
#include "bench/PictureFiles.h"
#include "bench/Report.h"
#include "bench/Runs.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <limits>

namespace {

using namespace bench;
using Words = std::vector<std::string>;

constexpr int Rounds = 5;

/// A tool that takes more than this many times as long as the fastest other one is measured once, as is one that writes
/// another kind of file.
constexpr double MuchSlower = 1.5;

struct Tool {
    std::string label;
    Words words;
    std::string output;
    std::string otherKind = {}; ///< of file than plime writes; empty: the same
    double megabytes = 0, firstSeconds = 0;
    std::vector<double> seconds = {}, ratios = {}, processor = {};

    [[nodiscard]] bool writesTheSame() const { return otherKind.empty(); }
    [[nodiscard]] bool isPlime() const { return label == "plime"; }
    [[nodiscard]] double time() const { return seconds.empty() ? firstSeconds : median(seconds); }
};

/// ImageMagick whose values go beyond white: version 6 in Debian 12, 7 since then.
std::string imageMagick() {
    const std::string old = "convert-im6.q16hdri";
    return std::filesystem::exists("/usr/bin/" + old) ? old : "convert-im7.q16hdri";
}

/// What the tools are called with for a picture of one format.
std::vector<Tool> toolsFor(const PictureFormat& format, const Folder& folder) {
    const std::string input = folder.file(format.file), end = format.isExr ? ".exr" : ".png";
    const auto out = [&](const char* name) { return folder.file((name + end).c_str()); };
    const std::string exponent = "1.5";
    std::vector<Tool> tools{
        {"plime",
         {PLIME, "process", input, "-o", out("plime"), "--with", "Hollywood/GammaCorrection"},
         out("plime")},
        {"oiiotool", {"oiiotool", input, "--powc", "1.5,1.5,1.5,1", "-o", out("oiiotool")}, out("oiiotool")},
        {"ImageMagick",
         {imageMagick(), input, "-channel", "RGB", "-evaluate", "pow", exponent, "-compress",
          format.isExr ? format.magickCompression : "Zip", out("magick")},
         out("magick")},
        {"G'MIC", {"gmic", "-v", "0", "-i", input, "-sh", "0,2"}, out("gmic")}};
    if (format.isExr && std::strcmp(format.magickCompression, "Piz") != 0)
        tools.back().otherKind = "PIZ, as always";
    // G'MIC takes the values of PNG as they are, up to 65535.
    Words& gmic = tools.back().words;
    if (!format.isExr) gmic.insert(gmic.end(), {"-div[-1]", "65535"});
    gmic.insert(gmic.end(), {"-pow[-1]", exponent});
    if (!format.isExr) gmic.insert(gmic.end(), {"-mul[-1]", "65535"});
    gmic.insert(gmic.end(), {"-rm[-1]", "-o", out("gmic")});
    // vips has no writer for EXR: it keeps single precision in its own format. It raises alpha, too.
    const std::string floats = format.isExr ? folder.file("vips.v") : out("vips");
    tools.push_back({"vips",
                     {"vips", "gamma", input, floats, "--exponent", "0.6666666666666666"},
                     floats,
                     format.isExr ? "single precision, own format" : ""});
    return tools;
}

Run runAnew(const Tool& tool, Watch watch) {
    std::filesystem::remove(tool.output);
    return run(tool.words, watch);
}

/// One run of every tool, which fills the cache of files and tells the memory. Tools that fail are left out, and those
/// whose picture is another one than that of plime, which comes first.
void runFirst(std::vector<Tool>& tools) {
    constexpr double Tolerance = 0.001;
    double shade = 0;
    std::erase_if(tools, [&](Tool& tool) {
        const Run done = runAnew(tool, Watch::Memory);
        if (!done.isDone())
            note(tool.label + " ended with " + std::to_string(done.code) +
                 (done.code == 127 ? ", it is not installed" : "") + ", and is left out.");
        tool.megabytes = done.peakMegabytes;
        tool.firstSeconds = done.seconds;
        tool.processor = {done.processorSeconds};
        if (!done.isDone() || tool.output.ends_with(".v")) return !done.isDone(); // which plime cannot read
        const double its = meanShade(tool.output);
        if (tool.isPlime()) shade = its;
        const bool isOther = std::abs(its - shade) > Tolerance;
        if (isOther) note(tool.label + " makes another picture and is left out.");
        return isOther;
    });
}

double fastestPeer(const std::vector<Tool>& tools) {
    double least = std::numeric_limits<double>::infinity();
    for (const Tool& tool : tools)
        if (!tool.isPlime() && tool.writesTheSame()) least = std::min(least, tool.time());
    return least;
}

void runRounds(std::vector<Tool>& tools) {
    const double limit = MuchSlower * fastestPeer(tools);
    for (int round = 0; round < Rounds; ++round) {
        double ours = 0;
        const auto measure = [&](Tool& tool) {
            if (!tool.isPlime() && (tool.firstSeconds > limit || !tool.writesTheSame())) return;
            const Run done = runAnew(tool, Watch::Time);
            tool.seconds.push_back(done.seconds);
            tool.processor.push_back(done.processorSeconds);
        };
        if (round % 2 == 0)
            for (auto tool = tools.begin(); tool != tools.end(); ++tool) measure(*tool);
        else
            for (auto tool = tools.rbegin(); tool != tools.rend(); ++tool) measure(*tool);
        for (const Tool& tool : tools)
            if (tool.isPlime()) ours = tool.seconds.back();
        for (Tool& tool : tools)
            if (!tool.seconds.empty()) tool.ratios.push_back(ours / tool.seconds.back());
    }
}

void printRow(const Tool& tool) {
    const std::string ratio = tool.isPlime() ? "" : tool.ratios.empty() ? "one run" : spread(tool.ratios);
    row({tool.label, fixed(tool.time(), 2) + " s", fixed(median(tool.processor), 2) + " s",
         fixed(tool.megabytes, 0) + " MB", ratio, tool.otherKind});
}

void judge(const std::string& what, const std::vector<Tool>& tools) {
    const Tool* fastest = nullptr;
    double leanest = std::numeric_limits<double>::infinity(), ours = 0;
    for (const Tool& tool : tools) {
        if (tool.isPlime()) {
            ours = tool.megabytes;
            continue;
        }
        leanest = std::min(leanest, tool.megabytes);
        if (tool.writesTheSame() && (!fastest || tool.time() < fastest->time())) fastest = &tool;
    }
    if (!fastest) return;
    wanted(what + ": time against the fastest other tool (" + fastest->label + ")",
           {Limit::Side::AtMost, 0.5}, fastest->ratios);
    wanted(what + ": peak memory against the leanest other tool", {Limit::Side::AtMost, 1}, {ours / leanest});
}

void measure(const PictureFormat& format, int side) {
    const Folder folder;
    writePictureFile(folder.file(format.file), format, side);
    auto tools = toolsFor(format, folder);
    runFirst(tools);
    if (tools.empty() || !tools.front().isPlime()) return;
    runRounds(tools);
    const std::string what =
        std::string(format.label) + ", " + std::to_string(side) + 'x' + std::to_string(side);
    table(what + ":", {"tool", "time", "processor time", "peak memory", "plime's time against it", "writes"});
    for (const Tool& tool : tools) printRow(tool);
    judge(what, tools);
}

} // namespace

/// bench_pictures [SIDE [PART]]: pictures of another side; only formats whose label contains the part.
int main(int argc, char** argv) {
    // The limits that Debian sets for ImageMagick are below one of these pictures.
    setenv("MAGICK_CONFIGURE_PATH", MAGICK_LIMITS, 1);
    for (const PictureFormat& format : pictureFormats()) {
        if (argc > 2 && std::string(format.label).find(argv[2]) == std::string::npos) continue;
        measure(format, argc > 1 ? std::atoi(argv[1]) : format.side);
    }
    return 0;
}
