// SPDX-License-Identifier: Apache-2.0
#include "host/gl/GLProgram.h"

#include "workbench/gl/DrawingWatch.h"
#include "workbench/gl/ProgramCache.h"
#include "workbench/gl/RenderSession.h"
#include "workbench/gl/ShaderCapture.h"
#include "workbench/gl/ShaderFiles.h"

#include "host/core/VActionNotifier.h"

#include <epoxy/gl.h>

namespace krod {

/// Without a session in capture mode.
struct GLProgram::State {
    workbench::RenderSession* session = nullptr;
    std::shared_ptr<workbench::CompiledProgram> program;
    std::string fragmentText, fragmentLabel;

    /// The place of a uniform, or -1; a missing one is reported where that is wanted.
    [[nodiscard]] GLint locate(const std::string& name, bool reportMissing) const {
        if (!program) return -1;
        const GLint location = glGetUniformLocation(program->name.get(), name.c_str());
        if (location < 0 && reportMissing && session->programs().isFirstReport(fragmentText, name))
            VActionNotifier::Warning(fragmentLabel + ": has no uniform \"" + name +
                                     "\", or does not use it; its value is passed over");
        return location;
    }
};

GLProgram::GLProgram(const std::string& vertexText, const std::string& fragmentText,
                     const std::string& vertexLabel, const std::string& fragmentLabel)
    : state(std::make_unique<State>()) {
    if (auto* capture = workbench::ShaderCapture::current()) {
        capture->add({vertexText, fragmentText, vertexLabel, fragmentLabel});
        return;
    }
    state->session = &workbench::RenderSession::require(fragmentLabel);
    state->program = state->session->programs().find({vertexText, fragmentText, vertexLabel, fragmentLabel});
    state->fragmentText = fragmentText;
    state->fragmentLabel = fragmentLabel;
}

GLProgram::~GLProgram() {
    if (!state->program) return;
    GLint used = 0;
    glGetIntegerv(GL_CURRENT_PROGRAM, &used);
    if (static_cast<GLuint>(used) == state->program->name.get()) glUseProgram(0);
}

void GLProgram::use() {
    if (!state->program) return;
    glUseProgram(state->program->name.get());
    if (!state->program->secondsPerPixel) return;
    const auto file = workbench::findShaderFile(state->fragmentText);
    workbench::DrawingWatch::begin(state->fragmentLabel + (file ? " with " + file->path.string() : ""),
                                   *state->program->secondsPerPixel);
}

void GLProgram::setUniformValuei(const std::string& name, int value, bool reportMissing) {
    const GLint location = state->locate(name, reportMissing);
    if (location >= 0) glUniform1i(location, value);
}

void GLProgram::setUniformValuef(const std::string& name, float value, bool reportMissing) {
    const GLint location = state->locate(name, reportMissing);
    if (location >= 0) glUniform1f(location, value);
}

bool GLProgram::reportsMissingUniforms() const noexcept {
    return state->session && state->session->options().reportMissingUniforms;
}

} // namespace krod
