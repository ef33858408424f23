// SPDX-License-Identifier: Apache-2.0
// What benchmarks print: tables in Markdown, and one line for each figure that has a limit.
#pragma once

#include <string>
#include <vector>

namespace bench {

/// A number with that many digits after the point.
[[nodiscard]] std::string fixed(double value, int digits = 2);

/// The median and the middle half of what was measured: "1.01 (0.98 to 1.03)".
[[nodiscard]] std::string spread(const std::vector<double>& values, int digits = 2);

/// Begins a table: its title in a line of its own, then the names of its columns.
void table(const std::string& title, const std::vector<std::string>& columns);
/// A row of the table that was begun last.
void row(const std::vector<std::string>& cells);
/// A paragraph.
void note(const std::string& text);

/// A limit for a figure.
struct Limit {
    enum class Side { AtMost, AtLeast } side;
    double value;
    int digits = 2;
    const char* unit = "";
};

/// A line that begins with "@": what was measured, its limit, the median, and whether it keeps the limit. The table
/// of limits in docs/performance.md consists of these lines.
void wanted(const std::string& what, const Limit& limit, const std::vector<double>& measured);

} // namespace bench
