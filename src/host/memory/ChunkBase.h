// SPDX-License-Identifier: Apache-2.0
// Pixel stores.
#pragma once

#include "host/memory/ReferenceBase.h"

#include <cstddef>

namespace krod {

/// A contiguous store of elements of one kind. A checked downcast to Chunk<Element> decides the kind.
class KROD_API ChunkBase : public ReferenceBase {
public:
    ~ChunkBase() override;
    /// [any] Size of the store in bytes.
    [[nodiscard]] virtual std::size_t bytes() const noexcept = 0;
};

} // namespace krod
