// SPDX-License-Identifier: Apache-2.0
#include "workbench/gl/dialect/LineTable.h"

#include <algorithm>
#include <utility>

namespace workbench {
namespace {

bool isWordPart(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

/// The length of the run of blanks and comments at the start of `text`.
std::size_t spaceLength(std::string_view text) {
    std::size_t length = 0;
    while (length < text.size()) {
        if (text[length] == ' ' || text[length] == '\t' || text[length] == '\r') {
            ++length;
        } else if (text.substr(length, 2) == "/*") {
            const std::size_t end = text.find("*/", length + 2);
            length = end == std::string_view::npos ? text.size() : end + 2;
        } else {
            break;
        }
    }
    return length;
}

} // namespace

LineTable::LineTable(std::string_view text, std::vector<TextRegion> givenRegions,
                     std::vector<RenamedWord> givenRenamed)
    : regions(std::move(givenRegions)), renamed(std::move(givenRenamed)) {
    if (regions.empty()) regions.push_back({"text", 0});
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        lines.emplace_back(text.substr(0, end));
        if (lines.back().ends_with('\r')) lines.back().pop_back();
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

std::string_view LineTable::line(int number) const {
    if (number < 1 || number > lineCount()) return {};
    return lines[static_cast<std::size_t>(number) - 1];
}

std::optional<LineTable::Place> LineTable::place(int number) const {
    if (number < 1 || number > lineCount()) return std::nullopt;
    for (std::size_t i = 0; i + 1 < regions.size(); ++i) {
        if (number <= regions[i].lines) return Place{regions[i].name, number};
        number -= regions[i].lines;
    }
    return Place{regions.back().name, number};
}

int LineTable::sourceColumn(int number, int driverColumn) const {
    if (driverColumn < 1) return 0;
    const std::string_view text = line(number);
    int column = 1;
    for (std::size_t at = 0; at < text.size();) {
        std::size_t length = spaceLength(text.substr(at));
        int width = 1;
        if (length == 0) {
            const auto begin = text.begin() + static_cast<std::ptrdiff_t>(at);
            const auto end = std::find_if_not(begin, text.end(), isWordPart);
            length = std::max<std::size_t>(1, static_cast<std::size_t>(end - begin));
            const std::string_view word = text.substr(at, length);
            const auto known =
                std::find_if(renamed.begin(), renamed.end(),
                             [&](const RenamedWord& candidate) { return candidate.from == word; });
            width = static_cast<int>(known == renamed.end() ? length : known->to.size());
        }
        if (driverColumn < column + width)
            return static_cast<int>(at) + 1 + std::min(driverColumn - column, static_cast<int>(length) - 1);
        column += width;
        at += length;
    }
    return driverColumn == column ? static_cast<int>(text.size()) + 1 : 0;
}

std::string LineTable::inSourceWords(std::string_view message) const {
    std::string text(message);
    for (const RenamedWord& word : renamed)
        for (std::size_t at = 0; (at = text.find(word.to, at)) != std::string::npos; at += word.from.size())
            text.replace(at, word.to.size(), word.from);
    return text;
}

} // namespace workbench
