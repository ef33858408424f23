// SPDX-License-Identifier: Apache-2.0
// The pixels of Display/CMYK.
#include "Comparison.h"
#include "SamplePattern.h"
#include "tests/support/LoadedPlugin.h"
#include "tests/support/ParameterPool.h"
#include "workbench/gl/RenderSession.h"
#include "workbench/gl/RenderTarget.h"
#include "workbench/gl/SceneRenderer.h"
#include "workbench/gl/ShaderCapture.h"

#include "host/gl/GLProgram.h"

#include <gtest/gtest.h>

#include <epoxy/gl.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

using parity::Bounded;
using parity::SamplePattern;
using parity::SceneSample;
using support::ParameterPool;
using Picture = std::vector<krod::RGBAHalf>;

constexpr std::array<float, 4> Background{0.25F, -0.5F, 2.0F, 0.75F};

// What can be awkward: below 0, 0, the smallest subnormals, 1, above 1, the largest half.
constexpr std::array Lanes{-1.0F, -0x1p-24F, 0.0F, 0x1p-24F, 0.25F, 0.75F, 1.0F, 1.5F, 65504.0F};
constexpr std::array Alphas{0.0F, 0.5F, 1.0F, 2.0F};
constexpr std::size_t Combinations = Lanes.size() * Lanes.size() * Lanes.size() * Alphas.size();
constexpr int Side = 54;
static_assert(Side * Side == Combinations, "each combination stands in one pixel");

/// All combinations of lanes in each sample, in another order per sample.
SceneSample awkward(int x, int y, int sample) {
    std::size_t n = static_cast<std::size_t>(y * Side + x + sample * 1009) % Combinations;
    const auto next = [&n](const auto& values) {
        const float value = values[n % values.size()];
        n /= values.size();
        return value;
    };
    const float r = next(Lanes), g = next(Lanes), b = next(Lanes), a = next(Alphas);
    return {r, g, b, a, 0.125F * static_cast<float>((x + 3 * y + 5 * sample) % 8)};
}

struct Colour {
    Bounded r, g, b, a;
};

Bounded exactly(double value) { return {value, 0}; }

Colour processColor(const Colour& c) {
    const Bounded one = exactly(1);
    const Bounded black = min(min(one - c.r, one - c.g), c.b);
    const Bounded white = one - black;
    return {(white - c.r) / white, (white - c.g) / white, (white - c.b) / white, c.a};
}

/// The required pixel: the sum over all samples, divided by one less than their number, over the background.
Colour required(const SamplePattern::Values& scene, int x, int y, int samples) {
    Colour sum{};
    for (int i = 0; i < samples; ++i) {
        const SceneSample s = scene(x, y, i);
        const Colour c = processColor({exactly(s.r), exactly(s.g), exactly(s.b), exactly(s.a)});
        sum = i == 0 ? c : Colour{sum.r + c.r, sum.g + c.g, sum.b + c.b, sum.a + c.a};
    }
    const Bounded divisor = exactly(samples > 1 ? samples - 1 : 1);
    const Bounded alpha = sum.a / divisor, rest = exactly(1) - alpha;
    const auto over = [&](const Bounded& c, float behind) { return c * alpha + exactly(behind) * rest; };
    return {over(sum.r / divisor, Background[0]), over(sum.g / divisor, Background[1]),
            over(sum.b / divisor, Background[2]), over(alpha, Background[3])};
}

class ParityOfCMYK : public testing::Test {
protected:
    Picture draw(const SamplePattern::Values& scene, int width, int height,
                 const krod::VValuePool& pool = {}) {
        const krod::StrongPtr<SamplePattern> pattern(new SamplePattern(scene));
        display->setInput(pattern);
        workbench::FrameSetup setup;
        setup.width = width;
        setup.height = height;
        setup.background = Background;
        Picture picture = workbench::renderPicture(session, *display, pool, setup);
        samples = pattern->samples();
        display->setInput({});
        return picture;
    }
    /// One pixel of one colour in every sample.
    krod::RGBAHalf drawColour(float r, float g, float b, float a) {
        return draw([&](int, int, int) { return SceneSample{r, g, b, a, 0.5F}; }, 1, 1).at(0);
    }
    Picture drawAwkward(const krod::VValuePool& pool = {}) { return draw(awkward, Side, Side, pool); }

    support::Warnings warnings; // that 8 samples are asked and fewer used
    workbench::RenderSession session{{.gpu = {workbench::GpuChoice::Kind::Software, 0, ""}}};
    support::LoadedPlugin plugin;
    krod::StrongPtr<krod::MSDeferredObjectDisplay> display =
        plugin.make<krod::MSDeferredObjectDisplay>("Display/CMYK");
    int samples = 0; ///< of the last target
};

TEST_F(ParityOfCMYK, CMYKObjectDisplay_driver_hasTheSamplesThatTheRunIsMeantFor) {
    const char* const driver = std::getenv("GALLIUM_DRIVER");
    ASSERT_NE(driver, nullptr) << "the test needs GALLIUM_DRIVER=llvmpipe or softpipe";
    drawColour(1, 1, 1, 1);
    EXPECT_EQ(samples, std::string(driver) == "softpipe" ? 1 : 4) << session.driver();
}

