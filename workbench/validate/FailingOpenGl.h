// SPDX-License-Identifier: Apache-2.0
// OpenGL that goes wrong on purpose.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace workbench::validate {

/// What goes wrong.
enum class OpenGlFault {
    None,
    OutOfMemory,    ///< one call reports GL_OUT_OF_MEMORY; if it needs memory, it does nothing else
    ContextLost,    ///< from one call on, all of them do nothing and report GL_CONTEXT_LOST
    CompileRefused, ///< no shader compiles
    LinkRefused,    ///< no program links
};

/// A call as it came.
struct OpenGlCall {
    std::string_view name;
    bool ofPlugin;    ///< made by the plug-in itself, not by the host for it
    bool needsMemory; ///< it makes something, or moves pixels
};

/// Lets the calls of OpenGL by the host and by the loaded library at this path pass through here, until the
/// process ends; without FailingOpenGl nothing happens to them. A context is current. Calls of one thread.
void watchOpenGl(const std::string& library);

/// From construction to destruction OpenGL goes wrong in one way, after watchOpenGl. One at a time.
class FailingOpenGl {
public:
    /// The fault concerns the call of that number, counted from 0, or every fitting one.
    explicit FailingOpenGl(OpenGlFault fault, std::size_t call = 0);
    FailingOpenGl(const FailingOpenGl&) = delete;
    FailingOpenGl& operator=(const FailingOpenGl&) = delete;
    ~FailingOpenGl();

    /// The calls since construction; those that ask for errors are left out.
    [[nodiscard]] const std::vector<OpenGlCall>& calls() const noexcept { return record; }

private:
    std::vector<OpenGlCall> record;
};

} // namespace workbench::validate
