// SPDX-License-Identifier: Apache-2.0
// How much memory some work takes.
#pragma once

#include <cstddef>
#include <functional>

namespace workbench {

/// The most bytes that were allocated with `new` at one time during the work, beyond what was there before.
[[nodiscard]] std::size_t mostBytesDuring(const std::function<void()>& work);

/// The bytes that are allocated with `new` at this time.
[[nodiscard]] std::size_t bytesInUse() noexcept;

} // namespace workbench
