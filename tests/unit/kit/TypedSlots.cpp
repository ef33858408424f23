// SPDX-License-Identifier: Apache-2.0
// The kit's typed slots, in a program that stands for a plug-in.
#include "host/core/TypedSlot.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

struct Temperature {
    double kelvin = 0;
};

} // namespace

template <>
struct krod::VValueTrait<Temperature> {
    static std::string Text(const Temperature& value) { return VValueTrait<double>::Text(value.kelvin); }
    static TextResult setValueFromText(Temperature& value, std::string_view text) {
        return VValueTrait<double>::setValueFromText(value.kelvin, text);
    }
};

namespace {

using namespace krod;

struct Module : VObject {
    Module() : VObject("module") {}
    TypedSlot<double> width{this, "width", 1.5, 2};
    TypedSlot<FlagList> options{this, "options", FlagList("-glow", ' '), 0};
};

TEST(TypedSlot, new_isAnInputAtItsInitialValueAndNeverSet) {
    const StrongPtr<Module> module(new Module);
    const auto& inputs = module->slots().inputs();
    ASSERT_EQ(inputs.size(), 2u);
    EXPECT_EQ(inputs[0].name, "width");
    EXPECT_EQ(inputs[0].expertLevel, 2);
    EXPECT_EQ(inputs[0].parameter->value().text(), "1.5");
    EXPECT_EQ(inputs[0].parameter->state() & VParameter::ValueSet, 0u);
    EXPECT_EQ(inputs[0].parameter->creator().get(), module.get());
    EXPECT_EQ(inputs[1].name, "options");
}

TEST(TypedSlot, read_tellsSetNeverSetAndUnreadableApart) {
    const StrongPtr<Module> module(new Module);
    VParameter& parameter = *module->slots().input("width");
    double value = -1;
    EXPECT_TRUE(module->width.read(VValuePool(), value));
    EXPECT_EQ(value, 1.5) << "readable but never set: the initial value";

    ASSERT_TRUE(parameter.setValueFromText("3.0"));
    EXPECT_TRUE(module->width.read(VValuePool(), value));
    EXPECT_EQ(value, 3.0) << "set";

    VValuePool pool;
    pool.makeUnreadable(parameter);
    value = -1;
    EXPECT_FALSE(module->width.read(pool, value));
    EXPECT_EQ(value, -1) << "not readable: the module's fallback stays";
}

TEST(TypedSlot, limit_isAPropertyThatClampsNothing) {
    const StrongPtr<Module> module(new Module);
    module->width.setLimits({.max = 2.0});
    VParameter& parameter = *module->slots().input("width");
    EXPECT_EQ(parameter.property("max")->text(), "2.0");
    EXPECT_FALSE(parameter.property("min"));
    ASSERT_TRUE(parameter.setValueFromText("25.0"));
    double value = 0;
    EXPECT_TRUE(module->width.read(VValuePool(), value));
    EXPECT_EQ(value, 25.0);
}

TEST(TypedSlot, withoutObject_isReportedWithItsName) {
    try {
        const TypedSlot<double> slot(nullptr, "lonely", 0.0, 0);
        FAIL() << "a slot for no object was accepted";
    } catch (const SlotAssertion& error) {
        EXPECT_NE(std::string(error.what()).find("lonely"), std::string::npos) << error.what();
    }
}

TEST(TypedSlot, secondOfOneName_failsThePointerCheckWithItsLocation) {
    const StrongPtr<Module> module(new Module);
    try {
        const TypedSlot<double> slot(module.get(), "width", 0.0, 0);
        FAIL() << "two parameters of one name were accepted";
    } catch (const PointerException& error) {
        const std::string location =
            "TypedSlot(VObject*that, const string&name, const T&initialValue, int expertLevel";
        EXPECT_NE(std::string(error.what()).find(location), std::string::npos) << error.what();
    }
}

// The registration flag belongs to the program, so the two halves of this test stand in one.
TEST(TypedSlot, destroyed_complainsUntilItsTypeWasRegisteredAndCountsEverAfter) {
    const std::string complaint = "Typeslot has a problem, its creators were not registered!?\n";
    struct Single : VObject {
        Single() : VObject("single") {}
        TypedSlot<int> count{this, "count", 1, 0};
    };
    const auto destroyOne = [] {
        testing::internal::CaptureStdout();
        StrongPtr<Single>(new Single).reset();
        std::fflush(stdout);
        return testing::internal::GetCapturedStdout();
    };
    const std::int64_t before = TypedSlotCreator::InternalTypeCreatorAccessory;
    EXPECT_EQ(destroyOne(), complaint);
    EXPECT_EQ(TypedSlotCreator::InternalTypeCreatorAccessory, before);
    {
        const TypedSlot<int>::Registration registration;
        EXPECT_EQ(destroyOne(), "");
        EXPECT_EQ(TypedSlotCreator::InternalTypeCreatorAccessory, before + 1);
    }
    EXPECT_EQ(destroyOne(), "") << "the flag means \"was registered\" and is never cleared";
    EXPECT_EQ(TypedSlotCreator::InternalTypeCreatorAccessory, before + 2);
}

// The host does not know this type, so that only the program's own registration can be found.
TEST(TypeRegistration, second_ofOneTypeRegistersNothingAndTheFirstWithdrawsItself) {
    using Registration = TypedSlot<Temperature>::Registration;
    const auto slotCreator = [] { return TypedSlotCreator::find(typeid(Temperature)); };
    const auto valueCreator = [] { return VValueCreator::find(Typename<Temperature>()); };
    EXPECT_EQ(slotCreator(), nullptr);
    auto first = std::make_unique<Registration>();
    EXPECT_NE(slotCreator(), nullptr);
    EXPECT_NE(valueCreator(), nullptr);
    const auto second = std::make_unique<Registration>();
    first.reset();
    EXPECT_EQ(slotCreator(), nullptr) << "a second entry was made, or the first was not withdrawn";
    EXPECT_EQ(valueCreator(), nullptr);
    EXPECT_TRUE(Registration::wasRegistered());
}

} // namespace
