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

std::string_view unquoted(std::string_view field) {
    const bool quotes = field.size() >= 2 && field.front() == '"' && field.back() == '"';
    return quotes ? field.substr(1, field.size() - 2) : field;
}

char separatorOf(std::string_view line) {
    for (const char separator : {';', ','})
        if (line.find(separator) != std::string_view::npos) return separator;
    return ' ';
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
        const auto field = pointField(unquoted(name));
        if (field && std::find(columns.begin(), columns.end(), field) != columns.end())
            text.fail("each column once", name);
        columns.push_back(field);
    }
    for (const auto needed : {PointField::X, PointField::Y, PointField::Z})
        if (std::find(columns.begin(), columns.end(), needed) == columns.end())
            text.failAtEnd("columns named x, y and z", "names without them");
    return columns;
}

void readPoint(TextCursor& text, char separator, const Columns& columns, PointSet& points) {
    PointValues values = DefaultPoint;
    std::string_view field;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (!text.nextField(separator, field))
            text.failAtEnd(std::to_string(columns.size()) + " columns", std::to_string(i));
        if (columns[i]) values[static_cast<std::size_t>(*columns[i])] = text.number(field);
    }
    if (text.nextField(separator, field) && !field.empty())
        text.fail("the end of the line after " + std::to_string(columns.size()) + " columns", field);
    appendPoint(values, points);
}

} // namespace

PointSet readPointText(const std::filesystem::path& path, std::string_view text) {
    PointSet points;
    TextCursor probe(path, text);
    TextCursor cursor(path, text);
    if (!probe.nextLine()) return points;
    const char separator = separatorOf(probe.line());
    std::vector<std::string_view> first;
    for (std::string_view field; probe.nextField(separator, field);) first.push_back(field);
    const bool named =
        !std::all_of(first.begin(), first.end(), isNumber) && pointField(unquoted(first[0])).has_value();
    const bool hasNames = named || std::none_of(first.begin(), first.end(), isNumber);
    const Columns columns = hasNames ? namedColumns(first, probe) : unnamedColumns(first.size(), probe);
    if (hasNames) cursor.nextLine();
    while (cursor.nextLine()) readPoint(cursor, separator, columns, points);
    return points;
}

} // namespace workbench
