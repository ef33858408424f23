// SPDX-License-Identifier: Apache-2.0
// The pixels of Hollywood/TileProgram.
#include "TileParity.h"

#include <cmath>

namespace {

using parity::Bounded;
using parity::Required;

/// OpenGL bounds no arc tangent; here it has what Vulkan grants, 4096 units in the last place.
Bounded atan(double c) {
    const double angle = std::atan(c);
    return {angle, std::abs(angle) * 0x1p-11};
}

/// The square root of 2/pi atan(c), with pi as the default program writes it. That of a negative number is
/// undefined.
Required defaultProgram(std::size_t, double c) {
    const Bounded pi = parity::constant(3.141592);
    return {pow(atan(c) * parity::exactly(2) / pi, parity::exactly(0.5))};
}

class ParityOfTileProgram : public parity::TileParity {
protected:
    ParityOfTileProgram() : TileParity("Hollywood/TileProgram") {}

    void compareWithDefaultProgram(const std::string& subject) {
        compareAll("TileProgram, " + subject, defaultProgram, 1, parity::WithoutSign);
    }
};

TEST_F(ParityOfTileProgram, TileProgram_U2_newModule_drawsTheDefaultProgram) {
    compareWithDefaultProgram("before the first update");
}

TEST_F(ParityOfTileProgram, TileProgram_defaults_agreeWithOracle) {
    ASSERT_TRUE(support::update(*module, pool));
    compareWithDefaultProgram("defaults");
}

TEST_F(ParityOfTileProgram, TileProgram_unreadable_isTheDefaultProgram) {
    support::setParameter(*module, "code", "void main() { gl_FragColor = vec4(7.0); }");
    ASSERT_TRUE(support::update(*module, pool.makeUnreadable("code")));
    compareWithDefaultProgram("nothing readable");
}

TEST_F(ParityOfTileProgram, TileProgram_passThroughProgram_keepsEveryBit) {
    pool.set("code", "uniform sampler2D frame;\nvoid main (void)\n{\nvec4 Color = texture2D(frame, "
                     "gl_TexCoord[0].xy);\n\tgl_FragColor = Color;\n}\n");
    ASSERT_TRUE(support::update(*module, pool));
    compareAll(
        "TileProgram, pass-through",
        [](std::size_t, double c) {
            return Required{{c, 0}};
        },
        0);
}

TEST_F(ParityOfTileProgram, TileProgram_U3_userProgramWithoutLineEnd_isDrawn) {
    pool.set("code", "uniform sampler2D frame; void main() { gl_FragColor = texture2D(frame, "
                     "gl_TexCoord[0].xy).wzyx * 2.0; }");
    ASSERT_TRUE(support::update(*module, pool));
    const auto channels = parity::channelsOf(processed(
        krod::RGBAHalf{parity::half(1.0F), parity::half(2.0F), parity::half(3.0F), parity::half(4.0F)}));
    for (std::size_t i = 0; i < channels.size(); ++i)
        EXPECT_EQ(static_cast<float>(channels[i]), 8 - 2 * static_cast<float>(i)) << i;
}

} // namespace
