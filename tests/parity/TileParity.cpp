// SPDX-License-Identifier: Apache-2.0
#include "TileParity.h"

#include <bit>
#include <cmath>

namespace parity {
namespace {

constexpr int Width = 128;

/// The first patterns of a half, each in one channel; `turn` moves them on to the next channel.
std::vector<RGBAHalf> patterns(std::uint32_t count, std::uint32_t turn) {
    std::vector<RGBAHalf> pixels;
    for (std::uint32_t i = 0; i < count; i += 4) {
        const auto pattern = [i, turn](std::uint32_t channel) {
            return std::bit_cast<half>(static_cast<std::uint16_t>(i + (channel + turn) % 4));
        };
        pixels.push_back({pattern(0), pattern(1), pattern(2), pattern(3)});
    }
    return pixels;
}

} // namespace

std::array<half, 4> channelsOf(const RGBAHalf& pixel) { return {pixel.r, pixel.g, pixel.b, pixel.a}; }

Bounded powerOfTen(double v) {
    const double power = std::pow(10.0, v);
    return {power, power * SingleRounding};
}

std::vector<RGBAHalf> TileParity::processed(std::vector<RGBAHalf> pixels, int width) {
    const int height = static_cast<int>(pixels.size()) / width;
    const krod::StrongPtr<krod::Chunk<RGBAHalf>> store(new krod::Chunk<RGBAHalf>(std::move(pixels)));
    krod::ImageTile tile(width, height, store);
    support::processorOf(*module)->process(krod::VRenderContext(pool), tile);
    return {store->data(), store->data() + store->elements()};
}

RGBAHalf TileParity::processed(float value) {
    const half h(value);
    return processed(RGBAHalf{h, h, h, h});
}

void TileParity::compareAll(const std::string& subject, const Mapping& mapping, double limit,
                            std::uint32_t count) {
    Comparison comparison(limit);
    for (std::uint32_t turn = 0; turn < 4; ++turn) {
        const std::vector<RGBAHalf> pixels = patterns(count, turn), results = processed(pixels, Width);
        for (std::size_t i = 0; i < pixels.size(); ++i) {
            const auto before = channelsOf(pixels[i]), after = channelsOf(results[i]);
            for (std::size_t channel = 0; channel < before.size(); ++channel) {
                const double c = static_cast<double>(static_cast<float>(before[channel]));
                const Required required =
                    std::isfinite(c) ? mapping(channel, c) : Required{.unknown = "infinite or no number"};
                if (!required.unknown.empty())
                    comparison.leaveOut(required.unknown);
                else
                    comparison.add(required.value, after[channel],
                                   std::string(ChannelNames[channel]) + " " + testing::PrintToString(c));
            }
        }
    }
    EXPECT_TRUE(comparison.verdict(subject));
}

} // namespace parity
