// SPDX-License-Identifier: Apache-2.0
// JPEG reader over libjpeg-turbo.
#pragma once

#include "workbench/files/Picture.h"
#include "workbench/files/PixelConversion.h"
#include "workbench/files/jpeg/JpegLibrary.h"

#include <cstdio>
#include <memory>
#include <optional>

namespace workbench {

/// Row by row. A picture in several scans (a progressive one) is decoded whole when its first row is asked for.
/// The four inks of print become red, green and blue by multiplication with black, without their profile.
class JpegReader : public PictureReader {
public:
    explicit JpegReader(const std::filesystem::path& path);
    ~JpegReader() override;

private:
    struct Close {
        void operator()(std::FILE* open) const { std::fclose(open); }
    };

    void begin();
    void start();
    void describe();
    void decodeLinear() override { decoder->linearize(); }
    void describeColors();
    void noteWarnings();
    void decodeRows(int first, int count, krod::RGBAHalf* out, ExtraRows* extra) override;
    const std::byte* nextStoredRow();
    [[nodiscard]] bool isDamaged();
    [[noreturn]] void fail(std::string what, std::string got);

    std::unique_ptr<std::FILE, Close> input;
    JpegMessages messages;
    jpeg_decompress_struct jpeg{};
    bool isCreated = false, isStarted = false;
    std::optional<PixelDecoder> decoder;
    int nextRow = 0;
    std::vector<std::byte> stored; ///< a row
};

} // namespace workbench
