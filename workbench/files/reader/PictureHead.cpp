// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/reader/PictureHead.h"

#include "workbench/files/PictureDescription.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <string>

namespace workbench {
namespace {

using namespace std::string_view_literals;

/// So much of a file is looked at; pictures inside of heads of JPEG files make these long.
constexpr std::size_t LongestStart = std::size_t{64} << 10;

/// A number of so many bytes; 0 where they are not there.
std::uint32_t number(std::string_view bytes, std::size_t at, std::size_t size, bool bigFirst) {
    if (at > bytes.size() || size > bytes.size() - at) return 0;
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < size; ++i)
        value = value << 8U | static_cast<unsigned char>(bytes[at + (bigFirst ? i : size - 1 - i)]);
    return value;
}

/// The first chunk is the head: W3C, Portable Network Graphics, 11.2.1.
std::optional<DeclaredSize> pngSize(std::string_view start) {
    if (start.size() < 24 || start.substr(12, 4) != "IHDR") return std::nullopt;
    return DeclaredSize{number(start, 16, 4, true), number(start, 20, 4, true)};
}

/// Segments up to the first frame head: ITU-T T.81, B.2.2. 0xC4, 0xC8 and 0xCC are none.
std::optional<DeclaredSize> jpegSize(std::string_view start) {
    for (std::size_t at = 2; at + 9 <= start.size();) {
        if (start[at] != '\xff') return std::nullopt;
        const std::uint32_t marker = number(start, at + 1, 1, true);
        const bool isFrame =
            marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
        if (isFrame) return DeclaredSize{number(start, at + 7, 2, true), number(start, at + 5, 2, true)};
        if (marker == 0xFF)
            ++at; // padding
        else
            at += 2 + std::max<std::size_t>(number(start, at + 2, 2, true), 2);
    }
    return std::nullopt;
}

/// Entries 256 and 257 of the first directory: TIFF 6.0, section 2.
std::optional<DeclaredSize> tiffSize(std::string_view start) {
    const bool bigFirst = start[0] == 'M';
    const std::size_t directory = number(start, 4, 4, bigFirst);
    const std::size_t entries = number(start, directory, 2, bigFirst);
    DeclaredSize size;
    for (std::size_t i = 0; i < entries; ++i) {
        constexpr std::uint32_t Width = 256, Height = 257, Short = 3;
        const std::size_t entry = directory + 2 + 12 * i;
        if (entry + 12 > start.size()) break;
        const std::uint32_t tag = number(start, entry, 2, bigFirst);
        const std::size_t bytes = number(start, entry + 2, 2, bigFirst) == Short ? 2 : 4;
        if (tag == Width) size.width = number(start, entry + 8, bytes, bigFirst);
        if (tag == Height) size.height = number(start, entry + 8, bytes, bigFirst);
    }
    if (size.width == 0 || size.height == 0) return std::nullopt;
    return size;
}

/// The line behind the first empty one, as in "-Y 480 +X 640".
std::optional<DeclaredSize> hdrSize(std::string_view start) {
    const std::size_t end = start.find("\n\n");
    if (end == std::string_view::npos) return std::nullopt;
    std::string_view line = start.substr(end + 2, start.find('\n', end + 2) - end - 2);
    std::int64_t sides[2] = {};
    char axes[2] = {};
    for (int i = 0; i < 2; ++i) {
        if (line.size() < 4 || line[2] != ' ') return std::nullopt;
        axes[i] = line[1];
        const auto read = std::from_chars(line.data() + 3, line.data() + line.size(), sides[i]);
        if (read.ec != std::errc()) return std::nullopt;
        line.remove_prefix(static_cast<std::size_t>(read.ptr - line.data()));
        if (line.starts_with(' ')) line.remove_prefix(1);
    }
    if (axes[0] == 'Y' && axes[1] == 'X') return DeclaredSize{sides[1], sides[0]};
    if (axes[0] == 'X' && axes[1] == 'Y') return DeclaredSize{sides[0], sides[1]};
    return std::nullopt;
}

} // namespace

std::optional<DeclaredSize> declaredSize(std::string_view start) {
    if (start.starts_with("\x89PNG\r\n\x1a\n"sv)) return pngSize(start);
    if (start.starts_with("\xff\xd8\xff"sv)) return jpegSize(start);
    if (start.starts_with("II*\0"sv) || start.starts_with("MM\0*"sv)) return tiffSize(start);
    if (start.starts_with("#?RADIANCE"sv) || start.starts_with("#?RGBE"sv)) return hdrSize(start);
    return std::nullopt;
}

void checkDeclaredSize(const std::filesystem::path& path) {
    std::string start(LongestStart, '\0');
    std::ifstream in(path, std::ios::binary);
    in.read(start.data(), static_cast<std::streamsize>(start.size()));
    start.resize(static_cast<std::size_t>(in.gcount()));
    const std::optional<DeclaredSize> size = declaredSize(start);
    // At least one channel of a bit.
    if (size) checkPictureSize(path, size->width, size->height, 1, 1, std::filesystem::file_size(path) * 8);
}

} // namespace workbench
