// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/points/PointText.h"

#include "workbench/files/points/PointBuilder.h"
#include "workbench/files/points/TextCursor.h"
#include "workbench/report/Failure.h"

#include <algorithm>
#include <charconv>

namespace workbench {
namespace {

using Columns = std::vector<std::optional<PointField>>;

bool isNumber(std::string_view field) {
    double ignored = 0;
    if (field.starts_with('+')) field.remove_prefix(1);
    return std::from_chars(field.data(), field.data() + field.size(), ignored).ec !=
           std::errc::invalid_argument;
}

std::vector<std::string_view> fieldsOf(TextCursor& text, char separator) {
    std::vector<std::string_view> fields;
    for (std::string_view field; text.nextField(separator, field);) fields.push_back(field);
    return fields;
}

bool isTabSeparated(const std::filesystem::path& path) {
    const std::string name = path.filename().string();
    return name.ends_with(".tsv") || name.ends_with(".tsv.gz");
}

/// Between numbers tabs are blanks like others; names may have blanks within.
char separatorOf(std::string_view line, bool areTabs) {
    for (const char separator : {';', ','})
        if (!areTabs && line.find(separator) != std::string_view::npos) return separator;
    const bool hasLetters = std::any_of(line.begin(), line.end(), [](char c) {
        return (c >= 'a' && c <= 'z' && c != 'e') || (c >= 'A' && c <= 'Z' && c != 'E');
    });
    return areTabs || (hasLetters && line.find('\t') != std::string_view::npos) ? '\t' : ' ';
}

/// What columns without names mean follows from their number.
Columns unnamedColumns(std::size_t count, const TextCursor& text) {
    using enum PointField;
    switch (count) {
    case 3:
        return {X, Y, Z};
    case 4:
        return {X, Y, Z, Intensity};
    case 6:
        return {X, Y, Z, Red, Green, Blue};
    case 7:
        return {X, Y, Z, Red, Green, Blue, Alpha};
    case 8:
        return {X, Y, Z, Red, Green, Blue, Alpha, Intensity};
    default:
        text.failAtEnd("3, 4, 6, 7 or 8 columns, or names of the columns in the first line",
                       std::to_string(count) + (count == 1 ? " column" : " columns"));
    }
}

Columns namedColumns(const std::vector<std::string_view>& names, const TextCursor& text) {
    Columns columns;
    for (const auto name : names) {
        const auto field = pointField(name);
        if (field && std::find(columns.begin(), columns.end(), field) != columns.end())
            text.fail("each column once", name);
        columns.push_back(field);
    }
    for (const auto needed : {PointField::X, PointField::Y, PointField::Z})
        if (std::find(columns.begin(), columns.end(), needed) == columns.end())
            text.failAtEnd("columns named x, y and z", "names without them");
    return columns;
}

/// The columns that a comment before the first line names, like "# x y z red green blue".
std::optional<std::vector<std::string_view>> namesInComment(const std::filesystem::path& path,
                                                            std::string_view comment, std::size_t count) {
    TextCursor cursor(path, comment);
    if (!cursor.nextLine()) return std::nullopt;
    const std::vector<std::string_view> names = fieldsOf(cursor, separatorOf(comment, false));
    const auto has = [&](PointField field) { return std::ranges::count(names, field, pointField) == 1; };
    const bool fits = names.size() == count && has(PointField::X) && has(PointField::Y) && has(PointField::Z);
    return fits ? std::optional(names) : std::nullopt;
}

/// The meaning of the columns; goes past the line of names where there is one.
Columns readColumns(const std::filesystem::path& path, TextCursor& text, TextCursor probe, char separator,
                    PointSet& told) {
    const std::vector<std::string_view> first = fieldsOf(probe, separator);
    const bool isNamed =
        !std::all_of(first.begin(), first.end(), isNumber) && pointField(first[0]).has_value();
    const bool hasNames = isNamed || std::none_of(first.begin(), first.end(), isNumber);
    const auto said = hasNames ? first : namesInComment(path, probe.comment(), first.size());
    if (hasNames) text.nextLine();
    const Columns columns = said ? namedColumns(*said, probe) : unnamedColumns(first.size(), probe);
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (columns[i])
            told.columns.push_back(nameOf(*columns[i]));
        else
            told.unusedColumns.emplace_back((*said)[i]);
    }
    return columns;
}

void readPoint(TextCursor& text, char separator, const Columns& columns, PointBuilder& points) {
    PointValues values = DefaultPoint;
    std::string_view field;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (!text.nextField(separator, field))
            text.failAtEnd(std::to_string(columns.size()) + " columns", std::to_string(i));
        if (columns[i]) values[static_cast<std::size_t>(*columns[i])] = text.number(field);
    }
    if (text.nextField(separator, field) && !field.empty())
        text.fail("the end of the line after " + std::to_string(columns.size()) + " columns", field);
    points.add(values);
}

} // namespace

PointSet readPointText(const std::filesystem::path& path, std::string_view text) {
    TextCursor probe(path, text);
    TextCursor cursor(path, text);
    if (!probe.nextLine()) return {};
    const char separator = separatorOf(probe.line(), isTabSeparated(path));
    if (separator == ';') cursor.allowDecimalCommas();
    PointSet told;
    PointBuilder builder;
    const Columns columns = readColumns(path, cursor, probe, separator, told);
    while (cursor.nextLine()) readPoint(cursor, separator, columns, builder);
    PointSet points = builder.take();
    points.columns = std::move(told.columns);
    points.unusedColumns = std::move(told.unusedColumns);
    return points;
}

} // namespace workbench
