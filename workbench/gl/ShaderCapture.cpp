// SPDX-License-Identifier: Apache-2.0
#include "workbench/gl/ShaderCapture.h"

#include "workbench/gl/ArrayLimit.h"
#include "workbench/gl/RenderSession.h"
#include "workbench/gl/StateGuard.h"

#include <optional>

namespace workbench {
namespace {

thread_local ShaderCapture* innermost = nullptr;

} // namespace

ShaderCapture::ShaderCapture() noexcept : outer(innermost) { innermost = this; }
ShaderCapture::~ShaderCapture() { innermost = outer; }
ShaderCapture* ShaderCapture::current() noexcept { return innermost; }

std::vector<ProgramTexts> captureShader(krod::MSDeferredObjectDisplay& display,
                                        const krod::VValuePool& pool) {
    requireShortArrays(display, pool);
    // Displays call OpenGL themselves for the state of their quad. Without a context these calls do nothing.
    std::optional<StateGuard> guard;
    if (RenderSession::current()) guard.emplace();
    const ShaderCapture capture;
    krod::VGLRenderContext context(pool, 1, 1);
    const auto renderer = display.createRenderer(context);
    renderer->attach({0, 1, renderer->requestedSamples()});
    renderer->render();
    return capture.programs();
}

} // namespace workbench
