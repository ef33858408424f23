// SPDX-License-Identifier: Apache-2.0
// The global age of values.
#pragma once

#include "host/Export.h"

#include <cstdint>

namespace krod {

/// Something with a time of its last change.
class KROD_API Ageable {
public:
    using Age = std::uint64_t;

    /// [any] The global age counter. Each call gives a greater number, never 0.
    [[nodiscard]] static Age GlobalTime() noexcept;

    /// [any] When the object was made or last changed.
    [[nodiscard]] Age age() const noexcept { return stamp; }

protected:
    /// [any] Stamped with the current age.
    Ageable() noexcept : stamp(GlobalTime()) {}
    /// [any] Marks a change.
    void touch() noexcept { stamp = GlobalTime(); }

private:
    Age stamp;
};

} // namespace krod
