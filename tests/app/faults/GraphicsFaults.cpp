// SPDX-License-Identifier: Apache-2.0
// OpenGL with little memory: textures of more than KROD_TEXTURE_LIMIT samples are GL_OUT_OF_MEMORY. Reading
// pixels is a call for KROD_FAULT, "read", which is not among "any"; as an error it is GL_OUT_OF_MEMORY, too.
#include "Fault.h"

#include <epoxy/gl.h>

#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace {

/// A function of OpenGL with another one in front. Its pointer finds the real one at the first call and takes
/// that place itself.
template <typename Function>
class Detour {
public:
    Detour(Function*& pointer, Function* front) : pointer(pointer), front(front) { install(); }

    template <typename... Arguments>
    auto real(Arguments... arguments) {
        struct Again {
            Detour& detour;
            ~Again() { detour.install(); }
        } const again{*this};
        pointer = behind;
        return behind(arguments...);
    }

private:
    void install() {
        if (pointer != front) behind = std::exchange(pointer, front);
    }

    Function*& pointer;
    Function *front, *behind = nullptr;
};

bool outOfMemory = false;

std::int64_t limitOf(const char* text) {
    std::int64_t samples = INT64_MAX;
    if (text) std::from_chars(text, text + std::strlen(text), samples);
    return samples;
}

const std::int64_t limit = limitOf(std::getenv("KROD_TEXTURE_LIMIT"));

bool fits(GLsizei width, GLsizei height, GLsizei samples) {
    if (std::int64_t{width} * height * samples <= limit) return true;
    outOfMemory = true;
    return false;
}

void image(GLenum target, GLint level, GLint internal, GLsizei width, GLsizei height, GLint border,
           GLenum format, GLenum type, const void* data);
void imageOfSamples(GLenum target, GLsizei samples, GLenum internal, GLsizei width, GLsizei height,
                    GLboolean fixed);
void readPixels(GLint x, GLint y, GLsizei width, GLsizei height, GLenum format, GLenum type, void* data);
GLenum error();

Detour imageDetour(epoxy_glTexImage2D, image);
Detour imageOfSamplesDetour(epoxy_glTexImage2DMultisample, imageOfSamples);
Detour readPixelsDetour(epoxy_glReadPixels, readPixels);
Detour errorDetour(epoxy_glGetError, error);

void image(GLenum target, GLint level, GLint internal, GLsizei width, GLsizei height, GLint border,
           GLenum format, GLenum type, const void* data) {
    if (fits(width, height, 1))
        imageDetour.real(target, level, internal, width, height, border, format, type, data);
}

void imageOfSamples(GLenum target, GLsizei samples, GLenum internal, GLsizei width, GLsizei height,
                    GLboolean fixed) {
    if (fits(width, height, samples))
        imageOfSamplesDetour.real(target, samples, internal, width, height, fixed);
}

void readPixels(GLint x, GLint y, GLsizei width, GLsizei height, GLenum format, GLenum type, void* data) {
    if (krodFault("read") == 0)
        readPixelsDetour.real(x, y, width, height, format, type, data);
    else
        outOfMemory = true;
}

GLenum error() {
    return std::exchange(outOfMemory, false) ? static_cast<GLenum>(GL_OUT_OF_MEMORY) : errorDetour.real();
}

} // namespace
