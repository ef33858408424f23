// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/terminal/Text.h"

#include <gtest/gtest.h>

namespace workbench {
namespace {

TEST(Printable, escapes_everything_that_a_terminal_may_obey) {
    EXPECT_EQ(printable("a\x1b[31mb\r\n\t\x07\x7f"), "a\\x1b[31mb\\r\\n\\t\\x07\\x7f");
    EXPECT_EQ(printable("\xc2\x9b"), "\\xc2\\x9b"); // the one-character form of ESC [
    EXPECT_EQ(printable(std::string("\0", 1)), "\\x00");
}

TEST(Printable, escapes_marks_that_make_a_text_look_like_another) {
    EXPECT_EQ(printable("a\u202eb\u2066c"), "a\\xe2\\x80\\xaeb\\xe2\\x81\\xa6c");
    for (const char* const mark :
         {"\u061c", "\u200e", "\u200f", "\u2028", "\u2029", "\u202a", "\u202d", "\u2069"})
        EXPECT_NE(printable(mark), mark);
    for (const char* const kept : {"\u200d", "\u2027", "\u202f", "\u2065", "\u206a", "\u00a0", "—", "א"})
        EXPECT_EQ(printable(kept), kept);
}

TEST(Printable, keeps_utf8_and_escapes_bytes_that_are_none) {
    EXPECT_EQ(printable("Größe — 2²×😀"), "Größe — 2²×😀");
    EXPECT_EQ(printable("\xff\xc3"), "\\xff\\xc3");
    EXPECT_EQ(printable("\xc0\xaf"), "\\xc0\\xaf");          // overlong
    EXPECT_EQ(printable("\xed\xa0\x80"), "\\xed\\xa0\\x80"); // half of a pair
    EXPECT_EQ(printable("\xf4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80");
}

TEST(Printable_lines, keep_line_ends_only) { EXPECT_EQ(printableLines("a\nb\r\n"), "a\nb\\r\n"); }

TEST(Shortened, counts_code_points_and_marks_what_is_missing) {
    EXPECT_EQ(shortened("Größe", 5), "Größe");
    EXPECT_EQ(shortened("Größen", 5), "Größ…");
    EXPECT_EQ(columnsOf(shortened("ßßßßßß", 3)), 3U);
    EXPECT_EQ(shortened("anything", 0), "anything");
}

TEST(Padded, fills_up_to_columns_and_not_bytes) {
    EXPECT_EQ(padded("ß", 3), "ß  ");
    EXPECT_EQ(padded("long", 3), "long");
}

TEST(Wrapped, breaks_at_blanks_and_keeps_lines_that_begin_with_one) {
    EXPECT_EQ(wrapped("one two three", 9, 2), "  one two\n  three\n");
    EXPECT_EQ(wrapped("a\n  kept  as it is\nb", 5, 0), "a\n  kept  as it is\nb\n");
    EXPECT_EQ(wrapped("unbreakable word", 4, 0), "unbreakable\nword\n");
    EXPECT_EQ(wrapped("a\n\nb", 10, 2), "  a\n\n  b\n");
    EXPECT_EQ(wrapped("", 10, 2), "");
}

} // namespace
} // namespace workbench
