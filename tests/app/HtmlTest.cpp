// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/terminal/Html.h"

#include <gtest/gtest.h>

namespace workbench {
namespace {

TEST(Readable_text, shows_where_a_link_leads) {
    EXPECT_EQ(readableText("See <A HREF=\"https://a.example/b\">this\npage</A>."),
              "See this page (https://a.example/b).");
    EXPECT_EQ(readableText("<a class=x href='u'>t</a> <a href=u>t</a>"), "t (u) t (u)");
}

TEST(Readable_text, breaks_lines_and_paragraphs_once) {
    EXPECT_EQ(readableText("a<BR>b<br/>c"), "a\nb\nc");
    EXPECT_EQ(readableText("<P>a</P>\n\n<P>b</P>"), "a\n\nb");
    EXPECT_EQ(readableText("of the form <BR><center> <I>I(x)</I></center> where"),
              "of the form\n\nI(x)\n\nwhere");
    EXPECT_EQ(readableText("<ul><li>a<li>b</ul>"), "- a\n- b");
}

TEST(Readable_text, collapses_blanks_but_not_in_preformatted_text) {
    EXPECT_EQ(readableText("a   b\n\tc"), "a b c");
    EXPECT_EQ(readableText("a<pre>x  y\n  z</pre>b"), "a\n\nx  y\n  z\n\nb");
}

TEST(Readable_text, reads_entities_and_leaves_what_is_none) {
    EXPECT_EQ(readableText("a &lt; b &amp;&amp; c &#62; d &#x2264; &nbsp;e"), "a < b && c > d ≤ e");
    EXPECT_EQ(readableText("a & b &unknown; &#0; &"), "a & b &unknown; &#0; &");
}

TEST(Readable_text, knows_all_named_characters_of_html_4) {
    EXPECT_EQ(readableText("[ x/(x+&beta;) ]^ &epsilon; in [0,&infin;] and [0,&infty;]"),
              "[ x/(x+β) ]^ ε in [0,∞] and [0,∞]");
    EXPECT_EQ(readableText("&Aring;&sect;&euro;&hearts;&apos;&thetasym;&frac12;&rarr;&zwj;"),
              "Å§€♥'ϑ½→\u200d");
    EXPECT_EQ(readableText("&Beta; &beta; &BETA;"), "Β β &BETA;") << "case counts";
}

TEST(Readable_text, drops_other_tags_and_keeps_what_is_no_tag) {
    EXPECT_EQ(readableText("<b>bold</b><!-- note --> x<sup>2</sup>"), "bold x^2");
    EXPECT_EQ(readableText("if a < b or a <= c"), "if a < b or a <= c");
    EXPECT_EQ(readableText("open <b"), "open <b");
    EXPECT_EQ(readableText(""), "");
}

} // namespace
} // namespace workbench
