// SPDX-License-Identifier: Apache-2.0
// How the workbench says that something failed: one sentence with who, what, expected, got and what to do.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace workbench {

/// What kind of thing went wrong. The values are the exit codes of `plime`; 0 is success.
enum class Fault {
    Partial = 1,       ///< some of the work failed, or a module cannot do it
    Usage = 2,         ///< command line, unknown key or parameter, value
    Input = 3,         ///< an input file is missing, unreadable or broken
    Output = 4,        ///< output, disk or memory
    Plugin = 5,        ///< a plug-in asked for by name does not load
    Shader = 6,        ///< a shader does not compile
    OpenGL = 7,        ///< no usable OpenGL
    Network = 8,       ///< a saved network is broken
    Interrupted = 130, ///< stopped by a signal
};

/// One message. Every field is plain text; empty fields are left out of the sentence.
struct Diagnostic {
    std::string who;                  ///< the file, module or command that failed
    std::string what;                 ///< what failed, without a full stop: "cannot be read"
    std::string expected;             ///< what would have been right
    std::string got;                  ///< what was found instead
    std::string advice;               ///< what to do, a sentence of its own without a full stop; a question ends in '?'
    std::vector<std::string> details; ///< further lines, printed indented below the sentence

    /// "<who>: <what> — expected <expected>, got <got>. <advice>." on one line. An exclamation stays one.
    [[nodiscard]] std::string sentence() const {
        std::string text = who.empty() ? what : who + ": " + what;
        if (!expected.empty()) text += " — expected " + expected;
        if (!got.empty()) text += (expected.empty() ? " — got " : ", got ") + got;
        if (!text.ends_with('!')) text += '.';
        if (!advice.empty()) text += ' ' + advice + (advice.ends_with('?') ? "" : ".");
        return text;
    }
};

/// The one exception that the workbench throws at its users: a fault with its message.
class Failure : public std::runtime_error {
public:
    Failure(Fault fault, Diagnostic diagnostic)
        : std::runtime_error(diagnostic.sentence()), kind(fault), message(std::move(diagnostic)) {}

    [[nodiscard]] Fault fault() const noexcept { return kind; }
    [[nodiscard]] const Diagnostic& diagnostic() const noexcept { return message; }

private:
    Fault kind;
    Diagnostic message;
};

} // namespace workbench
