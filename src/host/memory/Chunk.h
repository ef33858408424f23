// SPDX-License-Identifier: Apache-2.0
// A store of elements of one type.
#pragma once

#include "host/memory/ChunkBase.h"

#include <utility>
#include <vector>

namespace krod {

/// A contiguous store of `Element`s. Instantiated in host libraries only, so that it outlives every plug-in.
template <class Element>
class Chunk : public ChunkBase {
public:
    /// [any] A store of that many value-initialised elements. Throws MemoryException or std::bad_alloc.
    explicit Chunk(std::size_t elements) : store(elements) {}
    /// [any · gives] Takes over the elements.
    explicit Chunk(std::vector<Element> elements) : store(std::move(elements)) {}

    /// [any · borrows] The first element; elements() of them follow each other.
    [[nodiscard]] Element* data() noexcept { return store.data(); }
    [[nodiscard]] const Element* data() const noexcept { return store.data(); }
    /// [any] Number of elements.
    [[nodiscard]] std::size_t elements() const noexcept { return store.size(); }
    [[nodiscard]] std::size_t bytes() const noexcept override { return store.size() * sizeof(Element); }

private:
    std::vector<Element> store;
};

} // namespace krod
