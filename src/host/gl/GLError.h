// SPDX-License-Identifier: Apache-2.0
// OpenGL errors as exceptions.
#pragma once

#include "host/Export.h"

#include <stdexcept>
#include <string>

namespace krod {

/// A pending OpenGL error, with the place that found it.
class KROD_API GLError : public std::runtime_error {
public:
    /// [any · copies] The code is the one that OpenGL reported.
    GLError(const std::string& label, const std::string& sourceFile, int line, unsigned code);
    ~GLError() override;

    /// [any] The error as OpenGL numbers it.
    [[nodiscard]] unsigned code() const noexcept { return number; }

    /// [host, gl · borrows] Throws GLError when OpenGL has a pending error, and leaves none pending.
    static void throwPossibleError(const std::string& label, const std::string& sourceFile, int line);

private:
    unsigned number;
};

} // namespace krod
