// SPDX-License-Identifier: Apache-2.0
// Pictures to measure with, in the formats to measure.
#pragma once

#include "host/rendering/RGBAHalf.h"

#include <string>
#include <vector>

namespace bench {

struct PictureFormat {
    const char* label;
    const char* file;
    bool isExr;
    char compression;              ///< as EXR numbers it
    const char* magickCompression; ///< as ImageMagick names it
    int side;                      ///< of the picture that is measured
};

/// EXR without compression, with zip and with piz, and PNG of 16 bits.
[[nodiscard]] const std::vector<PictureFormat>& pictureFormats();

/// Rows of a picture that compresses like a rendered one: smooth shades up to 1 with edges and a little noise, alpha 1.
/// Fills `count` rows from row `first` at `out`.
void fillRows(int side, int first, int count, krod::RGBAHalf* out);

/// Writes such a picture. Throws workbench::Failure.
void writePictureFile(const std::string& path, const PictureFormat& format, int side);

/// The mean of red in rows about the middle of a picture. Throws workbench::Failure.
[[nodiscard]] double meanShade(const std::string& path);

} // namespace bench
