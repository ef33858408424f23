// SPDX-License-Identifier: Apache-2.0
// The size that a picture declares, found without any decoder.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string_view>

namespace workbench {

/// Width and height in pixels, as they stand in the file.
struct DeclaredSize {
    std::int64_t width = 0, height = 0;
    friend bool operator==(const DeclaredSize&, const DeclaredSize&) = default;
};

/// The size in the first bytes of a PNG, JPEG, TIFF or HDR file; nothing where it does not stand there, or the
/// format is another one.
[[nodiscard]] std::optional<DeclaredSize> declaredSize(std::string_view start);

/// Refuses a size that cannot be meant before any decoder is asked: Failure(Input). EXR files are left to the
/// library that is linked, which is as fast.
void checkDeclaredSize(const std::filesystem::path& path);

} // namespace workbench
