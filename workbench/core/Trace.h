// SPDX-License-Identifier: Apache-2.0
// Where krod::Vprintf goes.
#pragma once

#include "host/Export.h"

#include <functional>
#include <string_view>

namespace workbench {

/// Receives one trace text as printed, line end included. Called by one thread at a time; it must not trace
/// itself.
using TraceSink = std::function<void(int level, std::string_view text)>;

/// Traces up to this level are printed; 0, the default, prints nothing.
KROD_API void setTraceLevel(int level) noexcept;
/// Replaces the sink; an empty one stands for standard error.
KROD_API void setTraceSink(TraceSink sink);

} // namespace workbench
