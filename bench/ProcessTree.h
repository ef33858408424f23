// SPDX-License-Identifier: Apache-2.0
// Memory of a program and of the processes that it begins.
#pragma once

#include <sys/types.h>

namespace bench {

/// Looks at a child of this process until it ends (it is left to be waited for): the largest sum, in megabytes, of what
/// it and its descendants hold at one moment, memory that several share counted once.
[[nodiscard]] double peakOfTree(pid_t child);

} // namespace bench
