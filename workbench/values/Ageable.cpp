// SPDX-License-Identifier: Apache-2.0
#include "host/values/Ageable.h"

#include <atomic>

namespace krod {

namespace {

constinit std::atomic<Ageable::Age> latest{0};

} // namespace

Ageable::Age Ageable::GlobalTime() noexcept { return latest.fetch_add(1, std::memory_order_relaxed) + 1; }

} // namespace krod
