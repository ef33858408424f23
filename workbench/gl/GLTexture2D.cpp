// SPDX-License-Identifier: Apache-2.0
#include "host/gl/GLTexture2D.h"

#include "workbench/gl/PendingErrors.h"
#include "workbench/gl/RenderSession.h"

#include "host/gl/GLError.h"

#include <epoxy/gl.h>

namespace krod {

GLTexture2D::GLTexture2D(int width, int height)
    : columns(width), rows(height), owner(workbench::RenderSession::require("texture").number()) {
    workbench::reportPendingErrors("texture", "was pending before it was made; something else caused it");
    GLint before = 0;
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &before);
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA16F, width, height, 0, GL_RGBA, GL_HALF_FLOAT, nullptr);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, 0);
    glBindTexture(GL_TEXTURE_2D, static_cast<GLuint>(before));
    const auto errors = workbench::takePendingErrors();
    if (errors.empty()) return;
    glDeleteTextures(1, &texture);
    throw GLError("texture of " + std::to_string(width) + 'x' + std::to_string(height), "GLTexture2D", 0,
                  errors.front());
}

GLTexture2D::~GLTexture2D() {
    if (usable()) glDeleteTextures(1, &texture);
}

bool GLTexture2D::usable() const noexcept {
    const auto* session = workbench::RenderSession::current();
    return session && session->number() == owner;
}

} // namespace krod
