// SPDX-License-Identifier: Apache-2.0
// A program and the processes that it begins.
#pragma once

#include <sys/types.h>

#include <vector>

namespace bench {

/// The processes that a process has begun, and those that were left to it.
[[nodiscard]] std::vector<pid_t> childrenOf(pid_t process);

/// Looks at a child of this process until it ends (it is left to be waited for): the largest sum, in megabytes, of what
/// it and its descendants hold at one moment, memory that several share counted once.
[[nodiscard]] double peakOfTree(pid_t child);

} // namespace bench
