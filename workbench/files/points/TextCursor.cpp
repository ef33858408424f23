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

} // namespace

std::string quotedField(std::string_view text) {
    std::string result = "\"";
    for (const char c : text.substr(0, 40)) result += c >= ' ' && c != '\x7f' ? c : '?';
    return result + (text.size() > 40 ? "…\"" : "\"");
}

TextCursor::TextCursor(std::filesystem::path path, std::string_view text, std::uint64_t firstLine)
    : file(std::move(path)), rest(text), lineNumber(firstLine - 1) {}

bool TextCursor::nextLine() {
    while (!rest.empty()) {
        const auto end = rest.find('\n');
        current = rest.substr(0, end);
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
        ++lineNumber;
        at = 0;
        afterSeparator = true;
        const std::string_view text = trimmed(current);
        if (!text.empty() && !text.starts_with('#') && !text.starts_with("//")) return true;
    }
    current = {};
    return false;
}

bool TextCursor::nextField(char separator, std::string_view& field) {
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
    std::string_view digits = field;
    if (digits.starts_with('+')) digits.remove_prefix(1); // from_chars knows no plus sign
    double value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error != std::errc{} || end != digits.data() + digits.size()) fail("a number", field);
    return value;
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
