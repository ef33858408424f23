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

std::vector<half> integerTable(PixelDepth depth) {
    if (depth != PixelDepth::UInt8 && depth != PixelDepth::UInt16) return {};
    const std::size_t largest = depth == PixelDepth::UInt8 ? 255 : 65535;
    std::vector<half> table(largest + 1);
    for (std::size_t i = 0; i <= largest; ++i)
        table[i] = half_float::half_cast<half>(static_cast<double>(i) / static_cast<double>(largest));
    return table;
}

bool isOutside(float value, ValueRange range) {
    if (range == ValueRange::All) return false;
    const bool tooLarge = range == ValueRange::Unit ? value > 1 : std::isinf(value);
    return std::isnan(value) || value < 0 || tooLarge;
}

double clippedTo(double value, ValueRange range) {
    if (range == ValueRange::All) return value;
    if (std::isnan(value)) return 0;
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

half halfFromFloat(float value, std::uint64_t& overflows) {
    const half result = half_float::half_cast<half>(value);
    if (half_float::isinf(result) && std::isfinite(value)) ++overflows;
    return result;
}

double srgbFromLinear(double value) {
    const double size = std::abs(value);
    const double encoded = size <= 0.0031308 ? 12.92 * size : 1.055 * std::pow(size, 1 / 2.4) - 0.055;
    return std::copysign(encoded, value);
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
      table(integerTable(storedDepth)) {
    if (channelCount <= static_cast<int>(blueAt) || channelCount <= alphaAt)
        throw std::invalid_argument("a pixel without the channels that are taken from it");
}

template <typename Stored, typename Convert>
void PixelDecoder::decodeAs(const std::byte* stored, std::size_t pixels, krod::RGBAHalf* out,
                            Convert convert) const {
    const auto value = [&](const std::byte* pixel, std::size_t channel) {
        Stored raw;
        std::memcpy(&raw, pixel + channel * sizeof(Stored), sizeof raw);
        return convert(raw);
    };
    const half opaque(1.0F);
    for (std::size_t i = 0; i < pixels; ++i, stored += channels * sizeof(Stored)) {
        const half red = value(stored, 0);
        // A grey picture converts its value once, so that an overflow counts once.
        const half green = greenAt == 0 ? red : value(stored, greenAt);
        const half blue = blueAt == 0 ? red : value(stored, blueAt);
        out[i] = {red, green, blue, alphaAt < 0 ? opaque : value(stored, static_cast<std::size_t>(alphaAt))};
    }
}

std::uint64_t PixelDecoder::decode(const std::byte* stored, std::size_t pixels, krod::RGBAHalf* out) const {
    std::uint64_t overflows = 0;
    switch (depth) {
    case PixelDepth::UInt8:
        decodeAs<std::uint8_t>(stored, pixels, out, [this](std::uint8_t raw) { return table[raw]; });
        break;
    case PixelDepth::UInt16:
        decodeAs<std::uint16_t>(stored, pixels, out, [this](std::uint16_t raw) { return table[raw]; });
        break;
    case PixelDepth::Half:
        decodeAs<half>(stored, pixels, out, [](half raw) { return raw; });
        break;
    case PixelDepth::Float:
        decodeAs<float>(stored, pixels, out, [&](float raw) { return halfFromFloat(raw, overflows); });
        break;
    }
    return overflows;
}

PixelEncoder::PixelEncoder(PixelDepth storedDepth, int channelCount, bool srgb, ValueRange valueRange)
    : depth(storedDepth),
      channels(channelCount),
      range(valueRange),
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
    ++(std::isnan(value) ? notNumbers : clipped);
    if (value < smallest) smallest = value; // false for NaN
    if (value > largest) largest = value;
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
        put(pixels[i].r, colourCodes);
        if (channels >= 3) {
            put(pixels[i].g, colourCodes);
            put(pixels[i].b, colourCodes);
        }
        if (channels == 2 || channels == 4) put(pixels[i].a, alphaCodes);
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
