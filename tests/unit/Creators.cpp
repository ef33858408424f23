// SPDX-License-Identifier: Apache-2.0
#include "TestModules.h"
#include "workbench/core/CreatorRegistry.h"
#include "workbench/core/ObjectRegistry.h"

#include <gtest/gtest.h>

#include <vector>

using namespace krod;
using workbench::CreatorRegistry;
using workbench::LibraryScope;

namespace {

class OtherModule : public TestModule {
public:
    using TestModule::TestModule;
};

/// Holds a reference to itself, as an object in a cycle does.
class CyclicModule : public TestModule {
public:
    using TestModule::TestModule;
    StrongPtr<VObject> cycle;
};

std::vector<VCreatorBase*> creatorsOf(std::string_view keyAndSource) {
    std::vector<VCreatorBase*> creators;
    for (const auto& entry : CreatorRegistry::find(keyAndSource)) creators.push_back(entry.creator);
    return creators;
}

} // namespace

TEST(CreatorProperties, Values_assigned_keepEarlierFieldsAndLeaveOthersUnset) {
    VCreatorProperties properties;
    VCreatorCategory("Display").assign(properties);
    VCreatorSource("CMYKObjectDisplay").assign(properties);
    VCreatorName("CMYK").assign(properties);
    EXPECT_EQ(properties.category, "Display");
    EXPECT_EQ(properties.source, "CMYKObjectDisplay");
    EXPECT_EQ(properties.name, "CMYK");
    EXPECT_FALSE(properties.group);
    EXPECT_FALSE(properties.help);
    EXPECT_FALSE(properties.description);
    VCreatorGroup("General").assign(properties);
    VCreatorHelp("long").assign(properties);
    VCreatorDescription("").assign(properties);
    VCreatorName("K").assign(properties);
    EXPECT_EQ(properties.group, "General");
    EXPECT_EQ(properties.help, "long");
    EXPECT_EQ(properties.description, "");
    EXPECT_EQ(properties.name, "K");
}

TEST(CreatorProperties, Keyname_joinsCategoryAndName) {
    EXPECT_EQ(VCreatorPropertyBase::keyname(propertiesOf("Display", "CMYK"), "/"), "Display/CMYK");
    EXPECT_EQ(VCreatorPropertyBase::keyname(propertiesOf("Display", "CMYK"), "::"), "Display::CMYK");
    VCreatorProperties nameOnly;
    VCreatorName("CMYK").assign(nameOnly);
    EXPECT_EQ(VCreatorPropertyBase::keyname(nameOnly, "/"), "CMYK");
    EXPECT_EQ(VCreatorPropertyBase::keyname({}, "/"), "");
}

TEST(Creator, PropertyForm_hasKeyNameAndTexts) {
    const TestCreator<TestModule> creator(propertiesOf("Display", "CMYK", "CMYKObjectDisplay"));
    EXPECT_EQ(creator.keyname(), "Display/CMYK");
    EXPECT_EQ(creator.name(), "CMYK");
    EXPECT_EQ(creator.properties().source, "CMYKObjectDisplay");
    EXPECT_EQ(creator.order(), 0);
    EXPECT_FALSE(creator.hidden());
    EXPECT_FALSE(creator.preferences());
}

TEST(Creator, NameForm_hasTheFullKeyAndNoTexts) {
    const TestCreator<TestModule> creator("Hollywood/GammaCorrection");
    EXPECT_EQ(creator.keyname(), "Hollywood/GammaCorrection");
    EXPECT_EQ(creator.name(), "Hollywood/GammaCorrection");
    EXPECT_FALSE(creator.properties().category);
    EXPECT_FALSE(creator.properties().source);
    EXPECT_EQ(creator.order(), -1000);
    EXPECT_TRUE(creator.hidden());
}

TEST(Creator, References_allGone_leaveIt) {
    TestCreator<TestModule> creator("Test/Static");
    StrongPtr<VCreatorBase>(&creator).reset();
    EXPECT_EQ(creator.referenceCount().strongReferences(), 1);
    EXPECT_EQ(creatorsOf("Test/Static").size(), 1u);
}

TEST(CreatorRegistry, Key_ofTwoCreators_keepsBothInOrder) {
    TestCreator<TestModule> first(propertiesOf("Test", "Depth", "HDRObjectDisplay"));
    {
        TestCreator<TestModule> second(propertiesOf("Test", "Depth", "DisplayDepth"));
        EXPECT_EQ(creatorsOf("Test/Depth"), (std::vector<VCreatorBase*>{&first, &second}));
        EXPECT_EQ(creatorsOf("Test/Depth@DisplayDepth"), std::vector<VCreatorBase*>{&second});
        EXPECT_EQ(creatorsOf("Test/Depth@HDRObjectDisplay"), std::vector<VCreatorBase*>{&first});
        EXPECT_TRUE(creatorsOf("Test/Depth@Other").empty());
        EXPECT_TRUE(creatorsOf("Depth").empty());
    }
    EXPECT_EQ(creatorsOf("Test/Depth"), std::vector<VCreatorBase*>{&first});
}

TEST(CreatorRegistry, Registration_inAScope_belongsToThatLibrary) {
    const TestCreator<TestModule> host("Test/Owned");
    const LibraryScope scope(7);
    const TestCreator<TestModule> plugin("Test/Owned");
    const auto found = CreatorRegistry::find("Test/Owned");
    ASSERT_EQ(found.size(), 2u);
    EXPECT_EQ(found[0].library, 0);
    EXPECT_EQ(found[1].library, 7);
}

TEST(Creator, Instances_deleted_onlyItsOwnOfExactlyTheType) {
    TestModule::deleted = 0;
    VCreationContext context;
    TestCreator<TestModule> creator("Test/Mine");
    TestCreator<TestModule> stranger("Test/Other");
    const auto mine = creator.create("mine", context);
    const auto strangers = stranger.create("theirs", context);
    const StrongPtr<VObject> derived(new OtherModule("derived"));
    derived->setCreator(WeakPtr<VCreatorBase>(&creator));
    const StrongPtr<VObject> nobodys(new TestModule("nobody's"));

    creator.withdrawInstances();
    EXPECT_FALSE(mine);
    EXPECT_TRUE(strangers);
    EXPECT_TRUE(derived);
    EXPECT_TRUE(nobodys);
    EXPECT_EQ(TestModule::deleted, 1);
}

TEST(Creator, Instances_heldTwiceOrByThemselves_areDeletedOnce) {
    TestModule::deleted = 0;
    VCreationContext context;
    const std::size_t before = workbench::ObjectRegistry::count();
    StrongPtr<VObject> first;
    StrongPtr<VObject> second;
    {
        TestCreator<CyclicModule> creator("Test/Cyclic");
        first = creator.create("", context);
        EXPECT_EQ(first->name(), "Test/Cyclic");
        second = first;
        castStrong<CyclicModule>(first)->cycle = first;
        castStrong<CyclicModule>(creator.create("alone", context))->cycle = nullptr;
        const auto kept = castStrong<CyclicModule>(creator.create("unheld", context));
        kept->cycle = kept;
    }
    EXPECT_EQ(TestModule::deleted, 3);
    EXPECT_FALSE(first);
    EXPECT_FALSE(second);
    EXPECT_EQ(workbench::ObjectRegistry::count(), before);
}
