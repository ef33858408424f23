// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/terminal/Progress.h"

#include "apps/plime/terminal/Text.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include <sys/ioctl.h>
#include <unistd.h>

namespace workbench {
namespace {

constexpr std::chrono::milliseconds BetweenLines{200}, BetweenRepetitions{1000};
constexpr int ErrorOutput = 2;

std::string fixed(double value, int digits) {
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, digits).ptr;
    return std::string(text, end);
}

void write(const std::string& text) {
    if (::write(ErrorOutput, text.data(), text.size()) < 0) return; // progress is never worth a failure
}

/// Of the terminal; 0 where it does not say.
std::size_t columnsOfTerminal() {
    winsize size{};
    return ::ioctl(ErrorOutput, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

/// The end of a text, with "…" in front of it where something is missing.
std::string endOf(std::string_view text, std::size_t columns) {
    const std::size_t all = columnsOf(text);
    if (all <= columns) return std::string(text);
    for (std::size_t left = all; left >= columns && !text.empty();) {
        text.remove_prefix(1);
        left = columnsOf(text);
    }
    while (!text.empty() && (static_cast<unsigned char>(text[0]) & 0xC0U) == 0x80U) text.remove_prefix(1);
    return "…" + std::string(text);
}

} // namespace

std::string ProgressText::line(const ProgressState& state, std::size_t columns) const {
    const double share = static_cast<double>(state.done) / static_cast<double>(total);
    const auto made = static_cast<double>(state.done - std::min(state.done, state.resumed));
    std::string rest = ": " + fixed(100 * share, 0) + " %";
    if (made > 0 && state.seconds > 0) {
        const double rate = made / state.seconds;
        const double left = static_cast<double>(total - std::min(state.done, total)) / rate;
        rest += ", " + fixed(rate / perUnit, 1) + ' ' + unit + "/s, " + fixed(left, 0) + " s left";
    } else {
        rest += ", " + fixed(state.seconds, 0) + " s so far";
    }
    const std::string name = printable(what);
    if (columns == 0) return name + rest;
    constexpr std::size_t ShortestName = 8;
    const std::size_t used = columnsOf(rest);
    const std::size_t room = used + ShortestName < columns ? columns - used : ShortestName;
    return shortened(endOf(name, room) + rest, columns);
}

Progress::Progress(std::string what, std::uint64_t total, std::string unit, double perUnit, bool quiet)
    : text{std::move(what), std::max<std::uint64_t>(total, 1), std::move(unit), perUnit},
      visible(!quiet && isatty(ErrorOutput) == 1) {
    if (visible) repeater = std::thread([this] { repeat(); });
}

Progress::~Progress() {
    {
        const std::lock_guard lock(mutex);
        isOver = true;
    }
    ended.notify_one();
    if (repeater.joinable()) repeater.join();
    clear();
}

void Progress::clear() {
    const std::lock_guard lock(mutex);
    if (std::exchange(written, false)) write("\r\x1b[K");
    last = Clock::now(); // the next line stands behind what is said now
}

void Progress::show(std::uint64_t done, std::uint64_t resumed) {
    if (!visible) return;
    const std::lock_guard lock(mutex);
    state.done = done;
    state.resumed = resumed;
    const auto now = Clock::now();
    if (now - last >= BetweenLines) print(now);
}

void Progress::repeat() {
    std::unique_lock lock(mutex);
    while (!ended.wait_for(lock, BetweenRepetitions, [this] { return isOver; }))
        if (const auto now = Clock::now(); now - last >= BetweenRepetitions) print(now);
}

void Progress::print(Clock::time_point now) {
    last = now;
    state.seconds = std::chrono::duration<double>(now - start).count();
    const std::size_t columns = columnsOfTerminal();
    write("\r\x1b[K" + text.line(state, columns == 0 ? 0 : columns - 1));
    written = true;
}

} // namespace workbench
