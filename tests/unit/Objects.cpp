// SPDX-License-Identifier: Apache-2.0
#include "TestModules.h"
#include "workbench/core/ActionListener.h"
#include "workbench/core/ObjectRegistry.h"

#include <gtest/gtest.h>

#include <vector>

using namespace krod;
using workbench::ActionListener;
using workbench::ObjectRegistry;
using workbench::setActionListener;

namespace {

class RecordingListener : public ActionListener {
public:
    void warning(const std::string& text) override { warnings.push_back(text); }
    void created(const StrongPtr<VObject>& object, VCreationContext& creationContext,
                 VCreatorBase& maker) override {
        names.push_back(object->name());
        context = &creationContext;
        creator = &maker;
    }

    std::vector<std::string> warnings;
    std::vector<std::string> names;
    VCreationContext* context = nullptr;
    VCreatorBase* creator = nullptr;
};

} // namespace

TEST(Object, New_hasDefaults) {
    const StrongPtr<VObject> object(new TestModule("cmyk"));
    const VValuePool pool;
    VRequest request(pool);
    EXPECT_EQ(object->name(), "cmyk");
    EXPECT_EQ(object->help(0), "");
    EXPECT_EQ(object->help(VObject::Detailed), "");
    EXPECT_TRUE(object->update(request, 1.0));
    EXPECT_FALSE(object->creator());
    EXPECT_EQ(object->self(), object);
    EXPECT_TRUE(object->slots().inputs().empty());
}

TEST(Object, Requests_enabled_areProcessed) {
    const StrongPtr<VObject> object(new TestModule("cmyk"));
    EXPECT_FALSE(object->processesRequests());
    object->enableRequestProcessing();
    EXPECT_TRUE(object->processesRequests());
}

TEST(Object, Creator_gone_isUnknown) {
    const StrongPtr<VObject> object(new TestModule("orphan"));
    {
        TestCreator<VObject> creator("Test/Brief");
        object->setCreator(WeakPtr<VCreatorBase>(&creator));
        EXPECT_EQ(object->creator().get(), &creator);
    }
    EXPECT_FALSE(object->creator());
}

TEST(ObjectRegistry, Objects_entered_areListedInOrderAndNotKept) {
    const std::size_t before = ObjectRegistry::count();
    StrongPtr<VObject> first(new TestModule("first"));
    const StrongPtr<VObject> second(new TestModule("second"));
    const auto objects = ObjectRegistry::objects();
    ASSERT_EQ(objects.size(), before + 2);
    EXPECT_EQ(objects[before].lock(), first);
    EXPECT_EQ(objects[before + 1].lock(), second);
    first.reset();
    EXPECT_TRUE(objects[before].expired());
    EXPECT_EQ(ObjectRegistry::count(), before + 1);
}

TEST(ActionNotifier, Listener_installed_hearsWarningsAndCreations) {
    RecordingListener listener;
    TestCreator<TestModule> creator("Test/Heard");
    VCreationContext context;
    ActionListener* const before = setActionListener(&listener);
    VActionNotifier::Warning("no input");
    VActionNotifier::VObjectCreation(creator.create("heard", context), context, creator);
    EXPECT_EQ(setActionListener(before), &listener);
    EXPECT_EQ(before, nullptr);
    EXPECT_EQ(listener.warnings, std::vector<std::string>{"no input"});
    EXPECT_EQ(listener.names, std::vector<std::string>{"heard"});
    EXPECT_EQ(listener.context, &context);
    EXPECT_EQ(listener.creator, &creator);
}

TEST(ActionNotifier, DefaultListener_printsWarningsAndIgnoresCreations) {
    TestCreator<TestModule> creator("Test/Silent");
    VCreationContext context;
    testing::internal::CaptureStderr();
    VActionNotifier::Warning("no input for 100%s");
    VActionNotifier::VObjectCreation(creator.create("silent", context), context, creator);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "WARNING: no input for 100%s\n");
}
