// SPDX-License-Identifier: Apache-2.0
// PNG writer: the head by libpng, the pixels packed on all processors.
#pragma once

#include "workbench/files/OutputFile.h"
#include "workbench/files/Picture.h"
#include "workbench/files/PixelConversion.h"
#include "workbench/files/png/PngLibrary.h"
#include "workbench/files/png/PngPacker.h"

#include <optional>

namespace workbench {

/// Scan lines from the top, not interlaced. The same pixels give the same bytes on every machine.
class PngWriter : public PictureWriter {
public:
    PngWriter(const std::filesystem::path& path, const PictureDescription& description,
              const WriteOptions& options);

    [[nodiscard]] std::uint64_t clippedCount() const override { return encoder.clippedCount(); }
    [[nodiscard]] float smallestValue() const override { return encoder.smallestValue(); }
    [[nodiscard]] float largestValue() const override { return encoder.largestValue(); }
    [[nodiscard]] std::uint64_t notNumberCount() const override { return encoder.notNumberCount(); }

private:
    static void onWrite(png_structp png, png_bytep bytes, png_size_t size);

    void writeHead(const WriteOptions& options);
    void writeChunk(const char* name, const std::string& bytes);
    void encodeRows(int first, int count, const krod::RGBAHalf* pixels, const ExtraRows* extra) override;
    void complete() override;
    [[noreturn]] void fail();

    int channels; ///< as stored: 1 grey, 2 grey and alpha, 3 color, 4 color and alpha
    PixelEncoder encoder;
    OutputFile target;
    PngSession png;
    std::optional<PngPacker> packer;
    std::vector<std::byte> encoded;
};

} // namespace workbench
