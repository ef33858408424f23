// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/PictureMagic.h"

#include <fstream>
#include <string_view>

namespace workbench {

using namespace std::string_view_literals;

OwnFormat ownFormatOf(const std::filesystem::path& path) {
    char bytes[8] = {};
    std::ifstream(path, std::ios::binary).read(bytes, sizeof bytes);
    const std::string_view start(bytes, sizeof bytes);
    if (start.starts_with("\x76\x2f\x31\x01"sv)) return OwnFormat::Exr;
    if (start == "\x89PNG\r\n\x1a\n"sv) return OwnFormat::Png;
    if (start.starts_with("\xff\xd8\xff"sv)) return OwnFormat::Jpeg;
    return OwnFormat::None;
}

} // namespace workbench
