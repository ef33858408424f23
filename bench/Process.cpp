// SPDX-License-Identifier: Apache-2.0
// A whole run of `plime process` on a picture of 16384x16384 half pixels, without and with a shader: time and peak
// memory. Needs 5 GB of disk in the temporary folder.
#include "Files.h"
#include "PictureFiles.h"
#include "Report.h"
#include "Runs.h"

#include <cstring>

namespace {

constexpr int Side = 16384;

struct ProcessCase {
    const char* key;
    double megabytes; ///< at most
};

constexpr ProcessCase Cases[] = {{"Hollywood/GammaCorrection", 400}, {"Hollywood/HDRToneMapping", 700}};

} // namespace

/// bench_process [PART]: only modules whose key contains the part.
int main(int argc, char** argv) {
    const bench::Folder folder;
    const std::string input = folder.file("in.exr");
    bench::writePictureFile(input, bench::pictureFormats().front(), Side);
    bench::table("`plime process`, 16384x16384 half EXR, uncompressed, one run:",
                 {"module", "time", "peak memory"});
    for (const ProcessCase& about : Cases) {
        if (argc > 1 && !std::strstr(about.key, argv[1])) continue;
        const auto run = bench::process(input, folder.file("out.exr"), {about.key}, bench::Watch::Memory);
        const std::string key = '`' + std::string(about.key) + '`';
        bench::row({key, bench::fixed(run.seconds, 1) + " s", bench::fixed(run.peakMegabytes, 0) + " MB"});
        bench::wanted("16384x16384 half EXR through " + key + ": peak memory",
                      {bench::Limit::Side::AtMost, about.megabytes, 0, " MB"}, {run.peakMegabytes});
    }
    return 0;
}
