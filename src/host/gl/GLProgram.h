// SPDX-License-Identifier: Apache-2.0
// Shader programs.
#pragma once

#include "host/Export.h"

#include <memory>
#include <string>

namespace krod {

/// A program of one vertex and one fragment shader. It may share compiled code with earlier programs of the
/// same texts; a failure to compile or link is reported by the program itself.
class KROD_API GLProgram {
public:
    /// [host, gl · copies] Compiles and links. The labels name the two texts in messages. Throws when the
    /// driver refuses a text; the exception's text names the label, the line and the driver's words.
    GLProgram(const std::string& vertexText, const std::string& fragmentText, const std::string& vertexLabel,
              const std::string& fragmentLabel);
    GLProgram(const GLProgram&) = delete;
    GLProgram& operator=(const GLProgram&) = delete;
    /// [host, gl]
    ~GLProgram();

    /// [host, gl] Makes the program current. Before any uniform is set.
    void use();
    /// [host, gl · borrows] Sets a uniform of the current program. With the flag, a uniform that the program
    /// does not have is reported once; without it, it is passed over.
    void setUniformValuei(const std::string& name, int value, bool reportMissing);
    void setUniformValuef(const std::string& name, float value, bool reportMissing);
    /// [any] The program's own flag for the two above.
    [[nodiscard]] bool reportsMissingUniforms() const noexcept;

private:
    struct State;
    std::unique_ptr<State> state;
};

} // namespace krod
