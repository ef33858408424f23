// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/pictures/ChainWatch.h"

#include <bit>

namespace workbench {
namespace {

using half_float::half;

constexpr unsigned Sign = 0x8000, Infinity = 0x7c00;

unsigned bitsOf(half value) { return std::bit_cast<std::uint16_t>(value); }
bool isNaN(half value) { return (bitsOf(value) & ~Sign) > Infinity; }
/// From the smallest one to minus infinity; no -0 and no NaN.
bool isNegative(half value) { return bitsOf(value) - (Sign + 1) < Infinity; }

/// Without a branch, so that many pixels are looked at at once.
bool anyNegative(const krod::RGBAHalf* pixels, std::size_t count) {
    bool any = false;
    for (std::size_t i = 0; i < count; ++i)
        any |= isNegative(pixels[i].r) | isNegative(pixels[i].g) | isNegative(pixels[i].b) |
               isNegative(pixels[i].a);
    return any;
}

bool holdsNaN(const krod::RGBAHalf& pixel) {
    return isNaN(pixel.r) || isNaN(pixel.g) || isNaN(pixel.b) || isNaN(pixel.a);
}

} // namespace

void ChainWatch::prepare(krod::RGBAHalf* pixels, std::size_t count) const {
    if (!wishes.clipNegative || !anyNegative(pixels, count)) return;
    const auto clip = [](half& value) {
        if (isNegative(value)) value = half(0.0F);
    };
    for (std::size_t i = 0; i < count; ++i) {
        clip(pixels[i].r);
        clip(pixels[i].g);
        clip(pixels[i].b);
        clip(pixels[i].a);
    }
}

void ChainWatch::remember(const krod::RGBAHalf* pixels, std::size_t count) {
    alpha.clear();
    for (std::size_t i = 0; wishes.keepAlpha && i < count; ++i) alpha.push_back(pixels[i].a);
    negative.clear();
    if (wishes.clipNegative || !anyNegative(pixels, count)) return;
    for (std::size_t i = 0; i < count; ++i)
        negative.push_back(anyNegative(pixels + i, 1) && !holdsNaN(pixels[i]));
}

void ChainWatch::compare(const krod::RGBAHalf* pixels, std::size_t count) {
    for (std::size_t i = 0; wishes.keepAlpha && i < count; ++i)
        if (bitsOf(alpha[i]) != bitsOf(pixels[i].a)) throw AlphaChanged();
    for (std::size_t i = 0; i < negative.size() && i < count; ++i)
        if (negative[i] && holdsNaN(pixels[i])) ++fromNegative;
}

} // namespace workbench
