// SPDX-License-Identifier: Apache-2.0
// Runs checks over a plug-in, each in a process of its own.
#pragma once

#include "workbench/validate/Trial.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace workbench::validate {

/// What is to be run.
struct Plan {
    int level = DefaultLevel;           ///< all checks up to it
    const Check* only = nullptr;        ///< this one alone, with `seed`
    std::uint32_t seed = 0;             ///< of `only`
    bool expectation = false;           ///< whether checks that compare are run
    std::vector<std::string> arguments; ///< for a child: everything but what names the check
};

/// One line of the report.
struct Result {
    const Check* check = nullptr;
    std::uint32_t seed = 0;
    Outcome outcome;
};

/// Runs the plan and hands each result to `each` as it comes. A check whose needed check has not passed is
/// skipped; several of them with one reason. `stop` says whether the user wants to stop; then the rest is
/// left out.
std::vector<Result> validate(const Plan& plan, const std::function<void(const Result&)>& each,
                             const std::function<bool()>& stop);

/// The argument behind `--in-child` for one check: "NAME:SEED".
[[nodiscard]] std::string repeatText(const Check& check, std::uint32_t seed);
/// The check and seed of "NAME:SEED" or "NAME". Throws Failure(Usage).
[[nodiscard]] std::pair<const Check*, std::uint32_t> parseRepeat(const std::string& option,
                                                                 const std::string& text);

/// The child's side: performs the check, writes its outcome on ResultDescriptor and ends the process, without
/// running any more code of the plug-in.
[[noreturn]] void performInChild(const Check& check, std::uint32_t seed, Subject subject);
/// Writes an outcome on ResultDescriptor, for a check that ends the process itself.
void handOver(const Outcome& outcome) noexcept;

} // namespace workbench::validate
