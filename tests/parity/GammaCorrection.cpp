// SPDX-License-Identifier: Apache-2.0
// The pixels of Hollywood/GammaCorrection, bit for bit. Needs no OpenGL.
#include "HalfTiles.h"

namespace {

using parity::bitsOf;
using parity::half;
using parity::halfOf;
using parity::storeOf;

/// What the half library itself gives for a pattern.
std::uint16_t required(half c) { return bitsOf(half_float::pow(c, halfOf(0x3E00))); }

class ParityOfGamma : public parity::HalfTiles {
protected:
    ParityOfGamma() : HalfTiles("Hollywood/GammaCorrection", "GammaCorrection....process...\n", required) {}
};

TEST_F(ParityOfGamma, GammaCorrection_everyPatternInRedGreenBlue_isPowOfTheHalfLibrary) {
    expectRequiredColours();
}

TEST_F(ParityOfGamma, GammaCorrection_G3_everyPatternInAlpha_staysAsItIs) { expectEveryAlphaUntouched(); }

TEST_F(ParityOfGamma, GammaCorrection_zeroAndOne_stayWhatTheyAre) {
    const auto store = storeOf({{half(0), half(1), half(0), half(0)}});
    process(1, store);
    EXPECT_EQ(bitsOf(store->data()->r), 0x0000);
    EXPECT_EQ(bitsOf(store->data()->g), 0x3C00);
}

TEST_F(ParityOfGamma, GammaCorrection_everySize_writesItsPixelsAndNothingElse) { expectItsOwnPixelsOnly(); }

TEST_F(ParityOfGamma, GammaCorrection_twoTiles_printTheLineTwice) { expectOneLinePerTile(); }

TEST_F(ParityOfGamma, GammaCorrection_G2_emptyStore_printsTheLineToo) {
    EXPECT_EQ(process(0, storeOf({})), line);
}

TEST_F(ParityOfGamma, GammaCorrection_tileWithoutStore_isPassedOverInSilence) { expectSilenceWithoutStore(); }

TEST_F(ParityOfGamma, GammaCorrection_storeOfAnotherKind_isPassedOverInSilence) {
    expectSilenceOverStoresOfAnotherKind();
}

} // namespace
