// SPDX-License-Identifier: Apache-2.0
// The pixels of Hollywood/ArcTangens, bit for bit. Needs no OpenGL.
#include "HalfTiles.h"

#include <cmath>

namespace {

using parity::bitsOf;
using parity::half;
using parity::halfOf;
using parity::storeOf;

/// The arc tangent as a half, widened, times 2/pi in extended precision, then to float and to half.
std::uint16_t required(half c) {
    const half angle = half_float::atan(c);
    const float widened = half_float::half_cast<float>(angle);
    const long double product = static_cast<long double>(widened) * 0.6366197723675814L;
    const float single = static_cast<float>(product);
    return bitsOf(half_float::half_cast<half>(single));
}

class ParityOfArcTangens : public parity::HalfTiles {
protected:
    ParityOfArcTangens() : HalfTiles("Hollywood/ArcTangens", "ArcTangens....process...\n", required) {}

    /// What comes of one colour.
    std::uint16_t processed(half c) {
        const auto store = storeOf({{c, c, c, half(1)}});
        process(1, store);
        return bitsOf(store->data()->g);
    }
};

// A float or a double in place of the long double gives the same bits for every pattern; another constant or
// another rounding to half does not.
TEST_F(ParityOfArcTangens, ArcTangens_A3_everyPatternInRedGreenBlue_isTheProductRoundedToFloatAndToHalf) {
    expectRequiredColours();
}

TEST_F(ParityOfArcTangens, ArcTangens_A2_one_comesToJustBelowAHalf) {
    EXPECT_EQ(processed(half(1)), 0x37FF);
    EXPECT_EQ(processed(half(-1)), 0xB7FF);
}

TEST_F(ParityOfArcTangens, ArcTangens_A2_arcTangent_isRoundedBeforeItIsScaled) {
    int different = 0;
    for (std::uint32_t i = 0; i < 0x7C00; ++i) { // finite and not negative
        const float c = half_float::half_cast<float>(halfOf(i));
        different += required(halfOf(i)) != bitsOf(half(std::atan(c) * 0.63661977F));
    }
    EXPECT_GT(different, 1000) << "the patterns cannot tell the two computations apart";
    EXPECT_NE(processed(half(1)), bitsOf(half(std::atan(1.0F) * 0.63661977F)));
}

TEST_F(ParityOfArcTangens, ArcTangens_infinity_comesToJustBelowOne) {
    EXPECT_EQ(processed(halfOf(0x7C00)), 0x3BFF);
    EXPECT_EQ(processed(halfOf(0xFC00)), 0xBBFF);
}

TEST_F(ParityOfArcTangens, ArcTangens_zeros_stayWhatTheyAre) {
    EXPECT_EQ(processed(halfOf(0x0000)), 0x0000);
    EXPECT_EQ(processed(halfOf(0x8000)), 0x8000);
}

TEST_F(ParityOfArcTangens, ArcTangens_A4_everyPatternInAlpha_staysAsItIs) { expectEveryAlphaUntouched(); }

TEST_F(ParityOfArcTangens, ArcTangens_everySize_writesItsPixelsAndNothingElse) { expectItsOwnPixelsOnly(); }

TEST_F(ParityOfArcTangens, ArcTangens_A5_everyTile_printsTheLine) { expectOneLinePerTile(); }

TEST_F(ParityOfArcTangens, ArcTangens_A5_emptyStore_printsTheLineToo) {
    EXPECT_EQ(process(0, storeOf({})), line);
}

TEST_F(ParityOfArcTangens, ArcTangens_tileWithoutStore_isPassedOverInSilence) { expectSilenceWithoutStore(); }

TEST_F(ParityOfArcTangens, ArcTangens_storeOfAnotherKind_isPassedOverInSilence) {
    expectSilenceOverStoresOfAnotherKind();
}

} // namespace
