// SPDX-License-Identifier: Apache-2.0
// The classes that modules derive from. A frame is: renderer, scene, render operation.
#include "Recording.h"

#include "host/gl/GLImageTileProcessor.h"
#include "host/gl/MSDeferredObjectDisplay.h"
#include "host/values/VValueTrait.h"

namespace krod {

using recording::host;

namespace {

const TypedSlot<int>::Registration sampleCounts;

} // namespace

VGLRenderContext::~VGLRenderContext() = default;

VGLRenderObject::VGLRenderObject(const std::string& name, int,
                                 const StrongPtr<VCreationPreferences>& preferences)
    : VRenderObject(name), wishes(preferences) {}
VGLRenderObject::~VGLRenderObject() = default;
void VGLRenderObject::render(VRenderContext& context) { draw(dynamic_cast<VGLRenderContext&>(context)); }

DeferredRenderObject::DeferredRenderer::DeferredRenderer(VGLRenderContext&) {}
DeferredRenderObject::DeferredRenderer::~DeferredRenderer() = default;
void DeferredRenderObject::DeferredRenderer::glRenderFullScreen(double depth) {
    host().calls.add("glRenderFullScreen(" + VValueTrait<double>::Text(depth) + ")");
}
DeferredRenderObject::~DeferredRenderObject() = default;

MSDeferredRenderObject::MultiSampleDeferredRenderer::MultiSampleDeferredRenderer(VGLRenderContext& context,
                                                                                 int sampleCount)
    : DeferredRenderer(context), requested(sampleCount) {
    host().calls.add("MultiSampleDeferredRenderer made, asks for " + VValueTrait<int>::Text(sampleCount) +
                     " samples");
}
MSDeferredRenderObject::MultiSampleDeferredRenderer::~MultiSampleDeferredRenderer() {
    host().calls.add("MultiSampleDeferredRenderer released");
}
MSDeferredRenderObject::~MSDeferredRenderObject() = default;

MSDeferredObjectDisplay::MSDeferredObjectDisplay(const std::string& name,
                                                 const StrongPtr<VCreationPreferences>& preferences,
                                                 Samples wanted)
    : MSDeferredObjectDisplay(name, preferences) {
    samples.emplace(this, "samples", wanted.initialValue, wanted.expertLevel);
}
MSDeferredObjectDisplay::MSDeferredObjectDisplay(const std::string& name,
                                                 const StrongPtr<VCreationPreferences>& preferences)
    : MSDeferredRenderObject(name, 0, preferences) {}
MSDeferredObjectDisplay::~MSDeferredObjectDisplay() = default;

void MSDeferredObjectDisplay::setInput(const StrongPtr<VGLRenderObject>& object) { source = object; }
AcceptInfoList MSDeferredObjectDisplay::accept(const WeakPtr<VObject>&) const { return {}; }
BoundingSphere MSDeferredObjectDisplay::bounds() const { return {}; }

void MSDeferredObjectDisplay::draw(VGLRenderContext& context) {
    const StrongPtr<MultiSampleDeferredRenderer> renderer = createRenderer(context);
    renderer->attach(host().scene);
    renderer->render();
}

bool MSDeferredObjectDisplay::readSamples(const VValuePool& pool, int& count) const noexcept {
    return samples && samples->read(pool, count);
}

GLTexture2D::GLTexture2D(int width, int height) : columns(width), rows(height) {}
GLTexture2D::~GLTexture2D() = default;
bool GLTexture2D::usable() const noexcept { return owner == 0; } // no context ever makes one

GLImageTileProcessor::~GLImageTileProcessor() = default;
void GLImageTileProcessor::process(const VRenderContext&, ImageTile&) {
    host().calls.add("GLImageTileProcessor::process");
}
StrongPtr<GLTexture2D> GLImageTileProcessor::createFrameTexture(int width, int height) {
    return StrongPtr<GLTexture2D>(new GLTexture2D(width, height));
}
void GLImageTileProcessor::renderFrameTexture(GLTexture2D&) {
    host().calls.add("GLImageTileProcessor::renderFrameTexture");
}

} // namespace krod
