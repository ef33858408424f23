// SPDX-License-Identifier: Apache-2.0
// Writes TIFF and HDR files.
#pragma once

#include "workbench/files/OutputFile.h"
#include "workbench/files/Picture.h"
#include "workbench/files/PixelConversion.h"

#include <OpenImageIO/filesystem.h>
#include <OpenImageIO/imageio.h>

namespace workbench {

/// Scan lines from the top, through a checked output file.
class OiioWriter : public PictureWriter {
public:
    OiioWriter(const std::filesystem::path& path, const PictureDescription& description,
               const WriteOptions& options);
    ~OiioWriter() override;

    [[nodiscard]] std::uint64_t clippedCount() const override { return encoder.clippedCount(); }
    [[nodiscard]] float smallestValue() const override { return encoder.smallestValue(); }
    [[nodiscard]] float largestValue() const override { return encoder.largestValue(); }
    [[nodiscard]] std::uint64_t notNumberCount() const override { return encoder.notNumberCount(); }

private:
    /// Leads the library's output into our checked file, and tells it of failures instead of throwing through
    /// it.
    class Proxy : public OIIO::Filesystem::IOProxy {
    public:
        explicit Proxy(OutputFile& target) : IOProxy(target.target().string(), Write), file(target) {}
        [[nodiscard]] const char* proxytype() const override { return "checked output file"; }
        int64_t tell() override { return static_cast<int64_t>(file.position()); }
        bool seek(int64_t offset) override;
        size_t write(const void* data, size_t size) override;
        [[nodiscard]] size_t size() const override { return end; }

    private:
        OutputFile& file;
        size_t end = 0;
    };

    [[nodiscard]] OIIO::ImageSpec imageSpec(const WriteOptions& options);
    void encodeRows(int first, int count, const krod::RGBAHalf* pixels, const ExtraRows* extra) override;
    void complete() override;
    [[noreturn]] void fail();

    const PictureFormat& format;
    int channels; ///< as stored: 1 grey, 2 grey and alpha, 3 colour, 4 colour and alpha
    PixelEncoder encoder;
    OutputFile target;
    Proxy proxy;
    std::unique_ptr<OIIO::ImageOutput> output;
    std::vector<std::byte> encoded;
};

} // namespace workbench
