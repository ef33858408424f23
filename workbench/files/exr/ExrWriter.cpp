// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/exr/ExrWriter.h"

#include "workbench/files/Reason.h"
#include "workbench/files/exr/ExrChannels.h"
#include "workbench/files/exr/ExrMetadata.h"
#include "workbench/report/Failure.h"

#include <OpenEXR/ImfChannelList.h>

#include <algorithm>

namespace workbench {
namespace {

constexpr int StepRows = 64;

Imf::PixelType pixelType(ExtraType type) {
    return type == ExtraType::Half ? Imf::HALF : type == ExtraType::Float ? Imf::FLOAT : Imf::UINT;
}

} // namespace

ExrWriter::ExrWriter(const std::filesystem::path& path, const PictureDescription& description,
                     const WriteOptions& options)
    : PictureWriter(path, description, options),
      encoder(storedDepth, 4, options.srgb, ValueRange::All),
      copiesHalves(storedDepth == PixelDepth::Half && !options.srgb),
      target(path, options.noClobber),
      stream(target) {
    guarded([&] { output = std::make_unique<Imf::OutputFile>(stream, header(options)); });
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
    if (options.compression == ExrCompression::None) result.compression() = Imf::NO_COMPRESSION;
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

void ExrWriter::insertColour(std::size_t channel, int first, const std::byte* base, std::size_t stride,
                             Imf::FrameBuffer& buffer) const {
    const Imf::PixelType type = storedDepth == PixelDepth::Half ? Imf::HALF : Imf::FLOAT;
    buffer.insert(channelName(about, channel),
                  Imf::Slice::Make(type, base + channel * bytesPerValue(storedDepth),
                                   Imath::V2i(about.dataX, about.dataY + first), about.width, StepRows,
                                   stride, stride * static_cast<std::size_t>(about.width)));
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
    const auto width = static_cast<std::size_t>(about.width);
    const std::size_t stride = 4 * bytesPerValue(storedDepth);
    for (int row = 0; row < count; row += StepRows) {
        const int rows = std::min(StepRows, count - row);
        const krod::RGBAHalf* from = pixels + static_cast<std::size_t>(row) * width;
        const auto* base = reinterpret_cast<const std::byte*>(from);
        if (!copiesHalves) {
            encoded.resize(static_cast<std::size_t>(rows) * width * stride);
            encoder.encode(from, static_cast<std::size_t>(rows) * width, encoded.data());
            base = encoded.data();
        }
        Imf::FrameBuffer buffer;
        for (std::size_t i = 0; i < (about.isGrey ? 1U : 3U); ++i)
            insertColour(i, first + row, base, stride, buffer);
        if (about.hasAlpha) insertColour(3, first + row, base, stride, buffer);
        if (extra) insertExtra(first + row, static_cast<std::size_t>(row), *extra, buffer);
        guarded([&] {
            output->setFrameBuffer(buffer);
            output->writePixels(rows);
        });
    }
}

void ExrWriter::complete() {
    output.reset(); // writes the table of rows; an error there does not leave the library
    if (target.failed()) target.throwFailure();
    target.finish();
}

} // namespace workbench
