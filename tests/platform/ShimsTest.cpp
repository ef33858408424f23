// SPDX-License-Identifier: Apache-2.0
#include "workbench/gl/dialect/Shims.h"
#include "tests/platform/ShaderTexts.h"
#include "workbench/gl/dialect/TextScan.h"

#include <gtest/gtest.h>

#include <set>

using workbench::AdaptedText;
using workbench::adaptText;
using workbench::scanText;
using workbench::ShaderStage;
using Names = std::vector<std::string>;

namespace {

Names shimsOf(const std::string& text, ShaderStage stage = ShaderStage::Fragment) {
    return adaptText(text, stage, false).shimNames;
}

TEST(TextScan, Words_in_comments_and_numbers_do_not_count) {
    const auto scan = scanText("// pow\n/* filter\n pow */ float a = 1e5 + 0x1F + .5e3; powder b;");
    EXPECT_EQ(scan.identifiers, (std::set<std::string_view>{"float", "a", "powder", "b"}));
}

TEST(TextScan, Version_is_found_behind_comments_only_as_a_directive) {
    EXPECT_EQ(scanText("/* head */ // more\n  #  version 150 core\nvoid main(){}").version, 150);
    EXPECT_EQ(scanText("// #version 150\nvoid main(){}").version, 0);
    EXPECT_EQ(scanText("int a; #version 150\n").version, 0);
    EXPECT_EQ(scanText("").version, 0);
    EXPECT_EQ(scanText("#version").version, 0);
}

TEST(TextScan, Head_ends_behind_version_extensions_and_open_comments) {
    const auto head = [](std::string_view text) {
        return std::string(text.substr(0, scanText(text).headEnd));
    };
    EXPECT_EQ(head("void main(){}"), "");
    EXPECT_EQ(head("#version 150\nint a;"), "#version 150\n");
    EXPECT_EQ(head("#version 150"), "#version 150");
    EXPECT_EQ(head("#version 150 /* a\n b */\nint a;"), "#version 150 /* a\n b */\n");
    EXPECT_EQ(head("#ifdef X\n#extension X : enable\n#define Y\n#endif\nint a;"),
              "#ifdef X\n#extension X : enable\n#define Y\n#endif\n");
}

TEST(Shims, Versionless_vector_power_gets_version_and_overloads) {
    EXPECT_EQ(shimsOf(VectorPowerText), (Names{"version", "vector-power"}));
}

TEST(Shims, Versionless_integer_arithmetic_gets_the_version_only) {
    EXPECT_EQ(shimsOf(IntegerArithmeticText), Names{"version"});
}

TEST(Shims, Filter_is_renamed_where_it_is_reserved) {
    EXPECT_EQ(shimsOf(FilterText), Names{"reserved-filter"});
    EXPECT_EQ(shimsOf("#version 120\nfloat filter;\nvoid main(){}"), Names{});
    EXPECT_EQ(shimsOf("#version 150\n// filter\nvoid main(){ int filterWidth; }"), Names{});
}

TEST(Shims, Vertex_text_and_complete_text_stand_alone) {
    const AdaptedText vertex = adaptText(QuadVertexText, ShaderStage::Vertex, false);
    EXPECT_EQ(vertex.shimNames, Names{});
    EXPECT_EQ(vertex.strings, Names{QuadVertexText});
    EXPECT_EQ(shimsOf("#version 150\nvoid main(){ float a = pow(2.0, 3.0); }"), Names{});
}

TEST(Shims, Text_with_a_power_of_its_own_keeps_it) {
    EXPECT_EQ(shimsOf("vec4 pow(vec4 a, float b) { return a; }\nvoid main(){ pow(vec4(1.0), 2.0); }"),
              Names{"version"});
    EXPECT_EQ(shimsOf("#define pow(a, b) (a)\nvoid main(){ pow(1.0, 2.0); }"), Names{"version"});
    EXPECT_EQ(shimsOf("float f() { return pow(1.0, 2.0); }"), (Names{"version", "vector-power"}));
}

TEST(Shims, Strict_dialect_has_none) {
    for (const std::string& text : {VectorPowerText, FilterText, IntegerArithmeticText}) {
        const AdaptedText adapted = adaptText(text, ShaderStage::Fragment, true);
        EXPECT_EQ(adapted.shimNames, Names{});
        EXPECT_EQ(adapted.joined(), text);
    }
}

TEST(Shims, Text_itself_is_handed_on_byte_for_byte) {
    const AdaptedText versionless = adaptText(VectorPowerText, ShaderStage::Fragment, false);
    EXPECT_EQ(versionless.strings.back(), VectorPowerText);
    const AdaptedText versioned = adaptText(FilterText, ShaderStage::Fragment, false);
    ASSERT_EQ(versioned.strings.size(), 3U);
    EXPECT_EQ(versioned.strings[0] + versioned.strings[2], FilterText);
    const AdaptedText odd = adaptText("#version 150\r\nfloat filter;\r\n\xff", ShaderStage::Fragment, false);
    EXPECT_EQ(odd.strings[0] + odd.strings[2], "#version 150\r\nfloat filter;\r\n\xff");
}

TEST(Shims, Line_directive_depends_on_the_version) {
    const auto added = [](const std::string& text) {
        return adaptText(text, ShaderStage::Fragment, false).strings[1];
    };
    EXPECT_EQ(added("#version 150\nfloat filter;"), "#line 999999\n#define filter krod_filter\n#line 1\n");
    EXPECT_EQ(added("#version 330\nfloat filter;"), "#line 1000000\n#define filter krod_filter\n#line 2\n");
}

TEST(Shims, Every_row_has_a_name_of_its_own_and_a_reason) {
    std::set<std::string_view> names;
    for (const workbench::Shim& shim : workbench::shims()) {
        EXPECT_TRUE(names.insert(shim.name).second) << shim.name;
        EXPECT_FALSE(shim.reason.empty());
        EXPECT_TRUE(shim.prologue.ends_with('\n'));
    }
    EXPECT_EQ(names, (std::set<std::string_view>{"reserved-filter", "vector-power", "version"}));
}

} // namespace
