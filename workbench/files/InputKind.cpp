// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/InputKind.h"

#include "workbench/files/Model.h"
#include "workbench/files/PictureFormat.h"
#include "workbench/files/points/PackedFile.h"
#include "workbench/files/points/Ply.h"
#include "workbench/report/Failure.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <unistd.h>

namespace workbench {
namespace {

namespace fs = std::filesystem;

using Names = std::vector<std::string_view>;

const Names& pictureExtensions() {
    static const Names names{"exr",  "png",  "tif",  "tiff", "jpg", "jpeg", "hdr", "bmp", "tga", "gif",
                             "webp", "psd",  "dpx",  "cin",  "pfm", "ppm",  "pgm", "pnm", "sgi", "rgb",
                             "jp2",  "heic", "avif", "ico",  "dng", "cr2",  "nef", "arw", "fits"};
    return names;
}

/// The usual ones; others are asked of the library that reads them, which takes a moment to open.
const Names& usualModelExtensions() {
    static const Names names{"obj", "stl", "off", "3ds", "gltf", "glb", "dae", "fbx", "x3d", "blend", "3mf"};
    return names;
}

const Names& pointExtensions() {
    static const Names names{"xyz", "csv", "tsv", "txt", "dat"};
    return names;
}

bool has(const Names& names, std::string_view name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

bool isModelExtension(const std::string& extension) {
    if (extension.empty() || has(usualModelExtensions(), extension)) return !extension.empty();
    try {
        return std::ranges::count(modelExtensions(), extension) > 0;
    } catch (const Failure&) {
        return false; // the library is not installed
    }
}

bool looksLikePicture(std::string_view start) {
    using namespace std::string_view_literals;
    for (const auto magic :
         {"\x76\x2f\x31\x01"sv, "\x89PNG"sv, "\xff\xd8\xff"sv, "II*\0"sv, "MM\0*"sv, "#?RADIANCE"sv})
        if (start.starts_with(magic)) return true;
    return false;
}

[[noreturn]] void refuse(const fs::path& path, std::string expected, std::string got,
                         std::string advice = "") {
    throw Failure(
        Fault::Input,
        {path.string(), "cannot be read", std::move(expected), std::move(got), std::move(advice), {}});
}

} // namespace

void checkInputFile(const fs::path& path) {
    std::error_code error;
    const auto status = fs::status(path, error);
    if (status.type() == fs::file_type::not_found)
        throw Failure(Fault::Input, {path.string(), "does not exist", "", "", "Check the path", {}});
    if (status.type() == fs::file_type::none) refuse(path, "", error.message());
    if (fs::is_directory(status)) refuse(path, "a file", "a folder");
    if (!fs::is_regular_file(status)) refuse(path, "a regular file", "a pipe, device or socket");
    if (::access(path.c_str(), R_OK) != 0) refuse(path, "", std::strerror(errno));
    if (fs::file_size(path, error) == 0) refuse(path, "", "an empty file");
}

std::optional<InputKind> kindOf(const fs::path& path) {
    checkInputFile(path);
    const std::string extension = lowerExtension(path);
    const std::string start = startOfFile(path, LongestPlyHeader);
    const bool isPacked = extension == "gz";
    if (looksLikePly(start)) {
        if (!readPlyHeader(path, start).hasFaces()) return InputKind::Points;
        if (isPacked)
            refuse(path, "points, or a model that is not packed", "a packed model", "Unpack it with gunzip");
        return InputKind::Model;
    }
    if (extension == "ply") refuse(path, "ply in the first line of a PLY file", "another text");
    if (has(pictureExtensions(), extension) || looksLikePicture(start)) return InputKind::Picture;
    if (has(pointExtensions(), isPacked ? lowerExtension(path.stem()) : extension)) return InputKind::Points;
    if (start.starts_with("glTF") || isModelExtension(extension)) return InputKind::Model;
    return std::nullopt;
}

InputKind classifyInput(const fs::path& path) {
    if (const std::optional<InputKind> kind = kindOf(path)) return *kind;
    const std::string extension = lowerExtension(path);
    throw Failure(Fault::Input,
                  {path.string(),
                   "is of no kind that can be read",
                   "a picture (.exr .png .tif .jpg .hdr …), a model (.obj .ply .stl .glb …) or points "
                   "(.ply .xyz .csv)",
                   extension.empty() ? "a file without extension" : "." + extension,
                   "Give the file its right extension",
                   {}});
}

} // namespace workbench
