// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/pictures/PictureOutput.h"

#include "apps/plime/pictures/FreeSpace.h"
#include "apps/plime/terminal/Interruption.h"
#include "apps/plime/terminal/Numbers.h"

#include "host/values/VValueTrait.h"

#include <algorithm>
#include <string_view>

namespace workbench {
namespace {

/// The clipped values of a picture: how far below and above they were.
std::string extremesText(const PictureWriter& writer) {
    const auto text = [](float value) { return krod::VValueTrait<double>::Text(static_cast<double>(value)); };
    const bool below = writer.smallestValue()<0, above = writer.largestValue()> 0;
    std::string said = below ? "the smallest was " + text(writer.smallestValue()) : "";
    if (above) said += (below ? ", the largest " : "the largest was ") + text(writer.largestValue());
    return said;
}

constexpr std::string_view AlphaName = "A";

bool dropsAlpha(const PictureWriter& writer) {
    return std::ranges::find(writer.dropped(), AlphaName) != writer.dropped().end();
}

/// 1 within half a step of 8 bits; more than 1 counts as 1.
bool hasFullAlpha(const krod::RGBAHalf& pixel) { return static_cast<float>(pixel.a) >= 1.0F - 0.5F / 255.0F; }

} // namespace

void OutputWish::addTo(Syntax& syntax) {
    syntax.options.push_back({"-o,--output", &path});
    syntax.options.push_back({"-d,--depth", &depth});
    syntax.options.push_back({"--srgb", &srgb});
    syntax.options.push_back({"--clip", &clip});
    syntax.options.push_back({"--no-network", &noNetwork});
    syntax.options.push_back({"--clip-negative", &clipNegative});
    syntax.options.push_back({"--compression", &compression});
    syntax.options.push_back({"--quality", &quality});
}

std::string OutputWish::requirePath() const {
    if (!path)
        throw Failure(Fault::Usage, {"-o", "is missing", "the picture to write, -o OUT.exr", "", "", {}});
    if (path->empty())
        throw Failure(Fault::Usage, {"-o,--output", "names no file", "the picture to write", "\"\"", "", {}});
    static_cast<void>(outputFormat(*path));
    return *path;
}

WriteOptions OutputWish::writeOptions(const GlobalOptions& global) const {
    WriteOptions options;
    options.srgb = srgb;
    options.noClobber = global.noClobber;
    options.compression = compression;
    if (quality) options.quality = wholeNumber("--quality", *quality, 1, 100);
    if (depth && !(options.depth = depthFromName(*depth)))
        throw Failure(Fault::Usage, {"-d,--depth",
                                     "knows no such depth",
                                     "half, float, uint8 or uint16",
                                     '"' + *depth + '"',
                                     "",
                                     {}});
    return options;
}

std::string writtenText(std::size_t written, std::size_t all) {
    return std::to_string(written) + " of " + std::to_string(all) + " pictures are written";
}

Failure interruptedAfter(std::size_t written, std::size_t all, const Failure& interruption) {
    Diagnostic message = interruption.diagnostic();
    message.what += ", " + writtenText(written, all);
    return {interruption.fault(), message};
}

PictureOutput::PictureOutput(const OutputWish& wish, const GlobalOptions& global,
                             const PictureDescription& description, const Storage& storage)
    : path(wish.requirePath()),
      clip(wish.clip),
      width(static_cast<std::size_t>(description.width)),
      pixelCount(static_cast<std::uint64_t>(description.width) *
                 static_cast<std::uint64_t>(description.height)) {
    WriteOptions options = wish.writeOptions(global);
    options.tileSide = storage.tileSide;
    options.alphaAsItStands = storage.alphaAsItStands;
    PictureDescription written = description;
    if (wish.noNetwork) written.remove(NetworkName);
    writer = PictureWriter::create(path, written, options);
}

void PictureOutput::requireRoom(std::uint64_t tiles) const {
    requireFreeSpace(path, writer->mostBytes(), tiles);
}

void PictureOutput::write(int first, int count, const krod::RGBAHalf* pixels, const ExtraRows* extra) {
    if (isOpaque && dropsAlpha(*writer))
        isOpaque = std::all_of(pixels, pixels + width * static_cast<std::size_t>(count), hasFullAlpha);
    writer->writeRows(first, count, pixels, extra);
}

void PictureOutput::writeBlock(const PixelWindow& part, const krod::RGBAHalf* pixels) {
    writer->writeBlock(part, pixels);
}

/// A warning where more than a thousandth of the pixels may be concerned.
void PictureOutput::tell(Report& report, std::uint64_t values, bool isExpected,
                         const Diagnostic& message) const {
    constexpr std::uint64_t Noticeable = 1000;
    if (values == 0 || clip) return;
    if (values > pixelCount / Noticeable && !isExpected)
        report.warning(message);
    else
        report.note(message);
}

void PictureOutput::tellOfValues(Report& report, bool formulaMakesNaN) const {
    const std::string advice = "Write .exr to keep them, or say --clip";
    tell(report, writer->clippedCount(), false,
         {path,
          std::to_string(writer->clippedCount()) + " values were clipped to " +
              std::string(depthName(writer->depth())) + ", " + extremesText(*writer),
          "",
          "",
          advice,
          {}});
    tell(report, writer->notNumberCount(), formulaMakesNaN,
         {path,
          std::to_string(writer->notNumberCount()) +
              " pixels have values that are not numbers and were written as grey",
          "",
          "",
          "",
          {}});
}

void PictureOutput::finish(Report& report, bool formulaMakesNaN) {
    throwIfInterrupted();
    writer->finish();
    tellOfValues(report, formulaMakesNaN);
    std::string names;
    for (const std::string& name : writer->dropped())
        if (name != AlphaName || !isOpaque) names += (names.empty() ? "" : ", ") + name;
    if (names.empty()) return;
    report.warning(
        {path, "its format cannot hold " + names + "; left out", "", "", "Write .exr to keep them", {}});
}

} // namespace workbench
