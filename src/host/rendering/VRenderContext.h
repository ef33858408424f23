// SPDX-License-Identifier: Apache-2.0
// What surrounds a render or process call.
#pragma once

#include "host/core/VValuePool.h"

namespace krod {

/// The context of one frame or one tile.
class KROD_API VRenderContext {
public:
    /// [host · borrows] The pool must outlive the context.
    explicit VRenderContext(const VValuePool& pool) noexcept : pool(pool) {}
    VRenderContext(const VRenderContext&) = delete;
    VRenderContext& operator=(const VRenderContext&) = delete;
    virtual ~VRenderContext();

    /// [host · borrows] Where parameters are read.
    [[nodiscard]] const VValuePool& valuePool() const noexcept { return pool; }

private:
    const VValuePool& pool;
};

} // namespace krod
