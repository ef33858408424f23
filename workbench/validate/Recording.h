// SPDX-License-Identifier: Apache-2.0
// Completes an expectation file.
#pragma once

#include "workbench/validate/Trial.h"

#include <nlohmann/json.hpp>

namespace workbench::validate {

/// The expectation with the texts and pictures that the plug-in gives here and now: "shader", "settings" and
/// "picture" of every module. Runs the plug-in in this process. Throws Failure, and what the modules throw.
[[nodiscard]] nlohmann::ordered_json record(const Subject& subject, nlohmann::ordered_json expectation);

} // namespace workbench::validate
