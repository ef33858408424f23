// SPDX-License-Identifier: Apache-2.0
// Reads every picture format but EXR, PNG and JPEG.
#pragma once

#include "workbench/files/Picture.h"
#include "workbench/files/PixelConversion.h"

#include <OpenImageIO/imageio.h>

#include <cstdio>
#include <memory>
#include <optional>

namespace workbench {

/// First picture of the file. Scan lines are read as they are asked for, of a tiled file one row of tiles is
/// kept.
class OiioReader : public PictureReader {
public:
    explicit OiioReader(const std::filesystem::path& path);

private:
    struct Close {
        void operator()(std::FILE* open) const { std::fclose(open); }
    };

    void openInput(const OIIO::ImageSpec& wishes);
    void describe();
    void countPictures();
    void decodeLinear() override { decoder->linearize(); }
    void decodeRows(int first, int count, krod::RGBAHalf* out, ExtraRows* extra) override;
    void decodeRow(int row, const std::byte* from, krod::RGBAHalf* out);
    const std::byte* storedRows(int first, int count);
    const std::byte* tileRow(int first, int& rowsThere);
    [[noreturn]] void fail(int first, int count);

    std::unique_ptr<std::FILE, Close> numbered; ///< of a file whose name the library does not take
    std::unique_ptr<OIIO::ImageInput> input;
    OIIO::TypeDesc storedType;
    std::size_t rowBytes = 0;
    std::optional<PixelDecoder> decoder;
    std::vector<std::byte> stored; ///< rows, or a row of tiles, as in the file
    int tileRowFirst = -1;         ///< first row of the row of tiles in `stored`
};

} // namespace workbench
