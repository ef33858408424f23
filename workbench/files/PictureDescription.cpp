// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/PictureDescription.h"

#include "workbench/report/Failure.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace workbench {
namespace {

constexpr std::array<std::string_view, 4> DepthNames{"uint8", "uint16", "half", "float"};
constexpr std::array<std::string_view, 10> CompressionNames{"none",  "rle", "zips", "zip",  "piz",
                                                            "pxr24", "b44", "b44a", "dwaa", "dwab"};

template <typename Number>
std::string numbers(std::string_view bytes) {
    std::string text;
    for (std::size_t at = 0; at + sizeof(Number) <= bytes.size(); at += sizeof(Number)) {
        Number value;
        std::memcpy(&value, bytes.data() + at, sizeof value);
        char digits[32];
        const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
        if (!text.empty()) text += ' ';
        text.append(digits, end);
    }
    return text;
}

bool isOneOf(std::string_view type, std::initializer_list<std::string_view> names) {
    return std::find(names.begin(), names.end(), type) != names.end();
}

[[noreturn]] void refuseSize(const std::filesystem::path& path, std::string expected, std::string got) {
    throw Failure(Fault::Input, {path.string(),
                                 "declares a size that cannot be read",
                                 std::move(expected),
                                 std::move(got),
                                 "The file is damaged, or larger than this program allows",
                                 {}});
}

/// How many bytes a byte of the file can become, with some reserve. EXR's DWA keeps one value of 64 of a flat
/// picture, and zlib packs 1000 of those into a byte; the others keep nothing of what is flat.
std::int64_t largestRatio(std::string_view format) {
    if (format == "exr") return 100000;
    if (isOneOf(format, {"jpeg2000", "webp", "heif", "jpegxl"})) return 1000000;
    return 10000;
}

} // namespace

std::string_view depthName(PixelDepth depth) { return DepthNames[static_cast<std::size_t>(depth)]; }

std::optional<PixelDepth> depthFromName(std::string_view name) {
    const auto found = std::find(DepthNames.begin(), DepthNames.end(), name);
    if (found == DepthNames.end()) return std::nullopt;
    return static_cast<PixelDepth>(found - DepthNames.begin());
}

bool isSrgbName(std::string_view name) {
    constexpr std::string_view Start = "srgb";
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return name.size() >= Start.size() && std::equal(Start.begin(), Start.end(), name.begin(),
                                                     [&](char a, char b) { return a == lower(b); });
}

const Metadatum* PictureDescription::find(std::string_view name) const {
    const auto found =
        std::find_if(metadata.begin(), metadata.end(), [&](auto& entry) { return entry.name == name; });
    return found == metadata.end() ? nullptr : &*found;
}

void PictureDescription::setText(std::string_view name, std::string text) {
    Metadatum entry{std::string(name), "string", std::move(text), ""};
    const auto found =
        std::find_if(metadata.begin(), metadata.end(), [&](auto& old) { return old.name == name; });
    if (found == metadata.end())
        metadata.push_back(std::move(entry));
    else
        *found = std::move(entry);
}

void PictureDescription::remove(std::string_view name) {
    std::erase_if(metadata, [&](const Metadatum& entry) { return entry.name == name; });
}

void checkPictureSize(const std::filesystem::path& path, std::int64_t width, std::int64_t height,
                      std::int64_t channels, std::int64_t bytesPerPixel, std::uint64_t fileSize,
                      std::string_view format) {
    const std::string size = std::to_string(width) + "x" + std::to_string(height) + " pixels";
    if (width < 1 || height < 1 || width > LargestSide || height > LargestSide)
        refuseSize(path, "sides of 1 to 131072 pixels", size);
    if (width * height > MostPixels) refuseSize(path, "at most 2147483648 pixels", size);
    if (channels < 1 || channels > MostChannels)
        refuseSize(path, "1 to 1024 channels", std::to_string(channels) + " channels");
    constexpr std::int64_t AlwaysAllowed = std::int64_t{64} << 20;
    const std::int64_t ratio = largestRatio(format);
    const std::int64_t decoded = width * height * bytesPerPixel; // at most 2^31 * 1024 * 4, far below 2^63
    if (decoded > AlwaysAllowed && static_cast<std::uint64_t>(decoded / ratio) > fileSize)
        refuseSize(path, "a file of at least " + std::to_string(decoded / ratio) + " bytes for " + size,
                   std::to_string(fileSize) + " bytes");
}

std::string metadataText(std::string_view type, std::string_view bytes) {
    if (isOneOf(type, {"int", "v2i", "v3i", "box2i", "rational", "keycode", "timecode", "rational2i"}))
        return numbers<std::int32_t>(bytes);
    if (isOneOf(type, {"float", "v2f", "v3f", "box2f", "m33f", "m44f", "chromaticities", "floatvector"}) ||
        type.starts_with("float["))
        return numbers<float>(bytes);
    if (isOneOf(type, {"double", "v2d", "v3d", "m33d", "m44d"})) return numbers<double>(bytes);
    if (type.starts_with("int[")) return numbers<std::int32_t>(bytes);
    if (type == "uint16") return numbers<std::uint16_t>(bytes);
    if (type == "compression" && bytes.size() == 1 &&
        static_cast<unsigned char>(bytes[0]) < CompressionNames.size())
        return std::string(CompressionNames[static_cast<unsigned char>(bytes[0])]);
    if (type == "envmap" && bytes.size() == 1) return bytes[0] == 0 ? "latlong" : "cube";
    return "(" + std::to_string(bytes.size()) + " bytes)";
}

} // namespace workbench
