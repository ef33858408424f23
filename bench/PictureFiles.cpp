// SPDX-License-Identifier: Apache-2.0
#include "PictureFiles.h"

#include "workbench/files/Picture.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace bench {
namespace {

using half_float::half;

constexpr int StripRows = 64;

/// Numbers from 0 to 1 without order, the same in every run.
float noiseAt(std::uint32_t x, std::uint32_t y) {
    std::uint32_t n = x * 0x9E3779B1u ^ y * 0x85EBCA77u;
    n = (n ^ n >> 15) * 0x2C1B3C6Du;
    return static_cast<float>((n ^ n >> 13) & 0xFFFF) / 65535.0f;
}

} // namespace

const std::vector<PictureFormat>& pictureFormats() {
    // Deflating dominates PNG in every tool, for minutes at 8192x8192.
    static const std::vector<PictureFormat> formats{
        {"EXR, half, uncompressed", "none.exr", true, 0, "None", 8192},
        {"EXR, half, zip", "zip.exr", true, 3, "Zip", 8192},
        {"EXR, half, piz", "piz.exr", true, 4, "Piz", 8192},
        {"PNG, 16 bits", "in.png", false, 0, "Zip", 4096}};
    return formats;
}

void fillRows(int side, int first, int count, krod::RGBAHalf* out) {
    const float scale = 1.0f / static_cast<float>(side);
    for (int y = first; y < first + count; ++y) {
        for (int x = 0; x < side; ++x) {
            const float u = static_cast<float>(x) * scale, v = static_cast<float>(y) * scale;
            const float edge = (x / 256 + y / 256) % 2 == 0 ? 1.0f : 0.6f;
            const float grain =
                0.98f + 0.02f * noiseAt(static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y));
            const float shade = edge * grain;
            *out++ = {half(shade * u), half(shade * v), half(shade * (1.0f - u * v)), half(1.0f)};
        }
    }
}

void writePictureFile(const std::string& path, const PictureFormat& format, int side) {
    workbench::PictureDescription description;
    description.width = description.height = side;
    description.hasAlpha = description.alphaIsAssociated = true;
    if (format.isExr)
        description.metadata = {{"compression", "compression", "", std::string(1, format.compression)}};
    else
        description.depth = workbench::PixelDepth::UInt16;
    const auto writer = workbench::PictureWriter::create(path, description);
    std::vector<krod::RGBAHalf> rows(static_cast<std::size_t>(side) * StripRows);
    for (int first = 0; first < side; first += StripRows) {
        const int count = std::min(StripRows, side - first);
        fillRows(side, first, count, rows.data());
        writer->writeRows(first, count, rows.data());
    }
    writer->finish();
}

double meanShade(const std::string& path) {
    const auto reader = workbench::PictureReader::open(path);
    const int width = reader->description().width, height = reader->description().height;
    const int count = std::min(StripRows, height / 2);
    std::vector<krod::RGBAHalf> rows(static_cast<std::size_t>(width) * static_cast<std::size_t>(count));
    reader->readRows(height / 2, count, rows.data());
    double sum = 0;
    for (const krod::RGBAHalf& pixel : rows) sum += static_cast<float>(pixel.r);
    return sum / static_cast<double>(rows.size());
}

} // namespace bench
