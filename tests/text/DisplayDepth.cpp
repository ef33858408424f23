// SPDX-License-Identifier: Apache-2.0
// The text of Display/Depth, the view of the depth.
#include "DisplayTexts.h"
#include "workbench/core/CreatorRegistry.h"

#include <set>

namespace {

class TextOfDepth : public DisplayTexts {
protected:
    TextOfDepth() : DisplayTexts("Display/Depth@DisplayDepth") {}
};

TEST_F(TextOfDepth, DisplayDepth_defaults_versionLineThenBody) {
    EXPECT_TRUE(golden.match("DisplayDepth/defaults.frag", fragment()));
}

TEST_F(TextOfDepth, DisplayDepth_D1_keyIsSharedWithTheToneMappedDisplay) {
    const auto found = workbench::CreatorRegistry::find("Display/Depth");
    ASSERT_EQ(found.size(), 2U);
    std::set<std::string> sources;
    for (const auto& entry : found) sources.insert(entry.creator->properties().source.value_or(""));
    EXPECT_EQ(sources, (std::set<std::string>{"DisplayDepth", "HDRObjectDisplay"}));
}

TEST_F(TextOfDepth, DisplayDepth_D2_samplesAreNotDeclaredAndTheRendererAsksForEight) {
    ASSERT_EQ(display->slots().inputs().size(), 1U);
    EXPECT_EQ(slot("InputVisibility"), "true, level 10");
    EXPECT_EQ(requestedSamples(), 8);
}

TEST_F(TextOfDepth, DisplayDepth_D3_onlySampleZeroIsReadAndTheirNumberNotDeclared) {
    const std::string text = fragment();
    EXPECT_TRUE(contains(text, "float\tDepth = texelFetch(SceneDepth, P, 0).r;\n"
                               "float\tAlpha = texelFetch(SceneColor, P, 0).a;\n"));
    EXPECT_FALSE(contains(text, "nSamples"));
    EXPECT_FALSE(contains(text, "for("));
}

TEST_F(TextOfDepth, DisplayDepth_D4_noFileReplacesTheBody) {
    const std::string builtIn = fragment();
    for (const std::string name : {"DisplayDepth", "HDRObjectDisplay", "HDRObjectRenderer", "Depth", "CMYK"})
        support::writeFile(folder / (name + ".frag"), "void main() {}\n");
    support::writeFile(folder / ".frag", "void main() {}\n");
    EXPECT_EQ(fragment(), builtIn);
    EXPECT_TRUE(workbench::usedShaderFiles().empty());
    EXPECT_TRUE(warnings.texts.empty()) << warnings.texts.front();
}

TEST_F(TextOfDepth, DisplayDepth_D4_emptyFileAndFileWithVersionLine_areNotLookedAt) {
    support::writeFile(folder / "DisplayDepth.frag", "");
    support::writeFile(folder / "HDRObjectDisplay.frag", "#version 330\nvoid main() {}\n");
    EXPECT_TRUE(golden.match("DisplayDepth/defaults.frag", fragment()));
    EXPECT_TRUE(warnings.texts.empty()) << warnings.texts.front();
}

TEST_F(TextOfDepth, DisplayDepth_D7_rendererIsCalledLikeTheToneMappedDisplays) {
    EXPECT_TRUE(contains(rendererName(), "DisplayDepth::HDRObjectRenderer::HDRDeferredRenderer"));
}

} // namespace
