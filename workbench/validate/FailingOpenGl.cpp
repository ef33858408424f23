// SPDX-License-Identifier: Apache-2.0
// The host calls OpenGL through pointers that anybody may set, those of libepoxy; a plug-in calls functions
// of a library, and is redirected. Both come to the same stand-ins.
#include "workbench/validate/FailingOpenGl.h"

#include "workbench/validate/LibraryCalls.h"

#include <epoxy/egl.h>
#include <epoxy/gl.h>

#include <algorithm>
#include <array>
#include <tuple>
#include <type_traits>
#include <utility>

namespace workbench::validate {
namespace {

struct Fault {
    OpenGlFault kind = OpenGlFault::None;
    std::size_t call = 0;
    bool lost = false;
    GLenum pending = GL_NO_ERROR;
    std::vector<OpenGlCall>* record = nullptr; ///< null: nothing goes wrong
};

constinit Fault fault;

bool needsMemory(std::string_view name) {
    constexpr std::array<std::string_view, 11> Beginnings = {
        "glBufferData",  "glCompileShader", "glCreate",      "glDrawArrays", "glDrawElements",       "glGen",
        "glLinkProgram", "glReadPixels",    "glTexSubImage", "glTexImage",   "glRenderbufferStorage"};
    return std::ranges::any_of(Beginnings, [=](std::string_view begin) { return name.starts_with(begin); });
}

/// Notes a call. Whether OpenGL is to see it.
bool passes(std::string_view name, bool ofPlugin) {
    if (!fault.record) return true;
    const bool isTheOne = fault.record->size() == fault.call;
    fault.record->push_back({name, ofPlugin, needsMemory(name)});
    if (isTheOne && fault.kind == OpenGlFault::ContextLost) fault.lost = true;
    if (isTheOne && fault.kind == OpenGlFault::OutOfMemory) {
        fault.pending = GL_OUT_OF_MEMORY;
        return !needsMemory(name);
    }
    return !fault.lost;
}

/// What a driver answers when it has refused a text.
void refuse(GLenum question, GLint* answer) {
    if (!fault.record) return;
    if (fault.kind == OpenGlFault::CompileRefused && question == GL_COMPILE_STATUS) *answer = GL_FALSE;
    if (fault.kind == OpenGlFault::LinkRefused && question == GL_LINK_STATUS) *answer = GL_FALSE;
}

/// Takes the place of one function. `Slot` is where the host finds it.
template <auto Slot>
struct StandIn;

template <class Result, class... Arguments, Result (**Slot)(Arguments...)>
struct StandIn<Slot> {
    static inline Result (*real)(Arguments...) = nullptr;
    static inline std::string_view name;
    template <auto Other>
    static constexpr bool isFor = std::is_same_v<StandIn, StandIn<Other>>;

    template <bool OfPlugin>
    static Result call(Arguments... arguments) {
        if constexpr (isFor<&glGetError>) {
            if (fault.lost) return GL_CONTEXT_LOST;
            return fault.pending != GL_NO_ERROR ? std::exchange(fault.pending, GLenum{GL_NO_ERROR}) : real();
        } else {
            if (!passes(name, OfPlugin)) return Result();
            if constexpr (isFor<&glGetShaderiv> || isFor<&glGetProgramiv>) {
                real(arguments...);
                const auto all = std::tuple(arguments...);
                return refuse(std::get<1>(all), std::get<2>(all));
            } else {
                return real(arguments...);
            }
        }
    }

    /// Gives the plug-in's stand-in.
    static void* install(const char* ownName) {
        name = ownName;
        if (!real) real = reinterpret_cast<Result (*)(Arguments...)>(eglGetProcAddress(ownName));
        if (!real) return nullptr;
        *Slot = &call<false>;
        return reinterpret_cast<void*>(&call<true>);
    }
};

struct Function {
    const char* name;
    void* (*install)(const char*);
};

#define FUNCTION(name)                                                                                       \
    Function { #name, &StandIn < &name> ::install }
#include "workbench/validate/OpenGlFunctions.inc"
#undef FUNCTION

} // namespace

void watchOpenGl(const std::string& library) {
    std::array<void*, Functions.size()> standIns{};
    for (std::size_t i = 0; i < Functions.size(); ++i) standIns[i] = Functions[i].install(Functions[i].name);
    redirectCalls(library, [&](std::string_view name) -> void* {
        const auto found = std::ranges::find(Functions, name, &Function::name);
        return found == Functions.end() ? nullptr
                                        : standIns[static_cast<std::size_t>(found - Functions.begin())];
    });
}

FailingOpenGl::FailingOpenGl(OpenGlFault kind, std::size_t call) {
    record.reserve(4096);
    fault = {kind, call, false, GL_NO_ERROR, &record};
}

FailingOpenGl::~FailingOpenGl() { fault = {}; }

} // namespace workbench::validate
