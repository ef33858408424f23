// SPDX-License-Identifier: Apache-2.0
// What the pixel tests of the displays share.
#pragma once

#include "Comparison.h"
#include "SamplePattern.h"
#include "tests/support/LoadedPlugin.h"
#include "tests/support/ParameterPool.h"
#include "workbench/gl/RenderSession.h"

#include "host/core/VValuePool.h"
#include "host/gl/MSDeferredObjectDisplay.h"
#include "host/rendering/RGBAHalf.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace parity {

/// What pictures are drawn over.
inline constexpr std::array<float, 4> Background{0.25F, -0.5F, 2.0F, 0.75F};

/// What can be awkward: below 0, 0, the smallest subnormals, 1, above 1, the largest half.
inline constexpr std::array Lanes{-1.0F, -0x1p-24F, 0.0F, 0x1p-24F, 0.25F, 0.75F, 1.0F, 1.5F, 65504.0F};
inline constexpr std::array Alphas{0.0F, 0.5F, 1.0F, 2.0F};
inline constexpr std::size_t Combinations = Lanes.size() * Lanes.size() * Lanes.size() * Alphas.size();
/// The side of the square picture in which each combination stands in one pixel.
inline constexpr int Side = 54;
static_assert(Side * Side == Combinations);

/// All combinations of lanes and alphas in each sample, in another order per sample.
[[nodiscard]] SceneSample awkward(int x, int y, int sample);
/// Positive values up to 4, alpha up to 2, that differ from pixel to pixel and from sample to sample. None of
/// them drowns the others in a sum, and sums of them are seldom halves.
[[nodiscard]] SceneSample moderate(int x, int y, int sample);

/// A colour of an oracle.
struct Colour {
    Bounded r, g, b, a;
};

[[nodiscard]] Colour exactly(const SceneSample& s);
[[nodiscard]] Colour operator+(const Colour& a, const Colour& b);
[[nodiscard]] Colour operator*(const Colour& c, const Bounded& factor);
[[nodiscard]] Colour operator/(const Colour& c, const Bounded& divisor);

/// Source alpha times the source and one minus source alpha times the background.
[[nodiscard]] Colour over(const Colour& source);
/// Source alpha times the source is added to the background.
[[nodiscard]] Colour glow(const Colour& source);

/// The pixels of a picture; y counts from the bottom row.
struct Picture {
    int width = 0, height = 0;
    std::vector<krod::RGBAHalf> pixels; ///< the top row first

    [[nodiscard]] const krod::RGBAHalf& at(int x, int y) const;
    /// Whether both have the same size and the same bits.
    friend bool operator==(const Picture& a, const Picture& b);
};

/// Compares all four channels of one pixel.
void addPixel(Comparison& comparison, const Picture& picture, int x, int y, const Colour& expected);
/// Compares every pixel with what `required(x, y)` gives.
template <class Required>
void addPicture(Comparison& comparison, const Picture& picture, const Required& required) {
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x) addPixel(comparison, picture, x, y, required(x, y));
}

/// One display of the shipped plug-in on a software driver.
class DisplayParity : public testing::Test {
protected:
    /// Takes "Display/Depth@DisplayDepth" as well as "Display/CMYK".
    explicit DisplayParity(const std::string& keyAndSource)
        : display(plugin.make<krod::MSDeferredObjectDisplay>(keyAndSource)) {}

    /// Draws a scene through the display, with its parameters read in the pool, over the background.
    Picture draw(const SamplePattern::Values& scene, int width, int height,
                 const krod::VValuePool& pool = {});
    Picture drawAwkward(const krod::VValuePool& pool = {}) { return draw(awkward, Side, Side, pool); }
    /// One pixel that holds the same colour in every sample.
    krod::RGBAHalf drawColour(const SceneSample& sample, const krod::VValuePool& pool = {});

    /// What the display's text itself writes, without blending and with a depth test that everything passes.
    struct TextOutput {
        Picture picture;
        std::vector<float> depths; ///< the bottom row first
    };
    /// Runs the text that the display makes with that pool on eight samples, or as many as the driver grants.
    /// Uniforms other than the scene's stay 0.
    TextOutput outputOfTheText(const SamplePattern::Values& scene, int side,
                               const krod::VValuePool& pool = {});
    /// Expects that the text writes the least depth of all samples of the awkward scene.
    void expectLeastDepth(const krod::VValuePool& pool = {});

    [[nodiscard]] support::ParameterPool parameters() const { return support::ParameterPool(*display); }

    support::Warnings warnings; // that eight samples are asked and fewer used
    workbench::RenderSession session{{.gpu = {workbench::GpuChoice::Kind::Software, 0, ""}}};
    support::LoadedPlugin plugin;
    krod::StrongPtr<krod::MSDeferredObjectDisplay> display;
    int samples = 0; ///< of the last target
};

} // namespace parity
