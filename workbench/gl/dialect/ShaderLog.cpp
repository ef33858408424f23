// SPDX-License-Identifier: Apache-2.0
#include "workbench/gl/dialect/ShaderLog.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <system_error>
#include <utility>

namespace workbench {
namespace {

constexpr int Neighbours = 3;

/// A line of a log as the driver wrote it, before its place is looked up.
struct RawEntry {
    LogSeverity severity = LogSeverity::Note;
    int line = 0;
    int column = 0;
    bool ofMesasPreprocessor = false;
    std::string_view message = {};
};

/// Reads one line from left to right. Every function leaves the rest untouched if it does not find what it
/// looks for.
class Cursor {
public:
    explicit Cursor(std::string_view line) : rest(line) {}

    bool literal(std::string_view word) {
        if (!rest.starts_with(word)) return false;
        rest.remove_prefix(word.size());
        return true;
    }

    bool number(int& value) {
        const auto result = std::from_chars(rest.data(), rest.data() + rest.size(), value);
        if (result.ec != std::errc() || value < 0) return false;
        rest.remove_prefix(static_cast<std::size_t>(result.ptr - rest.data()));
        return true;
    }

    bool severity(LogSeverity& value) {
        static constexpr std::array<std::pair<std::string_view, LogSeverity>, 8> Words{{
            {"preprocessor error", LogSeverity::Error},
            {"preprocessor warning", LogSeverity::Warning},
            {"fatal error", LogSeverity::Error},
            {"error", LogSeverity::Error},
            {"ERROR", LogSeverity::Error},
            {"warning", LogSeverity::Warning},
            {"WARNING", LogSeverity::Warning},
            {"note", LogSeverity::Note},
        }};
        for (const auto& [word, meaning] : Words) {
            if (!literal(word)) continue;
            value = meaning;
            return true;
        }
        return false;
    }

