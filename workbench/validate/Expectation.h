// SPDX-License-Identifier: Apache-2.0
// What is expected of one particular plug-in: a file of what `plime describe --json` shows, and a little
// more.
#pragma once

#include "host/core/VCreatorBase.h"
#include "workbench/validate/Trial.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <string>

namespace workbench::validate {

/// Reads an expectation file: {"modules": [...]}, in the order of registration. Throws Failure(Input) for a
/// file that cannot be read, is no regular file, is larger than 16 MiB or has another form.
[[nodiscard]] nlohmann::json readExpectation(const std::filesystem::path& path);

/// "Display/Depth@DisplayDepth" of an expected module.
[[nodiscard]] std::string expectedLabel(const nlohmann::json& module);
/// The expected module of that label, or null.
[[nodiscard]] const nlohmann::json* findExpected(const Trial& trial, const std::string& label);
/// Whether a module is expected to have the property `key`, such as "keeps_alpha".
[[nodiscard]] bool isExpected(const Trial& trial, const std::string& label, const char* key);

/// Compares key, category, name, short, help, group, source and order.
void compareTexts(Trial& trial, const krod::VCreatorBase& creator, const std::string& label,
                  const nlohmann::json& module);
/// Compares parameters, inputs and outputs.
void compareModule(Trial& trial, const krod::VObject& object, const std::string& label,
                   const nlohmann::json& module);

} // namespace workbench::validate
