// SPDX-License-Identifier: Apache-2.0
// How far long work is.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace workbench {

/// A line on standard error that is written over and over: share, rate, time left. Only on a terminal, and
/// not when quiet; elsewhere nothing is written. Removed at the end.
class Progress {
public:
    /// `total` pieces of work; `unit` is what they are called in the rate, "Mpixel" for instance, and one of
    /// it is `perUnit` pieces.
    Progress(std::string what, std::uint64_t total, std::string unit, double perUnit, bool quiet);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    /// So many pieces are done.
    void show(std::uint64_t done);
    /// Removes the line, so that something else can be said.
    void clear();

private:
    using Clock = std::chrono::steady_clock;

    std::string what, unit;
    std::uint64_t total;
    double perUnit;
    bool visible;
    bool written = false;
    Clock::time_point start = Clock::now(), last = start;
};

} // namespace workbench
