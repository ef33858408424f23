// SPDX-License-Identifier: Apache-2.0
// Metadata entries made of texts and numbers, and the numbers in them.
#pragma once

#include "workbench/files/Export.h"
#include "workbench/files/PictureDescription.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace workbench {

/// A metadatum of a text, of whole numbers, of real ones or of bytes without a meaning of their own.
[[nodiscard]] Metadatum textEntry(std::string_view name, std::string text);
[[nodiscard]] Metadatum intEntry(std::string_view name, const std::vector<std::int32_t>& values);
[[nodiscard]] Metadatum floatEntry(std::string_view name, const std::vector<float>& values);
[[nodiscard]] Metadatum bytesEntry(std::string_view name, std::string bytes);

/// The first of an entry's numbers; nothing where it holds a text or is missing.
[[nodiscard]] std::optional<double> numberIn(const Metadatum* entry);

/// True for entries that say how the pixels were stored, which may change, that the writer makes anew, or that
/// mean nothing outside of EXR.
[[nodiscard]] KROD_FILES_API bool describesStorage(const Metadatum& entry);
/// True for words between OpenImageIO and its formats, which no user misses.
[[nodiscard]] KROD_FILES_API bool isHint(std::string_view name);

} // namespace workbench
