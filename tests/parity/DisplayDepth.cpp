// SPDX-License-Identifier: Apache-2.0
// The pixels of the depth view, Display/Depth of DisplayDepth.
#include "DisplayParity.h"

#include <string>

namespace {

using parity::Colour;
using parity::exactly;
using parity::Picture;
using parity::SceneSample;
using parity::Side;

SceneSample required(int x, int y) {
    const SceneSample s = parity::awkward(x, y, 0);
    return {s.depth, s.depth, s.depth, s.a, s.depth};
}

class ParityOfDepth : public parity::DisplayParity {
protected:
    ParityOfDepth() : DisplayParity("Display/Depth@DisplayDepth") {}
};

/// Depths are eighths and alphas halves, so that every result is a half.
TEST_F(ParityOfDepth, DisplayDepth_awkwardSamples_areDepthOverTheBackgroundToTheBit) {
    const Picture picture = drawAwkward();
    parity::Comparison comparison(0);
    addPicture(comparison, picture, [](int x, int y) { return over(exactly(required(x, y))); });
    EXPECT_TRUE(comparison.verdict("Depth, " + testing::PrintToString(samples) + " samples"));
}

TEST_F(ParityOfDepth, DisplayDepth_D3_furtherSamples_changeNothing) {
    const auto sampleZero = [](int x, int y, int) { return parity::awkward(x, y, 0); };
    EXPECT_TRUE(drawAwkward() == draw(sampleZero, Side, Side));
}

TEST_F(ParityOfDepth, DisplayDepth_D3_text_writesColourAndDepthOfSampleZero) {
    const TextOutput output = outputOfTheText(parity::awkward, Side);
    for (int y = 0; y < Side; ++y)
        for (int x = 0; x < Side; ++x) {
            const SceneSample expected = required(x, y);
            const krod::RGBAHalf& got = output.picture.at(x, y);
            ASSERT_EQ(got.r, expected.depth) << "pixel " << x << ", " << y;
            ASSERT_EQ(got.g, expected.depth) << "pixel " << x << ", " << y;
            ASSERT_EQ(got.b, expected.depth) << "pixel " << x << ", " << y;
            ASSERT_EQ(got.a, expected.a) << "pixel " << x << ", " << y;
            ASSERT_EQ(output.depths[static_cast<std::size_t>(y * Side + x)], expected.depth)
                << "pixel " << x << ", " << y;
        }
}

/// What nothing covers is at depth 1 and has no alpha.
TEST_F(ParityOfDepth, DisplayDepth_uncoveredPixels_areWhiteAndTransparent) {
    const TextOutput output = outputOfTheText([](int, int, int) { return SceneSample{}; }, 1);
    EXPECT_EQ(output.picture.at(0, 0).r, 1);
    EXPECT_EQ(output.picture.at(0, 0).a, 0);
    EXPECT_EQ(output.depths.at(0), 1);
}

} // namespace
