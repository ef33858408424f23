// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/png/PngWriter.h"

#include "workbench/files/Reason.h"
#include "workbench/files/png/PngMetadata.h"
#include "workbench/report/Failure.h"

#include <algorithm>
#include <bit>

namespace workbench {
namespace {

constexpr int StepRows = 64;

int colorType(int channels) {
    constexpr int Types[] = {PNG_COLOR_TYPE_GRAY, PNG_COLOR_TYPE_GRAY_ALPHA, PNG_COLOR_TYPE_RGB,
                             PNG_COLOR_TYPE_RGB_ALPHA};
    return Types[channels - 1];
}

/// PNG stores the higher byte first.
void toBigEndian(std::vector<std::byte>& values) {
    if (std::endian::native == std::endian::big) return;
    for (std::size_t i = 0; i + 1 < values.size(); i += 2) std::swap(values[i], values[i + 1]);
}

} // namespace

PngWriter::PngWriter(const std::filesystem::path& path, const PictureDescription& description,
                     const WriteOptions& options)
    : PictureWriter(path, description, options),
      channels((about.isGrey ? 1 : 3) + (about.hasAlpha ? 1 : 0)),
      encoder(storedDepth, channels, options.srgb, ValueRange::Unit, alphaChange()),
      target(path, options.noClobber),
      png(PngSession::Use::Write) {
    writeHead(options);
    const std::size_t pixelBytes = static_cast<std::size_t>(channels) * bytesPerValue(storedDepth);
    packer.emplace(static_cast<std::size_t>(about.width) * pixelBytes, pixelBytes, about.height,
                   [this](const std::string& part) { writeChunk("IDAT", part); });
}

/// Called by libpng, which must not be left by an exception.
void PngWriter::onWrite(png_structp png, png_bytep bytes, png_size_t size) {
    auto& writer = *static_cast<PngWriter*>(png_get_io_ptr(png));
    bool isWritten = true;
    try {
        writer.target.write(bytes, size);
    } catch (const Failure&) { // remembered by the file
        isWritten = false;
    }
    if (!isWritten) png_error(png, "the file cannot be written");
}

void PngWriter::writeHead(const WriteOptions& options) {
    const auto width = static_cast<png_uint_32>(about.width), height = static_cast<png_uint_32>(about.height);
    const int bits = storedDepth == PixelDepth::UInt16 ? 16 : 8;
    const bool isSet = png.succeeds([&] {
        png_set_write_fn(png.state(), this, onWrite, nullptr);
        png_set_user_limits(png.state(), LargestSide, LargestSide);
        png_set_IHDR(png.state(), png.info(), width, height, bits, colorType(channels), PNG_INTERLACE_NONE,
                     PNG_COMPRESSION_TYPE_BASE, PNG_FILTER_TYPE_BASE);
    });
    if (!isSet || !enterPngMetadata(about, options, png, droppedNames)) fail();
    if (!png.succeeds([&] { png_write_info(png.state(), png.info()); })) fail();
}

void PngWriter::writeChunk(const char* name, const std::string& bytes) {
    const bool isWritten = png.succeeds([&] {
        png_write_chunk(png.state(), reinterpret_cast<png_const_bytep>(name),
                        reinterpret_cast<png_const_bytep>(bytes.data()), bytes.size());
    });
    if (!isWritten) fail();
}

void PngWriter::encodeRows(int, int count, const krod::RGBAHalf* pixels, const ExtraRows*) {
    const auto width = static_cast<std::size_t>(about.width);
    const std::size_t rowBytes = width * static_cast<std::size_t>(channels) * bytesPerValue(storedDepth);
    for (int row = 0; row < count; row += StepRows) {
        const int rows = std::min(StepRows, count - row);
        encoded.resize(rowBytes * static_cast<std::size_t>(rows));
        encoder.encode(pixels + static_cast<std::size_t>(row) * width, width * static_cast<std::size_t>(rows),
                       encoded.data());
        if (storedDepth == PixelDepth::UInt16) toBigEndian(encoded);
        packer->add(encoded.data(), rows);
    }
}

void PngWriter::complete() {
    writeChunk("IEND", "");
    target.finish();
}

void PngWriter::fail() {
    if (target.failed()) target.throwFailure();
    throw Failure(
        Fault::Output,
        {file.string(), "cannot be written as a PNG picture", "", reasonText(png.reason()), "", {}});
}

} // namespace workbench
