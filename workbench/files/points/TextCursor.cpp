// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/points/TextCursor.h"

#include "workbench/report/Failure.h"

#include <algorithm>
#include <charconv>

namespace workbench {
namespace {

constexpr std::string_view Blanks = " \t\r";

std::string_view trimmed(std::string_view text) {
    const auto begin = text.find_first_not_of(Blanks);
    if (begin == std::string_view::npos) return text.substr(text.size());
    return text.substr(begin, text.find_last_not_of(Blanks) - begin + 1);
}

std::optional<double> numberIn(std::string_view digits) {
    if (digits.starts_with('+')) digits.remove_prefix(1); // from_chars knows no plus sign
    double value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error != std::errc{} || end != digits.data() + digits.size()) return std::nullopt;
    return value;
}

} // namespace

std::string quotedField(std::string_view text) {
    std::string result = "\"";
    for (const char c : text.substr(0, 40)) result += c >= ' ' && c != '\x7f' ? c : '?';
    return result + (text.size() > 40 ? "…\"" : "\"");
}

TextCursor::TextCursor(std::filesystem::path path, std::string_view text, std::uint64_t firstLine)
    : file(std::move(path)),
      rest(text),
      lineEnd(text.find('\n') == std::string_view::npos ? '\r' : '\n'),
      lineNumber(firstLine - 1) {}

bool TextCursor::nextLine() {
    while (!rest.empty()) {
        const auto end = rest.find(lineEnd);
        current = rest.substr(0, end);
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
        ++lineNumber;
        at = 0;
        afterSeparator = quotesCount = true;
        const std::string_view text = trimmed(current);
        const std::size_t mark = text.starts_with('#') ? 1 : text.starts_with("//") ? 2 : 0;
        if (!text.empty() && mark == 0) return true;
        if (mark > 0) lastComment = trimmed(text.substr(mark));
    }
    current = {};
    return false;
}

/// The field between quotation marks that begins here, with the cursor behind it; nothing when there is none.
std::optional<std::string_view> TextCursor::quoted(char separator) {
    const auto begin = current.find_first_not_of(separator == '\t' ? " " : Blanks, at);
    if (!quotesCount || begin == std::string_view::npos || current[begin] != '"') return std::nullopt;
    auto close = current.find('"', begin + 1);
    while (close != std::string_view::npos && current.substr(close + 1).starts_with('"'))
        close = current.find('"', close + 2);      // two stand for one within the field
    quotesCount = close != std::string_view::npos; // else each field would search the whole line
    if (!quotesCount) return std::nullopt;
    const auto end = separator == ' ' ? close + 1 : std::min(current.find(separator, close), current.size());
    const std::string_view behind = current.substr(close + 1, end - close - 1);
    const bool goesOn =
        separator == ' ' && end < current.size() && Blanks.find(current[end]) == std::string_view::npos;
    if (goesOn || !trimmed(behind).empty()) return std::nullopt;
    afterSeparator = end < current.size();
    at = end + (afterSeparator ? 1 : 0);
    return current.substr(begin + 1, close - begin - 1);
}

bool TextCursor::nextField(char separator, std::string_view& field) {
    if (afterSeparator || separator == ' ')
        if (const auto inside = quoted(separator)) {
            field = *inside;
            return true;
        }
    if (separator == ' ') {
        const auto begin = current.find_first_not_of(Blanks, at);
        if (begin == std::string_view::npos) return false;
        at = std::min(current.find_first_of(Blanks, begin), current.size());
        field = current.substr(begin, at - begin);
        return true;
    }
    if (!afterSeparator) return false;
    const auto end = std::min(current.find(separator, at), current.size());
    field = trimmed(current.substr(at, end - at));
    afterSeparator = end < current.size();
    at = end + (afterSeparator ? 1 : 0);
    return true;
}

bool TextCursor::nextWord(std::string_view& word) {
    while (!nextField(' ', word))
        if (!nextLine()) return false;
    return true;
}

double TextCursor::number(std::string_view field) const {
    if (const auto value = numberIn(field)) return *value;
    const auto comma = field.find(',');
    if (decimalCommas && comma != std::string_view::npos && field.find('.') == std::string_view::npos) {
        std::string withPoint(field);
        withPoint[comma] = '.';
        if (const auto value = numberIn(withPoint)) return *value;
    }
    fail("a number", field);
}

void TextCursor::fail(std::string expected, std::string_view field) const {
    failAt(static_cast<std::size_t>(field.data() - current.data()), std::move(expected),
           field.empty() ? "an empty field" : quotedField(field));
}

void TextCursor::failAtEnd(std::string expected, std::string got) const {
    failAt(current.size(), std::move(expected), std::move(got));
}

void TextCursor::failAt(std::size_t column, std::string expected, std::string got) const {
    throw Failure(Fault::Input, {file.string() + ", line " + std::to_string(lineNumber) + ", column " +
                                     std::to_string(column + 1),
                                 "the points cannot be read",
                                 std::move(expected),
                                 std::move(got),
                                 "",
                                 {}});
}

} // namespace workbench
