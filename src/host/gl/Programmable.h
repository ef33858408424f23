// SPDX-License-Identifier: Apache-2.0
// Shader texts that users may replace.
#pragma once

#include "host/Export.h"

#include <string>

namespace krod {

/// Access to the shader files of users.
class KROD_API Programmable {
public:
    /// [host · gives] The contents of the shader file of that name where the host finds one, else the
    /// built-in text. An unusable file counts as absent, with a warning.
    [[nodiscard]] static std::string OptionalFileRead(const std::string& fileName,
                                                      const std::string& builtInText);
};

} // namespace krod
