// SPDX-License-Identifier: Apache-2.0
// Writes EXR files.
#pragma once

#include "workbench/files/OutputFile.h"
#include "workbench/files/Picture.h"
#include "workbench/files/PixelConversion.h"

#include <OpenEXR/ImfFrameBuffer.h>
#include <OpenEXR/ImfHeader.h>
#include <OpenEXR/ImfIO.h>
#include <OpenEXR/ImfOutputFile.h>
#include <OpenEXR/ImfTiledOutputFile.h>

#include <functional>

namespace workbench {

/// Scan lines from the top or tiles in the order of their writing, half or float. Halves are written without conversion, NaN payloads included.
class ExrWriter : public PictureWriter {
public:
    ExrWriter(const std::filesystem::path& path, const PictureDescription& description,
              const WriteOptions& options);

private:
    /// Leads the library's output into our checked file.
    class Stream : public Imf::OStream {
    public:
        explicit Stream(OutputFile& target) : OStream(target.target().c_str()), file(target) {}
        void write(const char c[], int n) override { file.write(c, static_cast<std::size_t>(n)); }
        uint64_t tellp() override { return file.position(); }
        void seekp(uint64_t position) override { file.seek(position); }

    private:
        OutputFile& file;
    };

    [[nodiscard]] Imf::Header header(const WriteOptions& options);
    void setCompression(const WriteOptions& options, Imf::Header& header) const;
    [[nodiscard]] Imf::FrameBuffer colours(const PixelWindow& part, const krod::RGBAHalf* pixels);
    void insertExtra(int first, std::size_t rowOffset, const ExtraRows& extra,
                     Imf::FrameBuffer& buffer) const;
    void encodeRows(int first, int count, const krod::RGBAHalf* pixels, const ExtraRows* extra) override;
    void encodeBlock(const PixelWindow& part, const krod::RGBAHalf* pixels) override;
    void complete() override;
    void guarded(const std::function<void()>& work);

    PixelEncoder encoder;
    bool copiesHalves; ///< the caller's pixels are written as they lie in memory
    OutputFile target;
    Stream stream;
    std::unique_ptr<Imf::OutputFile> output;     ///< after the stream, since its destructor writes
    std::unique_ptr<Imf::TiledOutputFile> tiles; ///< one of the two is there
    std::vector<std::byte> encoded;
};

} // namespace workbench
