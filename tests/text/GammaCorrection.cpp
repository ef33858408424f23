// SPDX-License-Identifier: Apache-2.0
// Hollywood/GammaCorrection has no shader text; what can be shown without pixels.
#include "tests/support/LoadedPlugin.h"
#include "workbench/core/CreatorRegistry.h"

#include "host/gl/GLImageTileProcessor.h"

#include <gtest/gtest.h>

namespace {

TEST(TextOfGamma, GammaCorrection_G1_creatorHasTheNameFormWithoutDescriptions) {
    const support::LoadedPlugin plugin;
    const auto found = workbench::CreatorRegistry::find("Hollywood/GammaCorrection");
    ASSERT_EQ(found.size(), 1U);
    const krod::VCreatorBase& creator = *found[0].creator;
    EXPECT_EQ(creator.name(), "Hollywood/GammaCorrection");
    EXPECT_EQ(creator.keyname(), "Hollywood/GammaCorrection");
    const krod::VCreatorProperties& texts = creator.properties();
    for (const auto& text : {texts.category, texts.help, texts.description, texts.group, texts.source})
        EXPECT_FALSE(text.has_value()) << *text;
}

TEST(TextOfGamma, GammaCorrection_processor_hasNoShaderAndTheModuleNoParameters) {
    const support::LoadedPlugin plugin;
    const auto module = plugin.make("Hollywood/GammaCorrection");
    EXPECT_TRUE(module->slots().inputs().empty());
    const auto processor = support::processorOf(*module);
    ASSERT_TRUE(processor);
    EXPECT_FALSE(krod::castStrong<krod::GLImageTileProcessor>(processor));
}

} // namespace
