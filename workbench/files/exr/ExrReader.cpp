// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/exr/ExrReader.h"

#include "workbench/files/PixelConversion.h"
#include "workbench/files/Reason.h"
#include "workbench/files/exr/ExrChannels.h"
#include "workbench/files/exr/ExrLibrary.h"
#include "workbench/files/exr/ExrMetadata.h"
#include "workbench/report/Failure.h"

#include <OpenEXR/ImfHeader.h>
#include <OpenEXR/ImfPartType.h>

#include <algorithm>
#include <cmath>

namespace workbench {
namespace {

constexpr int StepRows = ExrStepRows;

constexpr half_float::half krod::RGBAHalf::*Members[4] = {&krod::RGBAHalf::r, &krod::RGBAHalf::g,
                                                          &krod::RGBAHalf::b, &krod::RGBAHalf::a};

[[noreturn]] void failReading(const std::filesystem::path& path, std::string what,
                              const std::exception& reason) {
    throw Failure(Fault::Input, {path.string(),
                                 std::move(what),
                                 "",
                                 reasonText(reason.what()),
                                 "The file is damaged or was not written to its end",
                                 {}});
}

/// PXR24 cuts floats only.
bool isLossy(const Imf::Header& header) {
    switch (header.compression()) {
    case Imf::B44_COMPRESSION:
    case Imf::B44A_COMPRESSION:
    case Imf::DWAA_COMPRESSION:
    case Imf::DWAB_COMPRESSION:
        return true;
    case Imf::PXR24_COMPRESSION:
        for (auto it = header.channels().begin(); it != header.channels().end(); ++it)
            if (it.channel().type == Imf::FLOAT) return true;
        return false;
    default:
        return false;
    }
}

/// What the library holds while rows are read: a row of tiles, or the blocks that its threads work on, each
/// compressed, decompressed and on the way between; and our own rows before their values become halves. As on
/// a machine with many threads, so that pictures are cut alike everywhere.
std::uint64_t bytesWhileReading(const Imf::Header& header, std::int64_t width, std::int64_t height,
                                std::int64_t bytesPerPixel) {
    const std::int64_t rowBytes = width * bytesPerPixel;
    const std::int64_t rows =
        std::int64_t{rowsInExrBlock(header.compression())} * mostExrBlocks(header.compression());
    const std::int64_t held = header.hasTileDescription() ? rowBytes * header.tileDescription().ySize
                                                          : 3 * rowBytes * std::min(rows, height);
    return static_cast<std::uint64_t>(held + StepRows * rowBytes);
}

} // namespace

ExrReader::ExrReader(const std::filesystem::path& path) : PictureReader(path) {
    prepareExrLibrary();
    try {
        input = std::make_unique<Imf::MultiPartInputFile>(path.c_str(), 0);
        if (const int threads = exrThreadsFor(input->header(0).compression()); threads > 0)
            input = std::make_unique<Imf::MultiPartInputFile>(path.c_str(), threads);
        openPart();
    } catch (const Failure&) {
        throw;
    } catch (const std::exception& reason) {
        failReading(file, "cannot be read as an EXR picture", reason);
    }
}

void ExrReader::openPart() {
    const Imf::Header& header = input->header(0);
    if (header.hasType() && Imf::isDeepData(header.type()))
        throw Failure(Fault::Input, {file.string(),
                                     "holds deep pixels",
                                     "scan lines or tiles with one value per pixel",
                                     header.type(),
                                     "Flatten the picture first",
                                     {}});
    const auto& data = header.dataWindow();
    const auto& display = header.displayWindow();
    const std::int64_t width = std::int64_t{data.max.x} - data.min.x + 1;
    const std::int64_t height = std::int64_t{data.max.y} - data.min.y + 1;
    std::int64_t channels = 0, bytes = 0;
    for (auto it = header.channels().begin(); it != header.channels().end(); ++it) {
        ++channels;
        bytes += it.channel().type == Imf::HALF ? 2 : 4;
    }
    const bool isDwa = header.compression() >= Imf::DWAA_COMPRESSION;
    checkPictureSize(file, width, height, channels, bytes, std::filesystem::file_size(file),
                     isDwa ? "exr" : ""); // the others pack flat pictures less
    about.format = "exr";
    about.width = static_cast<int>(width);
    about.height = static_cast<int>(height);
    about.dataX = data.min.x;
    about.dataY = data.min.y;
    about.displayWindow = {display.min.x, display.min.y, display.max.x - display.min.x + 1,
                           display.max.y - display.min.y + 1};
    about.readerBytes = bytesWhileReading(header, width, height, bytes);
    enterChannels(file, header.channels(), about);
    for (std::size_t i = 0; i < 4; ++i) {
        const Imf::Channel* channel = header.channels().findChannel(about.channelNames[i]);
        isHalf[i] = !channel || channel->type == Imf::HALF;
    }
    about.alphaIsAssociated = about.hasAlpha;
    about.furtherPictures = input->parts() - 1;
    about.furtherPicturesAre = "parts";
    const float aspect = header.pixelAspectRatio();
    about.pixelAspect = aspect > 0 && std::isfinite(aspect) ? aspect : 1;
    about.isLossy = isLossy(header);
    about.metadata = metadataOf(header);
    const Metadatum* const space = about.find(ColorSpaceName);
    about.transfer = space && isSrgbName(space->text) ? Transfer::Srgb : Transfer::Linear;
    part.emplace(*input, 0);
}

void ExrReader::decodeLinear() {
    linearizer.emplace(PixelDepth::Half, 4, false, 3);
    linearizer->linearize();
}

void ExrReader::insertColour(std::size_t channel, int first, int count, krod::RGBAHalf* out,
                             Imf::FrameBuffer& buffer) {
    const auto width = static_cast<std::size_t>(about.width);
    const std::string& name = about.channelNames[channel];
    const Imath::V2i origin(about.dataX, about.dataY + first);
    if (isHalf[channel]) {
        buffer.insert(name, Imf::Slice::Make(Imf::HALF, &(out->*Members[channel]), origin, about.width, count,
                                             sizeof(krod::RGBAHalf), width * sizeof(krod::RGBAHalf)));
        return;
    }
    auto& values = floatValues[channel];
    values.resize(width * static_cast<std::size_t>(count));
    buffer.insert(name, Imf::Slice::Make(Imf::FLOAT, values.data(), origin, about.width, count, sizeof(float),
                                         width * sizeof(float)));
}

void ExrReader::convertFloats(std::size_t channel, int first, int count, krod::RGBAHalf* out) {
    const auto width = static_cast<std::size_t>(about.width);
    const float* value = floatValues[channel].data();
    for (int row = 0; row < count; ++row) {
        ValueLoss loss;
        for (std::size_t x = 0; x < width; ++x) (out++)->*Members[channel] = halfFromFloat(*value++, loss);
        countLoss(first + row, loss);
    }
}

void ExrReader::decodeStep(int first, int count, krod::RGBAHalf* out, Imf::FrameBuffer& buffer) {
    const std::size_t pixels = static_cast<std::size_t>(about.width) * static_cast<std::size_t>(count);
    const auto& names = about.channelNames;
    if (std::any_of(names.begin(), names.end(), [](const std::string& name) { return name.empty(); }))
        std::fill_n(out, pixels,
                    krod::RGBAHalf{half_float::half(0.0F), half_float::half(0.0F), half_float::half(0.0F),
                                   half_float::half(1.0F)});
    for (std::size_t i = 0; i < 4; ++i)
        if (!about.channelNames[i].empty()) insertColour(i, first, count, out, buffer);
    try {
        part->setFrameBuffer(buffer);
        part->readPixels(about.dataY + first, about.dataY + first + count - 1);
    } catch (const std::exception& reason) {
        failReading(file,
                    "cannot be read at the rows " + std::to_string(first) + " to " +
                        std::to_string(first + count - 1) + " of " + std::to_string(about.height),
                    reason);
    }
    for (std::size_t i = 0; i < 4; ++i)
        if (!isHalf[i]) convertFloats(i, first, count, out);
    if (about.isGrey)
        for (std::size_t i = 0; i < pixels; ++i) out[i].g = out[i].b = out[i].r;
    if (linearizer) linearizer->decode(reinterpret_cast<const std::byte*>(out), pixels, out);
}

void ExrReader::decodeRows(int first, int count, krod::RGBAHalf* out, ExtraRows* extra) {
    const auto width = static_cast<std::size_t>(about.width);
    for (int row = 0; row < count; row += StepRows) {
        const int rows = std::min(StepRows, count - row);
        Imf::FrameBuffer buffer;
        for (std::size_t i = 0; extra && i < extra->size(); ++i) {
            const ExtraChannel& channel = about.extraChannels[i];
            const std::size_t size = channel.bytesPerValue();
            const Imf::PixelType type = channel.type == ExtraType::Half    ? Imf::HALF
                                        : channel.type == ExtraType::Float ? Imf::FLOAT
                                                                           : Imf::UINT;
            buffer.insert(channel.name,
                          Imf::Slice::Make(type,
                                           (*extra)[i].data() + static_cast<std::size_t>(row) * width * size,
                                           Imath::V2i(about.dataX, about.dataY + first + row), about.width,
                                           rows, size, width * size));
        }
        decodeStep(first + row, rows, out + static_cast<std::size_t>(row) * width, buffer);
    }
}

} // namespace workbench
