// SPDX-License-Identifier: Apache-2.0
// What a chain of tile processors makes of alpha and of values below 0.
#pragma once

#include "host/rendering/RGBAHalf.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace workbench {

/// A chain has changed alpha, so that it is no coverage any more.
struct AlphaChanged {};

/// What is looked at while a chain works.
struct ChainWishes {
    bool clipNegative = false; ///< values below 0 become 0 before the chain
    bool keepAlpha = false;    ///< a changed alpha ends the work: throw AlphaChanged
};

/// Looks at pixels before a chain and after it.
class ChainWatch {
public:
    explicit ChainWatch(ChainWishes wishes) : wishes(wishes) {}

    /// Clips the values that the chain is given, where that is wished.
    void prepare(krod::RGBAHalf* pixels, std::size_t count) const;
    /// Takes notice of pixels as they were read.
    void remember(const krod::RGBAHalf* pixels, std::size_t count);
    /// Compares the same pixels behind the chain. Throws AlphaChanged.
    void compare(const krod::RGBAHalf* pixels, std::size_t count);

    /// Pixels so far that were numbers with values below 0 and became NaN.
    [[nodiscard]] std::uint64_t notNumbersFromNegative() const noexcept { return fromNegative; }

private:
    ChainWishes wishes;
    std::vector<half_float::half> alpha;
    std::vector<bool> negative; ///< of each pixel; empty where there is none
    std::uint64_t fromNegative = 0;
};

} // namespace workbench
