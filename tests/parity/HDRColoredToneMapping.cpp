// SPDX-License-Identifier: Apache-2.0
// The pixels of Hollywood/HDRColoredToneMapping.
#include "TileParity.h"

#include <cmath>

namespace {

using half_float::half;
using parity::Bounded;
using parity::Required;

class ParityOfColoredToneMapping : public parity::TileParity {
protected:
    ParityOfColoredToneMapping() : TileParity("Hollywood/HDRColoredToneMapping") {}

    /// Updates the module with all parameters and compares with c / (c + G).
    void compareWith(const std::array<double, 4>& logarithms) {
        std::string subject = "HDRColoredToneMapping,";
        for (std::size_t i = 0; i < logarithms.size(); ++i) {
            pool.set(parity::ChannelNames[i], text(logarithms[i]));
            subject += " " + text(logarithms[i]);
        }
        ASSERT_TRUE(support::update(*module, pool));
        compareAll(subject, mapping(logarithms));
    }
    static Mapping mapping(const std::array<double, 4>& logarithms) {
        return [logarithms](std::size_t channel, double c) -> Required {
            const Bounded x = parity::exactly(c), divisor = x + parity::powerOfTen(logarithms[channel]);
            if (std::abs(divisor.value) <= divisor.error) return {.unknown = "the divisor c + G may be 0"};
            return {x / divisor};
        };
    }
};

TEST_F(ParityOfColoredToneMapping, HDRColoredToneMapping_defaults_agreeWithOracle) {
    compareWith({0, 0, 0, 0});
}

TEST_F(ParityOfColoredToneMapping, HDRColoredToneMapping_lowest_agreesWithOracle) {
    compareWith({-1, -1, -1, -1});
}

TEST_F(ParityOfColoredToneMapping, HDRColoredToneMapping_fourValues_goToTheirChannels) {
    compareWith({0.3, -0.5, -1, 1});
}

TEST_F(ParityOfColoredToneMapping, HDRColoredToneMapping_M2_unreadable_agreesWithTens) {
    for (const char* channel : parity::ChannelNames) pool.makeUnreadable(channel);
    ASSERT_TRUE(support::update(*module, pool));
    compareAll("HDRColoredToneMapping, nothing readable", mapping({1, 1, 1, 1}));
}

TEST_F(ParityOfColoredToneMapping, HDRColoredToneMapping_M3_intensityOfTheConstant_comesToAHalf) {
    pool.set("red", "1").set("green", "0").set("blue", "-1").set("alpha", "0.5");
    ASSERT_TRUE(support::update(*module, pool));
    const auto got = processed(krod::RGBAHalf{half(10.0F), half(1.0F), half(0.1F), half(std::sqrt(10.0F))});
    for (const half channel : parity::channelsOf(got)) EXPECT_NEAR(channel, 0.5, 0x1p-11);
}

TEST_F(ParityOfColoredToneMapping, HDRColoredToneMapping_M4_opaquePicture_comesOutPartlyTransparent) {
    ASSERT_TRUE(support::update(*module, pool));
    EXPECT_NEAR(processed(1).a, 0.5, 0x1p-11);
    ASSERT_TRUE(support::update(*module, pool.set("alpha", "1")));
    EXPECT_NEAR(processed(1).a, 1 / 11.0, 0x1p-13);
}

TEST_F(ParityOfColoredToneMapping, HDRColoredToneMapping_zero_staysZero) {
    pool.set("red", "-1").set("green", "-0.3").set("blue", "0.7").set("alpha", "1");
    ASSERT_TRUE(support::update(*module, pool));
    for (const half channel : parity::channelsOf(processed(0))) EXPECT_EQ(static_cast<float>(channel), 0);
}

} // namespace
