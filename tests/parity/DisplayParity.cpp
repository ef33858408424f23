// SPDX-License-Identifier: Apache-2.0
#include "DisplayParity.h"

#include "workbench/gl/RenderTarget.h"
#include "workbench/gl/SceneRenderer.h"
#include "workbench/gl/ShaderCapture.h"

#include "host/gl/GLProgram.h"

#include <epoxy/gl.h>

#include <algorithm>
#include <cstring>

namespace parity {
namespace {

/// The i-th of the values in a numbering of all combinations, and on to the next digit.
template <class Values>
float digit(std::size_t& number, const Values& values) {
    const float value = values[number % values.size()];
    number /= values.size();
    return value;
}

/// Eighths that run over the screen.
float depthAt(int x, int y, int sample) { return 0.125F * static_cast<float>((x + 3 * y + 5 * sample) % 8); }

/// The scene's samples, drawn; then the two textures stand on the units 0 and 1.
void bindScene(const SamplePattern::Values& scene, const workbench::RenderTarget& target, int side) {
    glViewport(0, 0, side, side);
    glBindFramebuffer(GL_FRAMEBUFFER, target.framebuffer());
    const krod::VValuePool pool;
    krod::VGLRenderContext context(pool, side, side);
    krod::StrongPtr<SamplePattern>(new SamplePattern(scene))->draw(context);
    glActiveTexture(GL_TEXTURE1);
    glBindTexture(GL_TEXTURE_2D_MULTISAMPLE, target.depth());
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D_MULTISAMPLE, target.color());
}

} // namespace

SceneSample awkward(int x, int y, int sample) {
    std::size_t n = static_cast<std::size_t>(y * Side + x + sample * 1009) % Combinations;
    const float r = digit(n, Lanes), g = digit(n, Lanes), b = digit(n, Lanes), a = digit(n, Alphas);
    return {r, g, b, a, depthAt(x, y, sample)};
}

SceneSample moderate(int x, int y, int sample) {
    const auto step = [&](int ofX, int ofY, int ofSample, int count) {
        return static_cast<float>(1 + (ofX * x + ofY * y + ofSample * sample) % count);
    };
    return {step(739, 311, 1123, 2039) / 512, step(421, 947, 577, 2039) / 512,
            step(1289, 163, 823, 2039) / 512, step(101, 53, 139, 251) / 128, depthAt(x, y, sample)};
}

Colour exactly(const SceneSample& s) { return {exactly(s.r), exactly(s.g), exactly(s.b), exactly(s.a)}; }

Colour operator+(const Colour& a, const Colour& b) { return {a.r + b.r, a.g + b.g, a.b + b.b, a.a + b.a}; }

Colour operator*(const Colour& c, const Bounded& factor) {
    return {c.r * factor, c.g * factor, c.b * factor, c.a * factor};
}

Colour operator/(const Colour& c, const Bounded& divisor) {
    return {c.r / divisor, c.g / divisor, c.b / divisor, c.a / divisor};
}

Colour over(const Colour& source) {
    const Colour behind = exactly(SceneSample{Background[0], Background[1], Background[2], Background[3]});
    return source * source.a + behind * (exactly(1) - source.a);
}

Colour glow(const Colour& source) {
    const Colour behind = exactly(SceneSample{Background[0], Background[1], Background[2], Background[3]});
    return source * source.a + behind;
}

const krod::RGBAHalf& Picture::at(int x, int y) const {
    return pixels.at(static_cast<std::size_t>((height - 1 - y) * width + x));
}

bool operator==(const Picture& a, const Picture& b) {
    return a.width == b.width && a.height == b.height &&
           std::memcmp(a.pixels.data(), b.pixels.data(), a.pixels.size() * sizeof(krod::RGBAHalf)) == 0;
}

void addPixel(Comparison& comparison, const Picture& picture, int x, int y, const Colour& expected) {
    const krod::RGBAHalf& got = picture.at(x, y);
    const std::string place =
        "pixel " + testing::PrintToString(x) + ", " + testing::PrintToString(y) + ", channel ";
    comparison.add(expected.r, got.r, place + "r");
    comparison.add(expected.g, got.g, place + "g");
    comparison.add(expected.b, got.b, place + "b");
    comparison.add(expected.a, got.a, place + "a");
}

Picture DisplayParity::draw(const SamplePattern::Values& scene, int width, int height,
                            const krod::VValuePool& pool) {
    const krod::StrongPtr<SamplePattern> pattern(new SamplePattern(scene));
    display->setInput(pattern);
    workbench::FrameSetup setup;
    setup.width = width;
    setup.height = height;
    setup.background = Background;
    Picture picture{width, height, workbench::renderPicture(session, *display, pool, setup)};
    samples = pattern->samples();
    display->setInput({});
    return picture;
}

krod::RGBAHalf DisplayParity::drawColour(const SceneSample& sample, const krod::VValuePool& pool) {
    return draw([&](int, int, int) { return sample; }, 1, 1, pool).at(0, 0);
}

DisplayParity::TextOutput DisplayParity::outputOfTheText(const SamplePattern::Values& scene, int side,
                                                         const krod::VValuePool& pool) {
    const auto texts = workbench::captureShader(*display, pool).at(0);
    const auto source = session.targets().leaseMultisample(side, side, 8);
    const auto result = session.targets().lease(side, side, true);
    bindScene(scene, *source, side);
    samples = source->samples();

    glBindFramebuffer(GL_FRAMEBUFFER, result->framebuffer());
    glDisable(GL_SAMPLE_MASK);
    krod::GLProgram program(texts.vertexText, texts.fragmentText, "vertex shader", "fragment shader");
    program.use();
    program.setUniformValuei("SceneColor", 0, true);
    program.setUniformValuei("SceneDepth", 1, true);
    program.setUniformValuei("nSamples", samples, false);
    glRectf(-1, -1, 1, 1); // the pattern has left a depth test that everything passes

    const auto pixels = static_cast<std::size_t>(side * side);
    TextOutput output{{side, side, std::vector<krod::RGBAHalf>(pixels)}, std::vector<float>(pixels)};
    for (int y = 0; y < side; ++y)
        glReadPixels(0, side - 1 - y, side, 1, GL_RGBA, GL_HALF_FLOAT,
                     &output.picture.pixels[static_cast<std::size_t>(y * side)]);
    glReadPixels(0, 0, side, side, GL_DEPTH_COMPONENT, GL_FLOAT, output.depths.data());
    return output;
}

void DisplayParity::expectLeastDepth(const krod::VValuePool& pool) {
    const TextOutput output = outputOfTheText(awkward, Side, pool);
    for (int y = 0; y < Side; ++y)
        for (int x = 0; x < Side; ++x) {
            float least = 1;
            for (int i = 0; i < samples; ++i) least = std::min(least, awkward(x, y, i).depth);
            ASSERT_EQ(output.depths[static_cast<std::size_t>(y * Side + x)], least)
                << "pixel " << x << ", " << y;
        }
}

} // namespace parity
