// SPDX-License-Identifier: Apache-2.0
// Having the shader texts of modules without any OpenGL.
#pragma once

#include "workbench/gl/ProgramCache.h"

#include "host/core/VValuePool.h"
#include "host/gl/MSDeferredObjectDisplay.h"

#include <vector>

namespace workbench {

/// While it lives, the contract's OpenGL half does nothing on this thread but remember the texts of programs.
/// Scopes nest; the innermost one remembers.
class KROD_API ShaderCapture {
public:
    ShaderCapture() noexcept;
    ShaderCapture(const ShaderCapture&) = delete;
    ShaderCapture& operator=(const ShaderCapture&) = delete;
    ~ShaderCapture();

    /// The innermost scope of this thread, or null.
    [[nodiscard]] static ShaderCapture* current() noexcept;

    void add(ProgramTexts texts) { captured.push_back(std::move(texts)); }
    [[nodiscard]] const std::vector<ProgramTexts>& programs() const noexcept { return captured; }

private:
    ShaderCapture* outer;
    std::vector<ProgramTexts> captured;
};

/// The programs that the display makes in one frame, with its parameters read in that pool. Neither opens
/// OpenGL nor changes anything in a session that is current; the display needs no input. Throws what the
/// display throws, and as requireShortArrays.
[[nodiscard]] KROD_API std::vector<ProgramTexts> captureShader(krod::MSDeferredObjectDisplay& display,
                                                               const krod::VValuePool& pool);

} // namespace workbench
