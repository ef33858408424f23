// SPDX-License-Identifier: Apache-2.0
// The pixels of Hollywood/PixelBlur.
#include "TileParity.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

using half_float::half;
using krod::RGBAHalf;
using parity::Bounded;
using Picture = std::vector<RGBAHalf>;

struct Settings {
    int width = 3;
    double brightness = 1.5, sharpness = 1.5;
};

/// Where the samples of one column or row lie, by their number along the grid.
struct Samples {
    std::vector<int> texels;
    bool certain = true; ///< none lies so near to the border of two texels that rounding decides
};

Samples samplesAt(int place, int size, const Settings& s) {
    constexpr double Near = 1.0 / 64; // far above the rounding of coordinates, in texels
    Samples samples;
    for (int i = 0; i <= s.width; ++i) {
        const double share = (i - s.width * 0.5) / s.width / (s.sharpness * 50);
        const double position = place + 0.5 + share * size, border = std::round(position);
        if (std::abs(position - border) < Near && border > 0 && border < size) samples.certain = false;
        samples.texels.push_back(std::clamp(static_cast<int>(std::floor(position)), 0, size - 1));
    }
    return samples;
}

/// brightness exp(-r^2) / n^2 at one sample of the grid. GLSL grants exp(x) 3 + 2|x| units in the last place.
Bounded weight(int i, int j, const Settings& s) {
    const Bounded n{static_cast<double>(s.width), 0};
    const Bounded x = Bounded{i - s.width * 0.5, 0} / n, y = Bounded{j - s.width * 0.5, 0} / n;
    const Bounded r2 = x * x + y * y;
    const double bell = std::exp(-r2.value);
    const Bounded weighted{bell, bell * (r2.error + (6 + 4 * r2.value) * parity::SingleRounding)};
    const Bounded brightness{s.brightness, std::abs(s.brightness) * parity::SingleRounding};
    return brightness * weighted / (n * n);
}

/// What a picture of ones comes to: the sum of all weights.
double gain(const Settings& s) {
    double sum = 0;
    for (int i = 0; i <= s.width; ++i)
        for (int j = 0; j <= s.width; ++j) sum += weight(i, j, s).value;
    return sum;
}

/// Awkward numbers in no order: below 0, 0, the smallest subnormal, above 1, seldom the largest half.
Picture awkward(int width, int height) {
    constexpr float Values[] = {-1, -0x1p-24F, 0, 0x1p-24F, 0.25F, 0.75F, 1, 1.5F, 300, 2, 0, 0.5F, -65504};
    Picture picture;
    unsigned state = 1;
    const auto next = [&] {
        state = state * 1664525U + 1013904223U;
        return half(state >> 16U == 7 ? 65504.0F : Values[(state >> 16U) % std::size(Values)]);
    };
    for (int i = 0; i < width * height; ++i) {
        const half r = next(), g = next(), b = next(), a = next();
        picture.push_back({r, g, b, a});
    }
    return picture;
}

class ParityOfPixelBlur : public parity::TileParity {
protected:
    ParityOfPixelBlur() : TileParity("Hollywood/PixelBlur") {}

    void set(const Settings& s) {
        pool.set("width", krod::VValueTrait<int>::Text(s.width));
        pool.set("brightness", text(s.brightness)).set("sharpness", text(s.sharpness));
        ASSERT_TRUE(support::update(*module, pool));
    }

    /// Compares the blurred tile with the oracle; the module has been updated.
    void compare(const std::string& subject, int width, int height, const Settings& s) {
        const Picture before = awkward(width, height), after = processed(before, width);
        parity::Comparison comparison(1);
        for (int y = 0; y < height; ++y) {
            const Samples rows = samplesAt(y, height, s);
            for (int x = 0; x < width; ++x) {
                const Samples columns = samplesAt(x, width, s);
                const auto got = parity::channelsOf(after[static_cast<std::size_t>(y * width + x)]);
                if (!rows.certain || !columns.certain)
                    comparison.leaveOut("a sample on the border of two texels");
                else
                    add(comparison, sum(before, width, columns, rows, s), got,
                        "pixel " + testing::PrintToString(x) + ", " + testing::PrintToString(y));
            }
        }
        EXPECT_TRUE(comparison.verdict("PixelBlur, " + subject));
    }
    void setAndCompare(const std::string& subject, int width, int height, const Settings& s) {
        set(s);
        compare(subject, width, height, s);
    }

    /// How far to the right the light of one bright pixel reaches in a row of so many.
    int reach(int width) {
        Picture row(static_cast<std::size_t>(width), RGBAHalf{half(0), half(0), half(0), half(1)});
        const int middle = width / 2;
        row[static_cast<std::size_t>(middle)] = {half(1), half(1), half(1), half(1)};
        const Picture blurred = processed(row, width);
        int farthest = 0;
        for (int x = middle; x < width; ++x)
            if (static_cast<float>(blurred[static_cast<std::size_t>(x)].r) > 0) farthest = x - middle;
        return farthest;
    }

private:
    static std::array<Bounded, 4> sum(const Picture& picture, int width, const Samples& columns,
                                      const Samples& rows, const Settings& s) {
        std::array<Bounded, 4> total{};
        for (int i = 0; i <= s.width; ++i)
            for (int j = 0; j <= s.width; ++j) {
                const int x = columns.texels[static_cast<std::size_t>(i)];
                const int y = rows.texels[static_cast<std::size_t>(j)];
                const auto texel = parity::channelsOf(picture[static_cast<std::size_t>(y * width + x)]);
                const Bounded share = weight(i, j, s);
                for (std::size_t c = 0; c < total.size(); ++c)
                    total[c] =
                        total[c] + share * Bounded{static_cast<double>(static_cast<float>(texel[c])), 0};
            }
        return total;
    }
    static void add(parity::Comparison& comparison, const std::array<Bounded, 4>& expected,
                    const std::array<half, 4>& got, const std::string& place) {
        for (std::size_t c = 0; c < expected.size(); ++c)
            comparison.add(expected[c], got[c], place + ", " + parity::ChannelNames[c]);
    }
};

