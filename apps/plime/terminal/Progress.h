// SPDX-License-Identifier: Apache-2.0
// Progress line on standard error.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>

namespace workbench {

/// How far a piece of work is.
struct ProgressState {
    std::uint64_t done = 0;    ///< pieces
    std::uint64_t resumed = 0; ///< pieces among them that an earlier run has done; they count in no rate
    double seconds = 0;        ///< since the work began
};

/// What a line says; see Progress.
struct ProgressText {
    std::string what;        ///< name of the work, such as a path
    std::uint64_t total = 1; ///< pieces
    std::string unit;        ///< what pieces are called in the rate, "Mpixel"
    double perUnit = 1;      ///< pieces in one of it

    /// "what: 40 %, 2.0 Mpixel/s, 12 s left", or the time that it takes so far while there is no rate. Cut to so many
    /// columns, the name first and from its front; 0: not cut.
    [[nodiscard]] std::string line(const ProgressState& state, std::size_t columns) const;
};

/// A line that is written over and over: share, rate, time left; within one long piece, the time so far. Only on a
/// terminal, and not when quiet; elsewhere nothing is written. Removed at the end.
class Progress {
public:
    /// `total` pieces of work; see ProgressText.
    Progress(std::string what, std::uint64_t total, std::string unit, double perUnit, bool quiet);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    /// So many pieces are done, some of them by an earlier run.
    void show(std::uint64_t done, std::uint64_t resumed = 0);
    /// Removes the line, so that something else can be said.
    void clear();

private:
    using Clock = std::chrono::steady_clock;

    void repeat();
    void print(Clock::time_point now);

    ProgressText text;
    bool visible;
    std::mutex mutex; ///< of what follows
    std::condition_variable ended;
    bool isOver = false, written = false;
    ProgressState state;
    Clock::time_point start = Clock::now(), last = start;
    std::thread repeater; ///< writes while one piece takes long
};

} // namespace workbench
