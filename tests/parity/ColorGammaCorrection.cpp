// SPDX-License-Identifier: Apache-2.0
// The pixels of Hollywood/ColorGammaCorrection.
#include "Comparison.h"
#include "tests/support/LoadedPlugin.h"
#include "tests/support/ParameterPool.h"
#include "workbench/gl/RenderSession.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

namespace {

using half_float::half;
using krod::RGBAHalf;
using parity::Bounded;
using support::ParameterPool;

constexpr std::uint32_t AllPatterns = 0x10000, WithoutSign = 0x8000;
constexpr int Width = 128;

/// The first patterns of a half, each in one channel; `turn` moves them on to the next channel.
std::vector<RGBAHalf> patterns(std::uint32_t count, std::uint32_t turn = 0) {
    std::vector<RGBAHalf> pixels;
    for (std::uint32_t i = 0; i < count; i += 4) {
        const auto pattern = [i, turn](std::uint32_t channel) {
            return std::bit_cast<half>(static_cast<std::uint16_t>(i + (channel + turn) % 4));
        };
        pixels.push_back({pattern(0), pattern(1), pattern(2), pattern(3)});
    }
    return pixels;
}

class ParityOfColorGamma : public testing::Test {
protected:
    std::vector<RGBAHalf> processed(std::vector<RGBAHalf> pixels) {
        const int height = static_cast<int>(pixels.size()) / Width;
        const krod::StrongPtr<krod::Chunk<RGBAHalf>> store(new krod::Chunk<RGBAHalf>(std::move(pixels)));
        krod::ImageTile tile(Width, height, store);
        support::processorOf(*module)->process(krod::VRenderContext(pool), tile);
        return {store->data(), store->data() + store->elements()};
    }
    /// A tile of one value everywhere; one pixel of the result.
    RGBAHalf processed(half value) {
        return processed(std::vector<RGBAHalf>(Width, RGBAHalf{value, value, value, value})).at(Width / 2);
    }

    /// Compares every pattern without sign in every channel; a power of a negative number is undefined.
    void compareAll(const std::string& subject, const std::array<double, 4>& logarithms, double limit) {
        parity::Comparison comparison(limit);
        for (std::uint32_t turn = 0; turn < 4; ++turn) {
            const std::vector<RGBAHalf> pixels = patterns(WithoutSign, turn), results = processed(pixels);
            for (std::size_t i = 0; i < pixels.size(); ++i) {
                const RGBAHalf &before = pixels[i], &after = results[i];
                compare(comparison, before.r, logarithms[0], after.r, "red");
                compare(comparison, before.g, logarithms[1], after.g, "green");
                compare(comparison, before.b, logarithms[2], after.b, "blue");
                compare(comparison, before.a, logarithms[3], after.a, "alpha");
            }
        }
        EXPECT_TRUE(comparison.verdict(subject));
    }

    static void compare(parity::Comparison& comparison, half before, double logarithm, half after,
                        const char* channel) {
        const double c = static_cast<double>(static_cast<float>(before));
        if (!std::isfinite(c)) return comparison.leaveOut("infinite or no number");
        const double exponent = std::pow(10.0, logarithm);
        const Bounded constant{exponent, exponent * parity::SingleRounding}; // as the shader's float
        comparison.add(pow(Bounded{c, 0}, constant), after,
                       std::string(channel) + " " + testing::PrintToString(c));
    }

    workbench::RenderSession session{{.gpu = {workbench::GpuChoice::Kind::Software, 0, ""}}};
    support::LoadedPlugin plugin;
    krod::StrongPtr<krod::VObject> module = plugin.make("Hollywood/ColorGammaCorrection");
    ParameterPool pool{*module};
};

TEST_F(ParityOfColorGamma, ColorGammaCorrection_beforeUpdate_keepsEveryBit) {
    const std::vector<RGBAHalf> before = patterns(AllPatterns), after = processed(before);
    const auto bits = [](half h) { return std::bit_cast<std::uint16_t>(h); };
    const auto same = [&](half a, half b) { return bits(a) == bits(b) || (isnan(a) && isnan(b)); };
    for (std::size_t i = 0; i < before.size(); ++i) {
        const RGBAHalf &a = before[i], &b = after[i];
        ASSERT_TRUE(same(a.r, b.r) && same(a.g, b.g) && same(a.b, b.b) && same(a.a, b.a)) << "pixel " << i;
    }
}

TEST_F(ParityOfColorGamma, ColorGammaCorrection_defaults_keepPicturesUpToShaderPrecision) {
    ASSERT_TRUE(support::update(*module, pool));
    // Both software drivers give the number itself for an exponent of exactly 1.
    compareAll("ColorGammaCorrection, defaults", {0, 0, 0, 0}, 0);
}

TEST_F(ParityOfColorGamma, ColorGammaCorrection_fourExponents_agreeWithOracle) {
    pool.set("red", "0.3").set("green", "-0.5").set("blue", "-1").set("alpha", "0.1");
    ASSERT_TRUE(support::update(*module, pool));
    compareAll("ColorGammaCorrection, four exponents", {0.3, -0.5, -1, 0.1}, 1);
}

TEST_F(ParityOfColorGamma, ColorGammaCorrection_C1_unreadable_agreesWithExponentTen) {
    for (const char* channel : {"red", "green", "blue", "alpha"}) pool.makeUnreadable(channel);
    ASSERT_TRUE(support::update(*module, pool));
    compareAll("ColorGammaCorrection, nothing readable", {1, 1, 1, 1}, 1);
}

TEST_F(ParityOfColorGamma, ColorGammaCorrection_C3_alpha_isCorrectedLikeTheColours) {
    pool.set("alpha", "0.3");
    ASSERT_TRUE(support::update(*module, pool));
    const RGBAHalf got = processed(half(0.5F));
    EXPECT_NEAR(got.r, 0.5, 0x1p-11);
    EXPECT_NEAR(got.a, std::pow(0.5, std::pow(10, 0.3)), 0x1p-11);
}

TEST_F(ParityOfColorGamma, ColorGammaCorrection_zeroAndOne_stayWhatTheyAre) {
    pool.set("red", "-1").set("green", "-0.3").set("blue", "0.7").set("alpha", "1");
    ASSERT_TRUE(support::update(*module, pool));
    for (const float value : {0.0F, 1.0F}) {
        const RGBAHalf got = processed(half(value));
        for (const half channel : {got.r, got.g, got.b, got.a}) EXPECT_EQ(static_cast<float>(channel), value);
    }
}

} // namespace
