// SPDX-License-Identifier: Apache-2.0
// The pixel of a half-precision image tile.
#pragma once

#include <half.hpp>

namespace krod {

/// Four halves in storage order, eight bytes without padding. Alpha is stored as it is, never premultiplied.
struct RGBAHalf {
    half_float::half r, g, b, a;
};

static_assert(sizeof(RGBAHalf) == 8, "an image tile stores eight bytes per pixel");

} // namespace krod
