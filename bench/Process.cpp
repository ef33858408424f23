// SPDX-License-Identifier: Apache-2.0
// A whole run of `plime process` on a picture of 16384x16384 half pixels, without and with a shader: time and peak
// memory. Needs 5 GB of disk in the temporary folder.
#include "Runs.h"

#include <cstdio>
#include <cstring>

namespace {

constexpr int Side = 16384;

struct ProcessCase {
    const char* key;
    const char* wanted;
};

constexpr ProcessCase Cases[] = {{"Hollywood/GammaCorrection", "under 400 MB"},
                                 {"Hollywood/HDRToneMapping", "at most 700 MB"}};

} // namespace

/// bench_process [PART]: only modules whose key contains the part.
int main(int argc, char** argv) {
    const bench::Folder folder;
    const std::string input = folder.file("in.exr");
    bench::writeHalfPicture(input, Side);
    std::printf("plime process, %dx%d half EXR, uncompressed\n", Side, Side);
    for (const ProcessCase& about : Cases) {
        if (argc > 1 && !std::strstr(about.key, argv[1])) continue;
        const auto run = bench::process(input, folder.file("out.exr"), {about.key});
        std::printf("%-34s %6.1f s   peak memory %4.0f MB   (wanted: %s)\n", about.key, run.seconds,
                    run.peakMegabytes, about.wanted);
        std::fflush(stdout);
    }
    return 0;
}
