// SPDX-License-Identifier: Apache-2.0
// Chains of modules in one run of `plime process` against one run for each module: a chain reads and writes the
// picture once.
#include "Files.h"
#include "Median.h"
#include "PictureFiles.h"
#include "Report.h"
#include "Runs.h"

#include <algorithm>

namespace {

using namespace bench;

constexpr int Side = 4096, Rounds = 5;

struct Chain {
    const char* label;
    std::vector<std::string> modules;
};

const std::vector<Chain>& chains() {
    static const std::string gamma = "Hollywood/GammaCorrection", arc = "Hollywood/ArcTangens";
    static const std::string color = "Hollywood/ColorGammaCorrection", tone = "Hollywood/HDRToneMapping",
                             colored = "Hollywood/HDRColoredToneMapping";
    static const std::vector<Chain> all{{"two without shaders", {gamma, arc}},
                                        {"three without shaders", {gamma, arc, gamma}},
                                        {"two shaders", {color, tone}},
                                        {"three shaders", {color, tone, colored}},
                                        {"a shader between two without", {gamma, tone, arc}}};
    return all;
}

double megabytes(const Run& run) { return static_cast<double>(run.read + run.written) / 1e6; }

/// The bytes that a chain reads and writes, against the last of its single runs.
double measure(const Chain& chain, const std::string& input, const std::string& output) {
    std::vector<double> ratios, bytes, seconds;
    static_cast<void>(process(input, output, chain.modules)); // fills the caches of files and shaders
    for (int round = 0; round < Rounds; ++round) {
        double single = 0, singleBytes = 0;
        const auto runSingles = [&] {
            for (const std::string& module : chain.modules) {
                const Run run = process(input, output, {module});
                single += run.seconds;
                singleBytes = megabytes(run);
            }
        };
        if (round % 2 == 0) runSingles();
        const Run together = process(input, output, chain.modules);
        if (round % 2 == 1) runSingles();
        ratios.push_back(together.seconds / single);
        bytes.push_back(megabytes(together) / singleBytes);
        seconds.push_back(together.seconds);
    }
    row({chain.label, fixed(median(seconds)) + " s", spread(ratios), fixed(median(bytes), 3)});
    return median(bytes);
}

} // namespace

int main() {
    const Folder folder;
    const std::string input = folder.file("in.exr"), output = folder.file("out.exr");
    writePictureFile(input, pictureFormats().front(), Side);
    table("`plime process`, 4096x4096 half EXR, uncompressed:",
          {"chain", "time", "against the sum of single runs", "bytes, against one run"});
    std::vector<double> bytes;
    for (const Chain& chain : chains()) bytes.push_back(measure(chain, input, output));
    wanted("bytes read and written by a chain, against one module", {Limit::Side::AtMost, 1.01, 3},
           {*std::ranges::max_element(bytes)});
    return 0;
}
