// SPDX-License-Identifier: Apache-2.0
#include "host/values/VValueBase.h"
#include "host/values/VValueCreator.h"

#include <gtest/gtest.h>

#include <set>
#include <thread>
#include <vector>

using namespace krod;

TEST(Ageable, GlobalTime_asked_growsAndIsNeverZero) {
    const Ageable::Age first = Ageable::GlobalTime();
    EXPECT_GT(first, 0u);
    EXPECT_GT(Ageable::GlobalTime(), first);
}

TEST(Ageable, GlobalTime_askedByThreads_isNeverGivenTwice) {
    std::vector<std::vector<Ageable::Age>> given(4);
    {
        std::vector<std::jthread> threads;
        for (auto& ages : given)
            threads.emplace_back([&ages] {
                for (int i = 0; i < 1000; ++i) ages.push_back(Ageable::GlobalTime());
            });
    }
    std::set<Ageable::Age> all;
    for (const auto& ages : given) all.insert(ages.begin(), ages.end());
    EXPECT_EQ(all.size(), 4000u);
}

TEST(TypedValue, New_holdsValueStampedNow) {
    const Ageable::Age before = Ageable::GlobalTime();
    const auto value = makeValue(8);
    EXPECT_EQ(value->value(), 8);
    EXPECT_GT(value->age(), before);
    EXPECT_EQ(value->text(), "8");
    EXPECT_EQ(value->typeName(), "int");
    EXPECT_TRUE(value->type() == typeid(int));
}

TEST(TypedValue, Change_byValueOrText_isStampedAnew) {
    const auto value = makeValue(0.5);
    const Ageable::Age made = value->age();
    value->setValue(0.25);
    const Ageable::Age changed = value->age();
    EXPECT_GT(changed, made);
    EXPECT_TRUE(value->setFromText("2"));
    EXPECT_GT(value->age(), changed);
    EXPECT_EQ(value->value(), 2.0);
}

TEST(TypedValue, Text_thatDoesNotParse_leavesValueAndAge) {
    const auto value = makeValue(0.5);
    const Ageable::Age made = value->age();
    EXPECT_FALSE(value->setFromText("much"));
    EXPECT_EQ(value->value(), 0.5);
    EXPECT_EQ(value->age(), made);
}

TEST(TypedValue, Clone_changed_leavesTheOriginal) {
    const auto value = makeValue(std::string("glow"));
    const StrongPtr<VValueBase> copy = value->clone();
    EXPECT_GT(copy->age(), value->age());
    EXPECT_TRUE(copy->setFromText("halo"));
    EXPECT_EQ(value->text(), "glow");
    EXPECT_EQ(copy->text(), "halo");
}

TEST(VValueCreator, HostTypes_areKnownWithoutPlugin) {
    for (const char* name : {"int", "double", "bool", "string", "FlagList", "FixedArray<double,2>"}) {
        const VValueCreator* const creator = VValueCreator::find(name);
        ASSERT_TRUE(creator) << name;
        EXPECT_EQ(creator->create()->typeName(), name);
    }
    EXPECT_EQ(VValueCreator::find("int")->create()->text(), "0");
    EXPECT_EQ(VValueCreator::find("bool")->create()->text(), "false");
    EXPECT_EQ(VValueCreator::find("FixedArray<double,2>")->create()->text(), "0.0 0.0");
    EXPECT_FALSE(VValueCreator::find("float"));
}

TEST(VValueCreator, SecondOwner_comesAndGoes_leavesTheOthers) {
    const VValueCreator* const hosts = VValueCreator::find("int");
    {
        TypedValueCreator<int> first;
        VValueCreator::registerCreator("int", first);
        VValueCreator::registerCreator("count", first);
        {
            TypedValueCreator<int> second;
            VValueCreator::registerCreator("count", second);
            EXPECT_EQ(VValueCreator::find("count"), &first);
        }
        EXPECT_EQ(VValueCreator::find("int"), hosts);
        EXPECT_EQ(VValueCreator::find("count"), &first);
    }
    EXPECT_EQ(VValueCreator::find("int"), hosts);
    EXPECT_FALSE(VValueCreator::find("count"));
}
