// SPDX-License-Identifier: Apache-2.0
// Parameters that are connected: several of them with one value.
#include "host/core/VParameter.h"

#include "TestModules.h"
#include "host/core/VValuePool.h"

#include <gtest/gtest.h>

#include <vector>

using namespace krod;

namespace {

/// Counts as never set, as after its slot was made.
template <class T>
StrongPtr<VParameter> slotOf(const std::string& name, T value) {
    StrongPtr<VParameter> made(new VParameter(makeValue<T>(std::move(value)), name, nullptr));
    made->clearState(VParameter::ValueSet);
    return made;
}

std::string textOf(const StrongPtr<VParameter>& parameter) { return parameter->value().text(); }

bool isSet(const StrongPtr<VParameter>& parameter) {
    return (parameter->state() & VParameter::ValueSet) != 0;
}

} // namespace

TEST(SharedValue, Slots_connected_haveOneValueInBothDirections) {
    const auto width = slotOf("width", 1.0), radius = slotOf("radius", 2.0);
    ASSERT_TRUE(radius->shareValue(*width));
    EXPECT_TRUE(radius->sharesValueWith(*width) && width->sharesValueWith(*radius));
    EXPECT_EQ(textOf(radius), "1.0") << "the value of the one that it is connected to";
    EXPECT_FALSE(isSet(radius)) << "which was never set";
    ASSERT_TRUE(radius->setValueFromText("3"));
    EXPECT_EQ(textOf(width), "3.0");
    EXPECT_TRUE(isSet(width));
    ASSERT_TRUE(width->setValue(makeValue(4.0)));
    EXPECT_EQ(textOf(radius), "4.0");
    ASSERT_TRUE(radius->setGlobalValue(*makeValue(5.0)));
    EXPECT_EQ(textOf(width), "5.0");
    width->clearState(VParameter::ValueSet);
    EXPECT_FALSE(isSet(radius));
}

TEST(SharedValue, Slots_ofOneModuleAndOfSeveral_areConnectedAlike) {
    const StrongPtr<VObject> first(new TestModule("first")), second(new TestModule("second"));
    std::vector<StrongPtr<VParameter>> slots = {slotOf("a", 1), slotOf("b", 2), slotOf("a", 3)};
    first->slots().addInput("a", 0, slots[0]);
    first->slots().addInput("b", 0, slots[1]);
    second->slots().addInput("a", 10, slots[2]);
    ASSERT_TRUE(slots[1]->shareValue(*slots[0]));
    ASSERT_TRUE(slots[2]->shareValue(*slots[1]));
    ASSERT_TRUE(second->slots().input("a")->setValueFromText("7"));
    EXPECT_EQ(textOf(first->slots().input("a")), "7");
    EXPECT_EQ(textOf(first->slots().input("b")), "7");
    EXPECT_EQ(second->slots().inputs()[0].expertLevel, 10) << "only the value is shared";
}

TEST(SharedValue, Disconnected_keepsTheValue_andConnectsAgain) {
    const auto width = slotOf("width", 1.0), radius = slotOf("radius", 2.0);
    ASSERT_TRUE(radius->shareValue(*width));
    ASSERT_TRUE(width->setValueFromText("3"));
    radius->unshareValue();
    EXPECT_FALSE(radius->sharesValueWith(*width));
    EXPECT_EQ(textOf(radius), "3.0");
    EXPECT_TRUE(isSet(radius));
    ASSERT_TRUE(width->setValueFromText("4"));
    EXPECT_EQ(textOf(radius), "3.0");
    ASSERT_TRUE(radius->setValueFromText("5"));
    EXPECT_EQ(textOf(width), "4.0");
    ASSERT_TRUE(radius->shareValue(*width));
    EXPECT_EQ(textOf(radius), "4.0");
    ASSERT_TRUE(radius->setValueFromText("6"));
    EXPECT_EQ(textOf(width), "6.0");
}

TEST(SharedValue, Slot_connectedElsewhere_leavesTheOthersTogether) {
    const auto a = slotOf("a", 1), b = slotOf("b", 2), c = slotOf("c", 3), other = slotOf("other", 4);
    ASSERT_TRUE(b->shareValue(*a) && c->shareValue(*a));
    ASSERT_TRUE(a->shareValue(*other));
    EXPECT_EQ(textOf(a), "4");
    EXPECT_TRUE(b->sharesValueWith(*c));
    ASSERT_TRUE(c->setValueFromText("5"));
    EXPECT_EQ(textOf(b), "5");
    EXPECT_EQ(textOf(other), "4");
}

TEST(SharedValue, SourceGone_leavesTheValueToTheOthers) {
    StrongPtr<VObject> module(new TestModule("source"));
    auto source = slotOf("width", 1.0);
    module->slots().addInput("width", 0, source);
    const auto b = slotOf("b", 2.0), c = slotOf("c", 3.0);
    ASSERT_TRUE(b->shareValue(*source) && c->shareValue(*source));
    ASSERT_TRUE(source->setValueFromText("9"));
    const WeakPtr<VParameter> gone(source);
    source.reset();
    module.reset();
    EXPECT_TRUE(gone.expired()) << "a connection keeps no module and no parameter alive";
    EXPECT_EQ(textOf(b), "9.0");
    ASSERT_TRUE(b->setValueFromText("10"));
    EXPECT_EQ(textOf(c), "10.0");
}

TEST(SharedValue, OtherType_isRefused_andTheOldConnectionStays) {
    const auto a = slotOf("a", 1), b = slotOf("b", 2);
    ASSERT_TRUE(b->shareValue(*a));
    for (const auto& other : {slotOf("d", 1.0), slotOf("t", true), slotOf("s", std::string("1")),
                              slotOf("f", FlagList("+1", ' ')), slotOf("p", FixedArray<double, 2>(1, 1))}) {
        EXPECT_FALSE(b->shareValue(*other)) << other->typeName();
        EXPECT_FALSE(other->shareValue(*b)) << other->typeName();
    }
    EXPECT_TRUE(b->sharesValueWith(*a));
    EXPECT_EQ(textOf(b), "1");
}

TEST(SharedValue, Circle_isNoneSinceThereIsOneValue) {
    const auto a = slotOf("a", 1), b = slotOf("b", 2), c = slotOf("c", 3);
    ASSERT_TRUE(a->shareValue(*a));
    ASSERT_TRUE(b->shareValue(*a) && c->shareValue(*b) && a->shareValue(*c));
    ASSERT_TRUE(c->setValueFromText("8"));
    EXPECT_EQ(textOf(a) + textOf(b), "88");
}

TEST(SharedValue, BrokenText_leavesTheValueOfAll) {
    const auto a = slotOf("a", 1.0), b = slotOf("b", 2.0);
    ASSERT_TRUE(b->shareValue(*a));
    EXPECT_FALSE(b->setValueFromText("inf"));
    EXPECT_EQ(textOf(a), "1.0");
    EXPECT_FALSE(isSet(a));
}

TEST(SharedValue, ValuePools_stillTellParametersApart) {
    const auto a = slotOf("a", 1), b = slotOf("b", 2);
    ASSERT_TRUE(b->shareValue(*a));
    VValuePool pool;
    pool.set(*a, makeValue(5));
    EXPECT_EQ(a->getLocalValue(pool).value->text(), "5");
    EXPECT_EQ(b->getLocalValue(pool).value->text(), "1");
    pool.makeUnreadable(*b);
    EXPECT_FALSE(b->getLocalValue(pool).value);
    EXPECT_TRUE(a->getLocalValue(pool).value);
}
