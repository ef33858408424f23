// SPDX-License-Identifier: Apache-2.0
// Stored pixels to halves and back.
#pragma once

#include "host/rendering/RGBAHalf.h"
#include "workbench/files/Export.h"
#include "workbench/files/PictureDescription.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace workbench {

/// The half nearest to a float; adds one to `overflows` when a finite value becomes infinite.
[[nodiscard]] KROD_FILES_API half_float::half halfFromFloat(float value, std::uint64_t& overflows);

/// The sRGB transfer curve of IEC 61966-2-1 from linear to encoded: 12.92 v up to 0.0031308, beyond it
/// 1.055 v^(1/2.4) - 0.055. Above 1 the curve goes on, and it is odd about 0.
[[nodiscard]] KROD_FILES_API double srgbFromLinear(double value);

/// Bytes of one value: 1, 2, 2 or 4.
[[nodiscard]] KROD_FILES_API std::size_t bytesPerValue(PixelDepth depth);

/// Reads pixels whose channels lie side by side. Integers are divided by their maximum, halves are copied bit
/// for bit, alpha stays as it is stored.
class KROD_FILES_API PixelDecoder {
public:
    /// `channels` are stored per pixel: with `grey` the first, else the first three are colour;
    /// `alphaChannel` is the place of alpha, or -1 where it is missing and taken as 1.
    PixelDecoder(PixelDepth depth, int channels, bool grey, int alphaChannel);

    /// Decodes `pixels` pixels and returns how many finite values became infinite.
    std::uint64_t decode(const std::byte* stored, std::size_t pixels, krod::RGBAHalf* out) const;

private:
    template <typename Stored, typename Convert>
    void decodeAs(const std::byte* stored, std::size_t pixels, krod::RGBAHalf* out, Convert convert) const;

    PixelDepth depth;
    std::size_t channels;
    std::size_t greenAt, blueAt; ///< both 0 in a grey picture
    int alphaAt;
    std::vector<half_float::half> table; ///< half of each stored integer
};

/// What a format can hold of a value.
enum class ValueRange {
    All,         ///< every float or half
    NonNegative, ///< finite values from 0 on: shared-exponent pixels
    Unit,        ///< 0 to 1: integers
};

/// Writes pixels with their channels side by side. Values outside of the range are clipped and counted; NaN
/// becomes 0 there and is counted on its own. Integers are rounded to nearest.
class KROD_FILES_API PixelEncoder {
public:
    /// `channels`: 1 grey (taken from red), 2 grey and alpha, 3 colour, 4 colour and alpha. With `srgb` the
    /// colour, not the alpha, is encoded for viewing.
    PixelEncoder(PixelDepth depth, int channels, bool srgb, ValueRange range);

    void encode(const krod::RGBAHalf* pixels, std::size_t count, std::byte* out);

    /// How many values were clipped so far, and the smallest and the largest of them and 0, before clipping.
    [[nodiscard]] std::uint64_t clippedCount() const { return clipped; }
    [[nodiscard]] float smallestValue() const { return smallest; }
    [[nodiscard]] float largestValue() const { return largest; }
    /// How many NaN became 0 so far.
    [[nodiscard]] std::uint64_t notNumberCount() const { return notNumbers; }

private:
    template <typename Code>
    void encodeAs(const krod::RGBAHalf* pixels, std::size_t count, std::byte* out);
    void countOutside(std::uint16_t bits);

    PixelDepth depth;
    int channels;
    ValueRange range;
    std::vector<std::uint32_t> colourCodes, alphaCodes; ///< stored form of each of the 65,536 halves
    std::vector<bool> outside;                          ///< halves that the range cannot hold
    std::uint64_t clipped = 0, notNumbers = 0;
    float smallest = 0, largest = 0;
};

} // namespace workbench