TEST_F(ParityOfPixelBlur, PixelBlur_defaults_onePixel_agreesWithOracle) { setAndCompare("1x1", 1, 1, {}); }

TEST_F(ParityOfPixelBlur, PixelBlur_defaults_gridWithinAPixel_agreesWithOracle) {
    setAndCompare("grid within a pixel", 37, 20, {});
}

TEST_F(ParityOfPixelBlur, PixelBlur_defaults_gridOverSeveralPixels_agreesWithOracle) {
    setAndCompare("wide", 250, 20, {});
    setAndCompare("high", 20, 250, {});
}

TEST_F(ParityOfPixelBlur, PixelBlur_leastWidth_sumsTheFourCorners) {
    setAndCompare("width 1", 250, 6, {1, 0.75, 0.25});
}

TEST_F(ParityOfPixelBlur, PixelBlur_greatestValues_agreeWithOracle) {
    setAndCompare("maxima", 2000, 2, {20, 3, 10});
}

TEST_F(ParityOfPixelBlur, PixelBlur_gridBeyondTheEdges_repeatsTheOuterPixels) {
    setAndCompare("a sixth of the tile", 250, 5, {20, 1, 0.125});
}

TEST_F(ParityOfPixelBlur, PixelBlur_negativeBrightness_agreesWithOracle) {
    setAndCompare("negative brightness", 250, 6, {4, -2, 0.3});
}

TEST_F(ParityOfPixelBlur, PixelBlur_L1_unreadable_agreesWithFiveOneAndOne) {
    for (const char* parameter : {"width", "brightness", "sharpness"}) pool.makeUnreadable(parameter);
    ASSERT_TRUE(support::update(*module, pool));
    compare("nothing readable", 230, 12, {5, 1, 1});
}

TEST_F(ParityOfPixelBlur, PixelBlur_L2_valuesBeyondTheirLimits_areTakenAsTheyAre) {
    setAndCompare("beyond the maxima", 250, 6, {21, 4, 25});
    set({-1, 1.5, 1.5}); // no sample at all
    for (const half channel : parity::channelsOf(processed(1))) EXPECT_EQ(static_cast<float>(channel), 0);
}

/// (n + 1)^2 samples over n^2: a picture gets brighter up to a width of 9; beyond it the bell outweighs that.
TEST_F(ParityOfPixelBlur, PixelBlur_L4_brightnessOne_isBrighterUpToWidthNineOnly) {
    for (int width = 1; width <= 20; ++width) {
        const Settings settings{width, 1, 1.5};
        set(settings);
        const float got = static_cast<float>(processed(1).r);
        EXPECT_NEAR(got, gain(settings), parity::halfStep(gain(settings))) << "width " << width;
        if (width <= 9)
            EXPECT_GT(got, 1) << "width " << width;
        else
            EXPECT_LT(got, 1) << "width " << width;
    }
}

TEST_F(ParityOfPixelBlur, PixelBlur_L6_reach_growsWithTheTile) {
    ASSERT_TRUE(support::update(*module, pool));
    EXPECT_EQ(reach(50), 0);
    EXPECT_EQ(reach(100), 1);
    EXPECT_EQ(reach(400), 3);
    EXPECT_EQ(reach(1000), 7);
}

TEST_F(ParityOfPixelBlur, PixelBlur_L7_zeros_areDrawnWithoutAWord) {
    const support::Warnings warnings;
    for (const Settings& zero : {Settings{0, 1.5, 1.5}, Settings{3, 1.5, 0}, Settings{2, 0, 0}}) {
        set(zero);
        EXPECT_NO_THROW(static_cast<void>(processed(awkward(16, 4), 16)))
            << zero.width << ", " << zero.sharpness;
    }
    EXPECT_TRUE(warnings.texts.empty()) << warnings.texts.front();
}

TEST_F(ParityOfPixelBlur, PixelBlur_L8_alpha_isBlurredLikeTheColours) {
    ASSERT_TRUE(support::update(*module, pool));
    Picture row(250, RGBAHalf{half(0), half(0), half(0), half(0)});
    row[125] = {half(1), half(0), half(0), half(1)};
    const Picture blurred = processed(row, 250);
    int touched = 0;
    for (const RGBAHalf& pixel : blurred) {
        EXPECT_EQ(static_cast<float>(pixel.a), static_cast<float>(pixel.r));
        EXPECT_EQ(static_cast<float>(pixel.g), 0);
        touched += static_cast<float>(pixel.a) > 0 ? 1 : 0;
    }
    EXPECT_EQ(touched, 4);
}

} // namespace
