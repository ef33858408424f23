// SPDX-License-Identifier: Apache-2.0
#include "workbench/gl/DrawingWatch.h"

#include "workbench/gl/ShaderGuard.h"

#include <cmath>
#include <ctime>
#include <system_error>
#include <utility>

namespace workbench {
namespace {

constexpr double Patience = 20; // times what is expected

thread_local DrawingWatch* innermost = nullptr;

double seconds(clockid_t clock) {
    timespec now{};
    ::clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

} // namespace

DrawingWatch::DrawingWatch(std::uint64_t pixels, std::string who)
    : pixels(pixels), who(std::move(who)), outer(std::exchange(innermost, this)) {}

DrawingWatch::~DrawingWatch() {
    innermost = outer;
    if (!watcher.joinable()) return;
    {
        const std::lock_guard lock(mutex);
        over = true;
    }
    wake.notify_one();
    watcher.join();
}

void DrawingWatch::begin(const std::string& label, double secondsPerPixel) {
    if (innermost == nullptr || shaderGuard().stuck == nullptr) return;
    innermost->start(label, Seconds(secondsPerPixel * static_cast<double>(innermost->pixels)));
}

void DrawingWatch::start(const std::string& label, Seconds expected) {
    {
        const std::lock_guard lock(mutex);
        allowed += shaderGuard().time + Patience * expected;
    }
    if (watcher.joinable()) return;
    if (who.empty()) who = label;
    try {
        watcher = std::thread([this] { watch(); });
    } catch (const std::system_error&) { // no thread can be had: then nobody watches
    }
}

void DrawingWatch::watch() {
    constexpr std::chrono::milliseconds Step{100};
    const double clockBegin = seconds(CLOCK_MONOTONIC), processBegin = seconds(CLOCK_PROCESS_CPUTIME_ID);
    std::unique_lock lock(mutex);
    while (!wake.wait_for(lock, Step, [this] { return over; })) {
        const double limit = allowed.count();
        if (seconds(CLOCK_MONOTONIC) - clockBegin < limit ||
            seconds(CLOCK_PROCESS_CPUTIME_ID) - processBegin < limit)
            continue;
        shaderGuard().stuck(
            {who,
             "is ended, because its program has drawn for " + std::to_string(std::lround(limit)) +
                 " s and does not come to an end",
             "",
             "",
             "Look for a loop that does not end for every value of a pixel, or allow more time "
             "with KROD_SHADER_SECONDS",
             {}});
        return;
    }
}

} // namespace workbench
