// SPDX-License-Identifier: Apache-2.0
// Drawing with programs of users comes to an end, or the process does.
#pragma once

#include "host/Export.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>

namespace workbench {

/// While it lives, what its thread draws with programs of users is watched: one that came to an end on the
/// worker's tile may not do so on other pixels, and then no call of OpenGL returns. Costs nothing without such a
/// program, and nothing at all unless ShaderGuardSettings::stuck is set.
class KROD_API DrawingWatch {
public:
    /// For a drawing of so many pixels, which must be read back within the watch's life. `who` is named in the
    /// message; empty: the program's label.
    explicit DrawingWatch(std::uint64_t pixels, std::string who = {});
    DrawingWatch(const DrawingWatch&) = delete;
    DrawingWatch& operator=(const DrawingWatch&) = delete;
    ~DrawingWatch();

    /// A program of a user is going to draw, whose trial took so many seconds for a pixel. The innermost watch of
    /// this thread begins, or allows the time that this program takes in addition: the time of a trial, and 20
    /// times as long as the drawing should take. Over is the time when both the clock and the process have spent
    /// it, so that neither a busy machine nor a pause of the process counts.
    static void begin(const std::string& label, double secondsPerPixel);

private:
    using Seconds = std::chrono::duration<double>;

    void start(const std::string& label, Seconds expected);
    void watch();

    std::uint64_t pixels;
    std::string who;
    DrawingWatch* outer;
    std::thread watcher;
    std::mutex mutex; ///< of what follows
    std::condition_variable wake;
    bool over = false;
    Seconds allowed{0};
};

} // namespace workbench
