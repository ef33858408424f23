// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/PictureFormat.h"

#include "workbench/report/Failure.h"

#include <algorithm>
#include <system_error>

namespace workbench {
namespace {

const std::vector<PictureFormat>& formats() {
    using enum PixelDepth;
    static const std::vector<PictureFormat> all{
        {"EXR",
         {"exr"},
         {Half, Float},
         true,
         true,
         true,
         LargestSide,
         true,
         {"none", "rle", "zips", "zip", "piz", "pxr24", "b44", "b44a", "dwaa", "dwab"},
         true},
        {"PNG", {"png"}, {UInt8, UInt16}, true, true, true, LargestSide, false, {}, true},
        {"TIFF",
         {"tif", "tiff"},
         {UInt8, UInt16, Half, Float},
         true,
         true,
         true,
         LargestSide,
         {},
         {"none", "lzw", "zip", "packbits"}},
        {"JPEG", {"jpg", "jpeg"}, {UInt8}, false, true, true, 65500, {}, {}, true},
        {"HDR", {"hdr"}, {Float}, false, false, false},
    };
    return all;
}

bool holds(const PictureFormat& format, PixelDepth depth) {
    return std::find(format.depths.begin(), format.depths.end(), depth) != format.depths.end();
}

} // namespace

std::string lowerExtension(const std::filesystem::path& path) {
    std::string extension = path.extension().string();
    if (!extension.empty()) extension.erase(0, 1);
    for (char& c : extension)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a'); // std::tolower depends on the locale
    return extension;
}

const PictureFormat& outputFormat(const std::filesystem::path& path) {
    const std::string extension = lowerExtension(path);
    std::string known;
    for (const auto& format : formats())
        for (const auto candidate : format.extensions) {
            if (candidate == extension) return format;
            known += (known.empty() ? "." : " .") + std::string(candidate);
        }
    std::error_code error;
    const bool isFolder = !path.has_filename() || std::filesystem::is_directory(path, error);
    throw Failure(Fault::Usage, {path.string(),
                                 "cannot be written as a picture",
                                 "one of the extensions " + known,
                                 isFolder            ? "a folder"
                                 : extension.empty() ? "none"
                                                     : "." + extension,
                                 "",
                                 {}});
}

void requireCompression(const std::filesystem::path& path, const WriteOptions& options) {
    const PictureFormat& format = outputFormat(path);
    const auto refuse = [&](const std::string& what, const std::string& expected, const std::string& got) {
        throw Failure(Fault::Usage, {path.string(), std::string(format.name) + what, expected, got, "", {}});
    };
    const auto& known = format.compressions;
    if (options.compression && std::find(known.begin(), known.end(), *options.compression) == known.end()) {
        std::string names;
        for (const auto name : known) names += (names.empty() ? "" : ", ") + std::string(name);
        if (names.empty()) refuse(" has no choice of compressions", "no --compression", *options.compression);
        refuse(" has no such compression", names, '"' + *options.compression + '"');
    }
    const std::string compression = options.compression.value_or("");
    if (options.quality && format.name != "JPEG" && compression != "dwaa" && compression != "dwab")
        refuse(" has no quality", "--quality with JPEG, or EXR and --compression dwaa or dwab", "");
}

PixelDepth outputDepth(const std::filesystem::path& path, PixelDepth inputDepth,
                       std::optional<PixelDepth> asked) {
    const PictureFormat& format = outputFormat(path);
    if (asked && !holds(format, *asked)) {
        std::string held;
        for (const auto depth : format.depths)
            held += (held.empty() ? "" : ", ") + std::string(depthName(depth));
        throw Failure(Fault::Usage, {path.string(),
                                     std::string(format.name) + " cannot hold the depth asked for",
                                     held,
                                     std::string(depthName(*asked)),
                                     "",
                                     {}});
    }
    if (asked) return *asked;
    if (format.name == "EXR") return PixelDepth::Half;
    if (holds(format, inputDepth)) return inputDepth;
    return format.depths.back(); // PNG uint16, JPEG uint8, HDR float
}

} // namespace workbench
