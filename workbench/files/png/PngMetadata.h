// SPDX-License-Identifier: Apache-2.0
// The ancillary chunks of a PNG file as metadata and back.
#pragma once

#include "workbench/files/PictureFormat.h"
#include "workbench/files/png/PngLibrary.h"

namespace workbench {

/// Enters texts, date, resolution, profile and Exif fields, and what they say of the pixels, into a description
/// whose size and depth are known.
void readPngMetadata(PngSession& png, PictureDescription& about);

/// Hands libpng what PNG can hold; names of what it cannot are appended to `dropped`. False when libpng fails.
[[nodiscard]] bool enterPngMetadata(const PictureDescription& about, const WriteOptions& options,
                                    PngSession& png, std::vector<std::string>& dropped);

} // namespace workbench
