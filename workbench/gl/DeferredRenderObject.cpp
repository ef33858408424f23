// SPDX-License-Identifier: Apache-2.0
#include "host/gl/DeferredRenderObject.h"

#include "workbench/gl/Quad.h"
#include "workbench/gl/RenderSession.h"
#include "workbench/gl/ShaderCapture.h"

#include "host/gl/MSDeferredRenderObject.h"

namespace krod {

DeferredRenderObject::DeferredRenderer::DeferredRenderer(VGLRenderContext&) {}
DeferredRenderObject::DeferredRenderer::~DeferredRenderer() = default;

void DeferredRenderObject::DeferredRenderer::glRenderFullScreen(double depth) {
    if (workbench::ShaderCapture::current()) return;
    static_cast<void>(workbench::RenderSession::require("full-screen quad"));
    workbench::drawFullScreenQuad(depth);
}

DeferredRenderObject::~DeferredRenderObject() = default;

MSDeferredRenderObject::MultiSampleDeferredRenderer::MultiSampleDeferredRenderer(VGLRenderContext& context,
                                                                                 int sampleCount)
    : DeferredRenderer(context), requested(sampleCount) {}
MSDeferredRenderObject::MultiSampleDeferredRenderer::~MultiSampleDeferredRenderer() = default;

MSDeferredRenderObject::~MSDeferredRenderObject() = default;

} // namespace krod