TEST_F(ParityOfCMYK, CMYKObjectDisplay_awkwardSamples_agreeWithOracle) {
    const Picture picture = drawAwkward();
    parity::Comparison comparison(1);
    for (int row = 0; row < Side; ++row)
        for (int x = 0; x < Side; ++x) {
            const int y = Side - 1 - row; // pictures begin with the top row
            const Colour expected = required(awkward, x, y, samples);
            const krod::RGBAHalf got = picture[static_cast<std::size_t>(row * Side + x)];
            const std::string place =
                "pixel " + testing::PrintToString(x) + ", " + testing::PrintToString(y) + ", channel ";
            comparison.add(expected.r, got.r, place + "r");
            comparison.add(expected.g, got.g, place + "g");
            comparison.add(expected.b, got.b, place + "b");
            comparison.add(expected.a, got.a, place + "a");
        }
    EXPECT_TRUE(comparison.verdict("CMYK, " + testing::PrintToString(samples) + " samples"));
}

/// With the third term 1 - b, black would divide by zero and yellow would change.
TEST_F(ParityOfCMYK, CMYKObjectDisplay_K1_blackOfPlainColours_hasBlueItselfAsThirdTerm) {
    struct Row {
        const char* name;
        float r, g, b;
        double cyan, magenta, yellow;
    };
    for (const Row& row :
         {Row{"white", 1, 1, 1, 0, 0, 0}, Row{"black", 0, 0, 0, 1, 1, 1}, Row{"yellow", 1, 1, 0, 0, 0, 1},
          Row{"dark blue", 0, 0, 0.5F, 1, 1, 0}, Row{"grey", 0.5F, 0.5F, 0.25F, 1.0 / 3, 1.0 / 3, 2.0 / 3}}) {
        const krod::RGBAHalf got = drawColour(row.r, row.g, row.b, 1);
        const double brighter = samples > 1 ? samples / (samples - 1.0) : 1; // alpha as well
        const auto over = [&](double c, float behind) {
            return c * brighter * brighter + behind * (1 - brighter);
        };
        // One step of half each for the shader's output and the blended result.
        EXPECT_NEAR(got.r, over(row.cyan, Background[0]), 0x1p-9) << row.name;
        EXPECT_NEAR(got.g, over(row.magenta, Background[1]), 0x1p-9) << row.name;
        EXPECT_NEAR(got.b, over(row.yellow, Background[2]), 0x1p-9) << row.name;
    }
}

/// Alpha stands in the result as well as in the blending: (N/(N-1) a)^2 + behind (1 - N/(N-1) a).
TEST_F(ParityOfCMYK, CMYKObjectDisplay_K3_equalSamples_areBrighterByNOverNMinusOne) {
    const krod::RGBAHalf got = drawColour(0, 0, 0, 0.75F);
    const double brighter = samples > 1 ? samples / (samples - 1.0) : 1;
    const double alpha = 0.75 * brighter;
    EXPECT_NEAR(got.a, alpha * alpha + Background[3] * (1 - alpha), 0x1p-10);
    EXPECT_NEAR(got.r, brighter * alpha + Background[0] * (1 - alpha), 0x1p-10);
}

TEST_F(ParityOfCMYK, CMYKObjectDisplay_K4_glowAndHalo_sameBits) {
    const Picture plain = drawAwkward();
    for (const char* options : {"+glow -halo", "-glow +halo", "+glow +halo"}) {
        const Picture other = drawAwkward(ParameterPool(*display).set("options", options));
        EXPECT_EQ(std::memcmp(plain.data(), other.data(), plain.size() * sizeof(krod::RGBAHalf)), 0)
            << options;
    }
}

TEST_F(ParityOfCMYK, CMYKObjectDisplay_K5_parameterSamples_sameBitsAndSameTarget) {
    const Picture plain = drawAwkward();
    const int before = samples;
    const Picture other = drawAwkward(ParameterPool(*display).set("samples", "1"));
    EXPECT_EQ(samples, before);
    EXPECT_EQ(std::memcmp(plain.data(), other.data(), plain.size() * sizeof(krod::RGBAHalf)), 0);
}

/// The quad is drawn without depth test, so that its depth is lost. Here the same text runs with one.
TEST_F(ParityOfCMYK, CMYKObjectDisplay_depthOfTheText_isTheLeastOfAllSamples) {
    const auto texts = workbench::captureShader(*display, {}).at(0);
    const auto scene = session.targets().leaseMultisample(Side, Side, 8);
    const auto result = session.targets().lease(Side, Side, true);
    glViewport(0, 0, Side, Side);
    glBindFramebuffer(GL_FRAMEBUFFER, scene->framebuffer());
    const krod::VValuePool pool;
    krod::VGLRenderContext context(pool, Side, Side);
    krod::StrongPtr<SamplePattern>(new SamplePattern(awkward))->draw(context);

    glBindFramebuffer(GL_FRAMEBUFFER, result->framebuffer());
    glDisable(GL_SAMPLE_MASK);
    glActiveTexture(GL_TEXTURE1);
    glBindTexture(GL_TEXTURE_2D_MULTISAMPLE, scene->depth());
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D_MULTISAMPLE, scene->color());
    krod::GLProgram program(texts.vertexText, texts.fragmentText, "vertex shader", "fragment shader");
    program.use();
    program.setUniformValuei("SceneColor", 0, true);
    program.setUniformValuei("SceneDepth", 1, true);
    program.setUniformValuei("nSamples", scene->samples(), true);
    glRectf(-1, -1, 1, 1); // the pattern has left a depth test that everything passes

    std::vector<float> depths(Combinations);
    glReadPixels(0, 0, Side, Side, GL_DEPTH_COMPONENT, GL_FLOAT, depths.data());
    for (int y = 0; y < Side; ++y)
        for (int x = 0; x < Side; ++x) {
            float least = 1;
            for (int i = 0; i < scene->samples(); ++i) least = std::min(least, awkward(x, y, i).depth);
            ASSERT_EQ(depths[static_cast<std::size_t>(y * Side + x)], least) << "pixel " << x << ", " << y;
        }
}

} // namespace
