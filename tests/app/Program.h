// SPDX-License-Identifier: Apache-2.0
// Runs the built program as a child.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

/// Where a stream of the child leads.
enum class Sink {
    Captured, ///< to the test
    Closed,   ///< the descriptor is not open
    Full,     ///< to a disk without room
    Broken,   ///< to a pipe that nobody reads
    Terminal, ///< to a terminal; what arrives there is captured (standard error only)
};

/// How the program is run. The variables of the environment that it reads are taken away first.
struct Call {
    std::vector<std::string> arguments;
    std::map<std::string, std::string> environment = {};
    Sink output = Sink::Captured;
    Sink error = Sink::Captured;
    std::string folder = {};                    ///< to run in; empty: that of the test
    std::uint64_t largestFile = 0;              ///< bytes that the program may write to a file; 0: any number
    std::function<void(int child)> meanwhile{}; ///< is called with the child's number while it works
    bool closedInput = false;                   ///< standard input is not open
};

/// What it led to.
struct Result {
    int code = -1; ///< exit code; 1000 + the signal that ended it
    std::string output;
    std::string error;
};

/// Runs plime to its end. Throws std::runtime_error when it cannot be started.
[[nodiscard]] Result run(const Call& call);
[[nodiscard]] inline Result run(const std::vector<std::string>& arguments) { return run(Call{arguments}); }
