// SPDX-License-Identifier: Apache-2.0
// The pixels of Hollywood/HDRToneMapping.
#include "TileParity.h"

#include <cmath>

namespace {

using parity::Bounded;
using parity::Required;

class ParityOfTileToneMapping : public parity::TileParity {
protected:
    ParityOfTileToneMapping() : TileParity("Hollywood/HDRToneMapping") {}

    /// Updates the module with both parameters and compares with (c / (c + a))^b.
    void compareWith(double offset, double exponent) {
        pool.set("offset", text(offset)).set("exponent", text(exponent));
        ASSERT_TRUE(support::update(*module, pool));
        compareAll("HDRToneMapping, offset " + text(offset) + ", exponent " + text(exponent),
                   mapping(offset, exponent));
    }
    static Mapping mapping(double offset, double exponent) {
        const Bounded a = parity::powerOfTen(offset), b = parity::powerOfTen(exponent);
        return [a, b](std::size_t, double c) -> Required {
            const Bounded x = parity::exactly(c), divisor = x + a;
            if (std::abs(divisor.value) <= divisor.error) return {.unknown = "the divisor c + a may be 0"};
            if (c < 0 && divisor.value > 0) return {.unknown = "a power of a negative quotient"};
            return {pow(x / divisor, b)};
        };
    }
};

TEST_F(ParityOfTileToneMapping, HDRToneMapping_defaults_agreeWithOracle) { compareWith(0, 0); }

TEST_F(ParityOfTileToneMapping, HDRToneMapping_lowest_agreesWithOracle) { compareWith(-1, -1); }

TEST_F(ParityOfTileToneMapping, HDRToneMapping_highest_agreesWithOracle) { compareWith(1, 1); }

TEST_F(ParityOfTileToneMapping, HDRToneMapping_lowestOffsetHighestExponent_agreesWithOracle) {
    compareWith(-1, 1);
}

TEST_F(ParityOfTileToneMapping, HDRToneMapping_oddValues_agreeWithOracle) { compareWith(0.3, -0.25); }

TEST_F(ParityOfTileToneMapping, HDRToneMapping_unreadable_agreesWithDefaults) {
    for (const char* parameter : {"offset", "exponent"}) {
        support::setParameter(*module, parameter, "1");
        pool.makeUnreadable(parameter);
    }
    ASSERT_TRUE(support::update(*module, pool));
    compareAll("HDRToneMapping, nothing readable", mapping(0, 0));
}

TEST_F(ParityOfTileToneMapping, HDRToneMapping_knownIntensities_haveTheirValues) {
    ASSERT_TRUE(support::update(*module, pool));
    EXPECT_NEAR(processed(1).g, 0.5, 0x1p-11);
    EXPECT_NEAR(processed(3).g, 0.75, 0x1p-11);
    ASSERT_TRUE(support::update(*module, pool.set("offset", "-1").set("exponent", "1")));
    EXPECT_NEAR(processed(1).g, std::pow(1 / 1.1, 10), 0x1p-11);
}

TEST_F(ParityOfTileToneMapping, HDRToneMapping_zero_staysZeroForEverySetting) {
    for (const double offset : {-1, 0, 1})
        for (const double exponent : {-1, 0, 1}) {
            ASSERT_TRUE(
                support::update(*module, pool.set("offset", text(offset)).set("exponent", text(exponent))));
            for (const auto channel : parity::channelsOf(processed(0)))
                EXPECT_EQ(static_cast<float>(channel), 0) << offset << ", " << exponent;
        }
}

TEST_F(ParityOfTileToneMapping, HDRToneMapping_T3_alpha_isMappedLikeTheColours) {
    ASSERT_TRUE(support::update(*module, pool));
    EXPECT_NEAR(processed(1).a, 0.5, 0x1p-11);
    ASSERT_TRUE(support::update(*module, pool.set("offset", "1").set("exponent", "-0.5")));
    for (const float alpha : {0.25F, 1.0F, 2.0F})
        EXPECT_EQ(static_cast<float>(processed(alpha).a), static_cast<float>(processed(alpha).r));
}

} // namespace
