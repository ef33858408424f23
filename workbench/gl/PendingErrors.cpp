// SPDX-License-Identifier: Apache-2.0
#include "workbench/gl/PendingErrors.h"

#include "host/core/VActionNotifier.h"

#include <epoxy/gl.h>

#include <array>
#include <charconv>

namespace workbench {
namespace {

/// A lost context may report an error for ever.
constexpr int MostErrors = 32;

const char* errorName(unsigned code) {
    switch (code) {
    case GL_INVALID_ENUM:
        return "GL_INVALID_ENUM";
    case GL_INVALID_VALUE:
        return "GL_INVALID_VALUE";
    case GL_INVALID_OPERATION:
        return "GL_INVALID_OPERATION";
    case GL_STACK_OVERFLOW:
        return "GL_STACK_OVERFLOW";
    case GL_STACK_UNDERFLOW:
        return "GL_STACK_UNDERFLOW";
    case GL_OUT_OF_MEMORY:
        return "GL_OUT_OF_MEMORY";
    case GL_INVALID_FRAMEBUFFER_OPERATION:
        return "GL_INVALID_FRAMEBUFFER_OPERATION";
    case GL_CONTEXT_LOST:
        return "GL_CONTEXT_LOST";
    default:
        return nullptr;
    }
}

} // namespace

std::string errorText(unsigned code) {
    std::array<char, 8> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), code, 16);
    std::string number(digits.data(), end.ptr);
    if (number.size() < 4) number.insert(0, 4 - number.size(), '0');
    number.insert(0, "0x");
    const char* name = errorName(code);
    return name ? std::string(name) + " (" + number + ')' : number;
}

bool isMemoryError(unsigned code) noexcept { return code == GL_OUT_OF_MEMORY; }

std::vector<unsigned> takePendingErrors() {
    std::vector<unsigned> errors;
    for (int i = 0; i < MostErrors; ++i) {
        const GLenum code = glGetError();
        if (code == GL_NO_ERROR) break;
        errors.push_back(code);
    }
    return errors;
}

void reportPendingErrors(const std::string& who, const std::string& circumstance) {
    for (const unsigned code : takePendingErrors())
        krod::VActionNotifier::Warning(who + ": OpenGL error " + errorText(code) + ' ' + circumstance);
}

} // namespace workbench
