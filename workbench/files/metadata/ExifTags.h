// SPDX-License-Identifier: Apache-2.0
// Names and stored types of Exif tags.
#pragma once

#include <optional>
#include <string>

#include <libexif/exif-ifd.h>
#include <libexif/exif-tag.h>

namespace workbench {

/// Where a field lies in an Exif block.
struct ExifPlace {
    ExifIfd directory = EXIF_IFD_0;
    ExifTag tag{};
};

/// The name of a field as metadata; empty for one that is unknown or says how the pixels are stored.
[[nodiscard]] std::string fieldName(ExifTag tag, ExifIfd directory);
/// The place of the field of that name.
[[nodiscard]] std::optional<ExifPlace> placeOf(const std::string& name);

/// Four characters in a field of bytes: "0232".
[[nodiscard]] bool isVersion(ExifTag tag);
[[nodiscard]] bool isSignedRational(ExifTag tag);
/// A number of 32 bits even when it is small.
[[nodiscard]] bool isLong(ExifTag tag);

/// "none", "inch" or "cm" for 1, 2 and 3.
[[nodiscard]] std::string resolutionUnit(double number);

} // namespace workbench
