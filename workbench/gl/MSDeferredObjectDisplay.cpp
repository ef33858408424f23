// SPDX-License-Identifier: Apache-2.0
#include "host/gl/MSDeferredObjectDisplay.h"

#include "workbench/gl/ArrayLimit.h"
#include "workbench/gl/PendingErrors.h"
#include "workbench/gl/Quad.h"
#include "workbench/gl/RenderSession.h"
#include "workbench/gl/RenderTarget.h"
#include "workbench/gl/StateGuard.h"
#include "workbench/report/Failure.h"

#include "host/gl/GLProgram.h"

#include <epoxy/gl.h>

#include <algorithm>
#include <stdexcept>

namespace krod {
namespace {

using Renderer = MSDeferredRenderObject::MultiSampleDeferredRenderer;

constexpr int ColorUnit = 0, DepthUnit = 1;
constexpr int MostSamples = 16;

/// The slot type of this library, which is destroyed after every plug-in.
const TypedSlot<int>::Registration sampleCounts;

constexpr char VertexText[] = "void main() { gl_Position = ftransform(); }\n";

constexpr char DepthText[] = R"(#version 150
uniform int nSamples;
uniform sampler2DMS SceneDepth;

void main() {
    ivec2 pixel = ivec2(gl_FragCoord.xy);
    float depth = texelFetch(SceneDepth, pixel, 0).r;
    for (int i = 1; i < nSamples; ++i) depth = min(depth, texelFetch(SceneDepth, pixel, i).r);
    gl_FragDepth = depth;
}
)";

/// The input gets the matrices of the frame that the display is drawn in.
void bindForInput(const workbench::RenderTarget& target, const VGLRenderContext& context) {
    target.bind();
    workbench::setDrawingState(context.width(), context.height());
    workbench::RenderTarget::clear({0, 0, 0, 0});
}

void bindScene(const workbench::RenderTarget& target) {
    glActiveTexture(GL_TEXTURE0 + DepthUnit);
    glBindTexture(GL_TEXTURE_2D_MULTISAMPLE, target.depth());
    glActiveTexture(GL_TEXTURE0 + ColorUnit);
    glBindTexture(GL_TEXTURE_2D_MULTISAMPLE, target.color());
}

/// Lays the least depth of a target's samples into the depth of the current framebuffer, where it is nearer.
void handDepthOn(const workbench::RenderTarget& target, VGLRenderContext& context) {
    workbench::setEntryState(context.width(), context.height());
    bindScene(target);
    glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
    glEnable(GL_DEPTH_TEST);
    GLProgram program(VertexText, DepthText, "depth vertex shader", "depth fragment shader");
    program.use();
    program.setUniformValuei("SceneDepth", DepthUnit, true);
    program.setUniformValuei("nSamples", target.samples(), true);
    workbench::drawFullScreenQuad(1);
}

/// Failures of a shader get the display's name, which the labels of the texts do not have.
void runRenderer(Renderer& renderer, const std::string& display) {
    try {
        renderer.render();
    } catch (const workbench::Failure& failure) {
        if (failure.fault() != workbench::Fault::Shader) throw;
        workbench::Diagnostic diagnostic = failure.diagnostic();
        diagnostic.who = display + ", " + diagnostic.who;
        throw workbench::Failure(failure.fault(), std::move(diagnostic));
    }
}

} // namespace

MSDeferredObjectDisplay::MSDeferredObjectDisplay(const std::string& name,
                                                 const StrongPtr<VCreationPreferences>& preferences,
                                                 Samples wanted)
    : MSDeferredObjectDisplay(name, preferences) {
    samples.emplace(this, "samples", wanted.initialValue, wanted.expertLevel,
                    Limits<int>{.max = MostSamples});
}

MSDeferredObjectDisplay::MSDeferredObjectDisplay(const std::string& name,
                                                 const StrongPtr<VCreationPreferences>& preferences)
    : MSDeferredRenderObject(name, 0, preferences) {
    slots().addSink("object", Typename<VGLRenderObject>());
}

MSDeferredObjectDisplay::~MSDeferredObjectDisplay() = default;

void MSDeferredObjectDisplay::setInput(const StrongPtr<VGLRenderObject>& object) {
    std::string path = name();
    for (const VGLRenderObject* link = object.get(); link;) {
        path += " → " + link->name();
        if (link == this)
            throw std::invalid_argument(name() + ": " + object->name() +
                                        " cannot be its input, since it shows this display itself: " + path);
        const auto* display = dynamic_cast<const MSDeferredObjectDisplay*>(link);
        link = display ? display->input().get() : nullptr;
    }
    if (object) requireAccepted(object);
    source = object;
}

void MSDeferredObjectDisplay::requireAccepted(const StrongPtr<VGLRenderObject>& object) const {
    const AcceptInfoList accepted = accept(WeakPtr<VObject>(object));
    const bool itself = std::ranges::any_of(accepted, &std::string::empty, &AcceptInfo::output);
    if (!itself)
        throw std::invalid_argument(name() + ": " + object->name() +
                                    " cannot be its input, since the display does not accept it");
}

AcceptInfoList MSDeferredObjectDisplay::accept(const WeakPtr<VObject>& object) const {
    const auto renderable = castStrong<VGLRenderObject>(object.lock());
    if (!renderable) return {};
    const VGLRenderObject& candidate = *renderable;
    return {{"", typenameOf(typeid(candidate)), 0}};
}

void MSDeferredObjectDisplay::draw(VGLRenderContext& context) { drawFrame(context, false); }

void MSDeferredObjectDisplay::drawFrame(VGLRenderContext& context, bool handsDepthOn) {
    if (!source)
        throw workbench::Failure(workbench::Fault::Usage, {name(),
                                                           "has nothing to show",
                                                           "an input that can be drawn",
                                                           "none",
                                                           "Connect a model, a picture or another display",
                                                           {}});
    auto& session = workbench::RenderSession::require(name());
    workbench::reportPendingErrors(name(), "was pending before it was drawn; something else caused it");
    workbench::requireShortArrays(*this, context.valuePool());
    const StrongPtr<Renderer> renderer = createRenderer(context);
    const auto target =
        session.targets().leaseMultisample(context.width(), context.height(), renderer->requestedSamples());
    renderer->attach({ColorUnit, DepthUnit, target->samples()});

    {
        const workbench::StateGuard guard;
        bindForInput(*target, context);
        if (auto* display = dynamic_cast<MSDeferredObjectDisplay*>(source.get()))
            display->drawFrame(context, true);
        else
            source->render(context);
    }
    workbench::reportPendingErrors(name(), "was left by its input, " + source->name());

    const workbench::StateGuard guard;
    workbench::setEntryState(context.width(), context.height());
    bindScene(*target);
    runRenderer(*renderer, name());
    if (handsDepthOn) handDepthOn(*target, context);
}

BoundingSphere MSDeferredObjectDisplay::bounds() const {
    return source ? source->bounds() : BoundingSphere{};
}

bool MSDeferredObjectDisplay::readSamples(const VValuePool& pool, int& count) const noexcept {
    return samples && samples->read(pool, count);
}

} // namespace krod
