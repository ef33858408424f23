// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/terminal/Text.h"

#include "workbench/report/Utf8.h"

#include <algorithm>

namespace workbench {
namespace {

bool startsCodePoint(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }

std::string escaped(char byte) {
    if (byte == '\n') return "\\n";
    if (byte == '\r') return "\\r";
    if (byte == '\t') return "\\t";
    constexpr std::string_view Digits = "0123456789abcdef";
    const auto value = static_cast<unsigned char>(byte);
    return {'\\', 'x', Digits[value >> 4U], Digits[value & 15U]};
}

/// Everything that a terminal may obey: C0, DEL and C1, line and paragraph separators, and the marks that turn
/// the direction of writing, with which a text can look like another one.
bool isControl(std::string_view codePoint) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(codePoint[i]); };
    if (codePoint.size() == 1) return byte(0) < 0x20 || byte(0) == 0x7F;
    if (codePoint.size() == 2) return (byte(0) == 0xC2 && byte(1) < 0xA0) || codePoint == "\xd8\x9c";
    if (codePoint.size() != 3 || byte(0) != 0xE2) return false;
    return (byte(1) == 0x80 &&
            (byte(2) == 0x8E || byte(2) == 0x8F || (byte(2) >= 0xA8 && byte(2) <= 0xAE))) ||
           (byte(1) == 0x81 && byte(2) >= 0xA6 && byte(2) <= 0xA9);
}

/// Breaks one line at its blanks.
void wrapLine(std::string& out, std::string_view line, std::size_t columns, const std::string& indent) {
    std::string current = indent;
    bool empty = true;
    while (!line.empty()) {
        const std::size_t end = std::min(line.find(' '), line.size());
        const std::string_view word = line.substr(0, end);
        line.remove_prefix(std::min(end + 1, line.size()));
        if (word.empty()) continue;
        if (!empty && columnsOf(current) + 1 + columnsOf(word) > columns) {
            out += current + '\n';
            current = indent;
            empty = true;
        }
        if (!empty) current += ' ';
        current += word;
        empty = false;
    }
    out += (empty ? std::string() : current) + '\n';
}

} // namespace

std::size_t columnsOf(std::string_view text) {
    return static_cast<std::size_t>(std::ranges::count_if(text, startsCodePoint));
}

std::string padded(std::string_view text, std::size_t columns) {
    std::string result(text);
    const std::size_t used = columnsOf(text);
    if (used < columns) result.append(columns - used, ' ');
    return result;
}

std::string shortened(std::string_view text, std::size_t columns) {
    if (columns == 0 || columnsOf(text) <= columns) return std::string(text);
    std::size_t kept = 0;
    std::size_t end = 0;
    while (end < text.size() && (kept < columns || !startsCodePoint(text[end]))) {
        if (startsCodePoint(text[end]) && ++kept == columns) break;
        ++end;
    }
    return std::string(text.substr(0, end)) + "…";
}

std::string wrapped(std::string_view text, std::size_t columns, std::size_t indent) {
    const std::string margin(indent, ' ');
    std::string out;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.starts_with(' '))
            out.append(margin).append(line).append("\n");
        else
            wrapLine(out, line, columns, margin);
    }
    return out;
}

std::string printable(std::string_view text) {
    std::string out;
    while (!text.empty()) {
        const std::size_t length = codePointLength(text);
        if (length == 0 || isControl(text.substr(0, length))) {
            for (const char byte : text.substr(0, std::max<std::size_t>(length, 1))) out += escaped(byte);
        } else {
            out += text.substr(0, length);
        }
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return out;
}

std::string printableLines(std::string_view text) {
    std::string out;
    while (true) {
        const std::size_t end = text.find('\n');
        out += printable(text.substr(0, end));
        if (end == std::string_view::npos) return out;
        out += '\n';
        text.remove_prefix(end + 1);
    }
}

std::string lowerCase(std::string_view text) {
    std::string result(text);
    for (char& letter : result)
        if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
    return result;
}

} // namespace workbench
