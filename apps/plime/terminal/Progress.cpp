// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/terminal/Progress.h"

#include <algorithm>
#include <charconv>
#include <unistd.h>
#include <utility>

namespace workbench {
namespace {

constexpr std::chrono::milliseconds BetweenLines{200};
constexpr int ErrorOutput = 2;

std::string fixed(double value, int digits) {
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, digits).ptr;
    return std::string(text, end);
}

void write(const std::string& text) {
    if (::write(ErrorOutput, text.data(), text.size()) < 0) return; // progress is never worth a failure
}

} // namespace

Progress::Progress(std::string what, std::uint64_t total, std::string unit, double perUnit, bool quiet)
    : what(std::move(what)),
      unit(std::move(unit)),
      total(std::max<std::uint64_t>(total, 1)),
      perUnit(perUnit),
      visible(!quiet && isatty(ErrorOutput) == 1) {}

Progress::~Progress() { clear(); }

void Progress::clear() {
    if (std::exchange(written, false)) write("\r\x1b[K");
}

void Progress::show(std::uint64_t done) {
    const auto now = Clock::now();
    if (!visible || now - last < BetweenLines) return;
    last = now;
    const double seconds = std::chrono::duration<double>(now - start).count();
    const double share = static_cast<double>(done) / static_cast<double>(total);
    std::string line = "\r\x1b[K" + what + ": " + fixed(100 * share, 0) + " %";
    if (done > 0 && seconds > 0)
        line += ", " + fixed(static_cast<double>(done) / perUnit / seconds, 1) + ' ' + unit + "/s, " +
                fixed(seconds / share - seconds, 0) + " s left";
    write(line);
    written = true;
}

} // namespace workbench
