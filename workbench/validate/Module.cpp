// SPDX-License-Identifier: Apache-2.0
#include "workbench/validate/Module.h"

#include "host/core/VRequest.h"
#include "host/gl/GLImageTileProcessor.h"
#include "workbench/gl/SceneRenderer.h"
#include "workbench/gl/ShaderCapture.h"
#include "workbench/report/Failure.h"

#include <cstring>
#include <stdexcept>
#include <utility>

#include <epoxy/gl.h>

namespace workbench::validate {
namespace {

/// A slanted patch in four colours, half of it transparent: something for every display to work on.
class Patch : public krod::VGLRenderObject {
public:
    Patch() : VGLRenderObject("patch", 0, {}) {}
    void draw(krod::VGLRenderContext&) override {
        constexpr float Colours[4][4] = {{1, 0, 0, 1}, {0, 4, 0, 1}, {0, 0, 0.25F, 0.5F}, {1, 1, 1, 0.5F}};
        constexpr double Corners[4][3] = {
            {-0.8, -0.8, 0.5}, {0.8, -0.8, 0}, {0.8, 0.8, -0.5}, {-0.8, 0.8, 0}};
        glEnable(GL_DEPTH_TEST);
        glBegin(GL_TRIANGLES); // drivers cut quads along either diagonal
        for (const int corner : {0, 1, 2, 0, 2, 3}) {
            glColor4fv(Colours[corner]);
            glVertex3dv(Corners[corner]);
        }
        glEnd();
    }
    [[nodiscard]] krod::BoundingSphere bounds() const override { return {0, 0, 0, 1}; }
};

} // namespace

bool update(krod::VObject& object, const krod::VValuePool& pool) {
    krod::VRequest request(pool);
    return object.update(request, 0);
}

bool waitsForText(const krod::VObject& object) {
    for (const auto& input : object.slots().inputs())
        if (const auto* text = dynamic_cast<const krod::TypedValue<std::string>*>(&input.parameter->value()))
            if (text->value().empty()) return true;
    return false;
}

krod::StrongPtr<krod::ImageTileProcessor> processorOf(const krod::VObject& object) {
    using Held = krod::TypedValue<krod::StrongPtr<krod::ImageTileProcessor>>;
    for (const auto& output : object.slots().outputs())
        if (const auto* held = dynamic_cast<const Held*>(&output.parameter->value())) return held->value();
    return {};
}

std::vector<std::string> shaderTexts(krod::VObject& object, const krod::VValuePool& pool) {
    std::vector<std::string> texts;
    if (auto* display = dynamic_cast<krod::MSDeferredObjectDisplay*>(&object)) {
        for (const ProgramTexts& program : captureShader(*display, pool))
            texts.push_back(program.fragmentText);
        return texts;
    }
    update(object, pool);
    const auto processor = processorOf(object);
    if (const auto* shader = dynamic_cast<const krod::GLImageTileProcessor*>(processor.get()))
        texts.push_back(shader->shaderCode());
    return texts;
}

std::unique_ptr<RenderSession> openSession(const Trial& trial) {
    try {
        return std::make_unique<RenderSession>(SessionOptions{.gpu = trial.gpu()});
    } catch (const Failure& failure) {
        throw Skipped{"there is no usable OpenGL here: " + failure.diagnostic().what};
    }
}

bool draws(const krod::VObject& object) { return dynamic_cast<const krod::RenderAble*>(&object) != nullptr; }

void connectScene(krod::VObject& object) {
    if (auto* display = dynamic_cast<krod::MSDeferredObjectDisplay*>(&object); display && !display->input())
        display->setInput(krod::StrongPtr<krod::VGLRenderObject>(new Patch));
}

Pixels draw(RenderSession& session, krod::VObject& object, const krod::VValuePool& pool, int width,
            int height) {
    connectScene(object);
    auto& renderable = dynamic_cast<krod::RenderAble&>(object);
    FrameSetup setup;
    setup.width = width;
    setup.height = height;
    setup.camera = Camera::fitted(renderable.bounds(), static_cast<double>(width) / height);
    return renderPicture(session, renderable, pool, setup);
}

Pixels process(krod::VObject& object, Pixels pixels, int width, int height, const krod::VValuePool& pool) {
    const auto processor = processorOf(object);
    if (!processor) throw std::runtime_error("the output holds no processor");
    const krod::StrongPtr<krod::Chunk<krod::RGBAHalf>> store(
        new krod::Chunk<krod::RGBAHalf>(std::move(pixels)));
    krod::ImageTile tile(width, height, store);
    const krod::VRenderContext context(pool);
    processor->process(context, tile);
    return {store->data(), store->data() + store->elements()};
}

Pixels drawPixels(Trial& trial, std::size_t count) {
    using half = half_float::half;
    Pixels pixels(count);
    const auto next = [&trial](double most) { return half(static_cast<float>(trial.drawBetween(0, most))); };
    for (krod::RGBAHalf& pixel : pixels) pixel = {next(4), next(4), next(4), next(1)};
    return pixels;
}

bool sameBits(const Pixels& a, const Pixels& b) {
    return a.size() == b.size() &&
           (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof a[0]) == 0);
}

} // namespace workbench::validate
