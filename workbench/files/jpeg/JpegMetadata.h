// SPDX-License-Identifier: Apache-2.0
// The application segments of a JPEG file as metadata and back.
#pragma once

#include "workbench/files/PictureDescription.h"
#include "workbench/files/jpeg/JpegLibrary.h"

#include <string>
#include <vector>

namespace workbench {

/// Before jpeg_read_header: keeps the segments that are read. Calls libjpeg only.
void saveJpegSegments(j_decompress_ptr jpeg);

/// After it: enters resolution, profile, texts, Exif, IPTC, XMP and the network, and what they say of the pixels.
void readJpegMetadata(j_decompress_ptr jpeg, PictureDescription& about);

/// One segment behind the head of a file.
struct JpegSegment {
    int marker;
    std::string bytes;
};

/// What a file's segments say besides the pixels.
struct JpegHead {
    std::vector<JpegSegment> segments;
    const Metadatum* profile = nullptr;
    int densityUnit = 0; ///< 0 none, 1 inch, 2 centimeter
    int densityX = 1, densityY = 1;
};

/// The segments of a description; names of what they cannot hold are appended to `dropped`.
[[nodiscard]] JpegHead jpegHead(const PictureDescription& about, std::vector<std::string>& dropped);

} // namespace workbench
