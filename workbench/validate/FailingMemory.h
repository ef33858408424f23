// SPDX-License-Identifier: Apache-2.0
// Memory that runs out on purpose.
#pragma once

#include "workbench/platform/SharedLibrary.h"

#include <vector>

namespace workbench::validate {

/// From construction to destruction the n-th request for memory by `operator new` fails, counted from 1 over
/// all threads; every other one is served. One at a time.
class FailingMemory {
public:
    explicit FailingMemory(long n) noexcept;
    /// Counts only what is asked for by code that lies in one of the ranges, which have to outlive this.
    FailingMemory(long n, const std::vector<AddressRange>& askers) noexcept;
    FailingMemory(const FailingMemory&) = delete;
    FailingMemory& operator=(const FailingMemory&) = delete;
    ~FailingMemory();

    /// Whether the n-th request has come.
    [[nodiscard]] static bool hasFailed() noexcept;
};

} // namespace workbench::validate
