// SPDX-License-Identifier: Apache-2.0
// The second base of objects.
#pragma once

#include "host/core/VSlotContainer.h"

namespace krod {

/// Something with inputs and outputs.
class KROD_API VConnectable {
public:
    /// [host] Without inputs and outputs.
    VConnectable();
    VConnectable(const VConnectable&) = delete;
    VConnectable& operator=(const VConnectable&) = delete;
    virtual ~VConnectable();

    /// [host · borrows] Inputs and outputs, in the order in which they were declared.
    [[nodiscard]] VSlotContainer& slots() noexcept { return container; }
    [[nodiscard]] const VSlotContainer& slots() const noexcept { return container; }

private:
    VSlotContainer container;
};

} // namespace krod
