// SPDX-License-Identifier: Apache-2.0
// Whole programs, as the operating system accounts for them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace bench {

/// What one run of a program cost.
struct Run {
    int code = 0; ///< exit status; 127 when there is no such program
    double seconds = 0;
    double processorSeconds = 0;         ///< of it and all processes it began
    double peakMegabytes = 0;            ///< largest memory of it and all processes it began, at one moment
    std::uint64_t read = 0, written = 0; ///< bytes, through system calls; 0 where the system does not tell

    [[nodiscard]] bool isDone() const { return code == 0; }
};

/// Whether the memory of processes that a program begins is counted, too. That takes time from it, so it is for runs
/// whose time does not count; without it, peakMegabytes is that of the program alone.
enum class Watch { Time, Memory };

/// Runs a program of the search path to its end, and waits for all that it began; its standard output goes nowhere.
[[nodiscard]] Run run(const std::vector<std::string>& words, Watch watch = Watch::Time);

/// Runs `plime process` from one picture to another through modules. Throws std::runtime_error when that fails.
Run process(const std::string& input, const std::string& output, const std::vector<std::string>& modules,
            Watch watch = Watch::Time);

} // namespace bench
