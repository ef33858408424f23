// SPDX-License-Identifier: Apache-2.0
// A stand-in for krod_gl without any OpenGL: it writes down what modules ask for.
#pragma once

#include "host/Export.h"
#include "host/gl/MSDeferredRenderObject.h"
#include "tests/support/CallLog.h"

namespace recording {

/// What the stand-in answers, and what it was asked.
struct Host {
    krod::MSDeferredRenderObject::Scene scene{0, 1, 8}; ///< attached to every renderer
    unsigned pendingError = 0;                          ///< found by the next look for errors
    bool reportsMissingUniforms = false;                ///< the flag of every program made from here on
    bool refusesPrograms = false;                       ///< whether making a program throws
    support::CallLog calls = {};
    int programsMade = 0;
    int programsAlive = 0;
};

/// The one host of this process.
[[nodiscard]] KROD_API Host& host();

/// A text in a log: its size and its hash (FNV-1a, 64 bit).
[[nodiscard]] std::string sizeAndHash(const std::string& text);
/// A text in a log, in quotation marks.
[[nodiscard]] std::string quoted(const std::string& text);

} // namespace recording
