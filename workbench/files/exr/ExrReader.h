// SPDX-License-Identifier: Apache-2.0
// Reads EXR files.
#pragma once

#include "workbench/files/Picture.h"

#include <OpenEXR/ImfFrameBuffer.h>
#include <OpenEXR/ImfInputPart.h>
#include <OpenEXR/ImfMultiPartInputFile.h>

#include <optional>

namespace workbench {

/// Scan lines and tiles (the full level; one row of tiles is kept), first part. Half channels go into the
/// caller's pixels without conversion, NaN payloads included.
class ExrReader : public PictureReader {
public:
    explicit ExrReader(const std::filesystem::path& path);

private:
    void openPart();
    void decodeLinear() override;
    void decodeRows(int first, int count, krod::RGBAHalf* out, ExtraRows* extra) override;
    void decodeStep(int first, int count, krod::RGBAHalf* out, Imf::FrameBuffer& buffer);
    void insertColour(std::size_t channel, int first, int count, krod::RGBAHalf* out,
                      Imf::FrameBuffer& buffer);
    void convertFloats(std::size_t channel, int first, int count, krod::RGBAHalf* out);

    std::unique_ptr<Imf::MultiPartInputFile> input;
    std::optional<Imf::InputPart> part;
    std::optional<PixelDecoder> linearizer;        ///< of decoded pixels, where they are to be linear
    std::array<bool, 4> isHalf{};                  ///< of red, green, blue and alpha
    std::array<std::vector<float>, 4> floatValues; ///< rows of the channels that are not half
};

} // namespace workbench
