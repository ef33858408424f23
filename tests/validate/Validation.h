// SPDX-License-Identifier: Apache-2.0
// Runs `plime validate` and reads what it says.
#pragma once

#include "tests/app/Program.h"

#include <nlohmann/json.hpp>

#include <map>
#include <string>
#include <vector>

/// What a run of the validator has said.
struct Validation {
    int code = -1;
    nlohmann::json report;
    std::string error;

    /// The kind of one check, or "not run".
    [[nodiscard]] std::string kindOf(const std::string& check) const;
    /// "kind name: sentence" of every check that is neither passed nor skipped, one a line.
    [[nodiscard]] std::string findings() const;
    /// The names of the checks with one of these kinds, in the order in which they ran.
    [[nodiscard]] std::vector<std::string> with(const std::vector<std::string>& kinds) const;
};

/// Validates a plug-in with these further arguments.
[[nodiscard]] Validation validation(const std::string& plugin, std::vector<std::string> arguments = {},
                                    const std::map<std::string, std::string>& environment = {});
