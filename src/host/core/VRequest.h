// SPDX-License-Identifier: Apache-2.0
// A request for an update.
#pragma once

#include "host/core/VValuePool.h"

namespace krod {

/// Asks an object to bring itself up to date, in a context.
class KROD_API VRequest {
public:
    /// [host · borrows] The pool must outlive the request.
    explicit VRequest(const VValuePool& pool) noexcept : pool(pool) {}
    virtual ~VRequest();

    /// [host · borrows] The context in which parameters are read.
    [[nodiscard]] const VValuePool& context() const noexcept { return pool; }

private:
    const VValuePool& pool;
};

} // namespace krod
