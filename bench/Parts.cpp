// SPDX-License-Identifier: Apache-2.0
// How a run of `plime process` through Hollywood/GammaCorrection parts into reading, processing and writing, through the
// same libraries in this process; and the whole run of the program against copying the picture by these libraries.
#include "Files.h"
#include "Median.h"
#include "Modules.h"
#include "PictureFiles.h"
#include "Report.h"
#include "Runs.h"

#include "workbench/files/Picture.h"

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace {

using namespace krod;
using namespace bench;
using Strip = StrongPtr<Chunk<RGBAHalf>>;

constexpr int Side = 4096, StripRows = 256, Rounds = 5;
constexpr const char* Module = "Hollywood/GammaCorrection";

/// Seconds that each part took.
struct Parts {
    double reading = 0, processing = 0, writing = 0;
};

/// Reads, processes and writes strip by strip, as far as that is wanted.
Parts passThrough(const std::string& input, const std::string& output, ImageTileProcessor* processor) {
    Parts parts;
    std::unique_ptr<workbench::PictureReader> reader;
    std::unique_ptr<workbench::PictureWriter> writer;
    parts.reading += secondsOf([&] { reader = workbench::PictureReader::open(input); });
    parts.writing +=
        secondsOf([&] { writer = workbench::PictureWriter::create(output, reader->description()); });
    const int width = reader->description().width, height = reader->description().height;
    const Strip pixels(new Chunk<RGBAHalf>(static_cast<std::size_t>(width) * StripRows));
    const VValuePool pool;
    const VRenderContext context(pool);
    for (int first = 0; first < height; first += StripRows) {
        const int count = std::min(StripRows, height - first);
        parts.reading += secondsOf([&] { reader->readRows(first, count, pixels->data()); });
        if (processor)
            parts.processing += secondsOf([&] {
                ImageTile tile(width, count, pixels);
                processor->process(context, tile);
            });
        parts.writing += secondsOf([&] { writer->writeRows(first, count, pixels->data()); });
    }
    parts.writing += secondsOf([&] { writer->finish(); });
    return parts;
}

void measure(Modules& modules, const PictureFormat& format, int side) {
    const Folder folder;
    const std::string input = folder.file(format.file),
                      output = folder.file(std::string("out-") + format.file);
    writePictureFile(input, format, side);
    const auto module = modules.make(Module);
    const auto processor = processorOf(*module);
    std::vector<double> reading, processing, writing, whole, plain, ratios;
    for (int round = 0; round <= Rounds; ++round) {
        const QuietOutput quiet;
        const Parts parts = passThrough(input, output, &*processor);
        const double program = process(input, output, {Module}).seconds;
        const double copied = secondsOf([&] { passThrough(input, output, nullptr); });
        if (round == 0) continue; // fills caches, and the processor's table
        reading.push_back(parts.reading);
        processing.push_back(parts.processing);
        writing.push_back(parts.writing);
        whole.push_back(program);
        plain.push_back(copied);
        ratios.push_back(program / copied);
    }
    const double sum = median(reading) + median(processing) + median(writing);
    const auto part = [&](const std::vector<double>& seconds) {
        return fixed(median(seconds), 2) + " s, " + fixed(100 * median(seconds) / sum, 0) + " %";
    };
    row({std::string(format.label) + ", " + std::to_string(side) + 'x' + std::to_string(side), part(reading),
         part(processing), part(writing), fixed(sum, 2) + " s", fixed(median(whole), 2) + " s",
         fixed(median(plain), 2) + " s", spread(ratios)});
}

} // namespace

/// bench_parts [SIDE]: pictures of another side.
int main(int argc, char** argv) {
    Modules modules;
    table("Parts of `plime process --with Hollywood/GammaCorrection`:",
          {"picture", "reading", "processing", "writing", "sum", "the program", "plain copy",
           "program / copy"});
    for (const PictureFormat& format : pictureFormats())
        measure(modules, format, argc > 1 ? std::atoi(argv[1]) : Side);
    return 0;
}
