// SPDX-License-Identifier: Apache-2.0
// JPEG writer over libjpeg-turbo.
#pragma once

#include "workbench/files/OutputFile.h"
#include "workbench/files/Picture.h"
#include "workbench/files/PixelConversion.h"
#include "workbench/files/jpeg/JpegLibrary.h"

namespace workbench {

/// Sequential, with colors at full size (4:4:4).
class JpegWriter : public PictureWriter {
public:
    JpegWriter(const std::filesystem::path& path, const PictureDescription& description,
               const WriteOptions& options);
    ~JpegWriter() override;

    [[nodiscard]] std::uint64_t clippedCount() const override { return encoder.clippedCount(); }
    [[nodiscard]] float smallestValue() const override { return encoder.smallestValue(); }
    [[nodiscard]] float largestValue() const override { return encoder.largestValue(); }
    [[nodiscard]] std::uint64_t notNumberCount() const override { return encoder.notNumberCount(); }

private:
    /// Where libjpeg puts its bytes: a buffer that is written when it is full.
    struct Destination {
        jpeg_destination_mgr functions;
        JpegWriter* writer;
    };

    static boolean onFull(j_compress_ptr state);
    static void onEnd(j_compress_ptr state);

    void begin(const WriteOptions& options);
    void flush(j_compress_ptr state, std::size_t size);
    void encodeRows(int first, int count, const krod::RGBAHalf* pixels, const ExtraRows* extra) override;
    void complete() override;
    [[noreturn]] void fail();

    PixelEncoder encoder;
    OutputFile target;
    JpegMessages messages;
    Destination destination{};
    std::vector<unsigned char> buffer;
    jpeg_compress_struct jpeg{};
    std::vector<std::byte> encoded;
};

} // namespace workbench
