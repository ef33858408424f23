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

/// What stored values lost when they became halves.
struct KROD_FILES_API ValueLoss {
    std::uint64_t overflows = 0; ///< finite values beyond the largest half, which they became
    float rounding = 0;          ///< the largest error of the others
    float largest = 0;           ///< the largest finite value, without its sign

    void add(const ValueLoss& more);
    friend bool operator==(const ValueLoss&, const ValueLoss&) = default;
};

/// The half nearest to a float: 65504 or -65504 for finite values beyond them. What that loses is added to `loss`.
[[nodiscard]] KROD_FILES_API half_float::half halfFromFloat(float value, ValueLoss& loss);

/// The sRGB transfer curve of IEC 61966-2-1 from linear to encoded: 12.92 v up to 0.0031308, beyond it
/// 1.055 v^(1/2.4) - 0.055. Above 1 the curve goes on, and it is odd about 0.
[[nodiscard]] KROD_FILES_API double srgbFromLinear(double value);
/// Its inverse.
[[nodiscard]] KROD_FILES_API double linearFromSrgb(double value);

/// Bytes of one value: 1, 2, 2 or 4.
[[nodiscard]] KROD_FILES_API std::size_t bytesPerValue(PixelDepth depth);

/// Reads pixels whose channels lie side by side. Integers are divided by their maximum, halves are copied bit
/// for bit, alpha stays as it is stored.
class KROD_FILES_API PixelDecoder {
public:
    /// `channels` are stored per pixel: with `grey` the first, else the first three are colour;
    /// `alphaChannel` is the place of alpha, or -1 where it is missing and taken as 1.
    PixelDecoder(PixelDepth depth, int channels, bool grey, int alphaChannel);

    /// Makes colors linear that are encoded with the sRGB curve, from now on. Each is rounded once.
    void linearize();

    /// Decodes `pixels` pixels and tells what they lost. Integers of 8 bits lose nothing: they come back.
    ValueLoss decode(const std::byte* stored, std::size_t pixels, krod::RGBAHalf* out) const;

private:
    template <typename Stored, typename Color, typename Alpha>
    void decodeAs(const std::byte* stored, std::size_t pixels, krod::RGBAHalf* out, Color color,
                  Alpha alpha) const;
    template <typename Stored>
    void decodeByTable(const std::byte* stored, std::size_t pixels, krod::RGBAHalf* out,
                       ValueLoss& loss) const;

    PixelDepth depth;
    std::size_t channels;
    std::size_t greenAt, blueAt; ///< both 0 in a grey picture
    int alphaAt;
    bool isLinearized = false;
    /// Of each stored integer, or half that is linearized: its half, and above that its rounding error.
    std::vector<std::uint32_t> colorTable, alphaTable;
};

/// What a format can hold of a value.
enum class ValueRange {
    All,         ///< every float or half
    NonNegative, ///< finite values from 0 on: shared-exponent pixels
    Unit,        ///< 0 to 1: integers
};

/// What an encoder does to colors where the pixels treat alpha otherwise than the format.
enum class AlphaChange {
    None,
    Divide,   ///< associated pixels for a format whose colors stand beside alpha
    Multiply, ///< the other way round
};

/// A pixel whose color is divided or multiplied by its alpha, unless that is 0 or 1 or beyond them.
[[nodiscard]] KROD_FILES_API krod::RGBAHalf changedByAlpha(const krod::RGBAHalf& pixel, AlphaChange change);

/// Writes pixels with their channels side by side. Values outside of the range are clipped and counted. Where the
/// range holds no NaN, a pixel with one in its colors becomes grey, the mean of its finite ones or 0, and a NaN
/// in alpha becomes 1; such pixels are counted. Integers are rounded to nearest.
class KROD_FILES_API PixelEncoder {
public:
    /// `channels`: 1 grey (taken from red), 2 grey and alpha, 3 colour, 4 colour and alpha. With `srgb` the
    /// colour, not the alpha, is encoded for viewing. Colors are changed by alpha first.
    PixelEncoder(PixelDepth depth, int channels, bool srgb, ValueRange range,
                 AlphaChange change = AlphaChange::None);

    void encode(const krod::RGBAHalf* pixels, std::size_t count, std::byte* out);

    /// How many values were clipped so far, and the smallest and the largest of them and 0, before clipping.
    [[nodiscard]] std::uint64_t clippedCount() const { return clipped; }
    [[nodiscard]] float smallestValue() const { return smallest; }
    [[nodiscard]] float largestValue() const { return largest; }
    /// How many pixels held NaN that the range does not, so far.
    [[nodiscard]] std::uint64_t notNumberCount() const { return notNumbers; }

private:
    template <typename Code>
    void encodeAs(const krod::RGBAHalf* pixels, std::size_t count, std::byte* out);
    void countOutside(std::uint16_t bits);
    [[nodiscard]] bool holdsNaN(const krod::RGBAHalf& pixel) const;
    [[nodiscard]] krod::RGBAHalf withoutNaN(krod::RGBAHalf pixel) const;

    PixelDepth depth;
    int channels;
    ValueRange range;
    AlphaChange change;
    std::vector<std::uint32_t> colourCodes, alphaCodes; ///< stored form of each of the 65,536 halves
    std::vector<bool> outside;                          ///< halves that the range cannot hold
    std::uint64_t clipped = 0, notNumbers = 0;
    float smallest = 0, largest = 0;
};

} // namespace workbench
