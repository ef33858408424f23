// SPDX-License-Identifier: Apache-2.0
// What was called, line by line.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace support {

/// A list of calls in the order in which they were made.
class CallLog {
public:
    void add(std::string line) { lines.push_back(std::move(line)); }
    void clear() { lines.clear(); }

    /// One line per call, each with a line end.
    [[nodiscard]] std::string text() const {
        std::string all;
        for (const std::string& line : lines) all += line + '\n';
        return all;
    }
    /// The number of lines with these words in them.
    [[nodiscard]] std::size_t count(std::string_view words) const {
        return static_cast<std::size_t>(std::count_if(lines.begin(), lines.end(), [words](const auto& line) {
            return line.find(words) != std::string::npos;
        }));
    }

private:
    std::vector<std::string> lines;
};

} // namespace support
