// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/PixelConversion.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <stdexcept>

namespace workbench {

using half_float::half;

namespace {

constexpr std::size_t HalfPatterns = 65536;

/// Errors of values from 0 to 1 stand above their halves in units of this.
constexpr double ErrorUnit = 1.0 / (1 << 27);
constexpr float LargestHalf = 65504;

/// The entry of a table of decoded values. What has 8 bits comes back as it was, and so has no error.
std::uint32_t entryOf(double value, bool hasError) {
    const half rounded = half_float::half_cast<half>(value);
    const std::uint32_t bits = std::bit_cast<std::uint16_t>(rounded);
    if (!hasError) return bits;
    const double error = std::abs(value - static_cast<double>(static_cast<float>(rounded)));
    return bits | static_cast<std::uint32_t>(std::lround(error / ErrorUnit)) << 16U;
}

std::vector<std::uint32_t> integerTable(PixelDepth depth, bool linearized) {
    if (depth != PixelDepth::UInt8 && depth != PixelDepth::UInt16) return {};
    const std::size_t largest = depth == PixelDepth::UInt8 ? 255 : 65535;
    std::vector<std::uint32_t> table(largest + 1);
    for (std::size_t i = 0; i <= largest; ++i) {
        const double value = static_cast<double>(i) / static_cast<double>(largest);
        table[i] = entryOf(linearized ? linearFromSrgb(value) : value, depth == PixelDepth::UInt16);
    }
    return table;
}

std::vector<std::uint32_t> linearHalfTable() {
    std::vector<std::uint32_t> table(HalfPatterns);
    for (std::size_t i = 0; i < HalfPatterns; ++i) {
        ValueLoss ignored;
        const float value = std::bit_cast<half>(static_cast<std::uint16_t>(i));
        const auto linear = static_cast<float>(linearFromSrgb(value));
        table[i] = std::bit_cast<std::uint16_t>(halfFromFloat(linear, ignored));
    }
    return table;
}

bool isNaN(half value) { return (std::bit_cast<std::uint16_t>(value) & 0x7fffU) > 0x7c00U; }

/// The largest error of a float that becomes a half, exact for all halves that are not denormal.
float roundingError(float value, half rounded) {
    const auto bits = std::bit_cast<std::uint32_t>(value);
    const std::uint32_t exponent = bits & 0x7f800000U;
    if (exponent < 0x38800000U) return std::abs(value - static_cast<float>(rounded)); // below 2^-14
    const std::uint32_t tail = bits & 0x1fffU;                                        // is cut off
    const auto off = static_cast<float>(std::min(tail, 0x2000U - tail));
    return std::bit_cast<float>(exponent) * (off / (1 << 23));
}

bool isOutside(float value, ValueRange range) {
    if (range == ValueRange::All) return false;
    const bool tooLarge = range == ValueRange::Unit ? value > 1 : std::isinf(value);
    return std::isnan(value) || value < 0 || tooLarge;
}

double clippedTo(double value, ValueRange range) {
    if (range == ValueRange::All) return value;
    if (std::isnan(value)) return 0; // the encoder puts other values in its place before
    return std::clamp(value, 0.0, range == ValueRange::Unit ? 1.0 : 65504.0);
}

/// The stored form of one half. A half that is stored as a half and not changed keeps its bits, NaN payload
/// included.
std::uint32_t codeOf(std::uint16_t bits, PixelDepth depth, bool srgb, ValueRange range) {
    if (depth == PixelDepth::Half && !srgb) return bits;
    const float stored = std::bit_cast<half>(bits);
    const double value = clippedTo(srgb ? srgbFromLinear(stored) : stored, range);
    switch (depth) {
    case PixelDepth::UInt8:
        return static_cast<std::uint32_t>(std::lround(value * 255));
    case PixelDepth::UInt16:
        return static_cast<std::uint32_t>(std::lround(value * 65535));
    case PixelDepth::Half:
        return std::bit_cast<std::uint16_t>(half_float::half_cast<half>(value));
    case PixelDepth::Float:
        break;
    }
    return std::bit_cast<std::uint32_t>(static_cast<float>(value));
}

} // namespace

void ValueLoss::add(const ValueLoss& more) {
    overflows += more.overflows;
    rounding = std::max(rounding, more.rounding);
    largest = std::max(largest, more.largest);
}

half halfFromFloat(float value, ValueLoss& loss) {
    const half result = half_float::half_cast<half>(value);
    if (!std::isfinite(value)) return result;
    const float size = std::abs(value);
    if (size > loss.largest) loss.largest = size;
    if (half_float::isinf(result)) {
        ++loss.overflows;
        return half(std::copysign(LargestHalf, value));
    }
    const float error = roundingError(value, result);
    if (error > loss.rounding) loss.rounding = error;
    return result;
}

double srgbFromLinear(double value) {
    const double size = std::abs(value);
    const double encoded = size <= 0.0031308 ? 12.92 * size : 1.055 * std::pow(size, 1 / 2.4) - 0.055;
    return std::copysign(encoded, value);
}

double linearFromSrgb(double value) {
    const double size = std::abs(value);
    const double linear = size <= 0.04045 ? size / 12.92 : std::pow((size + 0.055) / 1.055, 2.4);
    return std::copysign(linear, value);
}

krod::RGBAHalf changedByAlpha(const krod::RGBAHalf& pixel, AlphaChange change) {
    const float alpha = pixel.a;
    if (!(alpha > 0 && alpha < 1)) return pixel;
    const float factor = change == AlphaChange::Divide ? 1 / alpha : alpha;
    ValueLoss ignored;
    const auto times = [&](half color) { return halfFromFloat(static_cast<float>(color) * factor, ignored); };
    return {times(pixel.r), times(pixel.g), times(pixel.b), pixel.a};
}

std::size_t bytesPerValue(PixelDepth depth) {
    return depth == PixelDepth::UInt8 ? 1 : depth == PixelDepth::Float ? 4 : 2;
}

PixelDecoder::PixelDecoder(PixelDepth storedDepth, int channelCount, bool grey, int alphaChannel)
    : depth(storedDepth),
      channels(static_cast<std::size_t>(channelCount)),
      greenAt(grey ? 0 : 1),
      blueAt(grey ? 0 : 2),
      alphaAt(alphaChannel),
      colorTable(integerTable(storedDepth, false)),
      alphaTable(colorTable) {
    if (channelCount <= static_cast<int>(blueAt) || channelCount <= alphaAt)
        throw std::invalid_argument("a pixel without the channels that are taken from it");
}

void PixelDecoder::linearize() {
    isLinearized = true;
    colorTable = depth == PixelDepth::Half ? linearHalfTable() : integerTable(depth, true);
}

template <typename Stored, typename Color, typename Alpha>
void PixelDecoder::decodeAs(const std::byte* stored, std::size_t pixels, krod::RGBAHalf* out, Color color,
                            Alpha alpha) const {
    const auto raw = [](const std::byte* pixel, std::size_t channel) {
        Stored value;
        std::memcpy(&value, pixel + channel * sizeof(Stored), sizeof value);
        return value;
    };
    const half opaque(1.0F);
    for (std::size_t i = 0; i < pixels; ++i, stored += channels * sizeof(Stored)) {
        const half red = color(raw(stored, 0));
        // A grey picture converts its value once, so that an overflow counts once.
        const half green = greenAt == 0 ? red : color(raw(stored, greenAt));
        const half blue = blueAt == 0 ? red : color(raw(stored, blueAt));
        out[i] = {red, green, blue,
                  alphaAt < 0 ? opaque : alpha(raw(stored, static_cast<std::size_t>(alphaAt)))};
    }
}

template <typename Stored>
void PixelDecoder::decodeByTable(const std::byte* stored, std::size_t pixels, krod::RGBAHalf* out,
                                 ValueLoss& loss) const {
    std::uint32_t largestError = 0;
    const auto by = [&](const std::vector<std::uint32_t>& table) {
        return [&](Stored raw) {
            const std::uint32_t entry = table[raw];
            largestError = std::max(largestError, entry >> 16U);
            return std::bit_cast<half>(static_cast<std::uint16_t>(entry));
        };
    };
    decodeAs<Stored>(stored, pixels, out, by(colorTable), by(alphaTable));
    loss.rounding = static_cast<float>(largestError * ErrorUnit);
    loss.largest = 1;
}

ValueLoss PixelDecoder::decode(const std::byte* stored, std::size_t pixels, krod::RGBAHalf* out) const {
    ValueLoss loss;
    const auto asFloat = [&](float raw) { return halfFromFloat(raw, loss); };
    const auto linear = [&](float raw) { return asFloat(static_cast<float>(linearFromSrgb(raw))); };
    const auto asHalf = [](std::uint16_t raw) { return std::bit_cast<half>(raw); };
    const auto linearHalf = [&](std::uint16_t raw) {
        return asHalf(static_cast<std::uint16_t>(colorTable[raw]));
    };
    switch (depth) {
    case PixelDepth::UInt8:
        decodeByTable<std::uint8_t>(stored, pixels, out, loss);
        break;
    case PixelDepth::UInt16:
        decodeByTable<std::uint16_t>(stored, pixels, out, loss);
        break;
    case PixelDepth::Half:
        if (isLinearized)
            decodeAs<std::uint16_t>(stored, pixels, out, linearHalf, asHalf);
        else
            decodeAs<std::uint16_t>(stored, pixels, out, asHalf, asHalf);
        break;
    case PixelDepth::Float:
        if (isLinearized)
            decodeAs<float>(stored, pixels, out, linear, asFloat);
        else
            decodeAs<float>(stored, pixels, out, asFloat, asFloat);
        break;
    }
    return loss;
}

PixelEncoder::PixelEncoder(PixelDepth storedDepth, int channelCount, bool srgb, ValueRange valueRange,
                           AlphaChange alphaChange)
    : depth(storedDepth),
      channels(channelCount),
      range(valueRange),
      change(alphaChange),
      colourCodes(HalfPatterns),
      alphaCodes(HalfPatterns),
      outside(HalfPatterns) {
    for (std::size_t i = 0; i < HalfPatterns; ++i) {
        const auto bits = static_cast<std::uint16_t>(i);
        colourCodes[i] = codeOf(bits, depth, srgb, range);
        alphaCodes[i] = codeOf(bits, depth, false, range);
        outside[i] = isOutside(std::bit_cast<half>(bits), range);
    }
}

void PixelEncoder::countOutside(std::uint16_t bits) {
    const float value = std::bit_cast<half>(bits);
    ++clipped;
    smallest = std::min(smallest, value);
    largest = std::max(largest, value);
}

bool PixelEncoder::holdsNaN(const krod::RGBAHalf& pixel) const {
    const bool inColor = isNaN(pixel.r) || (channels >= 3 && (isNaN(pixel.g) || isNaN(pixel.b)));
    return inColor || (channels % 2 == 0 && isNaN(pixel.a));
}

krod::RGBAHalf PixelEncoder::withoutNaN(krod::RGBAHalf pixel) const {
    if (isNaN(pixel.a)) pixel.a = half(1.0F);
    const bool isColored = channels >= 3;
    if (!isNaN(pixel.r) && !(isColored && (isNaN(pixel.g) || isNaN(pixel.b)))) return pixel;
    float sum = 0, count = 0;
    for (const half color : {pixel.r, isColored ? pixel.g : pixel.r, isColored ? pixel.b : pixel.r}) {
        if (!half_float::isfinite(color)) continue;
        sum += color;
        ++count;
    }
    pixel.r = pixel.g = pixel.b = half(count > 0 ? sum / count : 0);
    return pixel;
}

template <typename Code>
void PixelEncoder::encodeAs(const krod::RGBAHalf* pixels, std::size_t count, std::byte* out) {
    const auto put = [&](half value, const std::vector<std::uint32_t>& codes) {
        const auto bits = std::bit_cast<std::uint16_t>(value);
        if (outside[bits]) countOutside(bits);
        const auto code = static_cast<Code>(codes[bits]);
        std::memcpy(out, &code, sizeof code);
        out += sizeof code;
    };
    for (std::size_t i = 0; i < count; ++i) {
        krod::RGBAHalf pixel = pixels[i];
        if (range != ValueRange::All && holdsNaN(pixel)) {
            ++notNumbers;
            pixel = withoutNaN(pixel);
        }
        if (change != AlphaChange::None) pixel = changedByAlpha(pixel, change);
        put(pixel.r, colourCodes);
        if (channels >= 3) {
            put(pixel.g, colourCodes);
            put(pixel.b, colourCodes);
        }
        if (channels % 2 == 0) put(pixel.a, alphaCodes);
    }
}

void PixelEncoder::encode(const krod::RGBAHalf* pixels, std::size_t count, std::byte* out) {
    switch (bytesPerValue(depth)) {
    case 1:
        encodeAs<std::uint8_t>(pixels, count, out);
        break;
    case 2:
        encodeAs<std::uint16_t>(pixels, count, out);
        break;
    default:
        encodeAs<std::uint32_t>(pixels, count, out);
        break;
    }
}

} // namespace workbench
