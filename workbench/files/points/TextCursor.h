// SPDX-License-Identifier: Apache-2.0
// A place in a text file that knows its line and column.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace workbench {

/// Foreign bytes for a message: in quotation marks, short, without control characters.
[[nodiscard]] std::string quotedField(std::string_view text);

/// Walks through a text by lines, which end in LF, CR and LF, or all in CR, and within them by fields. All failures are Failure(Input) that names
/// file, line and column (both from 1, the column in bytes).
class TextCursor {
public:
    /// The text must outlive the cursor; `firstLine` is the number of its first line.
    TextCursor(std::filesystem::path path, std::string_view text, std::uint64_t firstLine = 1);

    /// Goes to the next line that is neither blank nor a comment; false at the end.
    bool nextLine();
    /// The current line without its end.
    [[nodiscard]] std::string_view line() const { return current; }

    /// The last comment that was passed over, without its mark; empty when there was none.
    [[nodiscard]] std::string_view comment() const { return lastComment; }

    /// From now on numbers may have a comma in the place of the point.
    void allowDecimalCommas() { decimalCommas = true; }

    /// Takes the next field of the line, without blanks and quotation marks around it; false when there is
    /// none. With the separator ' ' any number of blanks separates, with another one exactly one, so that
    /// fields can be empty. Separators between quotation marks belong to the field.
    bool nextField(char separator, std::string_view& field);
    /// Takes the next field between blanks, in this line or a later one.
    bool nextWord(std::string_view& word);

    /// The value of a field taken from this cursor: decimal, with a point, also "nan" and "inf".
    [[nodiscard]] double number(std::string_view field) const;

    /// Fails at a field taken from this cursor, or at the end of the line.
    [[noreturn]] void fail(std::string expected, std::string_view field) const;
    [[noreturn]] void failAtEnd(std::string expected, std::string got) const;

private:
    [[nodiscard]] std::optional<std::string_view> quoted(char separator);
    [[noreturn]] void failAt(std::size_t column, std::string expected, std::string got) const;

    std::filesystem::path file;
    std::string_view rest, current, lastComment;
    char lineEnd;
    std::uint64_t lineNumber;
    std::size_t at = 0;         ///< place in the line behind the last field
    bool afterSeparator = true; ///< another field follows, even if it is empty
    bool quotesCount = true;    ///< no quotation mark without its partner was met in this line
    bool decimalCommas = false;
};

} // namespace workbench
