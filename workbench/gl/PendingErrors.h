// SPDX-License-Identifier: Apache-2.0
// OpenGL's pending errors: taking them off, and saying whose they are.
#pragma once

#include "host/Export.h"

#include <string>
#include <vector>

namespace workbench {

/// "GL_INVALID_ENUM (0x0500)"; a code without a name is written as the number alone.
[[nodiscard]] KROD_API std::string errorText(unsigned code);

/// Whether it says that memory is missing.
[[nodiscard]] KROD_API bool isMemoryError(unsigned code) noexcept;

/// Takes all pending errors off, oldest first. A context is current.
[[nodiscard]] KROD_API std::vector<unsigned> takePendingErrors();

/// Takes all pending errors off and warns of each: "<who>: OpenGL error … <circumstance>".
void reportPendingErrors(const std::string& who, const std::string& circumstance);

} // namespace workbench
