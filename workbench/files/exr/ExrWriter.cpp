// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/exr/ExrWriter.h"

#include "workbench/files/Reason.h"
#include "workbench/files/exr/ExrChannels.h"
#include "workbench/files/exr/ExrLibrary.h"
#include "workbench/files/exr/ExrMetadata.h"
#include "workbench/report/Failure.h"

#include <OpenEXR/ImfChannelList.h>
#include <OpenEXR/ImfTileDescription.h>

#include <algorithm>
#include <stdexcept>

namespace workbench {
namespace {

constexpr int StepRows = 64;

Imf::PixelType pixelType(ExtraType type) {
    return type == ExtraType::Half ? Imf::HALF : type == ExtraType::Float ? Imf::FLOAT : Imf::UINT;
}

/// The names in the order of the library's numbers.
Imf::Compression compressionNamed(std::string_view name) {
    const auto& names = outputFormat("a.exr").compressions;
    return static_cast<Imf::Compression>(std::find(names.begin(), names.end(), name) - names.begin());
}

} // namespace

ExrWriter::ExrWriter(const std::filesystem::path& path, const PictureDescription& description,
                     const WriteOptions& options)
    : PictureWriter(path, description, options),
      encoder(storedDepth, 4, options.srgb, ValueRange::All, alphaChange()),
      copiesHalves(storedDepth == PixelDepth::Half && !options.srgb && alphaChange() == AlphaChange::None),
      target(path, options.noClobber),
      stream(target) {
    prepareExrLibrary();
    if (options.tileSide > 0 && !about.extraChannels.empty())
        throw std::logic_error("additional channels are stored in scan lines only");
    guarded([&] {
        const Imf::Header head = header(options);
        const int threads = exrThreadsFor(head.compression());
        if (options.tileSide > 0)
            tiles = std::make_unique<Imf::TiledOutputFile>(stream, head, threads);
        else
            output = std::make_unique<Imf::OutputFile>(stream, head, threads);
    });
}

/// What loses is used only where it is asked for.
void ExrWriter::setCompression(const WriteOptions& options, Imf::Header& header) const {
    const bool cutsFloats =
        header.compression() == Imf::PXR24_COMPRESSION && storedDepth == PixelDepth::Float;
    if (options.compression)
        header.compression() = compressionNamed(*options.compression);
    else if (header.compression() >= Imf::B44_COMPRESSION || cutsFloats)
        header.compression() = Imf::ZIP_COMPRESSION;
    constexpr float LevelPerQuality = 9; // the usual 95 is the library's usual level of 45
    header.erase("dwaCompressionLevel");
    header.dwaCompressionLevel() = static_cast<float>(100 - options.quality.value_or(95)) * LevelPerQuality;
}

Imf::Header ExrWriter::header(const WriteOptions& options) {
    const auto window = [](int x, int y, int width, int height) {
        return Imath::Box2i(Imath::V2i(x, y), Imath::V2i(x + width - 1, y + height - 1));
    };
    const PixelWindow display =
        about.displayWindow.value_or(PixelWindow{about.dataX, about.dataY, about.width, about.height});
    Imf::Header result(window(display.x, display.y, display.width, display.height),
                       window(about.dataX, about.dataY, about.width, about.height));
    enterMetadata(about.metadata, result, droppedNames);
    setCompression(options, result);
    if (options.tileSide > 0) {
        const auto side = static_cast<unsigned>(options.tileSide);
        result.setTileDescription(Imf::TileDescription(side, side, Imf::ONE_LEVEL));
        result.lineOrder() = Imf::RANDOM_Y; // any other one keeps tiles in memory until their turn comes
    }
    const Imf::PixelType type = storedDepth == PixelDepth::Half ? Imf::HALF : Imf::FLOAT;
    for (std::size_t i = 0; i < (about.isGrey ? 1U : 3U); ++i)
        result.channels().insert(channelName(about, i), Imf::Channel(type));
    if (about.hasAlpha) result.channels().insert(channelName(about, 3), Imf::Channel(type));
    for (const auto& channel : about.extraChannels)
        result.channels().insert(channel.name, Imf::Channel(pixelType(channel.type)));
    return result;
}

void ExrWriter::guarded(const std::function<void()>& work) {
    try {
        work();
    } catch (const std::exception& reason) {
        if (target.failed()) target.throwFailure(); // the library wraps the exception of a failed write
        throw Failure(
            Fault::Output,
            {file.string(), "cannot be written as an EXR picture", "", reasonText(reason.what()), "", {}});
    }
}

/// The colours and alpha of a part of the picture, as they are stored.
Imf::FrameBuffer ExrWriter::colours(const PixelWindow& part, const krod::RGBAHalf* pixels) {
    const auto width = static_cast<std::size_t>(part.width);
    const std::size_t size = bytesPerValue(storedDepth), stride = 4 * size;
    const auto* base = reinterpret_cast<const std::byte*>(pixels);
    if (!copiesHalves) {
        const std::size_t count = width * static_cast<std::size_t>(part.height);
        encoded.resize(count * stride);
        encoder.encode(pixels, count, encoded.data());
        base = encoded.data();
    }
    const Imf::PixelType type = storedDepth == PixelDepth::Half ? Imf::HALF : Imf::FLOAT;
    Imf::FrameBuffer buffer;
    const auto insert = [&](std::size_t channel) {
        buffer.insert(channelName(about, channel),
                      Imf::Slice::Make(type, base + channel * size,
                                       Imath::V2i(about.dataX + part.x, about.dataY + part.y), part.width,
                                       part.height, stride, stride * width));
    };
    for (std::size_t i = 0; i < (about.isGrey ? 1U : 3U); ++i) insert(i);
    if (about.hasAlpha) insert(3);
    return buffer;
}

void ExrWriter::insertExtra(int first, std::size_t rowOffset, const ExtraRows& extra,
                            Imf::FrameBuffer& buffer) const {
    const auto width = static_cast<std::size_t>(about.width);
    for (std::size_t i = 0; i < about.extraChannels.size(); ++i) {
        const std::size_t size = about.extraChannels[i].bytesPerValue();
        buffer.insert(about.extraChannels[i].name,
                      Imf::Slice::Make(pixelType(about.extraChannels[i].type),
                                       extra[i].data() + rowOffset * width * size,
                                       Imath::V2i(about.dataX, about.dataY + first), about.width, StepRows,
                                       size, width * size));
    }
}

void ExrWriter::encodeRows(int first, int count, const krod::RGBAHalf* pixels, const ExtraRows* extra) {
    if (!output) throw std::logic_error("a picture that is stored in tiles is written in blocks");
    const auto width = static_cast<std::size_t>(about.width);
    for (int row = 0; row < count; row += StepRows) {
        const int rows = std::min(StepRows, count - row);
        Imf::FrameBuffer buffer =
            colours({0, first + row, about.width, rows}, pixels + static_cast<std::size_t>(row) * width);
        if (extra) insertExtra(first + row, static_cast<std::size_t>(row), *extra, buffer);
        guarded([&] {
            output->setFrameBuffer(buffer);
            output->writePixels(rows);
        });
    }
}

void ExrWriter::encodeBlock(const PixelWindow& part, const krod::RGBAHalf* pixels) {
    if (!tiles) return PictureWriter::encodeBlock(part, pixels);
    const int wide = static_cast<int>(tiles->tileXSize()), high = static_cast<int>(tiles->tileYSize());
    const int left = part.x / wide, right = (part.x + part.width - 1) / wide;
    for (int row = 0; row < part.height; row += high) {
        const PixelWindow step{part.x, part.y + row, part.width, std::min(high, part.height - row)};
        const Imf::FrameBuffer buffer = colours(step, pixels + std::ptrdiff_t{row} * part.width);
        guarded([&] {
            tiles->setFrameBuffer(buffer);
            tiles->writeTiles(left, right, step.y / high, step.y / high);
        });
    }
}

void ExrWriter::complete() {
    output.reset(); // writes the table of rows; an error there does not leave the library
    tiles.reset();
    if (target.failed()) target.throwFailure();
    target.finish();
}

} // namespace workbench
