// SPDX-License-Identifier: Apache-2.0
// A child process that may do its worst.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace workbench::validate {

/// The descriptor on which a child hands over its result. The three standard ones belong to the plug-in.
inline constexpr int ResultDescriptor = 199;

/// How a child came to its end.
struct Ending {
    enum class Way {
        Exited,   ///< `number` is its exit code
        Signal,   ///< `number` is the signal
        TimedOut, ///< it was killed because its time was over
        Stopped,  ///< it was killed because the caller wanted to stop
    };
    Way way = Way::Exited;
    int number = 0;
    std::string result; ///< what it wrote on ResultDescriptor
    std::string errors; ///< the end of what it wrote on standard error
};

/// Runs this program anew with these arguments, in a session of its own, without core files, with at most 4
/// GiB of data and 256 MiB per file, its standard output leading nowhere. At its end, or when its time is
/// over, its whole process group is killed and reaped. `stop` is asked whenever a signal arrives. Throws
/// std::system_error when no child can be made.
[[nodiscard]] Ending runChild(const std::vector<std::string>& arguments, std::chrono::seconds limit,
                              const std::function<bool()>& stop);

} // namespace workbench::validate
