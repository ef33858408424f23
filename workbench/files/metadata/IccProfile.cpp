// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/metadata/IccProfile.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace workbench {
namespace {

constexpr std::size_t HeadBytes = 128, EntryBytes = 12;

/// A big-endian number of four bytes; 0 where they are not there.
std::uint32_t number(std::string_view bytes, std::size_t at) {
    if (at > bytes.size() || bytes.size() - at < 4) return 0;
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) value = value << 8U | static_cast<unsigned char>(bytes[at + i]);
    return value;
}

/// The data of the tag of that name; empty where it is missing.
std::string_view tagData(std::string_view profile, std::string_view name) {
    const std::size_t count = number(profile, HeadBytes);
    for (std::size_t i = 0, at = HeadBytes + 4; i < count && at + EntryBytes <= profile.size();
         ++i, at += EntryBytes) {
        if (profile.substr(at, 4) != name) continue;
        const std::size_t begin = number(profile, at + 4);
        if (begin > profile.size()) return {};
        return profile.substr(begin, number(profile, at + 8));
    }
    return {};
}

} // namespace

bool isProfileOf(std::string_view profile, bool isGrey, bool isSrgb) {
    constexpr std::size_t SpaceAt = 16, MarkAt = 36;
    return profile.size() >= HeadBytes + 4 && number(profile, 0) == profile.size() &&
           profile.substr(MarkAt, 4) == "acsp" && profile.substr(SpaceAt, 4) == (isGrey ? "GRAY" : "RGB ") &&
           (!isSrgb || isSrgbProfile(profile));
}

bool isSrgbProfile(std::string_view profile) {
    std::string description(tagData(profile, "desc")); // ASCII, or UTF-16 with a zero in each character
    std::erase(description, '\0');
    return description.find("sRGB") != std::string::npos;
}

} // namespace workbench
