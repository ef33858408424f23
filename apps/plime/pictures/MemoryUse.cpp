// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/pictures/MemoryUse.h"

#include "workbench/files/PictureFormat.h"
#include "workbench/report/Failure.h"

#include <malloc.h>

namespace workbench {
namespace {

constexpr std::uint64_t Megabyte = 1U << 20U;

/// Bands of rows that are packed side by side, filtered and packed, for sixteen processors.
constexpr std::uint64_t PngBytes = std::uint64_t{24} << 20;
/// EXR: 16 rows of halves in each of 8 blocks, as they are and compressed. PNG: 16 rows of 8 bytes
/// a pixel in 16 bands, three times, where a row fills a band. Others: 64 rows of floats, and as
/// many once more inside of the codec.
constexpr std::uint64_t WriterBytesPerColumn = 2048;

std::uint64_t formatBytes(std::string_view format) {
    if (format == "EXR" || format == "JPEG") return 0;
    return format == "PNG" ? PngBytes : CodecBytes;
}

} // namespace

std::uint64_t bytesBesidePixels(bool usesOpenGL, const std::string& output, int width) {
    return ProgramBytes + (usesOpenGL ? OpenGLBytes : 0) + formatBytes(outputFormat(output).name) +
           static_cast<std::uint64_t>(width) * WriterBytesPerColumn;
}

void giveLargeBlocksBack() noexcept {
    // Else the library raises its threshold to the largest block that was freed, and smaller ones stay with it.
    ::mallopt(M_MMAP_THRESHOLD, 1 << 20);
}

std::string megabytesText(std::uint64_t bytes) {
    return std::to_string((bytes + Megabyte - 1) / Megabyte) + 'M';
}

void refuseMemory(const std::string& picture, std::uint64_t needed, std::uint64_t memory) {
    const std::string wanted = megabytesText(needed);
    throw Failure(Fault::Output, {picture,
                                  "needs more memory than is allowed",
                                  "at most " + (memory < Megabyte ? std::to_string(memory) + " bytes"
                                                                  : std::to_string(memory / Megabyte) + 'M'),
                                  wanted,
                                  "Allow it with --memory " + wanted,
                                  {}});
}

} // namespace workbench
