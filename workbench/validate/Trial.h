// SPDX-License-Identifier: Apache-2.0
// What a check works with: the plug-in, what is expected of it, dice, and a place for findings.
#pragma once

#include "workbench/platform/GpuChoice.h"
#include "workbench/validate/Check.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <random>
#include <string>
#include <utility>

namespace workbench::validate {

/// Thrown by a check that cannot be run here.
struct Skipped {
    std::string reason;
};

/// What is validated.
struct Subject {
    std::filesystem::path plugin;    ///< absolute
    nlohmann::json expectation = {}; ///< the modules in the form of `plime describe`; null without a file
    GpuChoice gpu = {};
};

/// One run of one check.
class Trial {
public:
    Trial(Subject subject, std::uint32_t seed) : what(std::move(subject)), dice(seed) {}

    [[nodiscard]] const std::filesystem::path& plugin() const noexcept { return what.plugin; }
    [[nodiscard]] const nlohmann::json& expectation() const noexcept { return what.expectation; }
    [[nodiscard]] const GpuChoice& gpu() const noexcept { return what.gpu; }

    /// A number from 0 up to, but without, `below`; the same for the same seed on every machine.
    [[nodiscard]] std::size_t draw(std::size_t below) { return dice() % below; }
    /// A number between two others, which may be infinite apart.
    [[nodiscard]] double drawBetween(double least, double most);

    /// Notes a fault. The first one becomes the outcome's sentence, without its full stop; the check goes on.
    void fail(std::string sentence);
    /// Notes something that works and should not be.
    void warn(std::string sentence);
    /// Notes a fault unless the condition holds. Returns the condition.
    bool require(bool condition, std::string sentence) {
        if (!condition) fail(std::move(sentence));
        return condition;
    }
    [[nodiscard]] bool hasFailed() const noexcept { return !faults.empty(); }
    /// What was found so far.
    [[nodiscard]] Outcome outcome() const;

private:
    static constexpr std::size_t MostNotes = 20;

    Subject what;
    std::mt19937 dice;
    std::vector<std::string> faults, oddities;
};

/// Runs a check on this very process and gives its outcome. What it throws becomes a fault or a reason to
/// skip.
[[nodiscard]] Outcome perform(const Check& check, Trial& trial);

} // namespace workbench::validate
