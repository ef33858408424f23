// SPDX-License-Identifier: Apache-2.0
// All living module objects.
#pragma once

#include "host/core/VObject.h"

#include <cstddef>
#include <vector>

namespace workbench {

/// The registry that every krod::VObject enters and leaves by itself.
class KROD_API ObjectRegistry {
public:
    /// Every living object, in the order of construction. The references are weak.
    [[nodiscard]] static std::vector<krod::WeakPtr<krod::VObject>> objects();
    /// The number of living objects.
    [[nodiscard]] static std::size_t count() noexcept;
    /// One of them, for those who must not ask for memory: the first is 0, and none is at count().
    [[nodiscard]] static krod::WeakPtr<krod::VObject> object(std::size_t place) noexcept;

private:
    friend class krod::VObject;
    static void enter(krod::VObject& object);
    static void leave(krod::VObject& object) noexcept;
};

} // namespace workbench
