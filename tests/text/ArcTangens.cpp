// SPDX-License-Identifier: Apache-2.0
// Hollywood/ArcTangens has no shader text; what can be shown without pixels.
#include "tests/support/LoadedPlugin.h"
#include "tests/support/StandardOutput.h"
#include "workbench/core/CreatorRegistry.h"

#include "host/gl/GLImageTileProcessor.h"

#include <gtest/gtest.h>

namespace {

class TextOfArcTangens : public testing::Test {
protected:
    support::LoadedPlugin plugin;
    krod::StrongPtr<krod::VObject> module = plugin.make("Hollywood/ArcTangens");
};

TEST_F(TextOfArcTangens, ArcTangens_A1_creatorHasTheNameFormWithoutDescriptions) {
    const auto found = workbench::CreatorRegistry::find("Hollywood/ArcTangens");
    ASSERT_EQ(found.size(), 1U);
    const krod::VCreatorBase& creator = *found[0].creator;
    EXPECT_EQ(creator.name(), "Hollywood/ArcTangens");
    EXPECT_EQ(creator.keyname(), "Hollywood/ArcTangens");
    const krod::VCreatorProperties& texts = creator.properties();
    for (const auto& text : {texts.category, texts.help, texts.description, texts.group, texts.source})
        EXPECT_FALSE(text.has_value()) << *text;
}

TEST_F(TextOfArcTangens, ArcTangens_processor_hasNoShaderAndTheModuleNoParameters) {
    EXPECT_TRUE(module->slots().inputs().empty());
    const auto processor = support::processorOf(*module);
    ASSERT_TRUE(processor);
    EXPECT_FALSE(krod::castStrong<krod::GLImageTileProcessor>(processor));
}

TEST_F(TextOfArcTangens, ArcTangens_updates_leaveTheProcessorThatWasMadeWithTheModule) {
    const auto processor = support::processorOf(*module);
    EXPECT_EQ(support::outputOf([&] {
                  EXPECT_TRUE(support::update(*module));
                  EXPECT_TRUE(support::update(*module));
              }),
              "");
    EXPECT_EQ(support::processorOf(*module), processor);
    module->slots().clearOutputs();
    EXPECT_TRUE(support::update(*module));
}

} // namespace
