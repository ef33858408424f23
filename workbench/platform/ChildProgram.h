// SPDX-License-Identifier: Apache-2.0
// A helper program of ours as a child of this process, for work that may end the process that does it.
#pragma once

#include "workbench/platform/Descriptor.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>

namespace workbench {

/// What a helper program may use up. A 0 leaves a number open.
struct ChildLimits {
    std::chrono::milliseconds time{10000}; ///< by the clock on the wall; never open
    std::chrono::seconds processorTime{0};
    std::uint64_t memory = 0; ///< bytes of address space; open in instrumented builds
    std::uint64_t fileSize = std::uint64_t{256} << 20; ///< bytes
    std::uint64_t files = 0;                           ///< open at once
    /// It dies with the thread that has started it, however that ends. Without that it must see by itself, by a file
    /// that is closed, that nobody wants it any more.
    bool endsWithThread = true;
};

/// How a helper program came to its end.
struct ChildEnding {
    enum class Way {
        Exited,     ///< `number` is its exit code
        Signal,     ///< `number` is the signal
        TooLong,    ///< it was ended because its time, or its time of the processor, was over
        NotStarted, ///< there is no such program, or it cannot be executed
        Unknown,    ///< this process has turned off waiting for children
    };
    Way way = Way::Unknown;
    int number = 0;
    std::string reason; ///< with TooLong: than what, "2 s"; with NotStarted: why

    /// "exited with code 3", "was ended by signal 11 (SIGSEGV)", "took longer than 2 s of processor time".
    [[nodiscard]] std::string text() const;
};

/// The path of a helper program: beside this program, else beside the library that this code is part of, else
/// where it should be.
[[nodiscard]] std::filesystem::path helperProgram(std::string_view name);

/// A running helper program, which does not outlive this object, nor this process.
///
/// It is the head of a process group of its own, so that Ctrl-C in a terminal does not reach it. It has the
/// environment of this process, no core files, the signals as they are by default, no open files but those that
/// it is given, and gains no rights from programs that it starts.
class ChildProgram {
public:
    /// Starts the program. `descriptors` become its files 0, 1, 2 and so on; a -1 there, and what is missing
    /// of the first three, leads nowhere. They are borrowed, and only until this returns. A program that
    /// cannot be executed is no error here: see wait(). Throws std::system_error where this process has no
    /// more processes or files.
    ChildProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                 const std::vector<int>& descriptors, const ChildLimits& limits);
    ChildProgram(const ChildProgram&) = delete;
    ChildProgram& operator=(const ChildProgram&) = delete;
    /// Ends it with its whole group.
    ~ChildProgram();

    /// All that comes from that descriptor of this process until its other end is closed, or `most` bytes;
    /// nothing if the time is over first. The caller must have closed its own copy of the other end.
    [[nodiscard]] std::optional<std::string> read(int descriptor, std::size_t most) const;
    /// Waits for its end until the time is over, then ends whatever is left of the group, and says how it
    /// was. A second call gives the same.
    ChildEnding wait();

private:
    void start(const std::filesystem::path& program, const std::vector<std::string>& arguments,
               const std::vector<int>& descriptors);
    [[nodiscard]] int millisecondsLeft() const;
    void end(bool timeOver);

    ChildLimits limits;
    std::chrono::steady_clock::time_point deadline;
    pid_t process = 0; ///< 0: gone
    Descriptor handle; ///< readable as soon as the process has ended
    ChildEnding ending;
};

} // namespace workbench
