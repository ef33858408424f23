// SPDX-License-Identifier: Apache-2.0
// Values that no graphics driver survives.
#pragma once

#include "host/core/VObject.h"
#include "host/core/VValuePool.h"

#include <optional>
#include <string>
#include <string_view>

namespace workbench {

/// Some modules write arrays into their shader text, whose length grows with a parameter. Above 2,048
/// elements drivers run out of registers, memory or time, so that such values are refused even where limits
/// do not count. When `value` makes longer arrays, returns what would be right: "at most 22", or "less than
/// 2049.0" where only the whole part of a number counts.
[[nodiscard]] KROD_API std::optional<std::string>
exceededArrayLimit(std::string_view key, std::string_view parameter, const krod::VValueBase& value);

/// What such a parameter is refused with: "parameter "width" would make arrays of more than … elements".
[[nodiscard]] KROD_API std::string tooLongArrays(std::string_view parameter);

/// The host's word for values that were set by code, before the module composes a text of gigabytes: throws
/// Failure(Usage) that names module and parameter when a value in that pool makes longer arrays.
KROD_API void requireShortArrays(const krod::VObject& module, const krod::VValuePool& pool);

} // namespace workbench