    /// What is left, without `blanks` at its start.
    [[nodiscard]] std::string_view remaining(std::size_t blanks = 0) const {
        return rest.substr(std::min(rest.size(), rest.starts_with(' ') ? blanks : 0));
    }

private:
    std::string_view rest;
};

/// "0:3(17): error: text"
std::optional<RawEntry> readMesa(std::string_view line) {
    Cursor cursor(line);
    RawEntry entry;
    int string = 0;
    if (cursor.number(string) && cursor.literal(":") && cursor.number(entry.line) && cursor.literal("(") &&
        cursor.number(entry.column) && cursor.literal("): ")) {
        entry.ofMesasPreprocessor = cursor.remaining().starts_with("preprocessor ");
        if (!cursor.severity(entry.severity) || !cursor.literal(":")) return std::nullopt;
        entry.message = cursor.remaining(1);
        return entry;
    }
    return std::nullopt;
}

/// "0(3) : error C1115: text"; the code stays in front of the text.
std::optional<RawEntry> readNvidia(std::string_view line) {
    Cursor cursor(line);
    RawEntry entry;
    int string = 0;
    if (cursor.number(string) && cursor.literal("(") && cursor.number(entry.line) && cursor.literal(") : ") &&
        cursor.severity(entry.severity) && (cursor.literal(" ") || cursor.literal(": "))) {
        entry.message = cursor.remaining();
        return entry;
    }
    return std::nullopt;
}

/// "ERROR: 0:3: text"
std::optional<RawEntry> readIntel(std::string_view line) {
    Cursor cursor(line);
    RawEntry entry;
    int string = 0;
    if (cursor.severity(entry.severity) && cursor.literal(": ") && cursor.number(string) &&
        cursor.literal(":") && cursor.number(entry.line) && cursor.literal(":")) {
        entry.message = cursor.remaining(1);
        return entry;
    }
    return std::nullopt;
}

/// "error: text", as linkers write, or anything else.
RawEntry readPlaceless(std::string_view line) {
    Cursor cursor(line);
    RawEntry entry;
    if (cursor.severity(entry.severity) && cursor.literal(":")) {
        entry.message = cursor.remaining(1);
        return entry;
    }
    return {LogSeverity::Note, 0, 0, false, line};
}

RawEntry readLine(std::string_view line) {
    if (const auto entry = readMesa(line)) return *entry;
    if (const auto entry = readNvidia(line)) return *entry;
    if (const auto entry = readIntel(line)) return *entry;
    return readPlaceless(line);
}

LogEntry located(RawEntry raw, const LineTable& table) {
    if (raw.ofMesasPreprocessor && raw.line < LineTable::FirstAddedLine) raw.line += table.preprocessorLag();
    LogEntry entry;
    entry.severity = raw.severity;
    entry.message = table.inSourceWords(raw.message);
    // What is missing at the end of a text is reported behind its last line.
    const int line = raw.line == table.lineCount() + 1 ? table.lineCount() : raw.line;
    if (const auto place = table.place(line)) {
        entry.region = place->region;
        entry.line = place->line;
        entry.textLine = line;
        if (raw.column > 0 && line == raw.line) entry.column = table.sourceColumn(line, raw.column);
    } else if (raw.line >= LineTable::FirstAddedLine) {
        entry.region = "shim";
        entry.line = raw.line - LineTable::FirstAddedLine + 1;
    }
    return entry;
}

/// Mesa repeats the place in front of every candidate of an overload and indents what follows.
bool continues(const LogEntry& entry, const LogEntry& before) {
    return entry.message.starts_with("  ") && entry.severity == before.severity &&
           entry.textLine == before.textLine;
}

std::string_view severityText(LogSeverity severity) {
    switch (severity) {
    case LogSeverity::Error:
        return "error";
    case LogSeverity::Warning:
        return "warning";
    case LogSeverity::Note:
        return "note";
    }
    return "";
}

/// The line as it can be printed: tabs as four blanks, other control characters as question marks.
std::string printable(std::string_view text) {
    std::string shown;
    for (const char c : text) {
        if (c == '\t')
            shown += "    ";
        else
            shown += static_cast<unsigned char>(c) < 0x20 || c == 0x7f ? '?' : c;
    }
    return shown;
}

/// How many columns of a terminal the text takes, for the letters that shaders are made of.
std::size_t shownWidth(std::string_view text) {
    const std::string shown = printable(text);
    return static_cast<std::size_t>(std::count_if(
        shown.begin(), shown.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

std::string numbered(int number, std::size_t width, std::string_view mark, std::string_view text) {
    std::string digits = number > 0 ? std::to_string(number) : "";
    digits.insert(0, width - std::min(width, digits.size()), ' ');
    return std::string(mark) + digits + " | " + printable(text);
}

void addExcerpt(const LogEntry& entry, const LineTable& table, std::vector<std::string>& shown) {
    const std::size_t width = std::to_string(entry.line + Neighbours).size();
    for (int offset = -Neighbours; offset <= Neighbours; ++offset) {
        const auto place = table.place(entry.textLine + offset);
        if (!place || place->region != entry.region || place->line != entry.line + offset) continue;
        const std::string_view text = table.line(entry.textLine + offset);
        shown.push_back(numbered(place->line, width, offset == 0 ? "> " : "  ", text));
        if (offset == 0 && entry.column > 0) {
            const std::string_view before = text.substr(0, static_cast<std::size_t>(entry.column) - 1);
            shown.push_back(numbered(0, width, "  ", std::string(shownWidth(before), ' ') + '^'));
        }
    }
}

} // namespace

std::vector<LogEntry> parseShaderLog(std::string_view log, const LineTable& table) {
    std::vector<LogEntry> entries;
    while (!log.empty()) {
        const std::size_t end = std::min(log.find_first_of(std::string_view("\n\0", 2)), log.size());
        std::string_view line = log.substr(0, end);
        log.remove_prefix(std::min(end + 1, log.size()));
        if (line.ends_with('\r')) line.remove_suffix(1);
        if (line.empty()) continue;
        LogEntry entry = located(readLine(line), table);
        if (!entries.empty() && continues(entry, entries.back()))
            entries.back().further.push_back(std::move(entry.message));
        else
            entries.push_back(std::move(entry));
    }
    return entries;
}

std::vector<std::string> renderLogEntry(const LogEntry& entry, const LineTable& table) {
    std::string headline;
    if (entry.line > 0) headline = entry.region + " line " + std::to_string(entry.line);
    if (entry.column > 0) headline += ", column " + std::to_string(entry.column);
    if (!headline.empty()) headline += ": ";
    headline += severityText(entry.severity);
    headline += ": " + entry.message;
    std::vector<std::string> shown{printable(headline)};
    for (const std::string& line : entry.further) shown.push_back(printable(line));
    if (entry.textLine > 0) addExcerpt(entry, table, shown);
    return shown;
}

} // namespace workbench
