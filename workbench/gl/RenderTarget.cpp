// SPDX-License-Identifier: Apache-2.0
#include "workbench/gl/RenderTarget.h"

#include "workbench/gl/PendingErrors.h"


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

GraphicsMemoryFailure memoryFailure(const TargetShape& shape, const std::string& got) {
    return {"drawing area of " + shapeText(shape), shape.bytes(), got};
}

/// Throws the pending error, if there is one, as the driver's answer to this shape.
void throwPending(const TargetShape& shape) {
    const auto errors = takePendingErrors();
    if (errors.empty()) return;
    if (isMemoryError(errors.front())) throw memoryFailure(shape, errorText(errors.front()));
    throw refusal(shape, errorText(errors.front()));
}

} // namespace

GraphicsMemoryFailure::GraphicsMemoryFailure(const std::string& who, std::size_t bytes,
                                             const std::string& got)
    : Failure(Fault::Output, {who,
                              "does not fit into the memory for graphics",
                              bytes > 0 ? std::to_string((bytes >> 20) + 1) + " MiB" : "",
                              got,
                              "Choose a smaller size, fewer samples or a smaller --tile",
                              {}}) {}

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
    const bool isNamed = colorTexture.get() != 0 && depthTexture.get() != 0 && frame.get() != 0;
    if (!isNamed) throwPending(shape); // else it would count as pending from before
    reportPendingErrors("drawing area", "was pending before it was made");
    makeTextures();
    makeFramebuffer();
    throwPending(shape);
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
    const std::string statusText = "framebuffer status " + errorText(status);
    for (const unsigned code : takePendingErrors())
        if (isMemoryError(code)) throw memoryFailure(wanted, errorText(code));
    // Every driver draws to these formats, in any size up to its limit, which is asked for before. What such
    // a texture can lack is memory, and some drivers tell it by nothing but the status.
    if (status == GL_FRAMEBUFFER_INCOMPLETE_ATTACHMENT) throw memoryFailure(wanted, statusText);
    throw refusal(wanted, statusText);
}

std::size_t RenderTarget::bytes() const noexcept {
    return TargetShape{wanted.width, wanted.height, realSamples, wanted.depth}.bytes();
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
        used += kept->bytes();
        return kept;
    }
    if (allowed) dropIdle(shape.bytes());
    try {
        return made(shape);
    } catch (const GraphicsMemoryFailure&) {
        if (idle.empty()) throw;
    }
    idle.clear(); // what is kept for later may be what is missing now
    return made(shape);
}

TargetPool::Lease TargetPool::made(const TargetShape& shape) {
    Lease target(new RenderTarget(shape), Return{this});
    used += target->bytes();
    return target;
}

void TargetPool::allow(std::size_t bytes) noexcept {
    allowed = bytes;
    dropIdle(0);
}

/// The oldest go until there is room for so many bytes more, or none is left.
void TargetPool::dropIdle(std::size_t further) noexcept {
    std::size_t bytes = further + (allowed ? used : 0);
    for (const auto& kept : idle) bytes += kept->bytes();
    const auto isTooMuch = [&] {
        return allowed ? bytes > *allowed : idle.size() > MostIdle || bytes > MostIdleBytes;
    };
    while (!idle.empty() && isTooMuch()) {
        bytes -= idle.front()->bytes();
        idle.erase(idle.begin());
    }
}

int TargetPool::grantedSamples(int asked) const { return std::clamp(asked, 1, maxSamples); }

void TargetPool::giveBack(std::unique_ptr<RenderTarget> target) {
    used -= target->bytes();
    idle.push_back(std::move(target));
    dropIdle(0);
}

} // namespace workbench
