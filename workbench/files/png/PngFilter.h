// SPDX-License-Identifier: Apache-2.0
// The five PNG filters: W3C, Portable Network Graphics, section 9.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace workbench {

/// Filters rows, each by the filter whose results have the least sum of absolute values.
class PngFilter {
public:
    PngFilter(std::size_t rowBytes, std::size_t bytesPerPixel);

    /// Writes the filter's number and the filtered row to `out`, 1 + rowBytes bytes. `above` is the row before
    /// in the picture, null for the first one.
    void filter(const std::uint8_t* row, const std::uint8_t* above, std::uint8_t* out);

private:
    std::size_t rowBytes, pixel;
    std::vector<std::uint8_t> noRow, trial;
};

} // namespace workbench
