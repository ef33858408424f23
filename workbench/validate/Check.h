// SPDX-License-Identifier: Apache-2.0
// What a plug-in is checked for: one table.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace workbench::validate {

class Trial;

/// What became of a check.
enum class Kind {
    Pass,    ///< nothing was found
    Warn,    ///< works, but its author may want to know
    Fail,    ///< something is wrong
    Crash,   ///< the check's process was ended by a signal
    Timeout, ///< the check's process did not come to an end
    Skip,    ///< could not be run; the sentence says why
};

/// "pass", "warn", …
[[nodiscard]] std::string_view kindText(Kind kind) noexcept;
/// The kind of that word. Throws std::invalid_argument for another word.
[[nodiscard]] Kind kindFrom(std::string_view text);
/// Whether a plug-in with this outcome has something to repair.
[[nodiscard]] constexpr bool isFinding(Kind kind) noexcept {
    return kind == Kind::Fail || kind == Kind::Crash || kind == Kind::Timeout;
}

/// What a check has found.
struct Outcome {
    Kind kind = Kind::Pass;
    std::string sentence;             ///< empty when it has passed
    std::vector<std::string> details; ///< further findings, and what the process printed before it died
};

/// One check. It runs in a process of its own.
struct Check {
    std::string_view name;     ///< as people type it: "held-processor"
    int level;                 ///< 1 to 10; the levels below are gentler
    std::string_view needs;    ///< the check without which this one makes no sense, or nothing
    bool random;               ///< draws values; a seed repeats it
    bool expects;              ///< compares with an expectation file, and is left out without one
    int seconds;               ///< before its process is ended
    std::string_view sentence; ///< what holds for a plug-in that passes
    void (*function)(Trial& trial);
};

inline constexpr int MostLevel = 10;
inline constexpr int DefaultLevel = 5;

/// All checks in the order in which they run.
[[nodiscard]] std::span<const Check> checks() noexcept;
/// The check of that name, or null.
[[nodiscard]] const Check* findCheck(std::string_view name) noexcept;

} // namespace workbench::validate
