// SPDX-License-Identifier: Apache-2.0
// PNG reader over libpng.
#pragma once

#include "workbench/files/Picture.h"
#include "workbench/files/PixelConversion.h"
#include "workbench/files/png/PngLibrary.h"

#include <cstdio>
#include <memory>
#include <optional>

namespace workbench {

/// Row by row; an interlaced picture is decoded whole when its first row is asked for. Palettes become colors,
/// a transparent color becomes alpha. What libpng passes over goes into the description's notes.
class PngReader : public PictureReader {
public:
    explicit PngReader(const std::filesystem::path& path);

private:
    struct Close {
        void operator()(std::FILE* open) const { std::fclose(open); }
    };

    void begin();
    void describe();
    void decodeLinear() override { decoder->linearize(); }
    void decodeRows(int first, int count, krod::RGBAHalf* out, ExtraRows* extra) override;
    const std::byte* storedRow(int row);
    void decodeWhole();
    [[noreturn]] void fail(std::string what);

    std::unique_ptr<std::FILE, Close> input;
    std::optional<PngSession> png;
    bool isInterlaced = false;
    std::size_t rowBytes = 0;
    std::optional<PixelDecoder> decoder;
    int nextRow = 0;
    std::vector<std::byte> stored; ///< a row, or the whole of an interlaced picture
};

} // namespace workbench
