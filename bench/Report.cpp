// SPDX-License-Identifier: Apache-2.0
#include "Report.h"

#include "Median.h"

#include <array>
#include <charconv>
#include <cstdio>

namespace bench {
namespace {

void print(const std::string& line) {
    std::fwrite(line.data(), 1, line.size(), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

} // namespace

std::string fixed(double value, int digits) {
    std::array<char, 64> text{};
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, digits);
    return {text.data(), end.ptr};
}

std::string spread(const std::vector<double>& values, int digits) {
    return fixed(median(values), digits) + " (" + fixed(quantile(values, 0.25), digits) + " to " +
           fixed(quantile(values, 0.75), digits) + ')';
}

void table(const std::string& title, const std::vector<std::string>& columns) {
    print("\n" + title + "\n");
    row(columns);
    row(std::vector<std::string>(columns.size(), "---"));
}

void row(const std::vector<std::string>& cells) {
    std::string line = "|";
    for (const std::string& cell : cells) line += ' ' + cell + " |";
    print(line);
}

void note(const std::string& text) { print("\n" + text); }

void wanted(const std::string& what, const Limit& limit, const std::vector<double>& measured) {
    const bool atMost = limit.side == Limit::Side::AtMost;
    const double value = median(measured);
    const bool met = atMost ? value <= limit.value : value >= limit.value;
    const std::string text =
        (measured.size() > 1 ? spread(measured, limit.digits) : fixed(value, limit.digits)) + limit.unit;
    print("@ | " + what + " | " + (atMost ? "at most " : "at least ") + fixed(limit.value, limit.digits) +
          limit.unit + " | " + text + " | " + (met ? "yes" : "**no**") + " |");
}

} // namespace bench
