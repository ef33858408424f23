// SPDX-License-Identifier: Apache-2.0
// What the tests of frames share: a context, ears for warnings, and objects made of functions.
#pragma once

#include "host/gl/GLProgram.h"
#include "host/gl/MSDeferredObjectDisplay.h"
#include "workbench/core/ActionListener.h"
#include "workbench/gl/RenderSession.h"
#include "workbench/gl/SceneRenderer.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace workbench::test {

/// Hears all warnings as long as it lives.
class Warnings : public ActionListener {
public:
    Warnings() : before(setActionListener(this)) {}
    Warnings(const Warnings&) = delete;
    Warnings& operator=(const Warnings&) = delete;
    ~Warnings() override { setActionListener(before); }

    void warning(const std::string& text) override { heard.push_back(text); }
    /// How many of them contain the text.
    [[nodiscard]] int count(const std::string& text) const;

    std::vector<std::string> heard;

private:
    ActionListener* before;
};

/// A session on a software driver, without the driver's own shader cache.
class GlTest : public ::testing::Test {
protected:
    explicit GlTest(SessionOptions options = {});

    Warnings warnings;
    RenderSession session;
    krod::VValuePool pool;
};

/// Whether the tests run on softpipe, the driver with a single sample; else on llvmpipe.
[[nodiscard]] bool onSoftpipe();

/// An object that draws what a function draws.
class TestObject : public krod::VGLRenderObject {
public:
    using Draw = std::function<void(krod::VGLRenderContext&)>;
    explicit TestObject(Draw draw, const std::string& name = "object")
        : VGLRenderObject(name, 0, {}), drawing(std::move(draw)) {}
    void draw(krod::VGLRenderContext& context) override { drawing(context); }
    [[nodiscard]] krod::BoundingSphere bounds() const override { return {0, 0, 0, 1}; }

private:
    Draw drawing;
};

/// A display whose render operation is a function.
class TestDisplay : public krod::MSDeferredObjectDisplay {
public:
    class Renderer : public MultiSampleDeferredRenderer {
    public:
        Renderer(krod::VGLRenderContext& context, int samples, const TestDisplay& display)
            : MultiSampleDeferredRenderer(context, samples), display(display) {}
        void render() override { display.rendering(*this); }
        using DeferredRenderer::glRenderFullScreen;

    private:
        const TestDisplay& display;
    };
    using Render = std::function<void(Renderer&)>;

    explicit TestDisplay(Render render, int samples = 4, const std::string& name = "display")
        : MSDeferredObjectDisplay(name, {}, Samples{8, 0}), wanted(samples), rendering(std::move(render)) {}
    krod::StrongPtr<MultiSampleDeferredRenderer> createRenderer(krod::VGLRenderContext& context) override {
        return krod::StrongPtr<MultiSampleDeferredRenderer>(new Renderer(context, wanted, *this));
    }
    using MSDeferredObjectDisplay::readSamples;

private:
    int wanted;
    Render rendering;
};

[[nodiscard]] krod::StrongPtr<krod::VGLRenderObject> object(TestObject::Draw draw);
[[nodiscard]] krod::StrongPtr<TestDisplay> display(TestDisplay::Render render, int samples = 1);
/// Draws nothing.
void nothing(krod::VGLRenderContext& context);
/// Fills the frame with (0.25, 0.5, 0.75, 1) at half depth.
void fill(krod::VGLRenderContext& context);

/// The texts of a display that averages its samples, and its render operation as modules write it.
[[nodiscard]] std::string vertexText();
[[nodiscard]] std::string averageText();
void average(TestDisplay::Renderer& renderer);
/// The quad of any fragment text over the scene of the renderer, blended.
void shade(TestDisplay::Renderer& renderer, const std::string& fragmentText);

[[nodiscard]] FrameSetup frame(int width, int height);

} // namespace workbench::test
