// SPDX-License-Identifier: Apache-2.0
// From the line and column in a driver's message to the place in the text that somebody wrote.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace workbench {

/// A stretch of a text under a name that its author knows: "prefix", "body", the path of an override file.
struct TextRegion {
    std::string name;
    int lines = 0;
};

/// A name that the driver sees in place of the text's own; it shifts the columns behind it.
struct RenamedWord {
    std::string from;
    std::string to;
};

/// Knows the lines of one text and the regions that they belong to. Lines and columns count from 1.
class LineTable {
public:
    /// Lines that do not belong to the text are numbered from here on by a #line directive. The number is the
    /// only mark that drivers keep: Mesa forgets the number of the source string in most messages.
    static constexpr int FirstAddedLine = 1000000;

    struct Place {
        std::string region;
        int line = 0; ///< within the region
    };

    LineTable() = default;

    /// `regions` follow each other from the first line on; further lines belong to the last one. Without
    /// regions the whole text is one, "text".
    explicit LineTable(std::string_view text, std::vector<TextRegion> regions = {},
                       std::vector<RenamedWord> renamed = {});

    [[nodiscard]] int lineCount() const noexcept { return static_cast<int>(lines.size()); }

    /// How many lines too early Mesa's preprocessor places its messages: unlike the compiler behind it, it
    /// takes a #line directive below GLSL 3.30 for the number of the next line (measured with 22.3).
    void setPreprocessorLag(int count) noexcept { lag = count; }
    [[nodiscard]] int preprocessorLag() const noexcept { return lag; }

    /// The line without its end; empty outside of the text.
    [[nodiscard]] std::string_view line(int number) const;

    /// The region of a line of the text; nothing outside of the text.
    [[nodiscard]] std::optional<Place> place(int number) const;

    /// The column in the text for one that Mesa reports. Mesa counts after preprocessing: every run of blanks
    /// and comments is one column wide (measured with 22.3), and renamed words have their new length. 0 if
    /// there is no such column, which happens behind macros of the text's own.
    [[nodiscard]] int sourceColumn(int number, int driverColumn) const;

    /// A driver's message with the text's own words in place of those that the driver saw.
    [[nodiscard]] std::string inSourceWords(std::string_view message) const;

private:
    std::vector<std::string> lines;
    std::vector<TextRegion> regions;
    std::vector<RenamedWord> renamed;
    int lag = 0;
};

} // namespace workbench
