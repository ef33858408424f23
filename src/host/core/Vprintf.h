// SPDX-License-Identifier: Apache-2.0
// The levelled trace.
#pragma once

#include "host/Export.h"

namespace krod {

/// [any · borrows · noexcept] Prints like printf when the host's trace level is at least `level`. Levels in
/// use: 100 creators and objects, 50 global values.
KROD_API void Vprintf(int level, const char* format, ...) noexcept __attribute__((format(printf, 2, 3)));

} // namespace krod
