// SPDX-License-Identifier: Apache-2.0
// Values that no graphics driver survives.
#pragma once

#include "host/values/VValueBase.h"

#include <optional>
#include <string>
#include <string_view>

namespace workbench {

/// Some modules write arrays into their shader text, whose length grows with a parameter. Above 2,048
/// elements drivers run out of registers, memory or time, so that such values are refused even with
/// --unchecked. Returns the greatest value that may be set, as text, when `value` lies above it.
[[nodiscard]] std::optional<std::string> exceededArrayLimit(std::string_view key, std::string_view parameter,
                                                            const krod::VValueBase& value);

} // namespace workbench
