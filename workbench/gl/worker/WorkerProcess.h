// SPDX-License-Identifier: Apache-2.0
// The worker as a child of this process.
#pragma once

#include "workbench/gl/worker/ShaderTrial.h"
#include "workbench/platform/ChildProgram.h"

#include <filesystem>
#include <string>

namespace workbench {

/// How a trial ended.
struct TrialOutcome {
    enum class Kind {
        Drawn,      ///< the program is harmless, as far as two tiles tell
        Refused,    ///< the compiler refuses it with words, and harmlessly
        Killed,     ///< it ended the worker by itself
        TooLong,    ///< the worker was ended for it
        NotStarted, ///< there was no trial: no worker, or no OpenGL in it
    };

    Kind kind = Kind::NotStarted;
    std::string reason; ///< with Killed: "signal 11"; with TooLong: than what; with NotStarted: why
    double secondsPerPixel = 0; ///< with Drawn
};

/// Starts the worker program and waits for its answer within those limits. The child is gone afterwards, with
/// all of its group. Never throws for anything that the child does; std::system_error where this process has
/// no descriptors left.
[[nodiscard]] TrialOutcome tryInWorker(const std::filesystem::path& worker, const ShaderTrial& trial,
                                       const ChildLimits& limits);

} // namespace workbench
