// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/modules/ModulePages.h"

#include <gtest/gtest.h>

namespace workbench {
namespace {

const std::string Page = R"(# Display/Some@Source

Does `this` and [that](That.md). It does
more: nothing. And so on.

| before | after |

<!-- parameters -->
| parameter | type | initial | limits | expert | meaning |
|---|---|---|---|---|---|
| `width` | int | `1` | 0 to 5 | 1 | radius of the [neighbourhood](x.md) in pixels |
| `options` | FlagList | `-glow` |  | 0 | `+glow` adds |
<!-- end of parameters -->

| other | table |
)";

TEST(Module_page, is_read_out_of_markdown) {
    const ModulePage page = readModulePage("docs/Some.md", Page);
    EXPECT_EQ(page.key, "Display/Some@Source");
    EXPECT_EQ(page.file, "docs/Some.md");
    EXPECT_EQ(page.summary, "Does this and that. It does more: nothing. And so on.");
    EXPECT_EQ(page.sentence(), "Does this and that");
    using Meanings = std::vector<std::pair<std::string, std::string>>;
    EXPECT_EQ(page.meanings,
              (Meanings{{"width", "radius of the neighbourhood in pixels"}, {"options", "+glow adds"}}));
}

TEST(Module_page, meanings_are_wrapped_behind_their_names) {
    EXPECT_EQ(readModulePage("", Page).meaningsText(32), "  width    radius of the\n"
                                                         "           neighbourhood in\n"
                                                         "           pixels\n"
                                                         "  options  +glow adds\n");
}

TEST(Module_page, without_parameters_or_text_is_empty) {
    const ModulePage page = readModulePage("", "# Hollywood/X\n\nSentence.\n\n<!-- parameters -->\nNone.\n"
                                               "<!-- end of parameters -->\n");
    EXPECT_EQ(page.sentence(), "Sentence");
    EXPECT_TRUE(page.meanings.empty());
    EXPECT_TRUE(readModulePage("", "").key.empty());
}

TEST(Module_page, belongs_to_the_module_of_its_plugin_alone) {
    CatalogueEntry entry;
    entry.key = "Display/Depth";
    entry.source = "DisplayDepth";
    EXPECT_EQ(pageOf(entry), nullptr);
    entry.plugin = "tovar_plime";
    ASSERT_NE(pageOf(entry), nullptr);
    EXPECT_EQ(pageOf(entry)->file, "docs/modules/DisplayDepth.md");
    entry.source = "HDRObjectDisplay";
    EXPECT_EQ(pageOf(entry)->file, "docs/modules/HDRObjectDisplay.md");
    entry.plugin = "another";
    EXPECT_EQ(pageOf(entry), nullptr);
}

} // namespace
} // namespace workbench
