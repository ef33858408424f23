// SPDX-License-Identifier: Apache-2.0
#include "host/gl/GLError.h"

#include "workbench/gl/PendingErrors.h"
#include "workbench/gl/RenderSession.h"
#include "workbench/gl/ShaderCapture.h"

namespace krod {

GLError::GLError(const std::string& label, const std::string&, int, unsigned code)
    : std::runtime_error(label + ": OpenGL error " + workbench::errorText(code)), number(code) {}

GLError::~GLError() = default;

void GLError::throwPossibleError(const std::string& label, const std::string& sourceFile, int line) {
    if (workbench::ShaderCapture::current() || !workbench::RenderSession::current()) return;
    const auto errors = workbench::takePendingErrors();
    if (!errors.empty()) throw GLError(label, sourceFile, line, errors.front());
}

} // namespace krod
