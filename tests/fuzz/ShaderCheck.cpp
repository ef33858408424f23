// SPDX-License-Identifier: Apache-2.0
// What is not given to a shader compiler.
#include "Target.h"

#include "workbench/gl/check/ShaderCheck.h"

#include <algorithm>

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = fuzz::textOf(data, size);
    const auto objection = workbench::objectionTo(text);
    if (!objection) return 0;
    const auto lines = std::count(text.begin(), text.end(), '\n') + 1;
    fuzz::require(objection->line >= 0 && objection->line <= lines, "the line exists");
    fuzz::require(fuzz::isOneLine(objection->what), "the objection is one line");
    return 0;
}
