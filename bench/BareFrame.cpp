// SPDX-License-Identifier: Apache-2.0
#include "BareFrame.h"

#include "workbench/gl/Camera.h"
#include "workbench/gl/RenderSession.h"
#include "workbench/gl/ShaderCapture.h"
#include "workbench/platform/EglContext.h"

#include <epoxy/gl.h>
#include <glm/gtc/type_ptr.hpp>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace bench {
namespace {

using namespace krod;
using workbench::RenderSession;

/// The samples of the target: what the display asks for, as far as the driver goes.
int samplesOf(MSDeferredObjectDisplay& display, VGLRenderContext& context) {
    return std::min(display.createRenderer(context)->requestedSamples(),
                    RenderSession::require("benchmark").properties().maxSamples);
}

void setSwitch(GLenum name, bool on) { on ? glEnable(name) : glDisable(name); }

void bindScene(const Target& target) {
    glActiveTexture(GL_TEXTURE1);
    glBindTexture(GL_TEXTURE_2D_MULTISAMPLE, target.depth);
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D_MULTISAMPLE, target.color);
}

/// The quad of a display, as short as OpenGL allows.
void drawStrip() {
    glBegin(GL_TRIANGLE_STRIP);
    for (const auto& [x, y] : {std::pair{-1.0f, -1.0f}, {1.0f, -1.0f}, {-1.0f, 1.0f}, {1.0f, 1.0f}})
        glVertex3f(x, y, 1.0f);
    glEnd();
}

} // namespace

Target::Target(int width, int height, int samples)
    : kind(samples > 0 ? GL_TEXTURE_2D_MULTISAMPLE : GL_TEXTURE_2D) {
    glGenFramebuffers(1, &framebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    color = attach(GL_COLOR_ATTACHMENT0, GL_RGBA16F, width, height, samples);
    depth = attach(GL_DEPTH_ATTACHMENT, GL_DEPTH_COMPONENT32F, width, height, samples);
    if (glCheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE)
        throw std::runtime_error("the driver refuses the framebuffer");
}

Target::~Target() {
    glDeleteFramebuffers(1, &framebuffer);
    glDeleteTextures(1, &color);
    glDeleteTextures(1, &depth);
}

unsigned Target::attach(unsigned place, unsigned format, int width, int height, int samples) const {
    unsigned texture = 0;
    glGenTextures(1, &texture);
    glBindTexture(kind, texture);
    if (samples > 0)
        glTexImage2DMultisample(kind, samples, format, width, height, GL_TRUE);
    else
        glTexStorage2D(kind, 1, format, width, height);
    glFramebufferTexture2D(GL_FRAMEBUFFER, place, kind, texture, 0);
    return texture;
}

Destination::Destination(int width, int height, const BoundingSphere& bounds)
    : width(width), height(height), target(width, height, 0) {
    const double aspect = static_cast<double>(width) / height;
    const auto camera = workbench::Camera::fitted(bounds, aspect);
    projection = camera.projection(aspect);
    view = camera.view();
}

void Destination::begin() const {
    glBindFramebuffer(GL_FRAMEBUFFER, target.framebuffer);
    glViewport(0, 0, width, height);
    glMatrixMode(GL_PROJECTION);
    glLoadMatrixd(glm::value_ptr(projection));
    glMatrixMode(GL_MODELVIEW);
    glLoadMatrixd(glm::value_ptr(view));
    glDisable(GL_SCISSOR_TEST);
    glDepthMask(GL_TRUE);
    glClearColor(0, 0, 0, 1);
    glClearDepth(1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
}

BareFrame::BareFrame(const DisplayCase& about, MSDeferredObjectDisplay& display, VGLRenderObject& scene,
                     const Destination& destination, const VValuePool& pool)
    : about(about),
      scene(scene),
      destination(destination),
      context(pool, destination.width, destination.height),
      target(destination.width, destination.height, samplesOf(display, context)) {
    const auto texts = workbench::captureShader(display, pool);
    program = RenderSession::require("benchmark").programs().find(texts.front());
}

void BareFrame::drawScene() {
    destination.begin();
    glBindFramebuffer(GL_FRAMEBUFFER, target.framebuffer);
    glDisable(GL_BLEND);
    glDisable(GL_DEPTH_TEST);
    glClearColor(0, 0, 0, 0);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    scene.render(context);
}

void BareFrame::setSamples(unsigned name, int samples) {
    glUseProgram(name);
    glUniform1i(glGetUniformLocation(name, "nSamples"), samples);
    glUseProgram(0);
}

void BareFrame::drawQuad(unsigned name) {
    glBindFramebuffer(GL_FRAMEBUFFER, destination.target.framebuffer);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glUseProgram(name);
    bindScene(target);
    setSwitch(GL_DEPTH_TEST, about.depthTest);
    setSwitch(GL_BLEND, about.blend);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glDepthMask(about.depthTest ? GL_FALSE : GL_TRUE);
    drawStrip();
    glUseProgram(0);
    glFinish();
}

} // namespace bench
