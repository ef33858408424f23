// SPDX-License-Identifier: Apache-2.0
#include "workbench/gl/GLName.h"

#include <epoxy/gl.h>

#include <stdexcept>

namespace workbench {

GLName::GLName(Kind kind) : kind(kind) {
    if (kind == Kind::Texture)
        glGenTextures(1, &name);
    else if (kind == Kind::Framebuffer)
        glGenFramebuffers(1, &name);
    else
        throw std::logic_error("shaders and programs are named by OpenGL's create functions");
}

GLName::~GLName() {
    if (name == 0) return;
    switch (kind) {
    case Kind::Texture:
        glDeleteTextures(1, &name);
        break;
    case Kind::Framebuffer:
        glDeleteFramebuffers(1, &name);
        break;
    case Kind::Shader:
        glDeleteShader(name);
        break;
    case Kind::Program:
        glDeleteProgram(name);
        break;
    }
}

} // namespace workbench
