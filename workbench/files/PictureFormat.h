// SPDX-License-Identifier: Apache-2.0
// The formats in which pictures are written.
#pragma once

#include "workbench/files/Export.h"
#include "workbench/files/PictureDescription.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace workbench {

/// What a user may ask of an output picture.
struct WriteOptions {
    std::optional<PixelDepth> depth =
        {};                 ///< missing: EXR half, HDR float, else the input's where the format holds it
    bool srgb = false;      ///< encode colour, not alpha, with the sRGB curve for viewing
    bool noClobber = false; ///< an existing file is an error
    /// Colors are neither multiplied by alpha nor divided by it where the description's convention is not that of
    /// the format, because alpha is no coverage.
    bool alphaAsItStands = false;
    /// One of the format's; missing: the input's, or ZIP where that loses or there is none.
    std::optional<std::string> compression = {};
    /// Of JPEG, or of EXR packed as dwaa or dwab, from 1 to 100; missing: 95.
    std::optional<int> quality = {};
    /// The sides of the tiles that an EXR is stored in, in pixels; 0: scan lines. Not with additional channels.
    int tileSide = 0;
};

/// What one format can hold.
struct PictureFormat {
    std::string_view name; ///< "EXR", "PNG", "TIFF", "JPEG", "HDR"
    std::vector<std::string_view> extensions;
    std::vector<PixelDepth> depths;
    bool holdsAlpha;
    bool holdsGrey;
    bool holdsTexts;
    int largestSide = LargestSide;                   ///< in pixels
    std::optional<bool> alphaIsAssociated = {};      ///< missing: it holds no alpha, or either kind
    std::vector<std::string_view> compressions = {}; ///< that can be asked for
    bool holdsAspect = false;                        ///< pixels that are not square
};

/// The format for that extension, in any case; an unknown one is Failure(Usage) with the list of known ones.
[[nodiscard]] KROD_FILES_API const PictureFormat& outputFormat(const std::filesystem::path& path);

/// The depth that is written: the one asked for, or Failure(Usage) if the format does not hold it; else the
/// format's own or the input's.
[[nodiscard]] KROD_FILES_API PixelDepth outputDepth(const std::filesystem::path& path, PixelDepth inputDepth,
                                                    std::optional<PixelDepth> asked);

/// Throws Failure(Usage) for a compression or a quality that the format does not have.
KROD_FILES_API void requireCompression(const std::filesystem::path& path, const WriteOptions& options);

/// The extension in lower case without its point: "exr".
[[nodiscard]] KROD_FILES_API std::string lowerExtension(const std::filesystem::path& path);

} // namespace workbench
