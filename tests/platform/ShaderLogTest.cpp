// SPDX-License-Identifier: Apache-2.0
#include "workbench/gl/dialect/ShaderLog.h"
#include "workbench/gl/dialect/LineTable.h"

#include <gtest/gtest.h>

using workbench::LineTable;
using workbench::LogEntry;
using workbench::LogSeverity;
using workbench::parseShaderLog;
using Lines = std::vector<std::string>;

namespace {

const LineTable TwoRegions("#version 150\nuniform int a;\nvoid main()\n{\n\tint b = c;\n}\n",
                           {{"version line", 1}, {"prefix", 1}, {"CMYK.frag", 4}});

LogEntry only(std::string_view log, const LineTable& table = TwoRegions) {
    const std::vector<LogEntry> entries = parseShaderLog(log, table);
    EXPECT_EQ(entries.size(), 1U) << log;
    return entries.empty() ? LogEntry{} : entries.front();
}

TEST(LineTable, Lines_are_found_in_their_regions) {
    EXPECT_EQ(TwoRegions.lineCount(), 6);
    EXPECT_EQ(TwoRegions.place(1)->region, "version line");
    EXPECT_EQ(TwoRegions.place(2)->region, "prefix");
    EXPECT_EQ(TwoRegions.place(2)->line, 1);
    EXPECT_EQ(TwoRegions.place(5)->region, "CMYK.frag");
    EXPECT_EQ(TwoRegions.place(5)->line, 3);
    EXPECT_FALSE(TwoRegions.place(0));
    EXPECT_FALSE(TwoRegions.place(7));
    EXPECT_EQ(TwoRegions.line(7), "");
}

TEST(LineTable, Lines_without_region_belong_to_the_last_one) {
    const LineTable table("a\nb\nc", {{"prefix", 1}, {"body", 1}});
    EXPECT_EQ(table.place(3)->region, "body");
    EXPECT_EQ(table.place(3)->line, 2);
    EXPECT_EQ(LineTable("a\r\nb").place(2)->region, "text");
    EXPECT_EQ(LineTable("a\r\nb").line(1), "a");
    EXPECT_FALSE(LineTable("").place(1));
}

TEST(LineTable, Columns_of_the_preprocessed_line_lead_back) {
    const LineTable table("\t\tx = pow(1.0) /* why */  + y;\n", {}, {{"pow", "krod_pow"}});
    EXPECT_EQ(table.sourceColumn(1, 2), 3) << "x behind two tabs, one blank for Mesa";
    EXPECT_EQ(table.sourceColumn(1, 6), 7) << "pow itself";
    EXPECT_EQ(table.sourceColumn(1, 14), 10) << "the parenthesis behind krod_pow";
    EXPECT_EQ(table.sourceColumn(1, 20), 27) << "the sum behind comment and blanks";
    EXPECT_EQ(table.sourceColumn(1, 99), 0);
    EXPECT_EQ(table.sourceColumn(1, -1), 0);
    EXPECT_EQ(table.sourceColumn(2, 1), 1) << "the end of the text";
}

TEST(ShaderLog, Mesa_message_has_place_and_column) {
    const LogEntry entry = only("0:5(10): error: `c' undeclared\n");
    EXPECT_EQ(entry.severity, LogSeverity::Error);
    EXPECT_EQ(entry.region, "CMYK.frag");
    EXPECT_EQ(entry.line, 3);
    EXPECT_EQ(entry.column, 10);
    EXPECT_EQ(entry.textLine, 5);
    EXPECT_EQ(entry.message, "`c' undeclared");
}

TEST(ShaderLog, Mesa_candidates_follow_their_message) {
    const LogEntry entry =
        only("0:5(3): error: no matching function for call to `pow(vec4, float)'; candidates are:\n"
             "0:5(3): error:    float pow(float, float)\n0:5(3): error:    vec2 pow(vec2, vec2)\n");
    EXPECT_EQ(entry.further, (Lines{"   float pow(float, float)", "   vec2 pow(vec2, vec2)"}));
}

TEST(ShaderLog, Nvidia_message_keeps_its_code) {
    const LogEntry error = only("0(3) : error C1503: undefined variable \"c\"\r\n");
    EXPECT_EQ(error.severity, LogSeverity::Error);
    EXPECT_EQ(error.line, 1);
    EXPECT_EQ(error.column, 0);
    EXPECT_EQ(error.message, "C1503: undefined variable \"c\"");
    EXPECT_EQ(only("2(1) : warning C7050: text").severity, LogSeverity::Warning);
}

TEST(ShaderLog, Intel_and_AMD_message_is_read) {
    const LogEntry entry = only("ERROR: 0:2: 'c' : undeclared identifier");
    EXPECT_EQ(entry.severity, LogSeverity::Error);
    EXPECT_EQ(entry.region, "prefix");
    EXPECT_EQ(entry.message, "'c' : undeclared identifier");
    EXPECT_EQ(only("WARNING: 0:2: text").severity, LogSeverity::Warning);
}

TEST(ShaderLog, Message_without_place_is_kept_whole) {
    EXPECT_EQ(only("error: unresolved reference to function `foo'").severity, LogSeverity::Error);
    EXPECT_EQ(only("error: unresolved reference to function `foo'").line, 0);
    const LogEntry other = only("1 error(s) generated: 5(3");
    EXPECT_EQ(other.severity, LogSeverity::Note);
    EXPECT_EQ(other.message, "1 error(s) generated: 5(3");
    EXPECT_EQ(only("99999999999:1(1): error: far").severity, LogSeverity::Note);
    EXPECT_TRUE(parseShaderLog("\n\n", TwoRegions).empty());
}

TEST(ShaderLog, Line_behind_the_end_means_the_last_one) {
    const LogEntry entry = only("0:7(1): error: syntax error, unexpected end of file");
    EXPECT_EQ(entry.line, 4);
    EXPECT_EQ(entry.column, 0);
}

TEST(ShaderLog, Added_lines_are_not_blamed_on_the_text) {
    const LogEntry entry = only("0:1000002(1): error: oops");
    EXPECT_EQ(entry.region, "shim");
    EXPECT_EQ(entry.line, 3);
    EXPECT_EQ(entry.textLine, 0);
    EXPECT_EQ(workbench::renderLogEntry(entry, TwoRegions), Lines{"shim line 3: error: oops"});
}

TEST(ShaderLog, Rendered_message_shows_line_neighbours_and_caret) {
    EXPECT_EQ(workbench::renderLogEntry(only("0:5(10): error: `c' undeclared"), TwoRegions),
              (Lines{
                  "CMYK.frag line 3, column 10: error: `c' undeclared",
                  "  1 | void main()",
                  "  2 | {",
                  "> 3 |     int b = c;",
                  "    |             ^",
                  "  4 | }",
              }));
}

TEST(ShaderLog, Rendered_neighbours_are_three_and_numbers_align) {
    const LineTable table("1\n2\n3\n4\n5\n6\n7\n8\n9\n10\n11\n12\n");
    EXPECT_EQ(workbench::renderLogEntry(only("0(8) : error C1: x", table), table),
              (Lines{"text line 8: error: C1: x", "   5 | 5", "   6 | 6", "   7 | 7", ">  8 | 8", "   9 | 9",
                     "  10 | 10", "  11 | 11"}));
}

TEST(ShaderLog, Rendered_text_cannot_steer_a_terminal) {
    const LineTable table("a\x1b[31mb\n");
    EXPECT_EQ(workbench::renderLogEntry(only("0:1(1): error: \x1b[2J", table), table).at(0),
              "text line 1, column 1: error: ?[2J");
    EXPECT_EQ(workbench::renderLogEntry(only("0(1) : error x", table), table).at(1), "> 1 | a?[31mb");
}

} // namespace
