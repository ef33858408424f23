// SPDX-License-Identifier: Apache-2.0
// OpenGL for those who turn out to need it.
#pragma once

#include "apps/plime/commandline/Options.h"
#include "workbench/gl/RenderSession.h"

#include <optional>

namespace workbench {

/// The OpenGL session of a command, opened when it is first asked for. What draws with it stays alive longer.
class OpenGLOnDemand {
public:
    /// The options are borrowed.
    explicit OpenGLOnDemand(const GlobalOptions& options) : options(options) {}

    /// Throws Failure(OpenGL).
    RenderSession& rendering() {
        if (!session) session.emplace(SessionOptions{.gpu = options.gpu, .strictGlsl = options.strictGlsl});
        return *session;
    }

private:
    const GlobalOptions& options;
    std::optional<RenderSession> session;
};

} // namespace workbench
