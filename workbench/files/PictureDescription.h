// SPDX-License-Identifier: Apache-2.0
// What is known of a picture besides its pixels.
#pragma once

#include "workbench/files/Export.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace workbench {

/// How one value of a pixel is stored in a file.
enum class PixelDepth { UInt8, UInt16, Half, Float };

/// "uint8", "uint16", "half" or "float".
[[nodiscard]] KROD_FILES_API std::string_view depthName(PixelDepth depth);
/// The depth of that name; nothing for any other text.
[[nodiscard]] KROD_FILES_API std::optional<PixelDepth> depthFromName(std::string_view name);

/// How one value of an additional channel is stored.
enum class ExtraType { Half, Float, UInt };

/// A channel beyond colour and alpha that is carried along unchanged from EXR to EXR.
struct ExtraChannel {
    std::string name;
    ExtraType type = ExtraType::Half;
    /// 2 or 4.
    [[nodiscard]] std::size_t bytesPerValue() const { return type == ExtraType::Half ? 2 : 4; }
};

/// Rows of the additional channels: one plane for each, in the order of the description, tightly packed.
using ExtraRows = std::vector<std::vector<std::byte>>;

/// A rectangle of pixels; x to the right, y downwards.
struct PixelWindow {
    int x = 0, y = 0, width = 0, height = 0;
    friend bool operator==(const PixelWindow&, const PixelWindow&) = default;
};

/// One named value of a picture's head.
struct Metadatum {
    std::string name;
    std::string type;  ///< "string", "int", "float", "m44f" …: as the file's format calls it
    std::string text;  ///< readable form; of a string the value itself
    std::string bytes; ///< the value as stored, little-endian; empty for a string
};

/// The name under which the network that made a picture is kept.
inline constexpr std::string_view NetworkName = "krod:network";

/// How the color values of a file are meant, by its own word or its format's convention.
enum class Transfer {
    Unknown,
    Linear, ///< proportional to light
    Srgb,   ///< encoded with the sRGB curve of IEC 61966-2-1
};

/// The name under which that stands in files of most formats.
inline constexpr std::string_view ColorSpaceName = "oiio:ColorSpace";
/// Whether a color space of that name is sRGB: "sRGB", "srgb_rec709_scene", "sRGB IEC61966-2.1" …
[[nodiscard]] KROD_FILES_API bool isSrgbName(std::string_view name);

/// Size, depth, channels and metadata of a picture.
struct KROD_FILES_API PictureDescription {
    int width = 0, height = 0;
    std::string format; ///< of the file that was read, whatever its name: "exr", "png"; not heeded in writing
    PixelDepth depth = PixelDepth::Half; ///< of the colour channels in the file
    bool hasAlpha = false;
    /// Color is stored multiplied by alpha: EXR, TIFF by its tag, drawn pictures. PNG and WebP never are.
    bool alphaIsAssociated = false;
    Transfer transfer = Transfer::Unknown;
    bool isLossy = false; ///< the pixels come from a lossy compression
    /// Of the stored pixels, as TIFF and Exif number it from 1 (upright) to 8.
    int orientation = 1;
    float pixelAspect = 1; ///< width of a pixel over its height
    /// Further pictures of the file that are not read, and what its format calls them: "parts", "pages",
    /// "frames".
    int furtherPictures = 0;
    std::string furtherPicturesAre;
    std::string layer;        ///< that color and alpha are taken from; empty where the file has no layers
    bool isGrey = false;      ///< one value for red, green and blue; when written, it is taken from red
    int dataX = 0, dataY = 0; ///< place of the first pixel
    std::optional<PixelWindow> displayWindow; ///< missing: the same as the data window
    /// Names of the channels taken as red, green, blue and alpha ("" = none) where they are not R, G, B, A or
    /// Y.
    std::array<std::string, 4> channelNames;
    std::vector<ExtraChannel> extraChannels; ///< can be had from the reader and given to the writer
    std::vector<std::string> unreadChannels; ///< are in the file, but not read
    std::vector<Metadatum> metadata;         ///< in the order of the file
    std::vector<std::string> notes;          ///< what the decoder passed over or mended in the head
    std::uint64_t readerBytes = 0; ///< what a reader holds of it beside rows that it hands out, as estimated

    /// The entry of that name, or null.
    [[nodiscard]] const Metadatum* find(std::string_view name) const;
    /// Replaces or appends a text.
    void setText(std::string_view name, std::string text);
    /// Removes the entry of that name, if there is one.
    void remove(std::string_view name);
};

/// Largest pictures that are read or written: sides, pixels in all, channels.
inline constexpr int LargestSide = 131072;
inline constexpr std::int64_t MostPixels = std::int64_t{1} << 31;
inline constexpr int MostChannels = 1024;

/// Refuses a size that cannot be meant: Failure(Input) naming `path`. Above 64 MiB of decoded data at
/// `bytesPerPixel`, a file must also hold at least a ten-thousandth of it, or what the best compression of its
/// format needs, so that a small damaged file cannot claim all memory.
KROD_FILES_API void checkPictureSize(const std::filesystem::path& path, std::int64_t width,
                                     std::int64_t height, std::int64_t channels, std::int64_t bytesPerPixel,
                                     std::uint64_t fileSize, std::string_view format = "");

/// Readable form of a stored metadatum of one of the types that EXR defines; "(n bytes)" for any other.
[[nodiscard]] KROD_FILES_API std::string metadataText(std::string_view type, std::string_view bytes);

} // namespace workbench
