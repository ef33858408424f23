// SPDX-License-Identifier: Apache-2.0
// The pixels of Hollywood/ColorGammaCorrection.
#include "TileParity.h"

#include <bit>
#include <cmath>

namespace {

using half_float::half;
using krod::RGBAHalf;
using parity::Required;

class ParityOfColorGamma : public parity::TileParity {
protected:
    ParityOfColorGamma() : TileParity("Hollywood/ColorGammaCorrection") {}

    /// Compares every pattern without sign in every channel; a power of a negative number is undefined.
    void compareWith(const std::string& subject, const std::array<double, 4>& logarithms, double limit) {
        const Mapping mapping = [logarithms](std::size_t channel, double c) -> Required {
            return {pow(parity::exactly(c), parity::powerOfTen(logarithms[channel]))};
        };
        compareAll("ColorGammaCorrection, " + subject, mapping, limit, parity::WithoutSign);
    }
};

TEST_F(ParityOfColorGamma, ColorGammaCorrection_beforeUpdate_keepsEveryBit) {
    std::vector<RGBAHalf> before;
    for (std::uint32_t i = 0; i < parity::AllPatterns; i += 4) {
        const auto pattern = [i](std::uint32_t channel) {
            return std::bit_cast<half>(static_cast<std::uint16_t>(i + channel));
        };
        before.push_back({pattern(0), pattern(1), pattern(2), pattern(3)});
    }
    const std::vector<RGBAHalf> after = processed(before, 128);
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
    compareWith("defaults", {0, 0, 0, 0}, 0);
}

TEST_F(ParityOfColorGamma, ColorGammaCorrection_fourExponents_agreeWithOracle) {
    pool.set("red", "0.3").set("green", "-0.5").set("blue", "-1").set("alpha", "0.1");
    ASSERT_TRUE(support::update(*module, pool));
    compareWith("four exponents", {0.3, -0.5, -1, 0.1}, 1);
}

TEST_F(ParityOfColorGamma, ColorGammaCorrection_C1_unreadable_agreesWithExponentTen) {
    for (const char* channel : parity::ChannelNames) pool.makeUnreadable(channel);
    ASSERT_TRUE(support::update(*module, pool));
    compareWith("nothing readable", {1, 1, 1, 1}, 1);
}

TEST_F(ParityOfColorGamma, ColorGammaCorrection_C3_alpha_isCorrectedLikeTheColours) {
    pool.set("alpha", "0.3");
    ASSERT_TRUE(support::update(*module, pool));
    const RGBAHalf got = processed(0.5F);
    EXPECT_NEAR(got.r, 0.5, 0x1p-11);
    EXPECT_NEAR(got.a, std::pow(0.5, std::pow(10, 0.3)), 0x1p-11);
}

TEST_F(ParityOfColorGamma, ColorGammaCorrection_zeroAndOne_stayWhatTheyAre) {
    pool.set("red", "-1").set("green", "-0.3").set("blue", "0.7").set("alpha", "1");
    ASSERT_TRUE(support::update(*module, pool));
    for (const float value : {0.0F, 1.0F}) {
        for (const half channel : parity::channelsOf(processed(value)))
            EXPECT_EQ(static_cast<float>(channel), value);
    }
}

} // namespace
