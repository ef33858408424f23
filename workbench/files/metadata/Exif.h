// SPDX-License-Identifier: Apache-2.0
// Exif fields as metadata and back.
#pragma once

#include "workbench/files/PictureDescription.h"

#include <string>
#include <string_view>
#include <vector>

namespace workbench {

/// Appends the fields of an Exif block (a TIFF directory, without the six bytes that JPEG puts before it), but
/// not those that describe how the pixels are stored. The camera is named "Make" and "Model", fields of the
/// Exif directory "Exif:…", those of the GPS directory "GPS:…". Damaged fields are left out.
void appendExif(std::string_view block, std::vector<Metadatum>& metadata);

/// True where the entry has a place in an Exif block.
[[nodiscard]] bool isExifField(const Metadatum& entry);

/// An Exif block of these entries, all of which have a place there; empty without any. What does not fit into
/// a JPEG segment is left out and its name appended to `dropped`.
[[nodiscard]] std::string exifBlock(const std::vector<const Metadatum*>& entries,
                                    std::vector<std::string>& dropped);

/// The orientation that the metadata tell, 1 (upright) where they tell none.
[[nodiscard]] int orientationIn(const std::vector<Metadatum>& metadata);

} // namespace workbench
