// SPDX-License-Identifier: Apache-2.0
#include "workbench/gl/RenderTarget.h"

#include "workbench/gl/PendingErrors.h"
#include "workbench/report/Failure.h"

#include "host/core/VActionNotifier.h"

#include <epoxy/gl.h>

#include <algorithm>
#include <string>

namespace workbench {
namespace {

constexpr std::size_t ColorBytes = 8, DepthBytes = 4;

std::string shapeText(const TargetShape& shape) {
    std::string text = std::to_string(shape.width) + 'x' + std::to_string(shape.height);
    if (shape.samples > 0) text += " with " + std::to_string(shape.samples) + " samples";
    return text;
}

Failure refusal(const TargetShape& shape, const std::string& reason) {
    return Failure(Fault::OpenGL, {"drawing area of " + shapeText(shape),
                                   "is refused by the driver",
                                   "",
                                   reason,
                                   "Choose a smaller size or --tile, or another device with --gpu",
                                   {}});
}

Failure memoryFailure(const TargetShape& shape) {
    return Failure(Fault::Output, {"drawing area of " + shapeText(shape),
                                   "does not fit into the memory for graphics",
                                   std::to_string(shape.bytes() >> 20) + " MiB",
                                   "GL_OUT_OF_MEMORY",
                                   "Choose a smaller size, fewer samples or a smaller --tile",
                                   {}});
}

} // namespace

std::size_t TargetShape::bytes() const noexcept {
    const std::size_t perSample = ColorBytes + (depth ? DepthBytes : 0);
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
           static_cast<std::size_t>(std::max(1, samples)) * perSample;
}

RenderTarget::RenderTarget(const TargetShape& shape)
    : wanted(shape),
      colorTexture(GLName::Kind::Texture),
      depthTexture(GLName::Kind::Texture),
      frame(GLName::Kind::Framebuffer) {
    reportPendingErrors("drawing area", "was pending before it was made");
    makeTextures();
    makeFramebuffer();
    for (const unsigned code : takePendingErrors())
        throw code == GL_OUT_OF_MEMORY ? memoryFailure(shape) : refusal(shape, errorText(code));
}

void RenderTarget::makeTextures() {
    const auto make = [this](unsigned name, GLint internalFormat, GLenum format) {
        if (wanted.samples > 0) {
            glBindTexture(GL_TEXTURE_2D_MULTISAMPLE, name);
            glTexImage2DMultisample(GL_TEXTURE_2D_MULTISAMPLE, wanted.samples,
                                    static_cast<GLenum>(internalFormat), wanted.width, wanted.height,
                                    GL_TRUE);
            return;
        }
        glBindTexture(GL_TEXTURE_2D, name);
        glTexImage2D(GL_TEXTURE_2D, 0, internalFormat, wanted.width, wanted.height, 0, format, GL_FLOAT,
                     nullptr);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    };
    const bool multisample = wanted.samples > 0;
    GLint before = 0;
    glGetIntegerv(multisample ? GL_TEXTURE_BINDING_2D_MULTISAMPLE : GL_TEXTURE_BINDING_2D, &before);
    if (wanted.depth) make(depthTexture.get(), GL_DEPTH_COMPONENT32F, GL_DEPTH_COMPONENT);
    make(colorTexture.get(), GL_RGBA16F, GL_RGBA);
    if (multisample) {
        glGetTexLevelParameteriv(GL_TEXTURE_2D_MULTISAMPLE, 0, GL_TEXTURE_SAMPLES, &realSamples);
        realSamples = std::max(1, realSamples);
    }
    glBindTexture(multisample ? GL_TEXTURE_2D_MULTISAMPLE : GL_TEXTURE_2D, static_cast<GLuint>(before));
}

void RenderTarget::makeFramebuffer() {
    const GLenum target = wanted.samples > 0 ? GL_TEXTURE_2D_MULTISAMPLE : GL_TEXTURE_2D;
    GLint draw = 0, read = 0;
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &draw);
    glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &read);
    bind();
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, target, colorTexture.get(), 0);
    if (wanted.depth)
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, target, depthTexture.get(), 0);
    const GLenum status = glCheckFramebufferStatus(GL_FRAMEBUFFER);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, static_cast<GLuint>(draw));
    glBindFramebuffer(GL_READ_FRAMEBUFFER, static_cast<GLuint>(read));
    if (status == GL_FRAMEBUFFER_COMPLETE) return;
    // Textures without memory make an incomplete framebuffer, too: the error tells more than the status.
    for (const unsigned code : takePendingErrors())
        if (code == GL_OUT_OF_MEMORY) throw memoryFailure(wanted);
    throw refusal(wanted, "framebuffer status " + errorText(status));
}

void RenderTarget::bind() const { glBindFramebuffer(GL_FRAMEBUFFER, frame.get()); }

void RenderTarget::clear(const float (&color)[4]) {
    const float farPlane = 1;
    glDisable(GL_SCISSOR_TEST);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glDepthMask(GL_TRUE);
    glClearBufferfv(GL_COLOR, 0, color);
    glClearBufferfv(GL_DEPTH, 0, &farPlane);
}

void TargetPool::Return::operator()(RenderTarget* target) const noexcept {
    std::unique_ptr<RenderTarget> owned(target);
    try {
        pool->giveBack(std::move(owned));
    } catch (const std::bad_alloc&) { // then it is deleted instead of kept
    }
}

TargetPool::Lease TargetPool::lease(int width, int height, bool depth) {
    return lease({width, height, 0, depth});
}

TargetPool::Lease TargetPool::leaseMultisample(int width, int height, int askedSamples) {
    return lease({width, height, grantedSamples(askedSamples), true});
}

TargetPool::Lease TargetPool::lease(const TargetShape& shape) {
    if (shape.width < 1 || shape.height < 1 || shape.width > maxSize || shape.height > maxSize)
        throw refusal(shape, "a limit of " + std::to_string(maxSize) + " pixels on a side");
    const auto found = std::find_if(idle.rbegin(), idle.rend(),
                                    [&](const auto& target) { return target->shape() == shape; });
    if (found != idle.rend()) {
        Lease kept(found->release(), Return{this});
        idle.erase(std::next(found).base());
        return kept;
    }
    try {
        return Lease(new RenderTarget(shape), Return{this});
    } catch (const Failure& failure) {
        if (failure.fault() != Fault::Output || idle.empty()) throw;
    }
    idle.clear(); // what is kept for later may be what is missing now
    return Lease(new RenderTarget(shape), Return{this});
}

int TargetPool::grantedSamples(int asked) {
    const int granted = std::clamp(asked, 1, maxSamples);
    if (granted != asked && toldSamples.insert(asked).second)
        krod::VActionNotifier::Warning(std::to_string(asked) + " samples asked, " + std::to_string(granted) +
                                       " used");
    return granted;
}

void TargetPool::giveBack(std::unique_ptr<RenderTarget> target) {
    idle.push_back(std::move(target));
    std::size_t bytes = 0;
    for (const auto& kept : idle) bytes += kept->shape().bytes();
    while (!idle.empty() && (idle.size() > MostIdle || bytes > MostIdleBytes)) {
        bytes -= idle.front()->shape().bytes();
        idle.erase(idle.begin());
    }
}

} // namespace workbench
